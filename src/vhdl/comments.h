#pragma once

#include <QString>

namespace veldmap {

/// Whether a tool of VHDL-93 takes \a text in a comment. A package is UTF-8; such a tool reads its bytes as Latin-1 and
/// takes none of the control characters in it.
bool isPlainComment(const QString &text);

/// \a text as it can stand in a comment: a "?" for each character that no comment takes.
QString printableComment(const QString &text);

/// Makes a comment of the last line of \a text, which begins at \a begin, and tells \a reason behind it:
///
///     --constant at_CTRL:                           integer := 2; -- refused: the name is declared already
///
/// An empty \a reason leaves it as it is.
void commentOut(QString &text, qsizetype begin, const QString &reason);

} // namespace veldmap
