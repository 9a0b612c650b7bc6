#include "export/tree_json.h"

#include "findings/limits.h"
#include "model/kinds.h"
#include "model/memory_map.h"
#include "model/visit.h"
#include "text/text_sink.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Writes JSON in UTF-8, as QJsonDocument writes it compactly. What is written of a tree of a million elements would
/// take gigabytes as QJsonValues, and hundreds of megabytes as a text.
class JsonWriter {
public:
    /// Gives \a sink what is written, in pieces.
    explicit JsonWriter(TextSink &sink) : m_sink(sink) {}

    void open() { begin('{'); }
    void close() { end('}'); }

    // Members of the open object. Those that belong together stand in the order of their names.

    void member(QLatin1StringView name, const QString &text)
    {
        key(name);
        put(text);
    }
    void member(QLatin1StringView name, QLatin1StringView word)
    {
        key(name);
        m_text.append('"').append(word.data(), word.size()).append('"');
    }
    void member(QLatin1StringView name, bool isTrue)
    {
        key(name);
        m_text += isTrue ? "true" : "false";
    }
    void member(QLatin1StringView name, int number)
    {
        key(name);
        m_text += QByteArray::number(number);
    }
    void member(QLatin1StringView name, quint32 number)
    {
        key(name);
        m_text += QByteArray::number(number);
    }
    void member(QLatin1StringView name, const char *) = delete; // it would be true
    void null(QLatin1StringView name)
    {
        key(name);
        m_text += "null";
    }
    /// An object of what \a write writes of \a item.
    template <typename Item, typename Write>
    void object(QLatin1StringView name, const Item &item, const Write &write)
    {
        key(name);
        write(item);
    }
    /// The list of what \a write writes of each of \a items, unless nobody wants more of it.
    template <typename Items, typename Write>
    void list(QLatin1StringView name, const Items &items, const Write &write)
    {
        key(name);
        begin('[');
        for (const auto &item : items) {
            if (m_isEnded)
                break;
            separate();
            write(item);
            m_isFirst = false;
        }
        end(']');
    }
    void put(const QString &text);
    /// Gives the sink what it does not have yet; whether it has taken all.
    bool giveRest()
    {
        give();
        return !m_isEnded;
    }

private:
    void begin(char bracket)
    {
        m_text += bracket;
        m_isFirst = true;
    }
    void end(char bracket)
    {
        m_text += bracket;
        m_isFirst = false;
        if (m_text.size() >= limits::kPieceOfText)
            give();
    }
    void separate()
    {
        if (!m_isFirst)
            m_text += ',';
    }
    void key(QLatin1StringView name)
    {
        separate();
        m_text.append('"').append(name.data(), name.size()).append("\":");
        m_isFirst = false;
    }
    void putEscaped(char16_t unit);
    void give()
    {
        m_isEnded = m_isEnded || !m_sink.take(m_text);
        m_text.truncate(0);
    }

    TextSink &m_sink;
    QByteArray m_text;
    bool m_isFirst = true;
    bool m_isEnded = false;
};

void JsonWriter::put(const QString &text)
{
    m_text += '"';
    const auto isPlain = [](QChar c) { return c >= u' ' && c < u'\x7F' && c != u'"' && c != u'\\'; };
    for (qsizetype at = 0; at < text.size();) {
        const auto begin = text.begin() + at;
        const qsizetype plain = std::find_if_not(begin, text.end(), isPlain) - begin;
        m_text += QStringView(text).sliced(at, plain).toLatin1();
        at += plain;
        if (at == text.size())
            break;
        const bool isPair = text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
        if (isPair || (text[at] >= u'\x7F' && !text[at].isSurrogate()))
            m_text += QStringView(text).sliced(at, isPair ? 2 : 1).toUtf8();
        else
            putEscaped(text[at].unicode());
        at += isPair ? 2 : 1;
    }
    m_text += '"';
}

void JsonWriter::putEscaped(char16_t unit)
{
    constexpr QByteArrayView kUnits = "\"\\\b\f\n\r\t";
    constexpr QByteArrayView kLetters = "\"\\bfnrt";
    const qsizetype at = unit < 0x80 ? kUnits.indexOf(static_cast<char>(unit)) : -1;
    if (at >= 0)
        m_text.append('\\').append(kLetters[at]);
    else
        m_text.append("\\u").append(QByteArray::number(unit, 16).rightJustified(4, '0'));
}

quint32 unsignedNumber(int number)
{
    return static_cast<quint32>(number);
}

QLatin1StringView displayWord(DisplayType display)
{
    return display == DISPLAY_HEX ? "hex"_L1 : display == DISPLAY_BIN ? "bin"_L1 : "dec"_L1;
}

/// Whether all that an element consists of is written, or only what it is itself.
enum class Depth { Whole, Alone };

void writeField(const VMBitField &field, JsonWriter &json, Depth depth = Depth::Whole)
{
    json.open();
    json.member("access"_L1, field.getAccessString());
    if (depth == Depth::Alone)
        json.member("address"_L1, field.getBaseAddress());
    json.member("comment"_L1, field.getComment());
    json.member("display"_L1, displayWord(field.displayType));
    json.member("down"_L1, field.downPos);
    json.member("downExpression"_L1, field.downPosExpression);
    json.member("hasDefault"_L1, field.options.hasDefault);
    json.member("hasMask"_L1, field.options.hasMask);
    json.member("hasShift"_L1, field.options.hasShift);
    json.member("name"_L1, field.getName());
    json.list("options"_L1, field.options.optionList, [&json](const VMBitFieldOption &option) {
        json.open();
        json.member("comment"_L1, option.comment);
        json.member("name"_L1, option.name);
        json.member("value"_L1, option.value);
        json.close();
    });
    if (depth == Depth::Alone)
        json.member("path"_L1, field.getPath());
    json.member("physicalDown"_L1, field.physicalDownPos);
    json.member("physicalDownExpression"_L1, field.physicalDownPosExpression);
    json.member("physicalUp"_L1, field.physicalUpPos);
    json.member("physicalUpExpression"_L1, field.physicalUpPosExpression);
    if (field.hasReset)
        json.member("reset"_L1, field.resetValue);
    else
        json.null("reset"_L1);
    json.member("up"_L1, field.upPos);
    json.member("upExpression"_L1, field.upPosExpression);
    json.close();
}

void writeGroup(const VMBitGroup &group, JsonWriter &json)
{
    json.open();
    json.list("fields"_L1, group, [&json](const VMBitField *field) { json.put(field->getName()); });
    json.member("name"_L1, group.name);
    json.close();
}

/// The members of the object for \a element, but for those that are elements themselves.
void writeFacts(const VMXMLElement &element, JsonWriter &json)
{
    const auto *valuable = elementCast<VMValuable>(&element);
    const auto *array = elementCast<VMArray>(&element);
    if (valuable)
        json.member("access"_L1, valuable->getProtectString());
    json.member("address"_L1, element.getBaseAddress());
    json.member("align"_L1, unsignedNumber(element.getAlignConstraint()));
    if (valuable) {
        json.list("bitFields"_L1, valuable->bitFields, [&json](const auto &field) { writeField(*field, json); });
        json.list("bitGroups"_L1, valuable->bitGroups, [&json](const auto &group) { writeGroup(*group, json); });
    }
    if (const auto *hole = elementCast<VMHole>(&element))
        json.member("bits"_L1, hole->holeBits);
    json.member("category"_L1, element.category);
    json.member("comment"_L1, element.getComment());
    if (array) {
        json.member("count"_L1, array->declaredCount);
        json.member("countExpression"_L1, array->countExpression);
    }
    json.member("declaredType"_L1, element.declaredType);
    if (valuable) {
        json.member("display"_L1, displayWord(valuable->displayType));
        json.member("enumTemplate"_L1, valuable->enumTemplate);
        json.member("high"_L1, valuable->highName);
    }
    if (const auto *structure = elementCast<VMStruct>(&element))
        json.member("isTypedef"_L1, structure->isTypedef != 0);
    json.list("keywords"_L1, element.cKeywords, [&json](const QString &keyword) { json.put(keyword); });
    json.member("kind"_L1, kindOf(element));
    if (valuable)
        json.member("low"_L1, valuable->lowName);
    json.member("name"_L1, element.getName());
    json.member("offset"_L1, unsignedNumber(element.offset));
    json.member("path"_L1, element.getPath());
    if (valuable)
        json.member("physicalName"_L1, valuable->physicalName);
    if (const auto *pointer = elementCast<VMPointer>(&element))
        json.member("pointedType"_L1, pointer->pointedType);
    json.member("size"_L1, unsignedNumber(element.sizeOf()));
    json.member("type"_L1, element.getTypeString());
    json.member("typedefName"_L1, element.typedefName);
}

void writeElement(const VMXMLElement &element, JsonWriter &json, Depth depth = Depth::Whole)
{
    if (const auto *field = elementCast<VMBitField>(&element)) {
        writeField(*field, json, depth);
        return;
    }
    const auto writeMembers = [&](const auto &members) {
        if (depth == Depth::Whole)
            json.list("members"_L1, members, [&json](const auto &member) { writeElement(*member, json); });
    };
    json.open();
    writeFacts(element, json);
    visit(element, Overloads{
                       [&](const VMStruct &structure) { writeMembers(structure.memberList); },
                       [&](const VMArray &array) {
                           json.object("prototype"_L1, *array.prototype,
                                       [&](const VMXMLElement &prototype) { writeElement(prototype, json, depth); });
                           writeMembers(array.memberList);
                       },
                       [](const VMXMLElement &) {},
                   });
    json.close();
}

void writeVariable(const VMIntVar &variable, JsonWriter &json)
{
    json.open();
    json.member("comment"_L1, variable.comment);
    if (variable.isRange)
        json.member("direction"_L1, variable.dir == VMIntVar::up ? "up"_L1 : "down"_L1);
    if (variable.ownerEnum)
        json.member("enum"_L1, variable.ownerEnum->name);
    else
        json.null("enum"_L1);
    json.member("expression"_L1, variable.leftExpression);
    json.member("name"_L1, variable.name);
    if (variable.isRange) {
        json.member("right"_L1, variable.rightExpression);
        json.member("rightValue"_L1, unsignedNumber(variable.rightValue));
    }
    json.member("value"_L1, variable.leftValue);
    json.close();
}

void writeEnum(const VMEnum &enumeration, JsonWriter &json)
{
    json.open();
    json.member("comment"_L1, enumeration.comment);
    json.list("entries"_L1, enumeration, [&json](const VMIntVar &entry) {
        json.open();
        json.member("comment"_L1, entry.comment);
        json.member("expression"_L1, entry.leftExpression);
        json.member("name"_L1, entry.name);
        json.member("value"_L1, entry.leftValue);
        json.close();
    });
    json.member("name"_L1, enumeration.name);
    json.close();
}

void writeArchive(const VMXMLArchive &archive, JsonWriter &json)
{
    const auto variable = [&json](const VMIntVar &each) { writeVariable(each, json); };
    json.open();
    json.member("cjoker"_L1, archive.cJoker);
    json.member("comment"_L1, archive.archiveComment);
    json.list("enums"_L1, archive.variables->enums, [&json](const auto &each) { writeEnum(*each, json); });
    json.member("file"_L1, archive.relativeFileName);
    json.member("generateAsm"_L1, archive.generateAsm);
    json.list("includes"_L1, archive.includedArchives,
              [&json](const VMXMLArchive *included) { json.put(included->relativeFileName); });
    json.list("variables"_L1, *archive.variables, variable);
    json.member("vhdlPackage"_L1, archive.vhdlPackage);
    json.list("templates"_L1, archive.templates, [&json](const auto &element) { writeElement(*element, json); });
    json.close();
}

void writeRoot(QLatin1StringView name, const VMRootArchive *root, JsonWriter &json)
{
    if (!root) {
        json.null(name);
        return;
    }
    json.object(name, *root, [&json](const VMRootArchive &it) {
        json.open();
        json.member("name"_L1, it.getName());
        json.list("archives"_L1, it.xmlArchives,
                  [&json](const VMXMLArchive *archive) { writeArchive(*archive, json); });
        json.list("instances"_L1, it.instances, [&json](const auto &instance) { writeElement(*instance, json); });
        json.close();
    });
}

/// Keeps what it takes.
class TextKeeper final : public TextSink {
public:
    bool take(QByteArrayView piece) override
    {
        text.append(piece);
        return true;
    }

    QByteArray text;
};

} // namespace

QJsonObject elementJson(const VMXMLElement &element)
{
    TextKeeper kept;
    JsonWriter json(kept);
    writeElement(element, json, Depth::Alone);
    json.giveRest();
    return QJsonDocument::fromJson(kept.text).object();
}

bool writeTreeJson(const VMMemoryMap &map, TextSink &sink)
{
    JsonWriter json(sink);
    json.open();
    json.list("globals"_L1, *map.globalVariables, [&json](const VMIntVar &each) { writeVariable(each, json); });
    writeRoot("chip"_L1, map.chipRootArchive, json);
    writeRoot("soft"_L1, map.softRootArchive, json);
    json.close();
    return json.giveRest();
}

QByteArray treeJson(const VMMemoryMap &map)
{
    TextKeeper kept;
    writeTreeJson(map, kept);
    return kept.text;
}

QString kindOf(const VMXMLElement &element)
{
    return kindWordOf(element.getType());
}

} // namespace veldmap
