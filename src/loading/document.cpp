#include "loading/document.h"

#include "container/container_format.h"
#include "files/file_reader.h"
#include "loading/document_loading.h"
#include "findings/limits.h"

#include <QDomDocument>
#include <QFile>
#include <QXmlStreamReader>

#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// The element behind \a element in document order, null at the end.
QDomElement nextInDocument(const QDomElement &element)
{
    QDomElement next = element.firstChildElement();
    for (QDomElement up = element; next.isNull() && !up.isNull(); up = up.parentNode().toElement())
        next = up.nextSiblingElement();
    return next;
}

/// Whether \a element stands in text that is kept with its markup.
bool isInText(const QDomElement &element)
{
    for (QDomElement up = element.parentNode().toElement(); !up.isNull(); up = up.parentNode().toElement()) {
        const QString name = up.tagName().toLower();
        if (name == "comment"_L1 || name == "cjoker"_L1)
            return true;
    }
    return false;
}

/// Notes on each element in a comment or cjoker that has several attributes in which order they stand in \a bytes.
void keepAttributeOrder(const QByteArray &bytes, QDomDocument &document)
{
    QXmlStreamReader reader(bytes);
    reader.setNamespaceProcessing(false);
    for (QDomElement element = document.documentElement(); !reader.atEnd() && !element.isNull();) {
        if (reader.readNext() != QXmlStreamReader::StartElement)
            continue;
        if (reader.attributes().size() > 1 && isInText(element)) {
            QStringList names;
            for (const QXmlStreamAttribute &attribute : reader.attributes())
                names += attribute.qualifiedName().toString();
            element.setAttribute(veldmap::kAttributeOrder.toString(), names.join(u' '));
        }
        element = nextInDocument(element);
    }
}

/// The document in a description file, plain or taken out of its container.
struct FileContent {
    XMDOpenError status = XMDOpenSuccess;
    QByteArray bytes;
    bool encrypted = false;
};

XMDOpenError failAt(const QString &path, const veldmap::TagDocument::Error &error, VMMessageCallback callback)
{
    veldmap::sendMessage(callback, veldmap::placedMessage(path, error.line, error.column, error.text));
    return XMDOpenInvalid;
}

FileContent readFile(const QString &path, const veldmap::Callbacks &callbacks, bool openFailureIsError)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        veldmap::sendMessage(openFailureIsError ? callbacks.error : callbacks.warning,
                             u"Unable to open file %1"_s.arg(path));
        return {XMDOpenUnreadable, {}};
    }
    veldmap::sendMessage(callbacks.log, u"Loading %1..."_s.arg(path));
    constexpr qint64 kLargestContainer = veldmap::limits::kDocumentBytes + veldmap::kContainerOverhead;
    FileContent content = {XMDOpenSuccess, veldmap::readAtMost(file, kLargestContainer), false};
    if (file.error() != QFile::NoError)
        return {failAt(path, {u"The file can't be read: %1"_s.arg(file.errorString())}, callbacks.error), {}, false};
    content.encrypted = veldmap::isContainer(content.bytes);
    if (content.encrypted && content.bytes.size() <= kLargestContainer) {
        veldmap::Deciphered deciphered = veldmap::deciphered(content.bytes);
        if (!deciphered.error.isEmpty())
            return {failAt(path, {deciphered.error}, callbacks.error), {}, true};
        content.bytes = std::move(deciphered.document);
    }
    if (content.bytes.size() > veldmap::limits::kDocumentBytes)
        content.status = failAt(path, {veldmap::tooLargeError()}, callbacks.error);
    return content;
}

} // namespace

namespace veldmap {

XMDOpenError loadTags(const QString &path, TagDocument &document, const Callbacks &callbacks, bool openFailureIsError)
{
    const FileContent content = readFile(path, callbacks, openFailureIsError);
    if (content.status != XMDOpenSuccess)
        return content.status;
    const TagDocument::Error error = document.read(content.bytes);
    return error.text.isEmpty() ? XMDOpenSuccess : failAt(path, error, callbacks.error);
}

} // namespace veldmap

XMDOpenError loadXMLDocument(const QString &path, QDomDocument &document, bool &encrypted, VMMessageCallback log,
                             VMMessageCallback error, VMMessageCallback warning, bool openFailureIsError)
{
    const veldmap::Callbacks callbacks = {log ? log : LoadUtilsDummySilentPrint,
                                          error ? error : LoadUtilsDummySilentPrint,
                                          warning ? warning : LoadUtilsDummySilentPrint};
    encrypted = false;
    const FileContent content = readFile(path, callbacks, openFailureIsError);
    if (content.status != XMDOpenSuccess)
        return content.status;
    // The loader's own reading keeps what goes beyond the limits away from the document, which it would choke.
    veldmap::TagDocument tags;
    if (const veldmap::TagDocument::Error refused = tags.read(content.bytes); !refused.text.isEmpty())
        return failAt(path, refused, error);
    QString message;
    int line = 0;
    int column = 0;
    if (!document.setContent(content.bytes, &message, &line, &column))
        return failAt(path, {message, line, column}, error);
    keepAttributeOrder(content.bytes, document);
    encrypted = content.encrypted;
    return XMDOpenSuccess;
}

void LoadUtilsDummySilentPrint(const char *) {}
