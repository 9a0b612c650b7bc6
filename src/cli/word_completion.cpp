#include "cli/word_completion.h"

#include "access/completion.h"
#include "cli/description.h"
#include "cli/session.h"
#include "model/aggregates.h"
#include "target/target.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <iterator>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

/// The commands whose words are paths, or begin with one.
constexpr QLatin1StringView kOfPaths[] = {"show"_L1, "regs"_L1, "write"_L1, "complete"_L1};

/// The candidates for one word.
class Candidates {
public:
    explicit Candidates(QString begun) : m_begun(std::move(begun)) {}

    void offer(const QString &word, const QString &meaning)
    {
        if (!word.startsWith(m_begun) || m_words.contains(word))
            return;
        QString text = meaning.section(u'<', 0, 0).simplified(); // the rest of a comment is markup
        m_lines += word + u'\t' + text + u'\n';
        m_words += word;
    }

    /// Leaves the word to the shell, which knows the names of files.
    void leaveTo(QLatin1StringView kind) { m_lines = u':' + kind + u'\n'; }

    const QString &begun() const { return m_begun; }
    const QStringList &words() const { return m_words; }
    const QString &lines() const { return m_lines; }

private:
    QString m_begun;
    QStringList m_words;
    QString m_lines;
};

QString meaningOf(const CLI::Option &option)
{
    return QString::fromStdString(option.get_description());
}

bool takesValue(const CLI::Option &option)
{
    return option.nonpositional() && option.get_items_expected_max() > 0;
}

/// The command line as far as it was typed.
class CommandLine {
public:
    CommandLine(const CLI::App &app, const std::vector<std::string> &words) : m_app(app)
    {
        for (const std::string &word : words)
            m_words += QString::fromStdString(word);
        const std::vector<const CLI::App *> commands = app.get_subcommands({});
        for (qsizetype at = 0; at + 1 < m_words.size() && !m_command; ++at) {
            const auto found = std::ranges::find(commands, m_words[at].toStdString(), &CLI::App::get_name);
            m_command = found == commands.end() ? nullptr : *found;
        }
    }

    const CLI::App *command() const { return m_command; }
    QString commandName() const { return m_command ? QString::fromStdString(m_command->get_name()) : QString(); }
    QString last() const { return m_words.isEmpty() ? QString() : m_words.last(); }

    /// The options that may stand here: those of the command, and those of the program.
    std::vector<const CLI::Option *> options() const
    {
        const auto hasName = [](const CLI::Option *option) { return option->nonpositional(); };
        std::vector<const CLI::Option *> found = m_app.get_options(hasName);
        if (m_command) {
            const std::vector<const CLI::Option *> own = m_command->get_options(hasName);
            found.insert(found.begin(), own.begin(), own.end());
        }
        return found;
    }

    const CLI::Option *findOption(const QString &name) const
    {
        const std::string text = name.toStdString();
        const auto all = options();
        const auto found =
            std::ranges::find_if(all, [&](const CLI::Option *option) { return option->check_name(text); });
        return found == all.end() || !name.startsWith(u'-') ? nullptr : *found;
    }

    /// The option whose value the last word is, if it is one.
    const CLI::Option *optionOfLast() const
    {
        const CLI::Option *option = m_words.size() < 2 ? nullptr : findOption(m_words[m_words.size() - 2]);
        return option && takesValue(*option) ? option : nullptr;
    }

    /// What is given as value of \a option so far.
    QString valueOf(const QString &option) const
    {
        for (qsizetype at = 0; at + 1 < m_words.size(); ++at) {
            if (m_words[at] == option)
                return m_words[at + 1];
            if (m_words[at].startsWith(option + u'='))
                return m_words[at].sliced(option.size() + 1);
        }
        return {};
    }

private:
    const CLI::App &m_app;
    QStringList m_words;
    const CLI::App *m_command = nullptr;
};

void offerRules(const QString &front, Candidates &candidates)
{
    for (const LintRule *row : lintRules())
        candidates.offer(front + row->rule.id, wordsWithoutArguments(row->rule));
}

/// The words behind -W, each behind \a front.
void offerChoices(const QString &front, Candidates &candidates)
{
    candidates.offer(front + u"all"_s, u"turn on all rules"_s);
    candidates.offer(front + u"error"_s, u"all warnings are errors"_s);
    for (const QLatin1StringView part : {""_L1, "no-"_L1, "error="_L1, "no-error="_L1})
        offerRules(front + part, candidates);
}

/// What \a option takes, each candidate behind \a front.
void offerValues(const CLI::Option &option, const QString &front, Candidates &candidates)
{
    const QString type = QString::fromStdString(option.get_type_name());
    if (const qsizetype begin = type.indexOf(":{"_L1); begin >= 0 && type.endsWith(u'}')) {
        const QStringList values = type.sliced(begin + 2).chopped(1).split(u',');
        for (const QString &value : values)
            candidates.offer(front + value, {});
    } else if (option.check_lname("chip") || option.check_lname("soft")) {
        candidates.leaveTo("description"_L1);
    } else if (type == "FILE"_L1) {
        candidates.leaveTo("file"_L1);
    } else if (type == "DIR"_L1) {
        candidates.leaveTo("directory"_L1);
    } else if (type == "TARGET"_L1) {
        for (const QString &kind : targetKinds())
            candidates.offer(front + kind, {});
    } else if (option.check_sname("W")) {
        offerChoices(front, candidates);
    } else if (option.check_lname("no-warn")) {
        offerRules(front, candidates);
    }
}

void offerOptions(const CommandLine &line, Candidates &candidates)
{
    for (const CLI::Option *option : line.options()) {
        for (const std::string &name : option->get_lnames())
            candidates.offer(u"--"_s + QString::fromStdString(name), meaningOf(*option));
        for (const std::string &name : option->get_snames())
            candidates.offer(u'-' + QString::fromStdString(name), meaningOf(*option));
    }
}

bool isMember(const CXMLCompletionEntry &entry)
{
    return entry.type != CXMLCompletionEntry::COMPLETION_OPERATION && entry.arguments.isEmpty() &&
           entry.result.isEmpty();
}

/// The numbers of the members of the array that \a begun names in front of its last bracket.
void offerIndexes(VMMemoryMap &map, Candidates &candidates)
{
    constexpr int kMost = 64; // nobody reads a longer list
    const QString front = candidates.begun().section(u'[', 0, -2);
    const auto *array = elementCast<VMArray>(map.getElementFromPath(front));
    for (int index = 0; array && index < qMin(array->count(), kMost); ++index)
        candidates.offer(u"%1[%2]"_s.arg(front, QString::number(index)), {});
}

/// The members behind the last dot of what is begun. Where there is but one, also what goes on behind it: else a shell
/// takes the word for ended, and closes its quote.
void offerPaths(VMMemoryMap &map, Candidates &candidates)
{
    const QString begun = candidates.begun();
    if (begun.lastIndexOf(u'[') > begun.lastIndexOf(u']'))
        return offerIndexes(map, candidates);
    const QString front = begun.first(begun.lastIndexOf(u'.') + 1);
    CXMLCompletionEntry::CompletionEntryType last = CXMLCompletionEntry::COMPLETION_NONE;
    for (const CXMLCompletionEntry &entry : map.getCompletionListFromPath(begun.isEmpty() ? u"$"_s : begun)) {
        const qsizetype before = candidates.words().size();
        if (isMember(entry))
            candidates.offer(front + entry.name, entry.help);
        if (candidates.words().size() > before)
            last = entry.type;
    }
    if (candidates.words().size() != 1)
        return;
    const QString only = candidates.words().first();
    if (last == CXMLCompletionEntry::COMPLETION_ARRAY)
        candidates.offer(only + u'[', {});
    else if (std::ranges::any_of(map.getCompletionListFromPath(only + u'.'), isMember))
        candidates.offer(only + u'.', {});
}

bool takesPaths(const CommandLine &line)
{
    return std::ranges::find(kOfPaths, line.commandName()) != std::end(kOfPaths);
}

/// Loads what the command line names and offers the paths in it.
void offerPathsOf(const CommandLine &line, Session &session, Candidates &candidates)
{
    Options options;
    options.chip = line.valueOf(u"--chip"_s);
    options.soft = line.valueOf(u"--soft"_s);
    if (options.hasRoot() && loadDescriptions(options, session))
        offerPaths(session.map, candidates);
}

/// What a word may be that no option stands in front of.
void offerWords(const CommandLine &line, Session &session, Candidates &candidates)
{
    if (takesPaths(line)) {
        offerPathsOf(line, session, candidates);
        if (line.commandName() == "write"_L1 && candidates.words().size() == 1)
            candidates.offer(candidates.words().first() + u'=', {});
        return;
    }
    const auto files = line.command()->get_options([](const CLI::Option *option) { return option->get_positional(); });
    if (!files.empty())
        candidates.leaveTo("file"_L1);
}

void offerCommands(const CLI::App &app, Candidates &candidates)
{
    for (const CLI::App *command : app.get_subcommands({}))
        candidates.offer(QString::fromStdString(command->get_name()),
                         QString::fromStdString(command->get_description()));
}

void offerAny(const CLI::App &app, const CommandLine &line, Session &session, Candidates &candidates)
{
    const QString begun = candidates.begun();
    const qsizetype equals = begun.indexOf(u'=');
    const CLI::Option *option = line.optionOfLast();
    if (option && option->check_lname("command")) // a line of the console
        offerPathsOf(line, session, candidates);
    else if (option)
        offerValues(*option, {}, candidates);
    else if (begun.startsWith("-W"_L1) && line.findOption(u"-W"_s))
        offerChoices(u"-W"_s, candidates);
    else if (begun.startsWith("--"_L1) && equals > 0 && line.findOption(begun.first(equals)))
        offerValues(*line.findOption(begun.first(equals)), begun.first(equals + 1), candidates);
    else if (begun.startsWith(u'-'))
        offerOptions(line, candidates);
    else if (begun.startsWith(u'@'))
        candidates.leaveTo("file"_L1);
    else if (line.command())
        offerWords(line, session, candidates);
    else
        offerCommands(app, candidates);
}

} // namespace

ExitStatus completeWords(const CLI::App &app, const std::vector<std::string> &words, Session &session)
{
    const CommandLine line(app, words);
    Candidates candidates(line.last());
    offerAny(app, line, session, candidates);
    return printResult(candidates.lines(), session.messages) ? kDone : kFailed;
}

} // namespace veldmap::cli
