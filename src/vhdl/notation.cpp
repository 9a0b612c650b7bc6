#include "vhdl/notation.h"

#include "text/literal_scan.h"
#include "text/literals.h"
#include "text/names.h"

#include <QRegularExpression>

#include <bit>

using namespace Qt::StringLiterals;

QString vhdl_clean_expr(const QString &text)
{
    // exp2(a)+exp2(b) matches twice; "exp2" alone does not.
    static const QRegularExpression call(u"exp2\\((.*?)\\)"_s, QRegularExpression::CaseInsensitiveOption |
                                                                   QRegularExpression::DotMatchesEverythingOption);
    QString cleaned = text;
    if (cleaned.contains("exp2("_L1, Qt::CaseInsensitive))
        cleaned.replace(call, u"2**(\\1)"_s);
    return vhdl_hexadecimal_regularize(cleaned);
}

int vhdl_log2(int bits)
{
    const auto bytes = static_cast<quint32>(bits / 8 + (bits % 8 == 0 ? 0 : 1));
    if (bytes == 0)
        return 1;
    const int highest = static_cast<int>(std::bit_width(bytes)) - 1;
    return std::has_single_bit(bytes) ? highest : highest + 1;
}

QString vhdl_hexadecimal_regularize(const QString &text)
{
    return veldmap::replaceLiterals(text, u'x', veldmap::isHexDigit,
                                    [](QStringView literal) { return u"16#"_s + literal.sliced(2).toString() + u'#'; });
}
