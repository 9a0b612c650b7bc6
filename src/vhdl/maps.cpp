#include "common/lines.h"
#include "model/archive.h"
#include "model/bitfield.h"
#include "vhdl/notation.h"

using namespace Qt::StringLiterals;

// A field in the two maps of a package, of one bit or of several:
//
//     constant l_Enable:                              integer := 0;
//     subtype  p_Mode is                              integer range 2 downto 1;
//                                                     ^ 48, counted without the indentation

namespace {

/// The definition line of \a field, commented out when it stands in \a seen already.
QString definitionLine(const VMBitField &field, QLatin1StringView prefix, const QString &upExpression,
                       const QString &downExpression, int level, QStringList &seen)
{
    const VMXMLArchive *archive = field.getTopArchive();
    if (!archive)
        return u"ERROR : contact developper"_s;
    const QString high = vhdl_clean_expr(upExpression.toUpper());
    const QString low = vhdl_clean_expr(downExpression.toUpper());
    QString message;
    bool error = false;
    const int highNumber = archive->variables->evalExpression(high, message, error);
    const int lowNumber = error ? 0 : archive->variables->evalExpression(low, message, error);
    if (error)
        return "ERROR while evaluating expressions when generating vhdl"_L1 + message;

    using veldmap::Column;
    const QString line =
        highNumber != lowNumber
            ? veldmap::lineOf("subtype  "_L1, prefix, field.getName(), " is"_L1, Column{48}, "integer range "_L1, high,
                              " downto "_L1, low, u";")
            : veldmap::lineOf("constant "_L1, prefix, field.getName(), u":", Column{48}, "integer := "_L1, high, u";");
    const QString indentation = veldmap::indent(level + 1);
    if (seen.contains(line))
        return "--"_L1 + indentation + line;
    seen.append(line);
    return indentation + line;
}

} // namespace

QString VMXMLElement::vhdl_serialize(int, QStringList &) const
{
    return {};
}

QString VMXMLElement::vhdl_content() const
{
    return {};
}

QString VMBitField::vhdl_logical_serialize(int indent, QStringList &seen) const
{
    return definitionLine(*this, "l_"_L1, upPosExpression, downPosExpression, indent, seen);
}

QString VMBitField::vhdl_physical_serialize(int indent, QStringList &seen) const
{
    return definitionLine(*this, "p_"_L1, physicalUpPosExpression, physicalDownPosExpression, indent, seen);
}
