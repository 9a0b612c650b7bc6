#include "cli/line_editor.h"

#include <cerrno>
#include <cstdio>
#include <unistd.h>

// Without libedit: the terminal's own line editing, no history and no completion.

namespace veldmap::cli {

class LineEditor::Private {
public:
    QByteArray rest; // behind the last line
};

LineEditor::LineEditor(Complete, const QString &) : m_private(std::make_unique<Private>()) {}

LineEditor::~LineEditor() = default;

std::optional<QString> LineEditor::read(const QString &prompt, bool)
{
    std::fputs(prompt.toUtf8().constData(), stdout);
    std::fflush(stdout);
    QByteArray &text = m_private->rest;
    while (!text.contains('\n')) {
        char piece[4096];
        const ssize_t count = ::read(STDIN_FILENO, piece, sizeof piece);
        if (count < 0 && errno == EINTR) {
            text.clear();
            std::fputs("\n", stdout);
            return QString();
        }
        if (count <= 0 && text.isEmpty())
            return std::nullopt;
        if (count <= 0)
            break;
        text.append(piece, count);
    }
    const qsizetype end = text.contains('\n') ? text.indexOf('\n') : text.size();
    const QString line = QString::fromUtf8(text.first(end));
    text.remove(0, end + 1);
    return line;
}

} // namespace veldmap::cli
