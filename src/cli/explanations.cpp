#include "cli/explanations.h"

#include "container/container_format.h"
#include "files/file_reader.h"
#include "findings/document_faults.h"
#include "findings/limits.h"
#include "findings/quotation.h"
#include "xml/rules.h"

#include <QFile>

#include <sys/ioctl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

QString placeText(const Place &place)
{
    return place.file + u':' + QString::number(place.line);
}

/// "included from soc.xml:4", a line for each file up to the root.
QString includesText(const QList<Place> &includes)
{
    constexpr qsizetype kShown = 8;
    QString text;
    for (const Place &include : includes.first(qMin(includes.size(), kShown)))
        text += "included from "_L1 + placeText(include) + u'\n';
    if (includes.size() > kShown)
        text += u"included from %1 more files\n"_s.arg(includes.size() - kShown);
    return text;
}

} // namespace

void Explanations::complete(Finding &finding)
{
    m_names.explain(finding);
    if (finding.rule->id != rules::notWellFormed.id)
        return;
    if (const Source *source = sourceOf(finding.place.file); source && source->bytes)
        explainDocumentFault(*source->bytes, finding);
}

QString Explanations::of(const Finding &finding)
{
    QString text = quotationOf(finding) + includesText(finding.includes);
    for (const RelatedPlace &other : finding.related) {
        const Place &place = other.place;
        text += placeText(place) + u':' + QString::number(place.column) + ": note: "_L1 + other.what + u'\n';
        Finding there = finding;
        there.place = place;
        there.expression = {};
        text += quotationOf(there);
    }
    if (const QString hint = finding.whatToDo(); !hint.isEmpty())
        text += "hint: "_L1 + hint + u'\n';
    return text;
}

void Explanations::give(const QString &name, const QByteArray &bytes)
{
    m_sources.setMaxCost(limits::kDocumentBytes); // so that the file itself always finds room
    auto source = std::make_unique<Source>();
    if (!isContainer(bytes)) {
        source->bytes = bytes;
        source->text = SourceText::ofBytes(bytes);
        if (!source->text && !bytes.contains('\0'))
            source->text = SourceText::ofUtf8(bytes); // so that the wrong bytes can be shown
    }
    m_sources.insert(name, source.release(), qMin<qint64>(bytes.size(), limits::kDocumentBytes));
}

const Explanations::Source *Explanations::sourceOf(const QString &file)
{
    QFile opened(file);
    if (!m_sources.contains(file) && opened.open(QIODevice::ReadOnly))
        give(file, readAtMost(opened, limits::kDocumentBytes - 1));
    return m_sources.object(file);
}

QString Explanations::quotationOf(const Finding &finding)
{
    if (finding.place.line < 1)
        return {};
    const Source *source = sourceOf(finding.place.file);
    return source && source->text ? quotation(finding, *source->text, m_width) : QString();
}

int widthOfTerminal()
{
    constexpr int kUsual = 80;
    winsize size = {};
    return ioctl(STDERR_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kUsual;
}

} // namespace veldmap::cli
