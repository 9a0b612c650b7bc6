// Encrypted containers: what is written, what is read, and what is refused.

#include "support/loaded.h"

#include "container/aes.h"
#include "container/container.h"
#include "container/container_format.h"
#include "container/document_digest.h"
#include "findings/finding.h"
#include "loading/document.h"

#include <QCryptographicHash>
#include <QDomDocument>
#include <QFile>
#include <QStringEncoder>
#include <QtEndian>

#include <cstdlib>
#include <ctime>

using namespace Qt::StringLiterals;

namespace {

unsigned char *data(QByteArray &bytes)
{
    return reinterpret_cast<unsigned char *>(bytes.data());
}

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    return file.readAll();
}

QStringList messages;
void take(const char *text)
{
    messages += QString::fromUtf8(text);
}

/// What came of reading bytes as a description.
struct Reading {
    XMDOpenError status;
    bool encrypted;
    QString root;
    QStringList errors;
};

Reading read(const QByteArray &bytes)
{
    const QTemporaryDir directory;
    writeFile(directory.filePath(u"x"_s), bytes);
    messages.clear();
    QDomDocument document;
    bool encrypted = true;
    const XMDOpenError status =
        loadXMLDocument(directory.filePath(u"x"_s), document, encrypted, nullptr, take, nullptr, true);
    return {status, encrypted, document.documentElement().tagName(),
            messages.replaceInStrings(directory.path() + u'/', QString())};
}

/// The container that the library writes of \a document.
QByteArray containerOf(const QByteArray &document, veldmap::ContainerDigest digest = veldmap::ContainerDigest::None)
{
    const QTemporaryDir directory;
    const QString plain = directory.filePath(u"plain"_s);
    const QString sealed = directory.filePath(u"sealed"_s);
    writeFile(plain, document);
    if (digest == veldmap::ContainerDigest::None) {
        EXPECT_TRUE(encryptXMLDocument(plain, sealed, nullptr, nullptr, nullptr));
    } else {
        veldmap::FindingList found;
        EXPECT_TRUE(veldmap::encryptDescription(plain, sealed, found, digest));
    }
    return contentOf(sealed);
}

/// The document that a load takes out of a container; what it refuses is its only error.
QByteArray documentIn(const QByteArray &container)
{
    const veldmap::Deciphered result = veldmap::deciphered(container);
    return result.error ? QByteArray(result.error.rule->id.data()) : result.document;
}

const QByteArray kDamaged = "container-damaged";

QByteArray withLength(QByteArray container, quint32 length)
{
    qToLittleEndian(length, container.data() + 6);
    return container;
}

} // namespace

TEST(Container, VectorIsMadeOfTheTimeAsContainersHaveIt)
{
    const auto expected = [](std::time_t time) {
        const auto factor = static_cast<quint32>(time);
        std::srand(factor * factor * factor * factor);
        QByteArray vector;
        for (int at = 0; at < 16; ++at)
            vector += static_cast<char>(std::rand());
        for (int stir = 0; stir < 32; ++stir)
            vector = QCryptographicHash::hash(vector, QCryptographicHash::Md5);
        return vector;
    };
    std::time_t before = 0;
    std::time_t after = 1;
    QByteArray vector(16, '\0');
    while (before != after) { // a second may end in between
        before = std::time(nullptr);
        makeIV(data(vector));
        after = std::time(nullptr);
    }
    EXPECT_EQ(vector.toHex(), expected(before).toHex());
    EXPECT_NE(expected(before), expected(before + 1));
}

TEST(Container, HeaderAndWholeBlocks)
{
    const QByteArray document = "<archive><comment>A sealed description</comment></archive>";
    for (const qsizetype length : {0, 1, 15, 16, 17, 48, 58}) {
        const QByteArray plain = document.first(length);
        const QByteArray container = containerOf(plain);
        ASSERT_EQ(container.size(), 26 + (length + 15) / 16 * 16);
        EXPECT_EQ(container.first(10), QByteArray("EXML\1\0", 6) + static_cast<char>(length) + QByteArray(3, '\0'));
        QByteArray deciphered = container.sliced(26);
        QByteArray vector = container.sliced(10, 16);
        QByteArray key(reinterpret_cast<const char *>(VMXML::AESVeldKey), 32);
        AES_Decrypt(data(deciphered), data(deciphered), static_cast<int>(deciphered.size()), data(vector), data(key));
        EXPECT_EQ(deciphered, plain + QByteArray(deciphered.size() - length, '\0'));
    }
}

TEST(Container, IsReadWhateverItsVersionAndWhatFollowsTheDocument)
{
    const QByteArray document = "<soc>\n<a/></soc>";
    const Reading plain = read(document);
    EXPECT_EQ(std::tuple(plain.status, plain.encrypted, plain.root), std::tuple(XMDOpenSuccess, false, u"soc"_s));
    QByteArray container = containerOf(document);
    container[4] = '\x7F';
    container[5] = '\x01';
    const QByteArray longer = withLength(containerOf(document + QByteArray(40, 'x')), 16);
    for (const QByteArray &bytes : {container, longer}) {
        const Reading sealed = read(bytes);
        EXPECT_EQ(std::tuple(sealed.status, sealed.encrypted, sealed.root), std::tuple(XMDOpenSuccess, true, u"soc"_s));
        EXPECT_EQ(sealed.errors, QStringList());
    }
}

TEST(Container, ErrorsOfTheDocumentAreThoseOfThePlainOne)
{
    for (const QByteArray &bad : {QByteArray(), QByteArray("<a>\n <b></c></a>"), QByteArray(5000, '<')}) {
        const Reading plain = read(bad);
        const Reading sealed = read(containerOf(bad));
        EXPECT_EQ(std::pair(sealed.status, sealed.encrypted), std::pair(XMDOpenInvalid, false));
        EXPECT_EQ(sealed.errors, plain.errors);
        EXPECT_EQ(sealed.errors.size(), 1);
    }
    QByteArray damaged = containerOf("<archive><var name='N' value='1'/></archive>");
    damaged[26] = static_cast<char>(damaged[26] ^ 1);
    const Reading sealed = read(damaged);
    EXPECT_EQ(sealed.status, XMDOpenInvalid);
    ASSERT_EQ(sealed.errors.size(), 1);
    EXPECT_TRUE(sealed.errors.first().startsWith(u"x:1:"_s)) << sealed.errors.first().toStdString();
}

TEST(Container, DigestStandsBehindTheDocumentAndIsTakenAway)
{
    const QByteArray documents[] = {
        "<archive/>",
        "<archive/>\n \n",
        "\xEF\xBB\xBF<archive/><!-- end -->\n",
        "<?xml version='1.0' encoding='ISO-8859-1'?><archive><comment>\xE9</comment></archive>",
        "no description",
        "",
        "<archive>" + QByteArray(100'000, ' ') + "</archive>",
    };
    QByteArrayList all(std::begin(documents), std::end(documents));
    for (const auto encoding :
         {QStringConverter::Utf16LE, QStringConverter::Utf16BE, QStringConverter::Utf32LE, QStringConverter::Utf32BE})
        all += QStringEncoder(encoding, QStringConverter::Flag::WriteBom)(u"<archive/>\n"_s);
    for (const QByteArray &document : all) {
        const QByteArray container = containerOf(document, veldmap::ContainerDigest::InTheEnd);
        EXPECT_EQ(documentIn(container), document);
        EXPECT_EQ(read(container).root, read(document).root);
        // Who knows nothing of it passes over it.
        const QByteArray digest = QCryptographicHash::hash(document, QCryptographicHash::Sha256).toHex();
        QByteArray plain = veldmap::withDigest(document);
        EXPECT_TRUE(plain.startsWith(document));
        EXPECT_EQ(plain.sliced(document.size()).replace('\0', ""),
                  "<?veldmap-sha256 " + digest + " is the digest of all before?>");
        EXPECT_EQ(read(plain).root, read(document).root);
    }
}

TEST(Container, DigestTellsOfEveryBitThatChanges)
{
    const QByteArray document = "<archive><comment>sixteen by sixteen, or so</comment><var name='N' value='1'/>"
                                "</archive>\n";
    const QByteArray container = containerOf(document, veldmap::ContainerDigest::InTheEnd);
    const QByteArray wide = QStringEncoder(QStringConverter::Utf16BE, QStringConverter::Flag::WriteBom)(document);
    for (const QByteArray &whole : {container, containerOf(wide, veldmap::ContainerDigest::InTheEnd)}) {
        const QByteArray before = documentIn(whole);
        for (qsizetype bit = 0; bit < 8 * whole.size(); ++bit) {
            QByteArray damaged = whole;
            damaged[bit / 8] = static_cast<char>(damaged[bit / 8] ^ (1 << bit % 8));
            const bool isMagicOrVersion = bit < 8 * 6; // of which one is looked at before, the other never
            const QByteArray found = documentIn(damaged);
            if (isMagicOrVersion)
                EXPECT_EQ(found, before);
            else
                EXPECT_TRUE(found == kDamaged || found == "container-length") << bit;
        }
    }
    EXPECT_EQ(documentIn(container + QByteArray(16, 'x')), document) << "what follows was never part of it";
    EXPECT_EQ(documentIn(withLength(container + QByteArray(64, 'x'), container.size())), kDamaged);
    EXPECT_EQ(read(withLength(container, 100)).errors,
              QStringList(u"x:0:0:The container is damaged, or was written with another key."_s));
}

TEST(Container, HeadersThatLieAreRefused)
{
    const QByteArray container = containerOf("<archive></archive>"); // 19 bytes in 32
    const QString shortHeader = u"x:0:0:The container ends within its header of 26 bytes."_s;
    const std::pair<QByteArray, QString> rows[] = {
        {"EXML", shortHeader},
        {"EXML and then some", shortHeader},
        {container.first(25), shortHeader},
        {container.first(26), u"x:0:0:The container holds 0 enciphered bytes, but claims a document of 19."_s},
        {container.first(27), u"x:0:0:The container holds 1 enciphered bytes, which is no multiple of 16."_s},
        {container + 'x', u"x:0:0:The container holds 33 enciphered bytes, which is no multiple of 16."_s},
        {container.first(42), u"x:0:0:The container holds 16 enciphered bytes, but claims a document of 19."_s},
        {withLength(container, 33), u"x:0:0:The container holds 32 enciphered bytes, but claims a document of 33."_s},
        {withLength(container, 0xFFFFFFFF),
         u"x:0:0:The container holds 32 enciphered bytes, but claims a document of 4294967295."_s}};
    for (const auto &[bytes, message] : rows) {
        const Reading reading = read(bytes);
        EXPECT_EQ(std::pair(reading.status, reading.encrypted), std::pair(XMDOpenInvalid, false));
        EXPECT_EQ(reading.errors, QStringList(message));
    }
}

TEST(Container, WritingThatFailsLeavesWhatWasThere)
{
    const QTemporaryDir directory;
    const QString source = directory.filePath(u"soc.xml"_s);
    const QString destination = directory.filePath(u"soc.xmd"_s);
    const auto fails = [](const QString &from, const QString &to, const QString &message) {
        messages.clear();
        EXPECT_FALSE(encryptXMLDocument(from, to, take, take, take));
        EXPECT_EQ(messages, QStringList(message));
        EXPECT_FALSE(encryptXMLDocument(from, to, nullptr, nullptr, nullptr));
    };
    fails(source, destination, u"Unable to open file %1"_s.arg(source));
    EXPECT_FALSE(QFile::exists(destination)) << "no source, no destination";
    writeFile(source, "<archive/>");
    fails(source, directory.filePath(u"no/soc.xmd"_s),
          u"Unable to open file %1"_s.arg(directory.filePath(u"no/soc.xmd"_s)));
    fails(source, QString(), u"Unable to open file "_s);
    const QString loop = directory.filePath(u"loop"_s);
    ASSERT_TRUE(QFile::link(u"loop"_s, loop));
    fails(source, loop, u"Unable to open file %1"_s.arg(loop));
    EXPECT_TRUE(QFileInfo(loop).isSymLink());
    fails(source, directory.path(), u"Unable to open file %1"_s.arg(directory.path()));
    fails(directory.path(), destination, u"Unable to open file %1"_s.arg(directory.path()));
    const QString large = directory.filePath(u"large"_s); // has no blocks on the disk
    ASSERT_TRUE(QFile(large).open(QIODevice::WriteOnly) && QFile::resize(large, 256 * 1024 * 1024 + 1));
    fails(large, destination, u"%1:0:0:The file is larger than 268435456 bytes."_s.arg(large));
    EXPECT_FALSE(QFile::exists(destination));
    ASSERT_TRUE(QFile::link(u"soc.xml"_s, destination));
    fails(source, destination, u"The source %1 and the destination %2 are the same file."_s.arg(source, destination));
    EXPECT_EQ(contentOf(source), "<archive/>");
    if (QFile::exists(u"/dev/full"_s))
        fails(source, u"/dev/full"_s, u"/dev/full can't be written: No space left on device"_s);
    ASSERT_TRUE(QFile::remove(destination));
    writeFile(destination, "earlier");
    messages.clear();
    EXPECT_TRUE(encryptXMLDocument(source, destination, take, take, take));
    EXPECT_EQ(messages, QStringList());
    EXPECT_EQ(contentOf(destination).size(), 26 + 16);
}
