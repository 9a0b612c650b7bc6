#include "cli/lint_options.h"

#include "cli/messages.h"
#include "cli/program_rules.h"
#include "files/file_reader.h"
#include "text/literals.h"

#include <CLI/CLI.hpp>

#include <QFile>

#include <algorithm>
#include <iterator>
#include <string_view>

using namespace Qt::StringLiterals;

namespace veldmap::cli {

namespace {

/// Takes one word behind -W; false, with an error told, when it names no rule.
bool takeWord(const QString &word, LintChoice &choice, Messages &messages)
{
    if (choice.take(word))
        return true;
    const QString id = LintChoice::idOf(word).toString();
    const QString nearest = choice.nearestId(word);
    if (nearest.isEmpty())
        messages.tell(rules::kNoRule, {id});
    else
        messages.tell(rules::kNoRuleButNear, {id, nearest});
    return false;
}

/// The words on one line of a file of options.
std::vector<std::string> wordsOfLine(const QByteArray &line)
{
    QByteArray text = line.trimmed().replace('\t', ' ');
    // A "#" inside a word belongs to it, as in the name of a file.
    for (qsizetype sign = text.indexOf('#'); sign >= 0; sign = text.indexOf('#', sign + 1)) {
        if (sign == 0 || text[sign - 1] == ' ') {
            text = text.first(sign).trimmed();
            break;
        }
    }
    if (text.isEmpty())
        return {};
    const qsizetype blank = text.startsWith('-') ? text.indexOf(' ') : -1;
    if (blank < 0)
        return {text.toStdString()};
    return {text.first(blank).toStdString(), text.sliced(blank).trimmed().toStdString()};
}

/// Whether \a words call a command that takes files of options. To the others "@" is a letter like any.
bool takesOptionFiles(const std::vector<std::string> &words)
{
    static constexpr std::string_view kLinting[] = {"check", "headers", "vhdl", "docs", "site", "build"};
    const auto command = std::ranges::find_if(words, [](const std::string &word) { return word.rfind('-', 0) != 0; });
    return command != words.end() && std::ranges::find(kLinting, *command) != std::end(kLinting);
}

} // namespace

void addLintOptions(CLI::App &command, LintArguments &arguments)
{
    const std::string group = "Lint";
    command.add_flag("--no-lint", arguments.isRefused, "tell only what loading and writing find")->group(group);
    command
        .add_option("-W", arguments.words,
                    "ID or no-ID: turn a rule on or off; error=ID: make an error of what it finds; all: turn on all "
                    "rules; error: as --strict")
        ->type_name("WORD")
        ->allow_extra_args(false)
        ->group(group);
    command.add_option("--no-warn", arguments.unwanted, "turn a rule off whatever -W says")
        ->type_name("ID")
        ->allow_extra_args(false)
        ->group(group);
    command.add_flag("--strict", arguments.isStrict, "all warnings are errors, those of loading too")->group(group);
    command
        .add_option("--max-messages", arguments.most,
                    "tell no more findings that are no errors, 100 if not given; 0: all")
        ->type_name("N")
        ->group(group);
}

bool takeLintOptions(const LintArguments &arguments, LintOptions &options, Messages &messages)
{
    options.isOn = !arguments.isRefused;
    for (const std::string &word : arguments.words) {
        if (!takeWord(QString::fromStdString(word), options.choice, messages))
            return false;
    }
    for (const std::string &id : arguments.unwanted) {
        if (!takeWord(u"no-"_s + QString::fromStdString(id), options.choice, messages))
            return false;
    }
    if (arguments.isStrict && !options.choice.take(u"error"))
        return false;
    if (!arguments.most)
        return true;
    const QString text = QString::fromStdString(*arguments.most);
    const std::optional<qint64> number = numberOf(text);
    if (!number || *number < 0) {
        messages.tell(rules::kNoMessageNumber, {text});
        return false;
    }
    options.most = *number;
    return true;
}

std::optional<std::vector<std::string>> expandOptionFiles(const std::vector<std::string> &words, Messages &messages)
{
    if (!takesOptionFiles(words))
        return words;
    constexpr qint64 kLargestFile = 1024 * 1024; // no file of options comes near it
    std::vector<std::string> expanded;
    for (const std::string &word : words) {
        if (word.size() < 2 || word[0] != '@') {
            expanded.push_back(word);
            continue;
        }
        QFile file(QString::fromStdString(word.substr(1)));
        if (!file.open(QIODevice::ReadOnly)) {
            messages.tell(rules::kNoOptionFile, {file.fileName(), file.errorString()});
            return {};
        }
        for (const QByteArray &line : readAtMost(file, kLargestFile).split('\n')) {
            const std::vector<std::string> ofLine = wordsOfLine(line);
            expanded.insert(expanded.end(), ofLine.begin(), ofLine.end());
        }
    }
    return expanded;
}

} // namespace veldmap::cli
