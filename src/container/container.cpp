#include "container/container.h"

#include "container/aes.h"
#include "container/container_format.h"
#include "container/document_digest.h"
#include "container/md5.h"
#include "container/rules.h"
#include "files/file_reader.h"
#include "files/file_rules.h"
#include "files/file_writer.h"
#include "files/paths.h"
#include "findings/callback_sink.h"
#include "findings/limits.h"

#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <limits>
#include <system_error>

using namespace Qt::StringLiterals;

// A container; numbers have their lowest byte first:
//
//     offset   bytes
//          0       4   "EXML"
//          4       2   version, 1; not looked at
//          6       4   length of the document
//         10      16   initialisation vector
//         26     ...   the document, filled up with zeros to whole blocks of 16 bytes and enciphered
//
// Nothing here tells whether the key is right: a wrong one gives a document that is not well formed. A document may end
// with a digest of its own that does, see document_digest.cpp.

namespace {

constexpr QByteArrayView kMagic = "EXML";
constexpr quint16 kVersion = 1;
constexpr qsizetype kVersionAt = 4;
constexpr qsizetype kLengthAt = 6;
constexpr qsizetype kVectorAt = 10;
constexpr qsizetype kVectorBytes = 16;
constexpr qsizetype kHeaderBytes = kVectorAt + kVectorBytes;
constexpr qsizetype kBlockBytes = 16;
static_assert(veldmap::kContainerOverhead == kHeaderBytes + kBlockBytes - 1);
static_assert(veldmap::limits::kDocumentBytes + veldmap::kLargestDigest + kBlockBytes <=
              std::numeric_limits<int>::max());

/// The bytes of \a bytes for the cipher, whose signature lacks the const though it only reads them.
unsigned char *readOnly(const void *bytes)
{
    return static_cast<unsigned char *>(const_cast<void *>(bytes));
}

unsigned char *writable(QByteArray &bytes, qsizetype at = 0)
{
    return reinterpret_cast<unsigned char *>(bytes.data()) + at;
}

/// The container of \a document.
QByteArray enciphered(QByteArray document)
{
    QByteArray container(kHeaderBytes, '\0');
    std::copy(kMagic.begin(), kMagic.end(), container.begin());
    qToLittleEndian(kVersion, writable(container, kVersionAt));
    qToLittleEndian(static_cast<quint32>(document.size()), writable(container, kLengthAt));
    makeIV(writable(container, kVectorAt));
    document.append((kBlockBytes - document.size() % kBlockBytes) % kBlockBytes, '\0');
    container.resize(kHeaderBytes + document.size());
    AES_Encrypt(writable(document), writable(container, kHeaderBytes), static_cast<int>(document.size()),
                writable(container, kVectorAt), readOnly(VMXML::AESVeldKey));
    return container;
}

bool isSameFile(const QString &left, const QString &right)
{
    std::error_code error; // what is not there is not the same
    const std::filesystem::path path = veldmap::nativePath(left);
    return std::filesystem::is_regular_file(path, error) &&
           std::filesystem::equivalent(path, veldmap::nativePath(right), error);
}

} // namespace

namespace veldmap {

bool isContainer(const QByteArray &bytes)
{
    return bytes.startsWith(kMagic);
}

Deciphered deciphered(const QByteArray &bytes)
{
    const qsizetype cipherLength = bytes.size() - kHeaderBytes;
    if (cipherLength < 0)
        return {{}, {&rules::containerTooShort, {QString::number(kHeaderBytes)}}, false};
    if (cipherLength % kBlockBytes != 0)
        return {{}, {&rules::containerUneven, {QString::number(cipherLength), QString::number(kBlockBytes)}}, false};
    const auto length = qFromLittleEndian<quint32>(bytes.constData() + kLengthAt);
    if (length > cipherLength)
        return {{}, {&rules::containerLength, {QString::number(cipherLength), QString::number(length)}}, false};
    Deciphered result = {QByteArray(cipherLength, Qt::Uninitialized), {}, false};
    AES_Decrypt(readOnly(bytes.constData() + kHeaderBytes), writable(result.document), static_cast<int>(cipherLength),
                readOnly(bytes.constData() + kVectorAt), readOnly(VMXML::AESVeldKey));
    const DigestFound digest = findDigest(result.document, length);
    if (digest.kind == DigestFound::Wrong)
        return {{}, {&rules::containerDamaged, {}}, false};
    result.hasDigest = digest.kind == DigestFound::Right;
    result.document.truncate(result.hasDigest ? digest.documentBytes : length);
    return result;
}

bool encryptDescription(const QString &source, const QString &destination, Sink &sink, ContainerDigest digest)
{
    const auto fail = [&sink](const Rule &rule, const QStringList &arguments, const Place &place = {}) {
        sink.take(Finding(rule, place, arguments));
        return false;
    };
    QFile file(source);
    if (!file.open(QIODevice::ReadOnly))
        return fail(rules::sourceNotOpened, {source});
    if (isSameFile(source, destination))
        return fail(rules::sourceIsDestination, {source, destination});
    QByteArray document = readAtMost(file, limits::kDocumentBytes);
    if (file.error() != QFile::NoError)
        return fail(rules::sourceNotRead, {source, file.errorString()});
    if (document.size() > limits::kDocumentBytes)
        return fail(rules::sourceTooLarge, {QString::number(limits::kDocumentBytes)}, {source});
    if (digest == ContainerDigest::InTheEnd)
        document = withDigest(document);
    removeLeftovers(QFileInfo(destination).path());
    const WriteResult result = writeWholeFile(destination, enciphered(document));
    if (result.outcome == WriteResult::InPlace)
        sink.take(Finding(file_rules::kInPlace, {}, {destination, result.reason}));
    if (result.outcome != WriteResult::Failed)
        return true;
    return result.isOpened ? fail(rules::destinationNotWritten, {destination, result.reason})
                           : fail(rules::sourceNotOpened, {destination});
}

} // namespace veldmap

bool encryptXMLDocument(const QString &source, const QString &destination, VMMessageCallback, VMMessageCallback error,
                        VMMessageCallback)
{
    veldmap::CallbackSink sink({nullptr, error, nullptr});
    return veldmap::encryptDescription(source, destination, sink);
}

void makeIV(unsigned char *iv)
{
    constexpr int kStirs = 32;
    quint32 seed = 1;
    for (int call = 0; call < 4; ++call)
        seed *= static_cast<quint32>(std::time(nullptr));
    std::srand(seed);
    for (qsizetype at = 0; at < kVectorBytes; ++at)
        iv[at] = static_cast<unsigned char>(std::rand());
    for (int stir = 0; stir < kStirs; ++stir)
        MD5Hash(iv, kVectorBytes, iv);
}
