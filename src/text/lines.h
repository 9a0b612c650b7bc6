#pragma once

#include "text/columns.h"
#include "text/text_buffer.h"
#include <veldmap/veldmap_export.h>

#include <QList>
#include <QString>

#include <utility>

namespace veldmap {

/// Pads the line under construction as space_complement_to does: with blanks up to this column, at least one.
struct Column {
    int column;
};

/// The indentation of nesting level \a level: four blanks a level.
inline QString indent(int level)
{
    return QString(4 * qMax(level, 0), u' ');
}

/// \a value as exactly eight upper-case hexadecimal digits, without prefix.
VELDMAP_EXPORT QString hex8(quint32 value);

/// \a value as upper-case hexadecimal digits without leading zeros and without prefix.
inline QString hexDigits(quint32 value)
{
    return QString::number(value, 16).toUpper();
}

inline void appendPiece(TextBuffer &line, QStringView piece)
{
    line.append(piece);
}
inline void appendPiece(TextBuffer &line, QLatin1StringView piece)
{
    line.append(piece);
}
inline void appendPiece(TextBuffer &line, int piece)
{
    line.append(QStringView(QString::number(piece)));
}
inline void appendPiece(TextBuffer &line, Column piece)
{
    line.appendBlanks(blanksToColumn(line.size(), piece.column));
}

/// Appends one line of generated text: the pieces in order, then a line feed. A Column pads as space_complement_to
/// does, counted from the line's first piece, so an indent inside the call counts and one in front of it does not.
template <typename... Pieces>
void appendLine(QString &text, const Pieces &...pieces)
{
    TextBuffer line;
    (appendPiece(line, pieces), ...);
    line.append(u'\n');
    text += line.view();
}

/// One line of generated text, as appendLine appends it.
template <typename... Pieces>
QString lineOf(const Pieces &...pieces)
{
    TextBuffer line;
    (appendPiece(line, pieces), ...);
    line.append(u'\n');
    return line.text();
}

/// Fills the holes "@name@" of \a form with the values of \a holes, in one pass: inserted text is never scanned.
/// A hole that has no value is a fault of the caller and asserts.
QString expand(QStringView form, const QList<std::pair<QString, QString>> &holes);

} // namespace veldmap
