#pragma once

#include "console/session.h"

#include <QString>

#include <functional>
#include <memory>
#include <optional>

namespace veldmap::cli {

/// Reads lines from a terminal. With libedit they can be edited, and there are history and completion; without, they
/// are read as they come.
class LineEditor {
public:
    /// What may stand at the end of a text.
    using Complete = std::function<ConsoleCandidates(const QString &)>;

    /// Keeps the history in \a historyFile between runs, if that is not empty.
    LineEditor(Complete complete, const QString &historyFile);
    LineEditor(const LineEditor &) = delete;
    LineEditor &operator=(const LineEditor &) = delete;
    ~LineEditor();

    /// The next line without its line feed, which joins the history if it \a isKept; nothing at the end of the input.
    /// One that Ctrl-C has ended is empty. Meant for the signals SIGINT and SIGWINCH to be handled without SA_RESTART.
    std::optional<QString> read(const QString &prompt, bool isKept);

    class Private;

private:
    std::unique_ptr<Private> m_private;
};

/// The lines that a list of \a candidates has, for a terminal of \a width characters.
QString listOfCandidates(const ConsoleCandidates &candidates, int width);
/// What all of \a candidates begin with.
QString sharedBegin(const ConsoleCandidates &candidates);
/// \a candidates with the names of files that begin with \a word, where they are to be such.
ConsoleCandidates withFiles(ConsoleCandidates candidates, const QString &word);

} // namespace veldmap::cli
