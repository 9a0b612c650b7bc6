#include "access/completion.h"
#include "console/commands.h"
#include "console/interpreter.h"
#include "console/session.h"
#include "console/state.h"
#include "model/aggregates.h"
#include "model/memory_map.h"
#include "model/root_archive.h"
#include "model/valuable.h"
#include "text/names.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// What stands around the end of a line that is being typed.
struct Begun {
    qsizetype begin = 0; ///< of the word that ends there
    QString receiver;    ///< the path, and perhaps the operation, that the word is a value for; empty for none
};

/// Finds the word in which \a line ends. What stands in front is read as far as it goes.
Begun begunIn(const QString &line, qsizetype from)
{
    Begun begun{line.size(), {}};
    QStringList receivers = {QString()}; // of the parentheses that are open
    QString last;                        // path in front
    for (qsizetype at = from; at < line.size();) {
        const QChar c = line[at];
        if (c == u'$' || isNameCharacter(c) || c.unicode() > 0x7F) {
            const qsizetype end = endOfPath(line, at);
            const bool isOpen = end < 0 || end == line.size() || (line[end] == u'.' && end + 1 == line.size());
            if (isOpen) {
                begun.begin = at;
                break;
            }
            last = line.sliced(at, end - at);
            at = end;
            continue;
        }
        if (c == u'(')
            receivers += last;
        else if (c == u')' && receivers.size() > 1)
            receivers.removeLast();
        else if (c == u'=' || c == u'<' || c == u'>' || c == u'!')
            receivers.last() = last;
        ++at;
    }
    begun.receiver = receivers.last();
    return begun;
}

/// Gathers candidates that begin with a word.
class Gatherer {
public:
    Gatherer(const ConsoleState &state, const QString &word, ConsoleCandidates &candidates)
        : m_state(state), m_word(word), m_candidates(candidates)
    {
    }

    void offer(const QString &text, const QString &name, const QString &arguments, const QString &help,
               bool takesMore = false)
    {
        if (text.startsWith(m_word))
            m_candidates.list += {text, name, arguments, help.section(u'<', 0, 0).simplified(), takesMore};
    }

    void offerCommands(bool isHelp)
    {
        for (const ConsoleCommand &command : consoleCommands())
            offer(command.name, command.name, isHelp ? QString() : QString(command.arguments), command.help,
                  !isHelp && !command.arguments.isEmpty());
    }

    void offerOptions(const QString &receiver)
    {
        if (receiver.isEmpty())
            return;
        const QString path = receiver.startsWith(u'$') ? receiver : u'$' + receiver;
        // Of a path that goes on behind a field, as with an operation, it is the field that a lookup finds.
        const auto *field = elementCast<VMBitField>(m_state.map.getElementFromPath(path));
        if (!field)
            return;
        for (const VMBitFieldOption &option : field->options.optionList)
            offer(option.name, option.name, {},
                  field->convertValueToValueString(static_cast<quint32>(option.value), DISPLAY_DEFAULT, false, true) +
                      "  "_L1 + option.comment);
    }

    void offerKept()
    {
        for (auto kept = m_state.kept.keyBegin(); kept != m_state.kept.keyEnd(); ++kept)
            offer(*kept, *kept, {}, u"a value that was kept"_s);
    }

    void offerPaths(bool withOperations)
    {
        if (m_word.lastIndexOf(u'[') > m_word.lastIndexOf(u']'))
            return offerIndexes();
        const bool hasSign = m_word.startsWith(u'$');
        const qsizetype dot = m_word.lastIndexOf(u'.');
        const QString front = m_word.first(dot + 1);
        const QString path = hasSign ? m_word : u'$' + m_word;
        for (const CXMLCompletionEntry &entry : m_state.map.getCompletionListFromPath(path)) {
            const bool isOperation = entry.type == CXMLCompletionEntry::COMPLETION_OPERATION;
            if (isOperation && !withOperations)
                continue;
            const QString name = dot < 0 && !hasSign ? entry.name.sliced(1) : entry.name;
            const QString ending = entry.type == CXMLCompletionEntry::COMPLETION_STRUCT  ? u"."_s
                                   : entry.type == CXMLCompletionEntry::COMPLETION_ARRAY ? u"["_s
                                   : !entry.arguments.isEmpty()                          ? u"("_s
                                                                                         : QString();
            offer(front + name + ending, name, entry.arguments.isEmpty() ? QString() : u'(' + entry.arguments + u')',
                  entry.help);
        }
    }

private:
    /// The numbers of the members of the array in front of the last bracket.
    void offerIndexes()
    {
        constexpr int kMost = 64; // nobody reads a longer list
        const QString front = m_word.section(u'[', 0, -2);
        const auto *array =
            elementCast<VMArray>(m_state.map.getElementFromPath(front.startsWith(u'$') ? front : u'$' + front));
        for (int index = 0; array && index < qMin(array->count(), kMost); ++index) {
            const QString text = u"%1[%2]"_s.arg(front, QString::number(index));
            offer(text, u"[%1]"_s.arg(index), {}, array->getComment());
        }
    }

    const ConsoleState &m_state;
    const QString m_word;
    ConsoleCandidates &m_candidates;
};

/// The candidates for the last of the words behind \a command, which begin at \a from.
void completeCommand(const ConsoleState &state, const ConsoleCommand &command, const QString &line, qsizetype from,
                     ConsoleCandidates &candidates)
{
    const auto lastBlank = std::find_if(line.rbegin(), line.rend(), [](QChar c) { return c.isSpace(); });
    const qsizetype wordBegin = lastBlank.base() - line.begin();
    const QString word = line.sliced(wordBegin);
    const QStringList before = wordsOf(line.sliced(from, wordBegin - from));
    candidates.begin = wordBegin;
    Gatherer gatherer(state, word, candidates);
    switch (command.words) {
    case CommandWords::Files:
        candidates.areFiles = before.isEmpty() || command.name != "snapshot"_L1;
        if (!candidates.areFiles)
            gatherer.offerPaths(false);
        if (command.name == "record"_L1)
            gatherer.offer(u"off"_s, u"off"_s, {}, u"end the record"_s);
        if (command.name == "restore"_L1)
            gatherer.offer(u"--yes"_s, u"--yes"_s, {}, u"do not ask"_s);
        break;
    case CommandWords::Settings:
        for (const ConsoleSetting &setting : consoleSettings()) {
            if (before.isEmpty())
                gatherer.offer(setting.name, setting.name, setting.values, setting.help, true);
            else if (before.size() == 1 && setting.name == before.front() && setting.values.contains(u'|'))
                for (const QString &value : QString(setting.values).split(u'|'))
                    gatherer.offer(value, value, {}, {});
        }
        break;
    case CommandWords::Commands:
        gatherer.offerCommands(true);
        break;
    case CommandWords::Paths: {
        const Begun begun = begunIn(line, from);
        candidates.begin = begun.begin;
        Gatherer paths(state, line.sliced(begun.begin), candidates);
        if (command.name == "wait"_L1)
            paths.offerOptions(begun.receiver);
        paths.offerPaths(command.name == "wait"_L1);
        break;
    }
    case CommandWords::None:
        break;
    }
}

} // namespace

ConsoleCandidates ConsoleSession::candidatesFor(const QString &line) const
{
    ConsoleCandidates candidates;
    const ConsoleState &state = *m_state;
    qsizetype at = 0;
    while (at < line.size() && line[at].isSpace())
        ++at;
    const auto blank = std::find_if(line.begin() + at, line.end(), [](QChar c) { return c.isSpace(); });
    const qsizetype wordEnd = blank - line.begin();
    const ConsoleCommand *command =
        wordEnd < line.size() ? commandNamed(QStringView(line).sliced(at, wordEnd - at)) : nullptr;
    if (command && assignmentIn(QStringView(line).sliced(wordEnd).trimmed()) != 0) {
        completeCommand(state, *command, line, wordEnd, candidates);
        return candidates;
    }
    const Begun begun = begunIn(line, at);
    candidates.begin = begun.begin;
    Gatherer gatherer(state, line.sliced(begun.begin), candidates);
    gatherer.offerOptions(begun.receiver);
    if (begun.begin == at)
        gatherer.offerCommands(false);
    gatherer.offerKept();
    gatherer.offerPaths(true);
    return candidates;
}

} // namespace veldmap
