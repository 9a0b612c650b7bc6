#pragma once

#include <QString>

namespace veldmap {

bool isHexDigit(QChar character);
bool isBinaryDigit(QChar character);

/// The length of the literal that begins at \a start of \a text, 0 when there is none.
qsizetype literalLength(QStringView text, qsizetype start, char16_t letter, bool (*isDigit)(QChar));

/// \a text with each number literal of one notation as \a replacement gives it: "0", \a letter in either case, then all
/// the digits of the notation that follow. A literal that continues a name or a number stays.
template <typename Replacement>
QString replaceLiterals(const QString &text, char16_t letter, bool (*isDigit)(QChar), const Replacement &replacement)
{
    if (!text.contains(QChar(letter), Qt::CaseInsensitive))
        return text;
    QString result;
    qsizetype begin = 0; // of the run without a literal
    for (qsizetype at = text.indexOf(u'0'); at >= 0; at = text.indexOf(u'0', at + 1)) {
        const qsizetype length = literalLength(text, at, letter, isDigit);
        if (length == 0)
            continue;
        result += QStringView(text).sliced(begin, at - begin);
        result += replacement(QStringView(text).sliced(at, length));
        begin = at + length;
        at = begin - 1;
    }
    result += QStringView(text).sliced(begin);
    return result;
}

} // namespace veldmap
