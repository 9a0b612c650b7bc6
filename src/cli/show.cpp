#include "access/field_values.h"
#include "cli/commands.h"
#include "cli/description.h"
#include "cli/elements.h"
#include "cli/result.h"
#include "cli/session.h"
#include "cli/value_source.h"
#include "export/tree_json.h"
#include "export/tree_text.h"
#include "model/valuable.h"

#include <QJsonObject>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

/// The values of elements, which have been read.
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
    const ElementNotes &notes = options.namesTarget() ? static_cast<const ElementNotes &>(values) : names;
    QString text;
    if (const auto *field = elementCast<VMBitField>(&element))
        appendFieldAlone(text, *field, notes);
    else
        appendElement(text, element, element.getPath().isEmpty() ? path : element.getPath(), 0,
                      options.recursive ? kAllLevels : 1, notes);
    return text;
}

} // namespace

ExitStatus show(const Options &options, Session &session)
{
    ValueSource source;
    if (!loadDescriptions(options, session) || !source.open(options, session))
        return kFailed;
    Result result(options.output.mostBytes, session.messages);
    ResultList list(result);
    bool isComplete = true;
    for (const QString &word : options.words) {
        const QList<VMXMLElement *> elements = elementsOf(session, word);
        if (elements.isEmpty()) {
            isComplete = false;
            if (options.json)
                list.append({{u"path"_s, word}, {u"error"_s, u"no such element"_s}});
        }
        for (VMXMLElement *element : elements) {
            isComplete = source.read(*element, word, session) && isComplete;
            if (!options.json) {
                result.print(textOf(*element, word, options));
                continue;
            }
            QJsonObject object = elementJson(*element);
            if (source.isGiven())
                object[u"value"_s] = valueJson(*element);
            list.append(object);
        }
    }
    if (options.json)
        list.finish();
    return result.finish() && isComplete ? kDone : kFailed;
}

} // namespace veldmap::cli
