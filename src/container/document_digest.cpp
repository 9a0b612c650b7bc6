#include "container/document_digest.h"

#include <QCryptographicHash>
#include <QStringConverter>

#include <algorithm>

using namespace Qt::StringLiterals;

// The last lines of a document that was enciphered with its digest, broken here for reading:
//
//     </archive>
//     <?veldmap-sha256 9f86d081884c7d659a2feaa0c55ad015a3bf4f1b2b0b822cd15d6c15b0f00a08
//         is the digest of all before?>
//
// The instruction stands right behind the last byte of the document. A damaged block of a container spoils 16 bytes,
// and a bit in each place of the next block; the words on both sides of the digest are so far apart that one of them
// stays.

namespace veldmap {

namespace {

constexpr QByteArrayView kBefore = "<?veldmap-sha256 ";
constexpr QByteArrayView kBehind = " is the digest of all before?>";
constexpr qsizetype kDigits = 64;
constexpr qsizetype kCharacters = kBefore.size() + kDigits + kBehind.size();
constexpr qsizetype kMostFilling = 15; // bytes in a container behind the document
static_assert(4 * kCharacters <= kLargestDigest);

/// How the ASCII characters of a document stand in its bytes.
struct Form {
    QStringConverter::Encoding encoding;
    qsizetype width; ///< bytes of a character
    qsizetype at;    ///< that byte of them which is not 0
};
constexpr Form kForms[] = {
    {QStringConverter::Utf8, 1, 0}, // and all others that have ASCII in them
    {QStringConverter::Utf16LE, 2, 0}, {QStringConverter::Utf16BE, 2, 1},
    {QStringConverter::Utf32LE, 4, 0}, {QStringConverter::Utf32BE, 4, 3},
};

const Form &formOf(const QByteArray &document)
{
    const QStringConverter::Encoding encoding =
        QStringConverter::encodingForData(document, u'<').value_or(QStringConverter::Utf8);
    const auto *const form = std::ranges::find(kForms, encoding, &Form::encoding);
    return form == std::end(kForms) ? kForms[0] : *form;
}

QByteArray inForm(const Form &form, QByteArrayView ascii)
{
    QByteArray bytes(ascii.size() * form.width, '\0');
    for (qsizetype at = 0; at < ascii.size(); ++at)
        bytes[at * form.width + form.at] = ascii[at];
    return bytes;
}

/// The instruction for a document of \a bytes.
QByteArray instructionOf(const Form &form, QByteArrayView bytes)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    hash.addData(bytes);
    return inForm(form, kBefore.toByteArray() + hash.result().toHex() + kBehind.toByteArray());
}

} // namespace

QByteArray withDigest(const QByteArray &document)
{
    return document + instructionOf(formOf(document), document);
}

DigestFound findDigest(const QByteArray &bytes, qsizetype length)
{
    DigestFound found;
    // The first bytes tell the encoding too, but they may be what has changed. Words in one form may look like those in
    // another, so one that is right counts.
    for (const Form &form : kForms) {
        const qsizetype size = kCharacters * form.width;
        const qsizetype start = length - size;
        const qsizetype from = std::max<qsizetype>(0, std::min(length, bytes.size() - kMostFilling) - size);
        const QByteArrayView end = QByteArrayView(bytes).sliced(from);
        if (end.indexOf(inForm(form, kBefore)) < 0 && end.indexOf(inForm(form, kBehind)) < 0)
            continue;
        if (start >= 0 &&
            QByteArrayView(bytes).sliced(start, size) == instructionOf(form, QByteArrayView(bytes).first(start)))
            return {DigestFound::Right, start};
        found.kind = DigestFound::Wrong;
    }
    return found;
}

} // namespace veldmap
