#pragma once

#include <QString>

class VMBitField;

namespace veldmap {

/// \a comment of a description, which is markup, as people read it: tags are gone, entities are their characters, and
/// "<br>" begins a new line. Lines have no blanks at their ends, and the text no empty lines there.
QString plainCommentText(const QString &comment);

/// The same of the comment of \a field, without the table of its options, which every format says in its own way.
QString plainCommentText(const VMBitField &field);

} // namespace veldmap
