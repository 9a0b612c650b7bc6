#pragma once

#include <QStringList>

#include <span>

class VMValuable;
class VMXMLElement;

namespace veldmap {

class Interpreter;
class NearestName;

/// What the words behind a command are.
enum class CommandWords { None, Paths, Files, Settings, Commands };

/// A command of the console.
struct ConsoleCommand {
    QLatin1StringView name;
    QLatin1StringView arguments;
    QLatin1StringView help; ///< one line
    QLatin1StringView more; ///< further lines, may be empty
    CommandWords words;
    bool (*run)(Interpreter &interpreter, const QString &arguments);
};

/// All commands, in the order in which help shows them.
std::span<const ConsoleCommand> consoleCommands();
/// The command of that name, null when there is none.
const ConsoleCommand *commandNamed(QStringView name);

/// A setting, and what it may be.
struct ConsoleSetting {
    QLatin1StringView name;
    QLatin1StringView values; ///< in words, or those there are with "|" between them
    QLatin1StringView help;
};
std::span<const ConsoleSetting> consoleSettings();

// Each runs one command; false, told, when it failed.

bool runLs(Interpreter &interpreter, const QString &arguments);
bool runFind(Interpreter &interpreter, const QString &arguments);
bool runDoc(Interpreter &interpreter, const QString &arguments);
bool runDump(Interpreter &interpreter, const QString &arguments);
bool runWatch(Interpreter &interpreter, const QString &arguments);
bool runWait(Interpreter &interpreter, const QString &arguments);
bool runSnapshot(Interpreter &interpreter, const QString &arguments);
bool runDiff(Interpreter &interpreter, const QString &arguments);
bool runRestore(Interpreter &interpreter, const QString &arguments);
bool runRecord(Interpreter &interpreter, const QString &arguments);
bool runSource(Interpreter &interpreter, const QString &arguments);
bool runSet(Interpreter &interpreter, const QString &arguments);
bool runConnect(Interpreter &interpreter, const QString &arguments);
bool runHelp(Interpreter &interpreter, const QString &arguments);
bool runQuit(Interpreter &interpreter, const QString &arguments);

/// The words of \a text; one in double quotes may have blanks.
QStringList wordsOf(const QString &text);
/// The file that a user calls \a name: "~/" is the home directory.
QString fileNamed(const QString &name);
/// Tells how \a command is written. False.
bool tellUsage(Interpreter &interpreter, QStringView command);
/// Opens the target that \a words name in the place of the session's own, which stays where that fails.
bool openTargetOf(Interpreter &interpreter, const QStringList &words);
/// "1 register", "2 registers".
QString registersText(std::size_t count);

/// All registers, integers and pointers that lie in \a element, in their order.
QList<VMValuable *> valuablesIn(VMXMLElement &element);

} // namespace veldmap
