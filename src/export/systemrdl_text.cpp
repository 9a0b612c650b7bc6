#include "export/systemrdl_text.h"

#include "export/comment_text.h"
#include "export/export_rules.h"
#include "export/exported_roots.h"
#include "export/nested_export.h"
#include "model/archive.h"
#include "model/root_archive.h"
#include "text/lines.h"

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

// The address map of a type, and the whole that places its instances:
//
//     addrmap uart {
//         desc = "Serial port";
//         reg {
//             desc = "Control";
//             regwidth = 32;
//             field {
//                 sw = rw;
//                 reset = 3'h2;
//                 enum speed_e { slow = 3'h0; fast = 3'h5; };
//                 encode = speed_e;
//             } speed[3:1];
//         } ctrl @0x0;
//     };
//
//     addrmap soc {
//         uart UART0 @0x40034000;
//     };

namespace veldmap {

namespace {

constexpr QLatin1StringView kFormat = "SystemRDL"_L1;
constexpr QLatin1StringView kWholeField = "value"_L1;

/// The words that are no names unless a backslash stands in front of them, in order.
constexpr QLatin1StringView kKeywords[] = {
    "abstract"_L1,
    "accesstype"_L1,
    "addressingtype"_L1,
    "addrmap"_L1,
    "alias"_L1,
    "all"_L1,
    "alternate"_L1,
    "bit"_L1,
    "boolean"_L1,
    "bothedge"_L1,
    "byte"_L1,
    "compact"_L1,
    "component"_L1,
    "componentwidth"_L1,
    "constraint"_L1,
    "default"_L1,
    "encode"_L1,
    "enum"_L1,
    "external"_L1,
    "false"_L1,
    "field"_L1,
    "fullalign"_L1,
    "hw"_L1,
    "inside"_L1,
    "int"_L1,
    "internal"_L1,
    "level"_L1,
    "longint"_L1,
    "mem"_L1,
    "na"_L1,
    "negedge"_L1,
    "nonsticky"_L1,
    "number"_L1,
    "onreadtype"_L1,
    "onwritetype"_L1,
    "posedge"_L1,
    "precedencetype"_L1,
    "property"_L1,
    "r"_L1,
    "rclr"_L1,
    "real"_L1,
    "ref"_L1,
    "reg"_L1,
    "regalign"_L1,
    "regfile"_L1,
    "rset"_L1,
    "ruser"_L1,
    "rw"_L1,
    "rw1"_L1,
    "shortint"_L1,
    "shortreal"_L1,
    "signal"_L1,
    "signed"_L1,
    "string"_L1,
    "struct"_L1,
    "sw"_L1,
    "this"_L1,
    "true"_L1,
    "type"_L1,
    "unsigned"_L1,
    "w"_L1,
    "w1"_L1,
    "wclr"_L1,
    "with"_L1,
    "within"_L1,
    "woclr"_L1,
    "woset"_L1,
    "wot"_L1,
    "wr"_L1,
    "wset"_L1,
    "wuser"_L1,
    "wzc"_L1,
    "wzs"_L1,
    "wzt"_L1,
};

QString escaped(const QString &name)
{
    return std::binary_search(std::begin(kKeywords), std::end(kKeywords), name) ? u'\\' + name : name;
}

/// \a text as a string. Only a quote has an escape, so a backslash must not stand in front of one.
QString quoted(const QString &text)
{
    QString string = u"\""_s;
    for (const QChar c : text) {
        if (c == u'"')
            string += string.endsWith(u'\\') ? u" \\"_s : u"\\"_s;
        string += c;
    }
    return string + (string.endsWith(u'\\') ? u" \""_s : u"\""_s);
}

QString hex(quint32 number)
{
    return "0x"_L1 + hexDigits(number);
}

QString sized(int width, quint32 number)
{
    return QString::number(width) + "'h"_L1 + hexDigits(number);
}

QLatin1StringView softwareWord(const MapAccess &access)
{
    if (access.isReadable)
        return access.isWritable() ? "rw"_L1 : "r"_L1;
    return "w"_L1;
}

class SystemRdlExport final : public NestedExport {
public:
    SystemRdlExport(const VMMemoryMap &map, ExportFindings &findings)
        : NestedExport(kFormat, findings), m_map(map), m_types(newScope()), m_instanceNames(newScope())
    {
    }

    QByteArray text();

    bool beginBlock(const MapPlace &block) override;
    void endBlock(const MapPlace &block) override;
    void takeMemory(const MapPlace &place) override;

protected:
    void openGroup(const MapPlace &group, const QString &name) override;
    void closeGroup() override;
    void writeRegister(const MapPlace &place, const QString &name, const VMValuable &valuable, const MapAccess &access,
                       const std::vector<MapField> &fields) override;

private:
    void line(const QString &text);
    void open(const QString &text);
    void writeComment(const QString &comment);
    void place(const MapPlace &place, const QString &name);
    void writeField(const MapField &field, NameScope &names);
    void writeOptions(const MapField &field);

    const VMMemoryMap &m_map;
    NameScope m_types;
    NameScope m_instanceNames;
    EnumsOfFields m_enums;
    QByteArray m_text;
    int m_level = 0;
    QHash<TypeKey, QString> m_knownTypes; // the address map of each; empty for one that would hold nothing
    QStringList m_instances;              // the lines that place them
    QString m_typeName;                   // of the block at hand
    qsizetype m_begin = 0;                // of its address map in the text
    bool m_isEmpty = true;                // so far
    std::vector<QString> m_ends;          // of the groups that are open
};

QByteArray SystemRdlExport::text()
{
    const BlockRules rules = {.sameAddresses = u"it is left out"_s};
    const ExportedRoots roots(m_map, kFormat, rules, findings());
    for (const VMRootArchive *root : roots.roots()) {
        learn(*root);
        m_enums.take(*root);
    }
    for (const VMXMLElement *block : roots.blocks()) {
        if (!roots.blockUnder(*block))
            walkBlock(*block, MapArrays::AsOne, *this, findings());
    }
    if (m_instances.isEmpty())
        return m_text;
    const QString name = roots.name(); // which a module of the file may have too
    const QString top = m_types.take(m_types.contains(name) ? name + "_map"_L1 : name, {});
    open("addrmap "_L1 + escaped(top) + " {"_L1);
    writeComment(roots.description());
    for (const QString &instance : std::as_const(m_instances))
        line(instance);
    --m_level;
    line(u"};"_s);
    return m_text;
}

void SystemRdlExport::line(const QString &text)
{
    m_text.append(4 * m_level, ' ');
    m_text += text.toUtf8();
    m_text += '\n';
}

void SystemRdlExport::open(const QString &text)
{
    line(text);
    ++m_level;
}

void SystemRdlExport::writeComment(const QString &comment)
{
    if (!comment.isEmpty())
        line("desc = "_L1 + quoted(comment) + u';');
}

/// Ends what is open with the name and the address of \a place.
void SystemRdlExport::place(const MapPlace &place, const QString &name)
{
    --m_level;
    const QString end = "} "_L1 + escaped(name);
    const QString at = " @"_L1 + hex(place.offset);
    line(place.count ? end + u'[' + QString::number(*place.count) + u']' + at + " += "_L1 + hex(place.size) + u';'
                     : end + at + u';');
    m_isEmpty = false;
}

bool SystemRdlExport::beginBlock(const MapPlace &block)
{
    beginScope();
    m_isEmpty = true;
    m_begin = m_text.size();
    const std::optional<TypeKey> type = typeOf(block.element);
    if (type && m_knownTypes.contains(*type)) {
        m_typeName = m_knownTypes.value(*type);
        m_isEmpty = m_typeName.isEmpty();
        return false;
    }
    m_typeName = m_types.take(type ? type->second : block.name + "_map"_L1, block.element.source);
    open("addrmap "_L1 + escaped(m_typeName) + " {"_L1);
    writeComment(plainCommentText(block.element.getComment()));
    return true;
}

void SystemRdlExport::endBlock(const MapPlace &block)
{
    endScope();
    const std::optional<TypeKey> type = typeOf(block.element);
    if (m_level > 0) { // the address map was begun here
        m_level = 0;
        line(u"};\n"_s);
        if (m_isEmpty)
            m_text.truncate(m_begin);
        if (type)
            m_knownTypes.insert(*type, m_isEmpty ? QString() : m_typeName);
    }
    if (m_isEmpty) {
        tell(rules::exportEmptyGroup, block.declared.source, {block.name, kFormat});
    } else if (block.element.isInstance()) { // a module by itself is the whole map
        const QString name = m_instanceNames.take(block.name, block.declared.source);
        m_instances += escaped(m_typeName) + u' ' + escaped(name) + " @"_L1 + hex(block.address) + u';';
    }
}

void SystemRdlExport::takeMemory(const MapPlace &place)
{
    if (isInGroup() || place.size == 0) {
        tell(rules::exportMemoryInside, place.declared.source, {place.name, kFormat});
        return;
    }
    const QString count = place.count ? u'[' + QString::number(*place.count) + u']' : QString();
    const QString step = place.count ? " += "_L1 + hex(place.size) : QString();
    line("external mem { mementries = "_L1 + hex(place.size) + "; memwidth = 8; } "_L1 + escaped(nameOf(place)) +
         count + " @"_L1 + hex(place.offset) + step + u';');
    m_isEmpty = false;
}

void SystemRdlExport::openGroup(const MapPlace &group, const QString &name)
{
    open(u"regfile {"_s);
    writeComment(plainCommentText(commentOf(group)));
    const QString count =
        group.count ? u'[' + QString::number(*group.count) + "] @"_L1 + hex(group.offset) + " += "_L1 + hex(group.size)
                    : " @"_L1 + hex(group.offset);
    m_ends.push_back("} "_L1 + escaped(name) + count + u';');
}

void SystemRdlExport::closeGroup()
{
    --m_level;
    line(m_ends.back());
    m_ends.pop_back();
}

void SystemRdlExport::writeRegister(const MapPlace &place, const QString &name, const VMValuable &valuable,
                                    const MapAccess &access, const std::vector<MapField> &fields)
{
    open(u"reg {"_s);
    writeComment(plainCommentText(commentOf(place)));
    line("regwidth = "_L1 + QString::number(bitsOf(valuable)) + u';');
    NameScope names = newScope();
    bool isAny = false;
    for (const MapField &field : withoutOverlaps(fields, kFormat, findings())) {
        const MapAccess own = accessOf(field.field);
        if (own.isReadable || own.isWritable()) {
            writeField(field, names);
            isAny = true;
        } else {
            tell(rules::exportNoAccess, field.field.source, {kFormat, field.field.getName()});
        }
    }
    if (!isAny) {
        tell(rules::exportWholeField, place.declared.source, {place.name, kFormat, kWholeField});
        line("field { sw = "_L1 + softwareWord(access) + "; } "_L1 + kWholeField + u'[' +
             QString::number(bitsOf(valuable) - 1) + ":0];"_L1);
    }
    this->place(place, name);
}

void SystemRdlExport::writeField(const MapField &field, NameScope &names)
{
    const MapAccess access = accessOf(field.field);
    open(u"field {"_s);
    writeComment(plainCommentText(field.field));
    line("sw = "_L1 + softwareWord(access) + u';');
    if (access.writeMode > 1)
        line(access.writeMode == 2 ? u"onwrite = woset;"_s : u"onwrite = woclr;"_s);
    if (field.reset)
        line("reset = "_L1 + sized(field.width, *field.reset) + u';');
    if (!field.options.empty())
        writeOptions(field);
    --m_level;
    line("} "_L1 + escaped(names.take(field.field.getName(), field.field.source)) + u'[' +
         QString::number(field.highest()) + u':' + QString::number(field.lowest) + "];"_L1);
}

void SystemRdlExport::writeOptions(const MapField &field)
{
    const VMEnum *named = m_enums.of(field.field);
    const QString name = escaped(named ? legalName(named->name) : legalName(field.field.getName()) + "_e"_L1);
    NameScope names = newScope();
    QHash<quint32, QString> known;
    open("enum "_L1 + name + " {"_L1);
    for (const MapOption &option : field.options) {
        const QString &given = option.option.name;
        if (known.contains(option.value)) {
            tell(rules::exportOptionTwice, option.option.source, {given, known.value(option.value), kFormat});
            continue;
        }
        known.insert(option.value, given);
        const QString comment = plainCommentText(option.option.comment);
        line(escaped(names.take(given, option.option.source)) + " = "_L1 + sized(field.width, option.value) +
             (comment.isEmpty() ? QString() : " { desc = "_L1 + quoted(comment) + "; }"_L1) + u';');
    }
    --m_level;
    line(u"};"_s);
    line("encode = "_L1 + name + u';');
}

} // namespace

QByteArray systemRdlText(const VMMemoryMap &map, ExportFindings &findings)
{
    return SystemRdlExport(map, findings).text();
}

} // namespace veldmap
