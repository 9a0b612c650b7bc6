#include "headers/self_check.h"

#include "headers/c_names.h"
#include "headers/instance_macros.h"
#include "model/instance_paths.h"
#include "model/visit.h"
#include "text/bit_arithmetic.h"
#include "text/lines.h"
#include "text/names.h"

#include <QSet>

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

// The assertions of one header. What is expected is the tree's number, never a text that the header prints:
//
//     // ---- uart.h
//     VELDMAP_ASSERT(VELDMAP_IS(UART_NB_CHAN, 0x4u), "UART_NB_CHAN: must be 4");
//     VELDMAP_ASSERT(sizeof(HWP_UART_T) == 24u, "$UART0: size must be 24");
//     VELDMAP_ASSERT(VELDMAP_OFFSET(HWP_UART_T, chan) == 0x8u, "$UART0.chan: offset must be 0x8");
//     VELDMAP_ASSERT(VELDMAP_SIZE(HWP_UART_T, chan) == 16u, "$UART0.chan: size must be 16");
//     VELDMAP_ASSERT(VELDMAP_IS(REG_UART0_BASE, 0x40000000u), "$UART0: REG_UART0_BASE must be 0x40000000");
//     VELDMAP_ASSERT(VELDMAP_IS(UART_SPEED_MASK, 0xEu), "$UART0.ctrl.speed: UART_SPEED_MASK must be 0xE");

namespace veldmap {

namespace {

constexpr QStringView kHead = uR"c(// @name@: made by Veldmap from the description of @header@. Do not edit.
//
// It holds no code. It compiles when the compiler makes of the headers what the description says: offsets, sizes,
// addresses, masks and values, all numbers worked out from the description and not from the text of the headers. So
// it is for the compiler of the target, with its options, and for widths of pointers and enums that are the target's:
//
//     cc -std=c11 -fsyntax-only@folders@ @name@
//
// The words that the headers leave to the project come from the headers' own includes, from -include words.h, or from
// -DVELDMAP_SELF_CHECK_PRELUDE='"words.h"'. A failing assertion names the path and the number of the description.
)c";

constexpr QStringView kWords = uR"c(
#ifdef VELDMAP_SELF_CHECK_PRELUDE
#include VELDMAP_SELF_CHECK_PRELUDE
#endif

)c";

/// A macro that is no integer, such as 1.5, is none with "| 0" behind it either. A number from 2^31 on is equal as the
/// word that it is, whatever sign C gives it; bits beyond the word make it another number.
/// 255<<24 overflows an int, which a strict compiler would not call a constant.
constexpr QStringView kMacros = uR"c(
#ifdef __GNUC__
#define VELDMAP_ASSERT __extension__ _Static_assert
#define VELDMAP_OFFSET(type, member) __builtin_offsetof(type, member)
#else
#define VELDMAP_ASSERT _Static_assert
#define VELDMAP_OFFSET(type, member) ((unsigned long)&((type *)0)->member)
#endif
#define VELDMAP_SIZE(type, member) sizeof(((type *)0)->member)
#define VELDMAP_IS(macro, number) ((unsigned long long)((macro) | 0) == (number))
#define VELDMAP_IS_WORD(macro, number) \
    (VELDMAP_IS(macro, number) || VELDMAP_IS(macro, (number) | 0xFFFFFFFF00000000ull))

VELDMAP_ASSERT((unsigned char)-1 == 255, "a byte must have 8 bits");
)c";

/// What no assertion is made of, and why.
enum Left {
    CommentedMacros,
    IllegalMacros,
    AbsentMembers,
    Nameless,
    FieldStructures,
    Unsized,
    Pointers,
    Baseless,
    Ranges,
    OwnTexts
};
constexpr std::array<QLatin1StringView, OwnTexts + 1> kReasons = {
    "later macros of one name in a type, which the header comments out"_L1,
    "macros whose names C can't have"_L1,
    "members that the header comments out or leaves out: arrays of none, gaps and memories of no bytes"_L1,
    "members without a name"_L1,
    "fields of C bit-field structures: C has no offset of them, the structure's size is asserted"_L1,
    "types that have no size in C"_L1,
    "values of pointer macros, which KSEG1 decides; those of modules are asserted to point to what has the right size"_L1,
    "instances whose base address no header defines"_L1,
    "ranges, which headers do not have"_L1,
    "C texts that stand in a header as the description has them"_L1,
};

/// \a text without line breaks and other control characters, as a comment or an include needs it.
QString oneLine(QString text)
{
    for (QChar &c : text) {
        if (c.category() == QChar::Other_Control || c == u'\\')
            c = u'?';
    }
    return text;
}

/// \a text as it stands between the quotes of a C string.
QString quoted(const QString &text)
{
    QString result;
    result.reserve(text.size());
    for (const QChar c : oneLine(text)) {
        if (c == u'"' || c == u'?') // "??/" would be a backslash
            result += u'\\';
        result += c;
    }
    return result;
}

QString hexText(quint32 number)
{
    return "0x"_L1 + hexDigits(number);
}

bool isEnumType(const VMXMLElement &element)
{
    const auto *valuable = elementCast<VMValuable>(&element);
    return valuable && valuable->enumTemplate;
}

/// Writes the assertions of all headers of one root.
class SelfCheck {
public:
    explicit SelfCheck(const VMRootArchive &root) : m_root(root), m_instances(root), m_paths(root) {}

    QString text()
    {
        for (const VMXMLArchive *archive : m_root.xmlArchives)
            writeArchive(*archive);
        for (const auto &instance : m_root.instances)
            m_left[Baseless] += m_based.contains(instance.get()) ? 0 : 1;
        return head() + m_text;
    }

private:
    QString head() const
    {
        const QString header = m_root.xmlArchives.isEmpty() ? QString() : m_root.xmlArchives.first()->relativeFileName;
        QString folders;
        QString includes;
        QSet<QString> known;
        for (const VMXMLArchive *archive : m_root.xmlArchives) {
            const QString folder = archive->getRelativePath(false);
            if (!known.contains(folder))
                folders += " -I"_L1 + (folder.isEmpty() ? u"."_s : folder);
            known.insert(folder);
            includes += "#include \""_L1 + oneLine(archive->getHFileRelativeName()) + "\"\n"_L1;
        }
        return expand(kHead, {{u"name"_s, oneLine(selfCheckNameOf(m_root))},
                              {u"header"_s, oneLine(header)},
                              {u"folders"_s, oneLine(folders)}}) +
               leftText() + kWords.toString() + includes + kMacros.toString();
    }

    QString leftText() const
    {
        QString text;
        for (std::size_t at = 0; at < m_left.size(); ++at) {
            if (m_left[at] > 0)
                appendLine(text, text.isEmpty() ? "//\n// Not asserted:\n"_L1 : ""_L1, "//     "_L1, kReasons[at],
                           u": ", m_left[at]);
        }
        return text;
    }

    void writeArchive(const VMXMLArchive &archive)
    {
        appendLine(m_text, "\n// ---- "_L1, oneLine(archive.getHFileRelativeName()));
        writeVariables(*archive.variables);
        for (const auto &element : archive.templates) {
            if (!isEnumType(*element))
                writeTemplate(*element);
        }
        m_left[OwnTexts] += archive.cJoker.trimmed().isEmpty() ? 0 : 1;
    }

    // Variables and enums

    void writeVariables(const VMVariableManager &variables)
    {
        QHash<QString, const VMIntVar *> lastRows; // what C knows under a name behind the header
        for (const VMIntVar &variable : variables)
            lastRows[variable.name.toUpper()] = &variable;
        for (const VMIntVar &variable : variables) {
            if (isSpacer(variable))
                continue;
            const QString name = variable.name.toUpper();
            if (variable.isRange)
                ++m_left[Ranges];
            else if (variable.ownerEnum)
                assertMacro(name, static_cast<quint32>(variable.leftValue),
                            variable.ownerEnum->name + u'.' + variable.name, variable.leftValue);
            else if (lastRows.value(name) == &variable)
                assertMacro(name, static_cast<quint32>(variable.leftValue), variable.name, variable.leftValue);
        }
    }

    // Types and instances

    void writeTemplate(const VMXMLElement &element)
    {
        const auto *structure = elementCast<VMStruct>(&element);
        const bool isAlias = !element.declaredType.isEmpty();
        const bool isModule = structure && !structure->isTypedef;
        m_type = isModule && !isAlias ? "HWP_"_L1 + element.getTypeString().toUpper() + "_T"_L1
                                      : ESDRTypeConvert(element.typedefName);
        const QString path = m_paths.ofTemplate(element);
        writeType(element, path);
        if (structure && !isAlias)
            writeMembers(*structure, {}, path, 0);
        writeInstances(element, isModule, isAlias);
        m_prefix = element.getTypeString().toUpper() + u'_';
        m_known.clear();
        writeMacros(element, path);
    }

    void writeType(const VMXMLElement &element, const QString &path)
    {
        if (element.type == VMXMLElement::XML_VOID || element.type == VMXMLElement::XML_MEMORY)
            ++m_left[Unsized];
        else
            appendAssertion("sizeof("_L1 + m_type + u')', element.sizeOf(), path + ": size"_L1);
        const auto *valuable = elementCast<VMValuable>(&element);
        if (valuable && !valuable->isPointer())
            m_left[FieldStructures] += static_cast<int>(valuable->bitFields.size());
    }

    void writeInstances(const VMXMLElement &element, bool isModule, bool isAlias)
    {
        const Instances instances = m_instances.of(element);
        for (const VMXMLElement *instance : instances) {
            if (m_based.contains(instance))
                continue;
            m_based.insert(instance);
            const QString base = "REG_"_L1 + instance->getName().toUpper() + "_BASE"_L1;
            const QString path = u'$' + instance->getName();
            assertMacro(base, instance->getBaseAddress(), path + ": "_L1 + base, hexText(instance->getBaseAddress()));
            if (!isModule)
                continue;
            ++m_left[Pointers];
            const QString pointer = "hwp_"_L1 + instance->getCInstanceName();
            if (!isAlias)
                appendAssertion("sizeof(*"_L1 + pointer + u')', instance->sizeOf(), path + ": size of *"_L1 + pointer);
        }
    }

    // Members. A path in C is that from the type on; an inner structure without a name gives its members to the outer.

    void writeMembers(const VMStruct &structure, const QString &cPath, const QString &path, quint32 offset)
    {
        for (const auto &member : structure.memberList)
            visit(*member,
                  [&](const auto &it) { writeMember(it, cPath, path + u'.' + it.getName(), offset + it.offset); });
    }

    static QString joined(const QString &cPath, const QString &name)
    {
        return cPath.isEmpty() ? name : cPath + u'.' + name;
    }

    void writeMember(const VMValuable &valuable, const QString &cPath, const QString &path, quint32 offset)
    {
        assertPlace(cPath, valuable.getName(), offset, valuable.sizeOf(), path);
        const int bits = valuable.getBitSize();
        if (valuable.lowName.isEmpty() || (bits != 16 && bits != 32))
            return;
        assertPlace(cPath, valuable.lowName, offset, bits / 16, path + " low half"_L1);
        assertPlace(cPath, valuable.highName, offset + static_cast<quint32>(bits / 16), bits / 16,
                    path + " high half"_L1);
    }

    void writeMember(const VMStruct &structure, const QString &cPath, const QString &path, quint32 offset)
    {
        if (!structure.declaredType.isEmpty()) {
            assertPlace(cPath, structure.getName(), offset, structure.sizeOf(), path); // asserted where it is declared
            return;
        }
        const bool hasName = !structure.getName().isEmpty();
        if (hasName)
            assertPlace(cPath, structure.getName(), offset, structure.sizeOf(), path);
        writeMembers(structure, hasName ? joined(cPath, structure.getName()) : cPath, path, offset);
    }

    void writeMember(const VMArray &array, const QString &cPath, const QString &path, quint32 offset)
    {
        if (array.declaredType.isEmpty() && array.count() == 0) {
            ++m_left[AbsentMembers];
            return;
        }
        assertPlace(cPath, array.getName(), offset, array.sizeOf(), path);
        if (!array.declaredType.isEmpty() || array.getName().isEmpty())
            return;
        const QString first = joined(cPath, array.getName()) + "[0]"_L1;
        assertSize(first, array.prototype->sizeOf(), path + "[0]"_L1);
        const auto *structure = elementCast<VMStruct>(array.prototype.get());
        if (structure && structure->declaredType.isEmpty())
            writeMembers(*structure, first, path + "[0]"_L1, offset);
    }

    void writeMember(const VMHole &hole, const QString &cPath, const QString &path, quint32 offset)
    {
        if (hole.sizeOf() == 0)
            ++m_left[AbsentMembers];
        else
            assertPlace(cPath, "Reserved_"_L1 + hex8(hole.offset), offset, hole.sizeOf(), path);
    }

    void writeMember(const VMMemory &memory, const QString &cPath, const QString &path, quint32 offset)
    {
        if (memory.memorySize == 0)
            ++m_left[AbsentMembers];
        else
            assertPlace(cPath, memory.getName(), offset, memory.sizeOf(), path);
    }

    void writeMember(const VMXMLElement &, const QString &, const QString &, quint32) {}

    // Macros of fields, options and groups. Of one name in a type the first counts.

    void writeMacros(const VMXMLElement &element, const QString &path)
    {
        visit(element, Overloads{[&](const VMStruct &structure) {
                                     for (const auto &member : structure.memberList)
                                         writeMacros(*member, path + u'.' + member->getName());
                                 },
                                 [&](const VMArray &array) { writeMacros(*array.prototype, path + "[0]"_L1); },
                                 [&](const VMValuable &valuable) {
                                     if (!valuable.enumTemplate)
                                         writeMacrosOf(valuable, path);
                                 },
                                 [](const VMXMLElement &) {}});
    }

    void writeMacrosOf(const VMValuable &valuable, const QString &path)
    {
        for (const auto &field : valuable.bitFields)
            writeField(*field, path + u'.' + field->getName());
        for (const auto &group : valuable.bitGroups) {
            const QString name = m_prefix + group->name.toUpper();
            const QString groupPath = path + u'.' + group->name;
            const quint32 mask = group->getFullValueUnshifted();
            writeValue(name, group->getTotalBits(), mask, group->getShift(), groupPath);
            writeMacro(name + "_MASK"_L1, {}, mask, groupPath);
            writeMacro(name + "_SHIFT"_L1, {}, static_cast<quint32>(group->getShift()), groupPath);
        }
    }

    void writeField(const VMBitField &field, const QString &path)
    {
        const QString name = m_prefix + field.getName().toUpper();
        const quint32 mask = bitRange(field.upPos, field.downPos);
        const VMBitFieldOptions &options = field.options;
        if (options.hasDefault || options.optionList.isEmpty())
            writeValue(name, field.getBitSize(), mask, field.downPos, path);
        if (options.hasMask)
            writeMacro(name + "_MASK"_L1, {}, mask, path);
        if (options.hasShift)
            writeMacro(name + "_SHIFT"_L1, {}, static_cast<quint32>(field.downPos), path);
        for (const VMBitFieldOption &option : options.optionList)
            writeMacro(name + u'_' + option.name.toUpper(), {},
                       shiftLeft(static_cast<quint32>(option.value), field.downPos), path);
    }

    /// The macro of one bit is its mask; that of more takes a value, of which it leaves the field's bits.
    void writeValue(const QString &name, int width, quint32 mask, int shift, const QString &path)
    {
        if (width <= 1) {
            writeMacro(name, {}, mask, path);
            return;
        }
        if (writeMacro(name, u"(0xFFFFFFFFu)"_s, mask, path))
            assertMacro(name + "(1u)"_L1, mask & shiftLeft(1, shift), path + ": "_L1 + name + "(1)"_L1,
                        hexText(mask & shiftLeft(1, shift)));
    }

    /// False when it is not asserted: an earlier macro of the type has the name, or its type is called "REG32[]".
    bool writeMacro(const QString &name, const QString &argument, quint32 number, const QString &path)
    {
        if (!std::ranges::all_of(name, isNameCharacter)) {
            ++m_left[IllegalMacros];
            return false;
        }
        const qsizetype before = m_known.size();
        m_known.insert(name);
        if (m_known.size() == before) {
            ++m_left[CommentedMacros];
            return false;
        }
        assertMacro(name + argument, number, path + ": "_L1 + name + argument, hexText(number));
        return true;
    }

    // Assertions

    void assertPlace(const QString &cPath, const QString &name, quint32 offset, int size, const QString &path)
    {
        if (name.isEmpty()) {
            ++m_left[Nameless];
            return;
        }
        const QString member = joined(cPath, name);
        const QString number = hexText(offset);
        appendLine(m_text, "VELDMAP_ASSERT(VELDMAP_OFFSET("_L1, m_type, u", ", member, ") == "_L1, number, "u, \""_L1,
                   quoted(path), ": offset must be "_L1, number, "\");"_L1);
        assertSize(member, size, path);
    }

    void assertSize(const QString &member, int size, const QString &path)
    {
        appendAssertion("VELDMAP_SIZE("_L1 + m_type + ", "_L1 + member + u')', size, path + ": size"_L1);
    }

    void appendAssertion(const QString &bytes, int size, const QString &what)
    {
        const QString number = QString::number(size);
        appendLine(m_text, "VELDMAP_ASSERT("_L1, bytes, " == "_L1, number, size < 0 ? ""_L1 : "u"_L1, ", \""_L1,
                   quoted(what), " must be "_L1, number, "\");"_L1);
    }

    void assertMacro(const QString &use, quint32 number, const QString &what, const QString &shown)
    {
        const bool isWord = number > 0x7FFFFFFF;
        appendLine(m_text, "VELDMAP_ASSERT(VELDMAP_IS"_L1, isWord ? "_WORD"_L1 : ""_L1, u"(", use, u", ",
                   hexText(number), "u), \""_L1, quoted(what), " must be "_L1, shown, "\");"_L1);
    }

    void assertMacro(const QString &use, quint32 number, const QString &what, int shown)
    {
        assertMacro(use, number, what, QString::number(shown));
    }

    const VMRootArchive &m_root;
    const InstanceIndex m_instances;
    const InstancePaths m_paths;
    std::array<int, OwnTexts + 1> m_left = {};
    QSet<const VMXMLElement *> m_based; // instances whose base address a header defines
    QString m_type;                     // in C, of the template that is being written
    QString m_prefix;                   // of its macros
    QSet<QString> m_known;              // its macros
    QString m_text;
};

} // namespace

QString selfCheckOf(const VMRootArchive &root)
{
    return SelfCheck(root).text();
}

QString selfCheckNameOf(const VMRootArchive &root)
{
    const QString base = root.xmlArchives.isEmpty() ? root.rootName : root.xmlArchives.first()->getBaseName();
    return base + "_self_check.c"_L1;
}

} // namespace veldmap
