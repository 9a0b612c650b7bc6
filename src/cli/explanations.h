#pragma once

#include "check/known_names.h"
#include "findings/source_text.h"

#include <QCache>

namespace veldmap::cli {

/// What is shown below a finding: the line of the description with a mark, further places with theirs, and what to do.
class Explanations {
public:
    /// Texts have lines of \a width columns.
    explicit Explanations(int width) : m_width(width) {}

    /// Hears of the documents of a load, to know what names there are.
    KnownNames &names() { return m_names; }
    /// Lines, each with its line feed. A file that can't be read any more, or that is encrypted, is not shown.
    QString of(const Finding &finding);

private:
    QString quotationOf(const Finding &finding);

    KnownNames m_names;
    QCache<QString, std::optional<SourceText>> m_sources; ///< by file; its cost is the bytes of the file
    int m_width;
};

/// The columns of the terminal at the standard error, 80 when it is none.
int widthOfTerminal();

} // namespace veldmap::cli
