#include "headers/template_macros.h"
#include "model/visit.h"
#include "text/lines.h"

#include <QSet>

#include <utility>

using namespace Qt::StringLiterals;

// The macros of a register, under its name: value, mask and shift of a field, then its options. A name that the
// template has used before stands commented out.
//
//     //ctrl
//     #define UART_ENABLE                 (1<<0)
//     #define UART_SPEED(n)               (((n)&7)<<1)
//     #define UART_SPEED_FAST             (5<<1)
//     //#define UART_ENABLE               (1<<4)
//                                         ^ 36

namespace {

constexpr int kValueColumn = 36;

/// \a value as it stands in the macros of a field of \a width bits: small fields read best in decimal.
QString valueText(quint32 value, int width)
{
    return width <= 5 ? QString::number(value) : "0x"_L1 + veldmap::hexDigits(value);
}

/// Writes the macros of one template. Knows which names the template has used.
class MacroWriter {
public:
    MacroWriter(const QString &prefix, QStringList &usedNames)
        : m_prefix(prefix), m_usedNames(usedNames), m_known(usedNames.cbegin(), usedNames.cend())
    {
    }

    QString textOf(const VMXMLElement &element)
    {
        write(element);
        return std::move(m_text);
    }

    QString textOf(const VMBitGroup &group)
    {
        writeGroup(group);
        return std::move(m_text);
    }

private:
    void write(const VMXMLElement &element)
    {
        veldmap::visit(element, [this](const auto &it) { writeKind(it); });
    }

    void writeKind(const VMStruct &structure)
    {
        for (const auto &member : structure.memberList)
            write(*member);
    }

    void writeKind(const VMArray &array) { write(*array.prototype); }

    void writeKind(const VMValuable &valuable)
    {
        if (valuable.enumTemplate || (valuable.bitFields.empty() && valuable.bitGroups.empty()))
            return;
        m_text += "//"_L1 + valuable.name + u'\n';
        for (const auto &field : valuable.bitFields)
            writeField(*field);
        for (const auto &group : valuable.bitGroups)
            writeGroup(*group);
        m_text += u'\n';
    }

    void writeKind(const VMBitField &field) { writeField(field); }
    void writeKind(const VMXMLElement &) {}

    void writeField(const VMBitField &field)
    {
        const QString name = macroName(m_prefix, field.getName().toUpper());
        const int width = field.getBitSize();
        const QString mask = valueText(field.getFullValueShifted(), width);
        const VMBitFieldOptions &options = field.options;
        if (options.hasDefault || options.optionList.isEmpty())
            writeValue(name, width, mask, field.downPos);
        if (options.hasMask)
            writeMacro(name + "_MASK"_L1, ""_L1, u"(", mask, "<<"_L1, field.downPos, u")");
        if (options.hasShift)
            writeMacro(name + "_SHIFT"_L1, ""_L1, u"(", field.downPos, u")");
        for (const VMBitFieldOption &option : options.optionList)
            writeMacro(macroName(name, option.name.toUpper()), ""_L1, u"(",
                       valueText(static_cast<quint32>(option.value), width), "<<"_L1, field.downPos, u")");
    }

    void writeGroup(const VMBitGroup &group)
    {
        const QString name = macroName(m_prefix, group.name.toUpper());
        const int width = group.getTotalBits();
        const int shift = group.getShift();
        const QString mask = valueText(group.getFullValueShifted(), width);
        writeValue(name, width, mask, shift);
        writeMacro(name + "_MASK"_L1, ""_L1, u"(", mask, "<<"_L1, shift, u")");
        writeMacro(name + "_SHIFT"_L1, ""_L1, u"(", shift, u")");
    }

    /// The macro that puts a value in its place; a single bit needs none.
    void writeValue(const QString &name, int width, const QString &mask, int shift)
    {
        if (width > 1)
            writeMacro(name, "(n)"_L1, "(((n)&"_L1, mask, ")<<"_L1, shift, u")");
        else
            writeMacro(name, ""_L1, u"(", mask, "<<"_L1, shift, u")");
    }

    template <typename... Body>
    void writeMacro(const QString &name, QLatin1StringView parameter, const Body &...body)
    {
        const qsizetype namesBefore = m_known.size();
        m_known.insert(name);
        const bool isUsed = m_known.size() == namesBefore;
        if (!isUsed)
            m_usedNames.append(name);
        veldmap::appendLine(m_text, isUsed ? "//"_L1 : ""_L1, "#define "_L1, name, parameter,
                            veldmap::Column{kValueColumn}, body...);
    }

    static QString macroName(const QString &front, const QString &back)
    {
        QString name;
        name.reserve(front.size() + 1 + back.size());
        name += front;
        name += u'_';
        name += back;
        return name;
    }

    const QString &m_prefix;
    QStringList &m_usedNames;
    QSet<QString> m_known;
    QString m_text;
};

} // namespace

QString veldmap::templateMacros(const VMXMLElement &element)
{
    QStringList usedNames;
    return element.macro_serialize(element.getTypeString().toUpper(), usedNames);
}

QString VMXMLElement::macro_serialize(const QString &prefix, QStringList &usedNames) const
{
    return MacroWriter(prefix, usedNames).textOf(*this);
}

QString VMBitGroup::macro_serialize(const QString &prefix, QStringList &usedNames) const
{
    return MacroWriter(prefix, usedNames).textOf(*this);
}
