#pragma once

#include "check/known_names.h"
#include "findings/source_text.h"

#include <QCache>

namespace veldmap::cli {

/// What is shown below a finding: the line of the description with a mark, further places with theirs, the files that
/// include its file, and what to do.
class Explanations {
public:
    /// Texts have lines of \a width columns.
    explicit Explanations(int width) : m_width(width) {}

    /// Hears of the documents of a load, to know what names there are.
    KnownNames &names() { return m_names; }
    /// Shows \a bytes as what the file \a name holds, which has no other place.
    void give(const QString &name, const QByteArray &bytes);

    /// Adds to \a finding all that is known of it: further places, the files that include its file, what to do.
    void complete(Finding &finding);
    /// The lines below a finding that is complete, each with its line feed. A file that can't be read any more, or that
    /// is encrypted, is not shown.
    QString of(const Finding &finding);

private:
    struct Source {
        std::optional<QByteArray> bytes; ///< none of an encrypted file, or of one that can't be read
        std::optional<SourceText> text;
    };
    const Source *sourceOf(const QString &file);
    QString quotationOf(const Finding &finding);

    KnownNames m_names;
    QCache<QString, Source> m_sources; ///< by file; its cost is the bytes of the file
    int m_width;
};

/// The columns of the terminal at the standard error, 80 when it is none.
int widthOfTerminal();

} // namespace veldmap::cli
