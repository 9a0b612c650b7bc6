#pragma once

#include <QString>

namespace veldmap {

class HtmlText;

// Comments of a description are markup: "&lt;" is "<", and tags stand as they were written.

/// Appends \a comment as HTML that may stand in a div or a table's cell. Of its tags those on a short list are kept,
/// without attributes, wherever HTML allows them, and are closed; all others are shown as the text that they are.
void appendComment(HtmlText &text, const QString &comment);

/// \a comment without its tags and with its entities decoded, on one line.
QString plainComment(const QString &comment);

/// The first sentence of plainComment, at most \a longest characters of it.
QString summaryOf(const QString &comment, int longest);

} // namespace veldmap
