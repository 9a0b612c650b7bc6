#pragma once

#include "veldmap_export.h"

#include <QString>

/// Text rules that the model, the loader and the generators share. None keeps state, none can fail on any text.

/// \a comment as C comment lines: each begins with 4 * \a indent blanks and "/// ", and breaks behind the word that
/// reaches column \a width. "<br>" is a line break. The last line has no line feed; an empty comment gives the prefix
/// alone. A comment is never laid out narrower than 40 columns behind its indentation.
VELDMAP_EXPORT QString convertCommentToCComment(const QString &comment, int width, int indent);

/// \a name in lower camel case, as instance pointers use it: MY_REG gives myReg.
VELDMAP_EXPORT QString ESDRConvert(const QString &name);

/// The C type name of the description type \a name: the built-in words in upper case, all others in upper case and
/// ending in "_T".
VELDMAP_EXPORT QString ESDRTypeConvert(const QString &name);

/// \a expression with its hexadecimal (0x1F) and binary (0b101) literals as decimal numbers, which are all that the
/// evaluator reads. A literal that continues a name (FOO_0x10) stays; a hexadecimal one beyond 32 bits becomes
/// 4294967295.
VELDMAP_EXPORT QString hexadecimalPreparseExpression(const QString &expression);

/// The number of a text of binary digits, with or without "0b" in front. Any character but "1" counts as a zero digit;
/// digits beyond the 32nd from the right are dropped.
VELDMAP_EXPORT unsigned int convertBinaryStringToUnsignedInt(const QString &digits);

/// The blanks that carry \a text to \a column, at least one.
VELDMAP_EXPORT QString space_complement_to(const QString &text, int column);

/// Makes the directory \a relative below the directory \a base, level by level. Always true: a directory that could not
/// be made shows when a file in it can't be opened.
VELDMAP_EXPORT bool recursiveMkdir(const QString &base, const QString &relative);

namespace veldmap {

/// The number of blanks that carry a text of \a length characters to \a column, at least one.
inline qsizetype blanksToColumn(qsizetype length, int column)
{
    return length < column ? column - length : 1;
}

/// \a text with each number literal of one notation as \a replacement gives it: "0", \a letter in either case, then all
/// the digits of the notation that follow. A literal that continues a name or a number stays.
template <typename Replacement>
QString replaceLiterals(const QString &text, char16_t letter, bool (*isDigit)(QChar), const Replacement &replacement);

VELDMAP_EXPORT bool isHexDigit(QChar character);
VELDMAP_EXPORT bool isBinaryDigit(QChar character);

/// Whether \a character may stand in a name: a letter A to Z or a to z, a digit or an underscore.
inline bool isNameCharacter(QChar character)
{
    const char16_t c = character.unicode();
    return (c >= u'A' && c <= u'Z') || (c >= u'a' && c <= u'z') || (c >= u'0' && c <= u'9') || c == u'_';
}

/// The length of the literal that begins at \a start of \a text, 0 when there is none.
qsizetype literalLength(QStringView text, qsizetype start, char16_t letter, bool (*isDigit)(QChar));

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
