#include "common/text.h"

#include <QDir>
#include <QStringList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// An underscore at every border inside a camel-case name: myReg becomes my_Reg.
QString withWordBorders(const QString &name)
{
    QString result;
    for (qsizetype at = 0; at < name.size(); ++at) {
        const QChar c = name[at];
        if (at > 0 && c >= u'A' && c <= u'Z' && name[at - 1] >= u'a' && name[at - 1] <= u'z')
            result += u'_';
        result += c;
    }
    return result;
}

/// The number that a hexadecimal digit stands for.
quint64 digitValue(QChar digit)
{
    const char16_t c = digit.unicode();
    return c <= u'9' ? c - u'0' : (c | 0x20) - u'a' + 10;
}

} // namespace

namespace veldmap {

bool isHexDigit(QChar character)
{
    const char16_t c = character.unicode();
    return (c >= u'0' && c <= u'9') || (c >= u'A' && c <= u'F') || (c >= u'a' && c <= u'f');
}

bool isBinaryDigit(QChar character)
{
    return character == u'0' || character == u'1';
}

qsizetype literalLength(QStringView text, qsizetype start, char16_t letter, bool (*isDigit)(QChar))
{
    if (text[start] != u'0' || start + 2 >= text.size() || text[start + 1].toLower() != letter ||
        !isDigit(text[start + 2]) || (start > 0 && isNameCharacter(text[start - 1])))
        return 0;
    qsizetype end = start + 3;
    while (end < text.size() && isDigit(text[end]))
        ++end;
    return end - start;
}

} // namespace veldmap

QString convertCommentToCComment(const QString &comment, int width, int indent)
{
    QString text = comment;
    if (text.contains(u'<'))
        text.replace("<br>"_L1, "\n"_L1);
    const QString prefix = QString(4 * qMax(indent, 0), u' ') + "/// "_L1;
    const int firstColumn = 4 * indent + 4;
    if (width - 4 * indent + 3 <= 39)
        width = 4 * indent + 43;

    QString result = prefix;
    qsizetype column = firstColumn;
    for (qsizetype at = 0; at < text.size();) {
        const auto blank = std::find_if(text.cbegin() + at, text.cend(), [](QChar c) { return c.isSpace(); });
        const QStringView word(text.constData() + at, blank - text.cbegin() - at);
        result += word;
        if (blank == text.cend())
            return result;
        if (column + word.size() >= width || *blank == u'\n') {
            result += u'\n' + prefix;
            column = firstColumn;
        } else {
            result += *blank;
            column += word.size() + 1;
        }
        at += word.size() + 1;
    }
    return result;
}

QString ESDRConvert(const QString &name)
{
    const QString lower = withWordBorders(name).toLower();
    QString result;
    for (qsizetype at = 0; at < lower.size(); ++at) {
        if (lower[at] != u'_') {
            result += lower[at];
            continue;
        }
        // A run of underscores capitalises what follows it; at the end of the name one of them stays.
        while (at + 1 < lower.size() && lower[at] == u'_')
            ++at;
        result += lower[at].toUpper();
    }
    return result;
}

QString ESDRTypeConvert(const QString &name)
{
    static const QStringList builtInWords = {u"uint"_s,  u"uint32"_s, u"uint16"_s, u"uint8"_s,  u"int"_s,
                                             u"int32"_s, u"int16"_s,  u"int8"_s,   u"memory"_s, u"void"_s,
                                             u"bool"_s,  u"reg32"_s,  u"reg16"_s,  u"reg8"_s};
    QString upper = name.toUpper();
    const bool isBuiltIn = std::ranges::any_of(builtInWords, [&](const QString &word) {
        return word.size() == name.size() && word.compare(name, Qt::CaseInsensitive) == 0;
    });
    if (!isBuiltIn && !name.endsWith("_T"_L1))
        upper += "_T"_L1;
    return upper;
}

QString hexadecimalPreparseExpression(const QString &expression)
{
    const auto hexValue = [](QStringView literal) {
        quint64 value = 0;
        for (const QChar digit : literal.sliced(2))
            value = qMin<quint64>(value * 16 + digitValue(digit), 0xFFFFFFFFu);
        return QString::number(value);
    };
    const auto binaryValue = [](QStringView literal) {
        return QString::number(convertBinaryStringToUnsignedInt(literal.toString()));
    };
    return veldmap::replaceLiterals(veldmap::replaceLiterals(expression, u'x', veldmap::isHexDigit, hexValue), u'b',
                                    veldmap::isBinaryDigit, binaryValue);
}

unsigned int convertBinaryStringToUnsignedInt(const QString &digits)
{
    const bool prefixed = digits.startsWith("0b"_L1) || digits.startsWith("0B"_L1);
    unsigned int value = 0;
    for (const QChar digit : QStringView(digits).sliced(prefixed ? 2 : 0))
        value = (value << 1) | (digit == u'1' ? 1u : 0u);
    return value;
}

QString space_complement_to(const QString &text, int column)
{
    return QString(veldmap::blanksToColumn(text.size(), column), u' ');
}

bool recursiveMkdir(const QString &base, const QString &relative)
{
    const QDir directory(base);
    for (qsizetype slash = relative.indexOf(u'/'); slash >= 0; slash = relative.indexOf(u'/', slash + 1)) {
        if (slash > 0)
            directory.mkdir(relative.first(slash));
    }
    if (!relative.isEmpty())
        directory.mkdir(relative);
    return true;
}
