#include "cli/explanations.h"

#include "files/file_reader.h"
#include "findings/limits.h"
#include "findings/quotation.h"

#include <QFile>

#include <sys/ioctl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

QString Explanations::of(const Finding &finding)
{
    QString text = quotationOf(finding);
    for (const RelatedPlace &other : finding.related) {
        const Place &place = other.place;
        text += place.file + u':' + QString::number(place.line) + u':' + QString::number(place.column) + ": note: "_L1 +
                other.what + u'\n';
        Finding there = finding;
        there.place = place;
        text += quotationOf(there);
    }
    if (const QString nearest = m_names.nearestFor(finding); !nearest.isEmpty())
        text += "hint: did you mean '"_L1 + nearest + "'?\n"_L1;
    if (!finding.rule->hint.isEmpty())
        text += "hint: "_L1 + finding.rule->hint.toString() + u'\n';
    return text;
}

QString Explanations::quotationOf(const Finding &finding)
{
    const QString &name = finding.place.file;
    if (finding.place.line < 1)
        return {};
    if (!m_sources.contains(name)) {
        m_sources.setMaxCost(limits::kDocumentBytes); // so that the file itself always finds room
        QFile file(name);
        const QByteArray bytes =
            file.open(QIODevice::ReadOnly) ? readAtMost(file, limits::kDocumentBytes - 1) : QByteArray();
        m_sources.insert(name, new std::optional<SourceText>(SourceText::ofBytes(bytes)), bytes.size());
    }
    const std::optional<SourceText> *source = m_sources.object(name);
    return source && source->has_value() ? quotation(finding, **source, m_width) : QString();
}

int widthOfTerminal()
{
    constexpr int kUsual = 80;
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

} // namespace veldmap::cli
