#include "console/scripts.h"

#include "console/console_rules.h"
#include "console/interpreter.h"
#include "console/state.h"

#include <QFile>

#include <utility>

namespace veldmap {

namespace {

/// Writes \a line, which has succeeded, to the file that the session records to.
void record(ConsoleState &state, const QString &line)
{
    QFile file(state.recordFile);
    const QByteArray bytes = line.toUtf8() + '\n';
    if (file.open(QIODevice::WriteOnly | QIODevice::Append) && file.write(bytes) == bytes.size() && file.flush())
        return;
    state.fail(console_rules::kFileUnwritable, {state.recordFile, file.errorString()});
    state.recordFile.clear();
}

} // namespace

bool runLine(ConsoleState &state, const QString &line, const Place &place)
{
    if (state.sourceDepth == 0)
        state.isInterrupted = false;
    const Place before = std::exchange(state.place, place);
    const QString recordFile = state.recordFile;
    const bool isDone = Interpreter(state).run(line);
    // The command that begins a record is no part of it, nor is the one that ends it, and of a file that is run it has
    // the command that does so.
    const bool isRecorded = state.sourceDepth == state.recordDepth;
    if (isDone && isRecorded && !recordFile.isEmpty() && state.recordFile == recordFile && !line.trimmed().isEmpty())
        record(state, line);
    state.place = before;
    return isDone;
}

bool runLines(ConsoleState &state, const QString &text, const QString &file, bool keepsGoing)
{
    const QStringList lines = text.split(u'\n');
    if (state.sourceDepth == 0)
        state.isInterrupted = false;
    ++state.sourceDepth;
    bool isDone = true;
    for (qsizetype at = 0; at < lines.size() && (isDone || keepsGoing) && !state.isOver; ++at) {
        if (state.isInterrupted) {
            isDone = false;
            break;
        }
        isDone = runLine(state, lines[at], {file, at + 1, 1}) && isDone;
    }
    --state.sourceDepth;
    return isDone;
}

bool runFile(ConsoleState &state, const QString &path)
{
    if (state.sourceDepth >= kMostSources)
        return state.fail(console_rules::kSourceTooDeep, {path, QString::number(kMostSources)});
    QFile file(path);
    QByteArray bytes;
    if (file.open(QIODevice::ReadOnly))
        bytes = file.readAll();
    if (file.error() != QFile::NoError)
        return state.fail(console_rules::kNoFile, {path, file.errorString()});
    return runLines(state, QString::fromUtf8(bytes), path, false);
}

} // namespace veldmap
