#include "export/tree_json.h"

#include "model/kinds.h"
#include "model/memory_map.h"
#include "model/visit.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

QJsonValue unsignedNumber(int number)
{
    return static_cast<qint64>(static_cast<quint32>(number));
}

QJsonValue unsignedNumber(quint32 number)
{
    return static_cast<qint64>(number);
}

QString displayWord(DisplayType display)
{
    return display == DISPLAY_HEX ? u"hex"_s : display == DISPLAY_BIN ? u"bin"_s : u"dec"_s;
}

/// The list of what \a convert makes of each item.
template <typename Items, typename Convert>
QJsonArray listOf(const Items &items, const Convert &convert)
{
    QJsonArray list;
    for (const auto &item : items)
        list.append(convert(item));
    return list;
}

QJsonObject optionJson(const VMBitFieldOption &option)
{
    return {{u"name"_s, option.name}, {u"value"_s, option.value}, {u"comment"_s, option.comment}};
}

QJsonObject groupJson(const VMBitGroup &group)
{
    return {{u"name"_s, group.name},
            {u"fields"_s, listOf(group, [](const VMBitField *field) { return field->getName(); })}};
}

QJsonObject plainFieldJson(const VMBitField &field)
{
    return {
        {u"name"_s, field.getName()},
        {u"up"_s, field.upPos},
        {u"down"_s, field.downPos},
        {u"upExpression"_s, field.upPosExpression},
        {u"downExpression"_s, field.downPosExpression},
        {u"physicalUp"_s, field.physicalUpPos},
        {u"physicalDown"_s, field.physicalDownPos},
        {u"physicalUpExpression"_s, field.physicalUpPosExpression},
        {u"physicalDownExpression"_s, field.physicalDownPosExpression},
        {u"access"_s, field.getAccessString()},
        {u"reset"_s, field.hasReset ? unsignedNumber(field.resetValue) : QJsonValue()},
        {u"display"_s, displayWord(field.displayType)},
        {u"comment"_s, field.getComment()},
        {u"options"_s, listOf(field.options.optionList, optionJson)},
        {u"hasDefault"_s, field.options.hasDefault},
        {u"hasMask"_s, field.options.hasMask},
        {u"hasShift"_s, field.options.hasShift},
    };
}

/// Writes JSON piece by piece: a tree of a million elements as QJsonValues would take gigabytes.
class JsonWriter {
public:
    /// Opens an object with the members of \a members; close() ends it.
    void open(const QJsonObject &members)
    {
        m_text += QJsonDocument(members).toJson(QJsonDocument::Compact).chopped(1);
        m_isFirst = members.isEmpty();
    }
    void close()
    {
        m_text += '}';
        m_isFirst = false;
    }
    /// Begins one more member of the open object; its value follows.
    void key(const char *name)
    {
        m_text += m_isFirst ? "\"" : ",\"";
        m_text += name;
        m_text += "\":";
        m_isFirst = false;
    }
    void null() { m_text += "null"; }
    /// A member that is the list of what \a write writes for each of \a items.
    template <typename Items, typename Write>
    void list(const char *name, const Items &items, const Write &write)
    {
        key(name);
        char separator = '[';
        for (const auto &item : items) {
            m_text += separator;
            write(item);
            separator = ',';
        }
        m_text += separator == '[' ? "[]" : "]";
        m_isFirst = false;
    }

    QByteArray takeText() { return std::move(m_text); }

private:
    QByteArray m_text;
    bool m_isFirst = true;
};

/// Adds what elements of one kind have beside the others, but for the elements inside.
struct KindDetails {
    QJsonObject &object;

    void operator()(const VMValuable &valuable) const
    {
        object[u"access"_s] = valuable.getProtectString();
        object[u"display"_s] = displayWord(valuable.displayType);
        object[u"enumTemplate"_s] = valuable.enumTemplate;
        object[u"low"_s] = valuable.lowName;
        object[u"high"_s] = valuable.highName;
        object[u"physicalName"_s] = valuable.physicalName;
        object[u"bitFields"_s] = listOf(valuable.bitFields, [](const auto &field) { return plainFieldJson(*field); });
        object[u"bitGroups"_s] = listOf(valuable.bitGroups, [](const auto &group) { return groupJson(*group); });
    }
    void operator()(const VMPointer &pointer) const
    {
        (*this)(static_cast<const VMValuable &>(pointer));
        object[u"pointedType"_s] = pointer.pointedType;
    }
    void operator()(const VMStruct &structure) const { object[u"isTypedef"_s] = structure.isTypedef != 0; }
    void operator()(const VMArray &array) const
    {
        object[u"count"_s] = array.declaredCount;
        object[u"countExpression"_s] = array.countExpression;
    }
    void operator()(const VMHole &hole) const { object[u"bits"_s] = hole.holeBits; }
    void operator()(const VMXMLElement &) const {}
};

QJsonObject plainElementJson(const VMXMLElement &element)
{
    QJsonObject object = {
        {u"kind"_s, kindOf(element)},
        {u"name"_s, element.getName()},
        {u"path"_s, element.getPath()},
        {u"type"_s, element.getTypeString()},
        {u"typedefName"_s, element.typedefName},
        {u"declaredType"_s, element.declaredType},
        {u"category"_s, element.category},
        {u"comment"_s, element.getComment()},
        {u"keywords"_s, QJsonArray::fromStringList(element.cKeywords)},
        {u"address"_s, unsignedNumber(element.getBaseAddress())},
        {u"offset"_s, unsignedNumber(element.offset)},
        {u"size"_s, unsignedNumber(element.sizeOf())},
        {u"align"_s, unsignedNumber(element.getAlignConstraint())},
    };
    visit(element, KindDetails{object});
    return object;
}

void writeElement(const VMXMLElement &element, JsonWriter &json)
{
    json.open(plainElementJson(element));
    const auto writeMember = [&](const auto &member) { writeElement(*member, json); };
    visit(element, Overloads{
                       [&](const VMStruct &structure) { json.list("members", structure.memberList, writeMember); },
                       [&](const VMArray &array) {
                           json.key("prototype");
                           writeElement(*array.prototype, json);
                           json.list("members", array.memberList, writeMember);
                       },
                       [](const VMXMLElement &) {},
                   });
    json.close();
}

QJsonObject variableJson(const VMIntVar &variable)
{
    QJsonObject object = {
        {u"name"_s, variable.name},
        {u"expression"_s, variable.leftExpression},
        {u"value"_s, variable.leftValue},
        {u"comment"_s, variable.comment},
        {u"enum"_s, variable.ownerEnum ? QJsonValue(variable.ownerEnum->name) : QJsonValue()},
    };
    if (variable.isRange) {
        object[u"right"_s] = variable.rightExpression;
        object[u"rightValue"_s] = unsignedNumber(variable.rightValue);
        object[u"direction"_s] = variable.dir == VMIntVar::up ? u"up"_s : u"down"_s;
    }
    return object;
}

QJsonObject enumEntryJson(const VMIntVar &entry)
{
    return {{u"name"_s, entry.name},
            {u"expression"_s, entry.leftExpression},
            {u"value"_s, entry.leftValue},
            {u"comment"_s, entry.comment}};
}

QJsonObject enumJson(const VMEnum &enumeration)
{
    return {{u"name"_s, enumeration.name},
            {u"comment"_s, enumeration.comment},
            {u"entries"_s, listOf(enumeration, enumEntryJson)}};
}

void writeArchive(const VMXMLArchive &archive, JsonWriter &json)
{
    json.open({
        {u"file"_s, archive.relativeFileName},
        {u"comment"_s, archive.archiveComment},
        {u"cjoker"_s, archive.cJoker},
        {u"generateAsm"_s, archive.generateAsm},
        {u"vhdlPackage"_s, archive.vhdlPackage},
        {u"includes"_s,
         listOf(archive.includedArchives, [](const VMXMLArchive *included) { return included->relativeFileName; })},
        {u"variables"_s, listOf(*archive.variables, variableJson)},
        {u"enums"_s, listOf(archive.variables->enums, [](const auto &e) { return enumJson(*e); })},
    });
    json.list("templates", archive.templates, [&](const auto &element) { writeElement(*element, json); });
    json.close();
}

void writeRoot(const VMRootArchive *root, JsonWriter &json)
{
    if (!root) {
        json.null();
        return;
    }
    json.open({{u"name"_s, root->getName()}});
    json.list("archives", root->xmlArchives, [&](const VMXMLArchive *archive) { writeArchive(*archive, json); });
    json.list("instances", root->instances, [&](const auto &instance) { writeElement(*instance, json); });
    json.close();
}

} // namespace

QJsonObject elementJson(const VMXMLElement &element)
{
    return visit(element, Overloads{
                              [](const VMBitField &field) {
                                  QJsonObject object = plainFieldJson(field);
                                  object[u"path"_s] = field.getPath();
                                  object[u"address"_s] = unsignedNumber(field.getBaseAddress());
                                  return object;
                              },
                              [](const VMArray &array) {
                                  QJsonObject object = plainElementJson(array);
                                  object[u"prototype"_s] = elementJson(*array.prototype);
                                  return object;
                              },
                              [](const VMXMLElement &plain) { return plainElementJson(plain); },
                          });
}

QByteArray treeJson(const VMMemoryMap &map)
{
    JsonWriter json;
    json.open({{u"globals"_s, listOf(*map.globalVariables, variableJson)}});
    json.key("chip");
    writeRoot(map.chipRootArchive, json);
    json.key("soft");
    writeRoot(map.softRootArchive, json);
    json.close();
    return json.takeText();
}

QString kindOf(const VMXMLElement &element)
{
    return kindWordOf(element.getType());
}

} // namespace veldmap
