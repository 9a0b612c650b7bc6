#include "access/field_values.h"
#include "access/path_hint.h"
#include "access/search.h"
#include "cli/commands.h"
#include "cli/description.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "export/tree_json.h"
#include "export/tree_text.h"
#include "model/valuable.h"
#include "target/image.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

/// The values of elements, which have been read from an image.
struct ValueNotes final : ElementNotes {
    QString ofElement(const VMXMLElement &element) const override
    {
        const auto *valuable = elementCast<VMValuable>(&element);
        return valuable ? "= "_L1 + valueText(*valuable) : QString();
    }
    QString ofField(const VMBitField &field) const override { return "= "_L1 + valueText(field); }
};

QJsonValue valueJson(const VMXMLElement &element)
{
    const auto *valuable = elementCast<VMValuable>(&element);
    if (valuable && canBeRead(*valuable))
        return static_cast<qint64>(valuable->getValue());
    const auto *field = elementCast<VMBitField>(&element);
    if (field && canBeRead(*field))
        return static_cast<qint64>(field->getValue());
    return {};
}

QString textOf(const VMXMLElement &element, const QString &path, const Options &options)
{
    const ValueNotes values;
    const OptionNotes names;
    const ElementNotes &notes = options.image.has_value() ? static_cast<const ElementNotes &>(values) : names;
    QString text;
    if (const auto *field = elementCast<VMBitField>(&element))
        appendFieldAlone(text, *field, notes);
    else
        appendElement(text, element, element.getPath().isEmpty() ? path : element.getPath(), 0,
                      options.recursive ? kAllLevels : 1, notes);
    return text;
}

/// What \a word names: one element by its path, or all that lie at an address. An error is told when there is none.
QList<VMXMLElement *> elementsOf(Session &session, const QString &word)
{
    if (const std::optional<quint32> address = addressOf(word)) {
        const QList<VMXMLElement *> elements = elementsAt(session.map, *address);
        if (elements.isEmpty())
            session.messages.tell(rules::kNothingAt, {word});
        return elements;
    }
    VMXMLElement *element = findElement(session.map, word, session.messages);
    return element ? QList{element} : QList<VMXMLElement *>();
}

} // namespace

ExitStatus show(const Options &options, Session &session)
{
    if (!loadDescriptions(options, session))
        return kFailed;
    std::optional<TargetImage> image;
    if (options.image && !(image = TargetImage::open(options.image->file, options.image->address, session.messages)))
        return kFailed;
    QString text;
    QJsonArray objects;
    bool isComplete = true;
    for (const QString &word : options.words) {
        const QList<VMXMLElement *> elements = elementsOf(session, word);
        if (elements.isEmpty()) {
            isComplete = false;
            objects.append(QJsonObject{{u"path"_s, word}, {u"error"_s, u"no such element"_s}});
        }
        for (VMXMLElement *element : elements) {
            if (image)
                image->readAll(*element);
            if (!options.json) {
                text += textOf(*element, word, options);
                continue;
            }
            QJsonObject object = elementJson(*element);
            if (image)
                object[u"value"_s] = valueJson(*element);
            objects.append(object);
        }
    }
    const bool printed = printResult(options.json ? QJsonDocument(objects).toJson() : text.toUtf8(), session.messages);
    return printed && isComplete ? kDone : kFailed;
}

} // namespace veldmap::cli
