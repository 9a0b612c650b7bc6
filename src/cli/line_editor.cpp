#include "cli/line_editor.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

QString sharedBegin(const ConsoleCandidates &candidates)
{
    if (candidates.list.isEmpty())
        return {};
    QString shared = candidates.list.front().text;
    for (const ConsoleCandidate &candidate : candidates.list) {
        const auto end = std::ranges::mismatch(shared, candidate.text).in1;
        shared.truncate(end - shared.begin());
    }
    return shared;
}

QString listOfCandidates(const ConsoleCandidates &candidates, int width)
{
    constexpr qsizetype kMost = 100; // lines that somebody reads
    constexpr int kWidestName = 32;
    qsizetype column = 0;
    for (const ConsoleCandidate &candidate : candidates.list)
        column = qMax(column, candidate.name.size() + candidate.arguments.size());
    column = qMin<qsizetype>(column, kWidestName) + 2;
    QString text;
    for (const ConsoleCandidate &candidate : candidates.list.first(qMin(kMost, candidates.list.size()))) {
        const bool isForm = candidate.arguments.startsWith(u'(') || candidate.arguments.isEmpty();
        QString line = candidate.name + (isForm ? QString() : u" "_s) + candidate.arguments;
        if (!candidate.help.isEmpty())
            line = line.leftJustified(column) + ' '_L1 + candidate.help;
        text += line.left(qMax(width - 1, 20)).trimmed() + u'\n';
    }
    if (candidates.list.size() > kMost)
        text += u"... and %1 more\n"_s.arg(candidates.list.size() - kMost);
    return text;
}

ConsoleCandidates withFiles(ConsoleCandidates candidates, const QString &word)
{
    if (!candidates.areFiles)
        return candidates;
    const QString front = word.first(word.lastIndexOf(u'/') + 1);
    const QDir directory(front.startsWith("~/"_L1) ? QDir::homePath() + front.sliced(1)
                         : front.isEmpty()         ? u"."_s
                                                   : front);
    for (const QFileInfo &file : directory.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name)) {
        const QString name = file.fileName() + (file.isDir() ? u"/"_s : QString());
        if ((front + name).startsWith(word))
            candidates.list += {front + name, name, {}, {}, false};
    }
    return candidates;
}

} // namespace veldmap::cli
