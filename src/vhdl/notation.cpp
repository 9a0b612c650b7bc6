#include "vhdl/notation.h"

#include "common/text.h"

#include <QRegularExpression>

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

QString vhdl_hexadecimal_regularize(const QString &text)
{
    return veldmap::replaceLiterals(text, u'x', veldmap::isHexDigit,
                                    [](QStringView literal) { return u"16#"_s + literal.sliced(2).toString() + u'#'; });
}
