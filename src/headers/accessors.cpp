#include "headers/accessors.h"

#include "headers/accessor_parts.h"
#include "headers/accessor_rules.h"
#include "headers/c_names.h"
#include "headers/comment_lines.h"
#include "model/kinds.h"
#include "model/visit.h"
#include "text/lines.h"
#include "text/names.h"

#include <QSet>

#include <algorithm>

using namespace Qt::StringLiterals;

// Functions for the registers of a type and their fields, under lower-case names: those of the type and of all members
// on the way to the register, then what is done, then the field. None accesses the bus more than once, and those that
// compose values don't at all.
//
//     #define uart_ctrl_speed_mask 0x0000000EU
//     #define uart_ctrl_speed_shift 1
//
//     /// Reads ctrl; gives the value of speed.
//     static inline uint32_t uart_ctrl_get_speed(const HWP_UART_T *block)
//     {
//         return (block->ctrl & 0x0000000EU) >> 1;
//     }
//
// No macro of the C headers is called so, as those are in upper case. Where two things would have one name, the first
// has it, and the other has no functions.

namespace veldmap {

using accessors::hexLiteral;
using accessors::Part;
using accessors::Register;
using accessors::Way;

namespace {

constexpr QLatin1StringView kRule =
    "// ============================================================================="_L1;
constexpr QLatin1StringView kThinRule =
    "// -----------------------------------------------------------------------------"_L1;

/// Behind the name of a register, in the pool of names: no identifier ends so.
constexpr QLatin1StringView kOfRegister = "."_L1;

/// Names in one header, of which each is defined once.
class NamePool {
public:
    /// The first of \a names that is taken, or nothing.
    QString takenOf(const QStringList &names) const
    {
        const auto found = std::ranges::find_if(names, [this](const QString &name) { return m_names.contains(name); });
        return found == names.end() ? QString() : *found;
    }
    /// Takes \a name; false when it is taken.
    bool take(const QString &name)
    {
        const qsizetype before = m_names.size();
        m_names.insert(name);
        return m_names.size() > before;
    }

private:
    QSet<QString> m_names;
};

/// A number of definitions that stand or fall together.
struct Unit {
    QString text;
    QStringList names;

    /// A function: \a brief and \a comment, then what it gives, is called and takes, then its one statement.
    void function(const QString &brief, const QString &comment, const QString &type, const QString &name,
                  const QString &parameters, const QString &statement)
    {
        names += name;
        appendLine(text, "\n/// "_L1, brief);
        text += comment;
        appendLine(text, "static inline "_L1, type, u" ", name, u"(", parameters, u")");
        appendLine(text, u"{");
        appendLine(text, indent(1), statement);
        appendLine(text, u"}");
    }
    void macro(const QString &name, const QString &value)
    {
        names += name;
        appendLine(text, "#define "_L1, name, u" ", value);
    }
};

/// What a register as a whole has.
Unit unitOf(const Register &of)
{
    Unit unit;
    const QString comment = commentLines(of.valuable().comment);
    const QString shown = of.shown();
    if (of.isReadable() && of.isInMemory())
        unit.function("Reads "_L1 + shown + u'.', comment, of.type(), of.name() + "_read"_L1, of.readParameters(),
                      "return "_L1 + of.readExpression() + u';');
    if (of.isWritable() && of.isInMemory())
        unit.function("Writes "_L1 + shown + u'.', comment, u"void"_s, of.name() + "_write"_L1,
                      of.writeParameters() + ", "_L1 + of.type() + " value"_L1, of.writeExpression() + " = value;"_L1);
    const quint32 actions = of.actionBits();
    if (of.isReadable() && of.isWritable() && actions != 0)
        unit.function(
            "What of a value read from "_L1 + shown + " is written back: its bits that set or clear are 0."_L1, {},
            of.type(), of.name() + "_to_write_back"_L1, of.type() + " value"_L1,
            "return "_L1 + of.fromWord(of.asWord(u"value"_s) + " & "_L1 + hexLiteral(of.cut(~actions))) + u';');
    return unit;
}

/// Writes what one field or group has.
class PartWriter {
public:
    PartWriter(const Register &of, const Part &part)
        : m_of(of), m_part(part), m_front(of.name() + u'_'), m_mask(hexLiteral(part.mask)),
          m_comment(commentLines(part.comment)), m_shown(commentWords(part.field ? part.field->getName() : part.name))
    {
    }

    Unit unit()
    {
        writeMacros();
        if (m_part.isReadable && m_of.isInMemory())
            writeAccess();
        if (m_part.isReadable)
            writeExtraction();
        if (m_part.isWritable)
            writeComposing();
        const bool acts = m_part.field && accessors::setsOrClears(*m_part.field);
        if (m_part.isWritable && acts && m_of.keptBits() == 0 && m_of.isInMemory())
            writeAction();
        return std::move(m_unit);
    }

private:
    void writeMacros()
    {
        m_unit.macro(m_front + m_part.name + "_mask"_L1, m_mask);
        m_unit.macro(m_front + m_part.name + "_shift"_L1, QString::number(m_part.shift));
    }

    void writeAccess()
    {
        const QString brief = "Reads "_L1 + m_of.shown() + "; gives the value of "_L1 + m_shown;
        const QString value = fieldOf(m_of.readExpression());
        function(brief + u'.', u"uint32_t"_s, "get_"_L1 + m_part.name, m_of.readParameters(),
                 "return "_L1 + value + u';');
        if (m_part.hasSignedView)
            function(brief + " as a number with sign."_L1, u"int32_t"_s, "get_signed_"_L1 + m_part.name,
                     m_of.readParameters(), "return "_L1 + withSign(value) + u';');
    }

    void writeExtraction()
    {
        const QString brief = "The value of "_L1 + m_shown + " in a value of "_L1 + m_of.shown();
        const QString parameter = m_of.type() + " value"_L1;
        const QString value = fieldOf(u"value"_s);
        function(brief + u'.', u"uint32_t"_s, m_part.name + "_of"_L1, parameter, "return "_L1 + value + u';');
        if (m_part.hasSignedView)
            function(brief + ", as a number with sign."_L1, u"int32_t"_s, "signed_"_L1 + m_part.name + "_of"_L1,
                     parameter, "return "_L1 + withSign(value) + u';');
    }

    void writeComposing()
    {
        const QString brief = "A value of "_L1 + m_of.shown() + " with "_L1 + m_shown + " replaced"_L1;
        const QString value = m_of.type() + " value, "_L1;
        function(brief + u'.' + warning(), m_of.type(), "with_"_L1 + m_part.name, value + "uint32_t field"_L1,
                 "return "_L1 + replaced(u"field"_s) + u';');
        if (m_part.hasSignedView)
            function(brief + " by a number with sign."_L1 + warning(), m_of.type(), "with_signed_"_L1 + m_part.name,
                     value + "int32_t field"_L1, "return "_L1 + replaced(u"(uint32_t)field"_s) + u';');
    }

    /// What is easily forgotten where a register has bits that set or clear.
    QString warning() const
    {
        const bool isNeeded = m_of.isReadable() && m_of.actionBits() != 0;
        return isNeeded ? "\n/// A value that was read goes through "_L1 + m_of.name() + "_to_write_back() first."_L1
                        : QString();
    }

    /// One write acts on the field alone, as no other bit of the register keeps what is written.
    void writeAction()
    {
        const bool sets = m_part.field->writeMode == 2;
        const bool isBit = m_part.field->getBitSize() == 1;
        function("Writes "_L1 + m_of.shown() + ": "_L1 + (sets ? "sets "_L1 : "clears "_L1) +
                     (isBit ? ""_L1 : "these bits of "_L1) + m_shown + ", and writes 0 elsewhere."_L1,
                 u"void"_s, (sets ? "set_"_L1 : "clear_"_L1) + m_part.name,
                 m_of.writeParameters() + (isBit ? ""_L1 : ", uint32_t bits"_L1),
                 m_of.writeExpression() + " = "_L1 +
                     (isBit ? m_of.fromWord(m_mask) : m_of.fromWord(inPlace(u"bits"_s))) + u';');
    }

    void function(const QString &brief, const QString &type, const QString &name, const QString &parameters,
                  const QString &statement)
    {
        m_unit.function(brief, m_comment, type, m_front + name, parameters, statement);
    }

    QString fieldOf(const QString &word) const
    {
        const QString masked = m_of.asWord(word) + " & "_L1 + m_mask;
        return m_part.shift == 0 ? masked : u'(' + masked + ") >> "_L1 + QString::number(m_part.shift);
    }
    QString inPlace(const QString &field) const
    {
        const QString shifted = field + " << "_L1 + QString::number(m_part.shift);
        return u'(' + (m_part.shift == 0 ? field : u'(' + shifted + u')') + " & "_L1 + m_mask + u')';
    }
    QString replaced(const QString &field) const
    {
        const QString rest = u'(' + m_of.asWord(u"value"_s) + " & "_L1 + hexLiteral(m_of.cut(~m_part.mask)) + u')';
        return m_of.fromWord(rest + " | "_L1 + inPlace(field));
    }
    /// The highest bit of the field counts as negative.
    QString withSign(const QString &field) const
    {
        const quint32 shifted = m_part.mask >> m_part.shift;
        const QString sign = hexLiteral(shifted - (shifted >> 1));
        return "(int32_t)((("_L1 + field + ") ^ "_L1 + sign + ") - "_L1 + sign + u')';
    }

    const Register &m_of;
    const Part &m_part;
    QString m_front;
    QString m_mask;
    QString m_comment;
    QString m_shown;
    Unit m_unit;
};

/// Writes the functions of one type.
class TypeWriter {
public:
    TypeWriter(const VMXMLElement &type, NamePool &pool, QString &text) : m_type(type), m_pool(pool), m_text(text)
    {
        const auto *structure = elementCast<VMStruct>(&type);
        const bool isHardware = structure && !structure->isTypedef;
        m_pointer =
            isHardware ? "HWP_"_L1 + type.getTypeString().toUpper() + "_T"_L1 : ESDRTypeConvert(type.typedefName);
        if (!type.cKeywords.contains("volatile"_L1))
            m_pointer.prepend("volatile "_L1);
    }

    void write()
    {
        Way way;
        way.name = regularizeVariableName(m_type.typedefName).toLower();
        way.expression = u"*block"_s;
        write(m_type, way);
    }

    /// Tells what was left out.
    void tell(QList<Finding> &findings) const
    {
        if (m_leftOut > 0)
            findings += Finding(rules::accessorNameTaken, m_type.source.place(),
                                {m_type.typedefName, QString::number(m_leftOut), m_firstLeftOut});
    }

private:
    void write(const VMXMLElement &element, const Way &way)
    {
        visit(element, [&](const auto &it) { writeKind(it, way); });
    }

    void writeKind(const VMStruct &structure, const Way &way)
    {
        if (!structure.declaredType.isEmpty())
            return; // its type has functions of its own
        for (const auto &member : structure.memberList)
            write(*member, way.member(member->getName()));
    }

    void writeKind(const VMArray &array, const Way &way)
    {
        if (array.count() > 0)
            write(*array.prototype, way.at(array.count()));
    }

    void writeKind(const VMPointer &, const Way &) {}
    void writeKind(const VMXMLElement &, const Way &) {}

    void writeKind(const VMValuable &valuable, const Way &way)
    {
        const ScalarKind *kind = scalarKindOf(valuable.getType());
        const bool isHardware = kind && kind->isBusRegister;
        const bool hasFields = !valuable.bitFields.empty() || !valuable.bitGroups.empty();
        if (valuable.enumTemplate || (!isHardware && !hasFields))
            return;
        const Register of(valuable, way, m_pointer);
        writeHead(of);
        // Functions of two registers under one name would be mixed up, also where no single name is taken twice.
        if (!m_pool.take(of.name() + kOfRegister)) {
            leaveOut(of.shown(), "another register is called "_L1 + of.name());
            return;
        }
        if (!add(unitOf(of), of.shown()))
            return;
        for (const auto &field : valuable.bitFields)
            writePart(of, accessors::partOf(*field, of));
        for (const auto &group : valuable.bitGroups)
            writePart(of, accessors::partOf(*group, of));
    }

    void writeHead(const Register &of)
    {
        m_text += u'\n' + lineOf(kThinRule);
        appendLine(m_text, "// "_L1, of.shown(), ", "_L1, of.bits(), " bits, "_L1, of.valuable().getProtectString(),
                   of.isInMemory() ? ""_L1 : ", behind another bus: no function accesses it"_L1);
        for (qsizetype at = 0; at < of.counts().size(); ++at)
            appendLine(m_text, "// "_L1, Way::indexName(at), " runs from 0 to "_L1, of.counts()[at] - 1);
        m_text += lineOf(kThinRule);
    }

    void writePart(const Register &of, const Part &part)
    {
        const QString shown = commentWords(part.field ? part.field->getName() : part.name);
        appendLine(m_text, "\n// "_L1, shown, ", "_L1, commentWords(part.shownBits));
        if (part.mask == 0) {
            appendLine(m_text, "// It has no bit of the register, and so no functions."_L1);
            return;
        }
        if (add(PartWriter(of, part).unit(), of.shown() + u'.' + shown) && part.field)
            writeOptions(of, part);
    }

    void leaveOut(const QString &shown, const QString &reason)
    {
        appendLine(m_text, "// It has no functions: "_L1, reason, u".");
        m_firstLeftOut = m_leftOut++ == 0 ? shown : m_firstLeftOut;
    }

    /// Takes over \a unit of \a shown, unless one of its names is taken.
    bool add(const Unit &unit, const QString &shown)
    {
        const QString taken = m_pool.takenOf(unit.names);
        if (!taken.isEmpty()) {
            leaveOut(shown, taken + " is taken by another"_L1);
            return false;
        }
        for (const QString &name : unit.names)
            m_pool.take(name);
        m_text += unit.text;
        return true;
    }

    /// The options as the field's value has them, moved down and cut. C wants the numbers of an enum to be those of an
    /// int, so larger ones are macros.
    void writeOptions(const Register &of, const Part &part)
    {
        const quint32 mask = part.mask >> part.shift;
        const QString front = of.name() + u'_' + part.name;
        QString entries;
        QString rest;
        for (const VMBitFieldOption &option : part.field->options.optionList) {
            const quint32 value = static_cast<quint32>(option.value) & mask;
            const QString name = front + u'_' + option.name.toLower();
            const QString comment = commentWords(option.comment);
            const QString tail = comment.isEmpty() ? QString() : " ///< "_L1 + comment;
            if (option.name.isEmpty())
                continue;
            if (!m_pool.take(name))
                appendLine(rest, "// "_L1, commentWords(option.name), ", "_L1, QString::number(value),
                           ", has no name here: "_L1, name, " is taken by another."_L1);
            else if (value > 0x7FFFFFFF)
                appendLine(rest, "#define "_L1, name, u" ", hexLiteral(value), tail);
            else
                appendLine(entries, indent(1), name, " = "_L1, QString::number(value), u",", tail);
        }
        if (!entries.isEmpty()) {
            appendLine(m_text, "\n/// The options of "_L1, commentWords(part.field->getName()), u".");
            appendLine(m_text, "enum"_L1, m_pool.take(front) ? u' ' + front : QString(), " {"_L1);
            m_text += entries;
            appendLine(m_text, "};"_L1);
        }
        m_text += rest;
    }

    const VMXMLElement &m_type;
    NamePool &m_pool;
    QString &m_text;
    QString m_pointer;
    int m_leftOut = 0;
    QString m_firstLeftOut;
};

QString headerNameOf(const VMXMLArchive &archive)
{
    return archive.getBaseName() + "_accessors.h"_L1;
}

QString guardOf(const VMXMLArchive &archive)
{
    return "VELDMAP_"_L1 + regularizeVariableName(accessorHeaderName(archive)).toUpper();
}

} // namespace

QString accessorHeaderName(const VMXMLArchive &archive)
{
    const QString directory = archive.getRelativePath(false);
    return directory.isEmpty() ? headerNameOf(archive) : directory + u'/' + headerNameOf(archive);
}

AccessorHeader accessorHeaderOf(const VMXMLArchive &archive)
{
    AccessorHeader header;
    QString &text = header.text;
    const QString guard = guardOf(archive);
    text = safeCommentLines(archive.c_header()) + u'\n' + lineOf("#ifndef "_L1, guard) + lineOf("#define "_L1, guard) +
           u'\n' + lineOf("#include <stdint.h>"_L1) + u'\n' +
           lineOf("#include \""_L1, archive.getBaseName(), ".h\""_L1);
    for (const VMXMLArchive *included : archive.includedArchives)
        text += lineOf("#include \""_L1, headerNameOf(*included), u"\"");
    NamePool pool;
    for (const auto &type : archive.templates) {
        QString functions;
        TypeWriter writer(*type, pool, functions);
        writer.write();
        writer.tell(header.findings);
        if (!functions.isEmpty())
            text +=
                u'\n' + lineOf(kRule) + lineOf("//  "_L1, commentWords(type->typedefName)) + lineOf(kRule) + functions;
    }
    text += u'\n' + lineOf("#endif"_L1);
    return header;
}

} // namespace veldmap
