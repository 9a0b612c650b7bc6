#include "model/visit.h"
#include "text/lines.h"

using namespace Qt::StringLiterals;
using veldmap::Column;

// The registers of an instance in an assembly header, where there are no structures: an address each, as the distance
// from the low half of the instance's base.
//
//     #define REG_UART0_CTRL              REG_UART0_BASE_LO + 0x00000000
//     #define REG_UART0_CHAN_1            REG_UART0_BASE_LO + 0x0000000C
//                                         ^ 36

namespace {

constexpr int kValueColumn = 36;

/// The element's name as a piece of a macro's name: chan[3] gives CHAN_3.
QString macroName(const VMXMLElement &element)
{
    QString name = element.getName().toUpper();
    name.replace(u'[', u'_');
    name.remove(u']');
    return name;
}

/// Writes the address macros of elements, all into one text. \a base is the macro that the addresses are added to.
class AddressWriter {
public:
    explicit AddressWriter(const QString &base) : m_base(base) {}

    /// \a prefix is the path so far.
    void write(const VMXMLElement &element, const QString &prefix)
    {
        veldmap::visit(element, [&](const auto &it) { writeKind(it, prefix); });
    }

    QString takeText() { return std::move(m_text); }

private:
    void writeKind(const VMValuable &valuable, const QString &prefix)
    {
        veldmap::appendLine(m_text, "#define REG_"_L1, prefix, u"_", macroName(valuable), Column{kValueColumn}, m_base,
                            " + "_L1, valuable.getAddressString());
    }

    void writeKind(const VMStruct &structure, const QString &prefix)
    {
        const QString memberPrefix = prefix + macroName(structure);
        for (const auto &member : structure.memberList)
            write(*member, memberPrefix);
    }

    /// The prototype is not written: each member has its own lines.
    void writeKind(const VMArray &array, const QString &prefix)
    {
        const QString structPrefix = prefix.endsWith(u'_') ? prefix : prefix + u'_';
        for (const auto &member : array.memberList)
            write(*member, member->isStruct() ? structPrefix : prefix);
    }

    void writeKind(const VMXMLElement &, const QString &) {}

    const QString &m_base;
    QString m_text;
};

} // namespace

QString VMXMLElement::asm_serialize(const QString &prefix, const QString &base) const
{
    AddressWriter writer(base);
    writer.write(*this, prefix);
    return writer.takeText();
}
