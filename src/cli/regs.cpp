#include "access/field_values.h"
#include "cli/commands.h"
#include "cli/description.h"
#include "cli/elements.h"
#include "cli/program_rules.h"
#include "cli/session.h"
#include "cli/value_source.h"
#include "model/visit.h"
#include "text/lines.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

// A line for each register or integer:
//
//     $UART0.ctrl                             0x40000000 0x0000000B  enable=1, speed=5 (fast)
//                                             ^ 40       ^ 51        ^ 63

namespace veldmap::cli {

namespace {

constexpr int kAddressColumn = 40;
constexpr int kValueColumn = 51;
constexpr int kFieldsColumn = 63;

QJsonValue jsonOf(bool isKnown, quint32 value)
{
    return isKnown ? QJsonValue(static_cast<qint64>(value)) : QJsonValue();
}

/// Lists what an element holds that has a value.
struct RegisterList {
    QString text;
    QJsonArray objects;
    bool isJson = false;

    void operator()(const VMStruct &structure) { listMembers(structure.memberList); }
    void operator()(const VMArray &array) { listMembers(array.memberList); }
    void operator()(const VMXMLElement &) {}
    void operator()(const VMValuable &valuable)
    {
        if (isJson)
            appendObject(valuable);
        else
            appendRow(valuable);
    }

private:
    template <typename Members>
    void listMembers(const Members &members)
    {
        for (const auto &member : members)
            visit(std::as_const(*member), *this);
    }

    void appendRow(const VMValuable &valuable)
    {
        QStringList fields;
        for (const auto &field : valuable.bitFields)
            fields += field->getName() + u'=' + valueText(*field);
        const QString row =
            lineOf(valuable.getPath(), Column{kAddressColumn}, valuable.getAddressString(), Column{kValueColumn},
                   valueText(valuable), Column{kFieldsColumn}, fields.join(", "_L1));
        text += row.trimmed() + u'\n';
    }

    void appendObject(const VMValuable &valuable)
    {
        QJsonArray fields;
        for (const auto &field : valuable.bitFields) {
            const quint32 value = field->getValue();
            QJsonObject object{{u"name"_s, field->getName()}, {u"value"_s, jsonOf(canBeRead(*field), value)}};
            for (const VMBitFieldOption &option : field->options.optionList) {
                if (canBeRead(*field) && static_cast<quint32>(option.value) == value && !object.contains(u"option"_s))
                    object[u"option"_s] = option.name;
            }
            fields += object;
        }
        objects += QJsonObject{{u"path"_s, valuable.getPath()},
                               {u"address"_s, static_cast<qint64>(valuable.getBaseAddress())},
                               {u"access"_s, valuable.getProtectString()},
                               {u"value"_s, jsonOf(canBeRead(valuable), valuable.getValue())},
                               {u"fields"_s, fields}};
    }
};

} // namespace

ExitStatus regs(const Options &options, Session &session)
{
    if (!options.namesTarget()) {
        session.messages.tell(rules::kNoTargetGiven);
        return kWrongUsage;
    }
    ValueSource source;
    if (!loadDescriptions(options, session) || !source.open(options, session))
        return kFailed;
    RegisterList list;
    list.isJson = options.json;
    bool isComplete = true;
    for (const QString &word : options.words) {
        const QList<VMXMLElement *> elements = elementsOf(session, word);
        isComplete = isComplete && !elements.isEmpty();
        for (VMXMLElement *element : elements) {
            isComplete = source.read(*element, word, session) && isComplete;
            const VMXMLElement &holder = elementCast<VMBitField>(element) ? *element->parent : *element;
            visit(holder, list);
        }
    }
    const bool printed =
        printResult(options.json ? QJsonDocument(list.objects).toJson() : list.text.toUtf8(), session.messages);
    return printed && isComplete ? kDone : kFailed;
}

} // namespace veldmap::cli
