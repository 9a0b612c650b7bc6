#include "loading/document.h"

#include "findings/callback_sink.h"
#include "loading/description_files.h"
#include "xml/attribute_order.h"
#include "xml/rules.h"

#include <QDomDocument>
#include <QXmlStreamReader>

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

} // namespace

XMDOpenError loadXMLDocument(const QString &path, QDomDocument &document, bool &encrypted, VMMessageCallback log,
                             VMMessageCallback error, VMMessageCallback warning, bool openFailureIsError)
{
    // A caller's null callback counts as the one that does nothing, which is told all the same.
    veldmap::CallbackSink sink({log ? log : LoadUtilsDummySilentPrint, error ? error : LoadUtilsDummySilentPrint,
                                warning ? warning : LoadUtilsDummySilentPrint});
    const auto refuse = [&](const veldmap::TagDocument::Error &refused) {
        sink.take(
            veldmap::Finding(*refused.refusal.rule, {path, refused.line, refused.column}, refused.refusal.arguments));
        return XMDOpenInvalid;
    };
    encrypted = false;
    const veldmap::FileContent content = veldmap::readFileContent(path, sink, openFailureIsError);
    if (content.status != XMDOpenSuccess)
        return content.status;
    // The loader's own reading keeps what goes beyond the limits away from the document, which it would choke.
    veldmap::TagDocument tags;
    if (const veldmap::TagDocument::Error refused = tags.read(content.bytes))
        return refuse(refused);
    QString message;
    int line = 0;
    int column = 0;
    if (!document.setContent(content.bytes, &message, &line, &column))
        return refuse({{&veldmap::rules::notWellFormed, {message}}, line, column});
    keepAttributeOrder(content.bytes, document);
    encrypted = content.encrypted;
    return XMDOpenSuccess;
}

void LoadUtilsDummySilentPrint(const char *) {}
