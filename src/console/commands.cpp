#include "console/commands.h"

#include "access/completion.h"
#include "access/search.h"
#include "console/console_rules.h"
#include "console/interpreter.h"
#include "console/value_texts.h"
#include "model/memory_map.h"
#include "model/visit.h"
#include "text/lines.h"
#include "text/literals.h"
#include "text/nearest_name.h"

#include <QDir>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr ConsoleCommand kCommands[] = {
    {"ls"_L1, "[PATH]"_L1, "list the instances, or what an element holds; reads nothing"_L1, ""_L1, CommandWords::Paths,
     runLs},
    {"find"_L1, "TEXT"_L1, "find elements by name, with * for any letters, address, or word of a comment"_L1, ""_L1,
     CommandWords::None, runFind},
    {"doc"_L1, "PATH"_L1, "show what the description tells of an element and of what it holds"_L1, ""_L1,
     CommandWords::Paths, runDoc},
    {"dump"_L1, "ADDRESS|PATH [SIZE [WIDTH]]"_L1, "show bytes of the target"_L1,
     "Shows words of 4 bytes, or of 2 or 1 where address and size ask for that, and reads narrower registers in their\n"
     "own width. With WIDTH, which is 1, 2 or 4, words and accesses have that.\n"
     "What the description says is not readable is left out, as --; what can't be read there shows as ??.\n"
     "SIZE can be left out behind a path.\n"_L1,
     CommandWords::Paths, runDump},
    {"watch"_L1, "PATH [SECONDS]"_L1, "show what changes, with the time, until Ctrl-C or for some seconds"_L1,
     "Reads ten times a second.\n"_L1, CommandWords::Paths, runWatch},
    {"wait"_L1, "PATH == VALUE within SECONDS"_L1, "wait until something becomes true"_L1,
     "Also with !=, <, <=, > and >=, and with expressions on both sides; the left one is read again and again.\n"
     "VALUE may be an option of the field. It fails when the time is over.\n"_L1,
     CommandWords::Paths, runWait},
    {"snapshot"_L1, "FILE [PATH]..."_L1, "write the values of all that can be read, or that lies in the paths"_L1,
     "The file has lines PATH = VALUE.\n"_L1, CommandWords::Files, runSnapshot},
    {"diff"_L1, "FILE [FILE]"_L1, "show how a snapshot differs from the target, or from another"_L1, ""_L1,
     CommandWords::Files, runDiff},
    {"restore"_L1, "FILE [--yes]"_L1, "write back what a snapshot has, after asking"_L1,
     "Writes what can be written, in the order of the file, set and clear bits as 0. In scripts, where nobody can be\n"
     "asked, --yes or 'set force on' is the answer.\n"_L1,
     CommandWords::Files, runRestore},
    {"record"_L1, "FILE|off"_L1, "write each line that succeeds to the end of a file"_L1, ""_L1, CommandWords::Files,
     runRecord},
    {"source"_L1, "FILE"_L1, "run the lines of a file, up to the first that fails"_L1, ""_L1, CommandWords::Files,
     runSource},
    {"set"_L1, "[NAME [VALUE]]"_L1, "show or change settings"_L1, ""_L1, CommandWords::Settings, runSet},
    {"connect"_L1, "[KIND:...]..."_L1, "connect to the target again, or to another"_L1, ""_L1, CommandWords::None,
     runConnect},
    {"help"_L1, "[WORD]"_L1, "tell of lines, or of one command or operation"_L1, ""_L1, CommandWords::Commands,
     runHelp},
    {"quit"_L1, ""_L1, "end the console"_L1, ""_L1, CommandWords::None, runQuit},
};

constexpr ConsoleSetting kSettings[] = {
    {"force"_L1, "on|off"_L1, "access what the description protects as what it does not"_L1},
    {"verify"_L1, "on|off"_L1, "read back what was written, where that can be done"_L1},
    {"base"_L1, "described|hex|dec|bin"_L1, "how numbers are shown"_L1},
    {"dry-run"_L1, "on|off"_L1, "tell accesses and do none; what is read counts as what was read last"_L1},
    {"timeout"_L1, "seconds"_L1, "how long an answer of the target may take"_L1},
};

constexpr QLatin1StringView kLineHelp =
    R"(PATH                 reads an element and shows it: $UART0, UART0.ctrl, UART0.ctrl.speed, A.table[2]
PATH.>               what a pointer points to; the pointer is read for it
PATH.OPERATION       does something with it: UART0.ctrl.r, UART0.ctrl.speed.w(fast); 'help r' tells of one
PATH = VALUE         writes it; a VALUE is an expression or, for a field, one of its options
NAME = VALUE         keeps a value for later lines
EXPRESSION           shows a value: UART0.ctrl.r & 0xFF, NAME+1, exp2(10); PATH in it is the value read
# TEXT               is a comment

)"_L1;

QString onOneLine(const ConsoleCommand &command)
{
    QString form = command.name;
    if (!command.arguments.isEmpty())
        form += u' ' + command.arguments;
    return form;
}

/// The operations of all kinds of elements by name, each as an element of a kind has it.
QMap<QString, QStringList> operationTexts()
{
    QMap<QString, QStringList> texts;
    const auto take = [&](VMXMLElement &element, const QString &kind) {
        for (const CXMLCompletionEntry &entry : element.getCompletionListFromTokens({QString()})) {
            if (entry.type != CXMLCompletionEntry::COMPLETION_OPERATION)
                continue;
            const QString form = entry.arguments.isEmpty() ? entry.name : entry.name + u'(' + entry.arguments + u')';
            const QString text = kind + u'.' + form + (entry.result.isEmpty() ? QString() : " -> "_L1 + entry.result) +
                                 "\n  "_L1 + entry.help + u'\n';
            if (!texts[entry.name].contains(text))
                texts[entry.name] += text;
        }
    };
    for (const bool isOpen : {true, false}) {
        VMRegister32 whole({}, isOpen, isOpen);
        take(whole, u"REGISTER"_s);
    }
    VMPointer pointer({}, {});
    take(pointer, u"POINTER"_s);
    for (int mode = 0; mode < 4; ++mode) {
        VMBitField field({}, mode != 0, mode, {}, 0, {}, 0, 0, false, DISPLAY_HEX);
        take(field, u"FIELD"_s);
    }
    texts[u">"_s] = texts[u">"_s].mid(0, 1);
    for (QStringList &forms : texts) { // a pointer is a register in all other regards
        forms.removeIf([](const QString &text) { return text.startsWith("POINTER"_L1) && !text.contains(".>"_L1); });
    }
    return texts;
}

QString indented(const QString &text, const QString &margin)
{
    QString result;
    for (const QString &line : text.split(u'\n', Qt::SkipEmptyParts))
        result += margin + line + u'\n';
    return result;
}

/// The parts of \a element that lie directly in it and that the description has something to tell of.
void appendPartDocs(QString &text, const VMXMLElement &element)
{
    const auto appendMembers = [&](const auto &members) {
        for (const auto &member : members) {
            if (member->getType() == VMXMLElement::XML_HOLE)
                continue;
            appendElement(text, *member, member->getName(), 1, 0, OptionNotes());
            text += indented(documentationOf(*member), u"      "_s);
        }
    };
    visit(element, Overloads{[&](const VMStruct &structure) { appendMembers(structure.memberList); },
                             [&](const VMValuable &valuable) {
                                 const ElementNotes &none = OptionNotes();
                                 for (const auto &field : valuable.bitFields) {
                                     appendField(text, *field, 1, none);
                                     text += indented(documentationOf(*field), u"      "_s);
                                 }
                             },
                             [](const VMXMLElement &) {}});
}

QString textOfSetting(const ConsoleState &state, const QString &name)
{
    constexpr std::array kBases = {"described"_L1, "hex"_L1, "dec"_L1, "bin"_L1};
    const auto onOff = [](bool isOn) { return isOn ? u"on"_s : u"off"_s; };
    const ConsoleSettings &settings = state.settings;
    if (name == "force"_L1)
        return onOff(settings.force);
    if (name == "verify"_L1)
        return onOff(settings.verify);
    if (name == "dry-run"_L1)
        return onOff(settings.dryRun);
    if (name == "base"_L1)
        return kBases[settings.base];
    return QString::number(static_cast<double>(state.targetSettings.timeout.count()) / 1000) + " s"_L1;
}

QString lineOfSetting(const ConsoleState &state, const ConsoleSetting &setting)
{
    return lineOf(setting.name, Column{10}, textOfSetting(state, setting.name), Column{22}, setting.values, Column{46},
                  setting.help);
}

/// Changes a setting; false when \a value is none for it.
bool changeSetting(ConsoleState &state, const ConsoleSetting &setting, const QString &value)
{
    if (setting.name == "timeout"_L1) {
        bool isNumber = false;
        const double seconds = value.toDouble(&isNumber);
        constexpr double kMost = 3600;
        if (!isNumber || seconds < 0.001 || !(seconds <= kMost))
            return false;
        state.targetSettings.timeout = std::chrono::milliseconds(static_cast<qint64>(seconds * 1000));
        if (state.target)
            state.target->settings.timeout = state.targetSettings.timeout;
        return true;
    }
    const QStringList values = QString(setting.values).split(u'|');
    const qsizetype at = values.indexOf(value);
    if (at < 0)
        return false;
    if (setting.name == "base"_L1)
        state.settings.base = static_cast<ConsoleSettings::Base>(at);
    else if (setting.name == "force"_L1)
        state.settings.force = at == 0;
    else if (setting.name == "verify"_L1)
        state.settings.verify = at == 0;
    else
        state.settings.dryRun = at == 0;
    return true;
}

} // namespace

std::span<const ConsoleCommand> consoleCommands()
{
    return kCommands;
}

std::span<const ConsoleSetting> consoleSettings()
{
    return kSettings;
}

const ConsoleCommand *commandNamed(QStringView name)
{
    const auto row =
        std::ranges::find_if(kCommands, [name](const ConsoleCommand &command) { return command.name == name; });
    return row == std::end(kCommands) ? nullptr : &*row;
}

QStringList wordsOf(const QString &text)
{
    QStringList words;
    QString word;
    bool isQuoted = false;
    bool isBegun = false;
    for (const QChar c : text) {
        if (c == u'"') {
            isQuoted = !isQuoted;
            isBegun = true;
        } else if (c.isSpace() && !isQuoted) {
            if (isBegun)
                words += word;
            word.clear();
            isBegun = false;
        } else {
            word += c;
            isBegun = true;
        }
    }
    if (isBegun)
        words += word;
    return words;
}

QString fileNamed(const QString &name)
{
    return name.startsWith("~/"_L1) ? QDir::homePath() + name.sliced(1) : name;
}

bool tellUsage(Interpreter &interpreter, QStringView command)
{
    return interpreter.state().fail(console_rules::kUsage, {onOneLine(*commandNamed(command))});
}

bool openTargetOf(Interpreter &interpreter, const QStringList &words)
{
    ConsoleState &state = interpreter.state();
    std::unique_ptr<Target> target = openTarget(words, state.map, state.targetSettings, state);
    if (!target && state.target) // which goes on
        return false;
    state.targetWords = words;
    state.target = std::move(target);
    return state.target != nullptr;
}

QString registersText(std::size_t count)
{
    return QString::number(count) + (count == 1 ? " register"_L1 : " registers"_L1);
}

QList<VMValuable *> valuablesIn(VMXMLElement &element)
{
    QList<VMValuable *> found;
    const auto walk = [&found](const auto &self, VMXMLElement &part) -> void {
        const auto walkMembers = [&](const auto &members) {
            for (const auto &member : members)
                self(self, *member);
        };
        visit(part, Overloads{[&](VMStruct &structure) { walkMembers(structure.memberList); },
                              [&](VMArray &array) { walkMembers(array.memberList); },
                              [&](VMValuable &valuable) { found += &valuable; }, [](VMXMLElement &) {}});
    };
    if (elementCast<VMBitField>(&element))
        walk(walk, *element.parent);
    else
        walk(walk, element);
    return found;
}

bool runLs(Interpreter &interpreter, const QString &arguments)
{
    ConsoleState &state = interpreter.state();
    QString text;
    if (arguments.isEmpty()) {
        for (const VMRootArchive *root : {state.map.chipRootArchive, state.map.softRootArchive}) {
            for (std::size_t at = 0; root && at < root->instances.size(); ++at)
                appendElement(text, *root->instances[at], root->instances[at]->getPath(), 0, 0, OptionNotes());
        }
    } else {
        const std::optional<Operand> operand = interpreter.find(arguments);
        if (!operand)
            return false;
        if (const auto *field = elementCast<VMBitField>(operand->element))
            appendFieldAlone(text, *field, OptionNotes());
        else
            appendElement(text, *operand->element, operand->path, 0, 1, OptionNotes());
    }
    state.host.print(text);
    return true;
}

bool runFind(Interpreter &interpreter, const QString &arguments)
{
    ConsoleState &state = interpreter.state();
    const QStringList words = wordsOf(arguments);
    if (words.size() != 1)
        return tellUsage(interpreter, u"find");
    const std::optional<qint64> address = numberOf(words.front());
    const bool isAddress = address && *address >= 0 && *address <= 0xFFFFFFFF;
    const QList<VMXMLElement *> found =
        isAddress ? elementsAt(state.map, static_cast<quint32>(*address)) : findElements(state.map, words.front());
    QString text;
    for (const VMXMLElement *element : found) {
        if (const auto *field = elementCast<VMBitField>(element))
            appendFieldAlone(text, *field, OptionNotes());
        else
            appendElement(text, *element, element->getPath(), 0, 0, OptionNotes());
    }
    state.host.print(text);
    return !found.isEmpty() || state.fail(isAddress ? console_rules::kNowhere : console_rules::kNotFound, words);
}

bool runDoc(Interpreter &interpreter, const QString &arguments)
{
    if (arguments.isEmpty())
        return tellUsage(interpreter, u"doc");
    const std::optional<Operand> operand = interpreter.find(arguments);
    if (!operand)
        return false;
    QString text;
    if (const auto *field = elementCast<VMBitField>(operand->element))
        appendFieldAlone(text, *field, OptionNotes());
    else
        appendElement(text, *operand->element, operand->path, 0, 0, OptionNotes());
    text += indented(documentationOf(*operand->element), u"  "_s);
    appendPartDocs(text, *operand->element);
    interpreter.state().host.print(text);
    return true;
}

bool runSet(Interpreter &interpreter, const QString &arguments)
{
    ConsoleState &state = interpreter.state();
    const QStringList words = wordsOf(arguments);
    if (words.isEmpty()) {
        for (const ConsoleSetting &setting : kSettings)
            state.host.print(lineOfSetting(state, setting));
        return true;
    }
    const auto setting = std::ranges::find(kSettings, words.front(), &ConsoleSetting::name);
    if (setting == std::end(kSettings)) {
        NearestName nearest(words.front());
        for (const ConsoleSetting &other : kSettings)
            nearest.offer(other.name);
        return state.fail(console_rules::kNoSetting, {words.front()},
                          nearest.name().isEmpty() ? QString() : u"did you mean '%1'?"_s.arg(nearest.name()));
    }
    if (words.size() > 2)
        return tellUsage(interpreter, u"set");
    if (words.size() == 2)
        return changeSetting(state, *setting, words[1]) ||
               state.fail(console_rules::kNoSettingValue,
                          {setting->name, QString(setting->values).replace("|"_L1, ", "_L1), words[1]});
    state.host.print(lineOfSetting(state, *setting));
    return true;
}

bool runConnect(Interpreter &interpreter, const QString &arguments)
{
    ConsoleState &state = interpreter.state();
    const QStringList words = arguments.isEmpty() ? state.targetWords : wordsOf(arguments);
    if (!arguments.isEmpty() || (!state.target && !words.isEmpty()))
        return openTargetOf(interpreter, words);
    if (!interpreter.accesses().hasTarget())
        return false;
    const TargetAnswer answer = state.target->connect();
    return answer ||
           (state.goesOn() && state.fail(console_rules::kCantConnect, {state.target->description(), answer.reason}));
}

bool runHelp(Interpreter &interpreter, const QString &arguments)
{
    ConsoleState &state = interpreter.state();
    const QMap<QString, QStringList> operations = operationTexts();
    if (arguments.isEmpty()) {
        QString text = kLineHelp;
        for (const ConsoleCommand &command : kCommands)
            text += lineOf(onOneLine(command), Column{38}, command.help);
        text += "\nOperations: "_L1 + operations.keys().join(u' ') + u'\n';
        state.host.print(text);
        return true;
    }
    if (const ConsoleCommand *command = commandNamed(arguments)) {
        state.host.print(lineOf(onOneLine(*command)) + lineOf(u"  ", command->help) + indented(command->more, u"  "_s));
        if (command->run == runSet) {
            for (const ConsoleSetting &setting : kSettings)
                state.host.print("  "_L1 + lineOfSetting(state, setting));
        }
        return true;
    }
    if (operations.contains(arguments)) {
        state.host.print(operations.value(arguments).join(QString()));
        return true;
    }
    NearestName nearest(arguments);
    for (const ConsoleCommand &command : kCommands)
        nearest.offer(command.name);
    return state.fail(console_rules::kNoCommandHelp, {arguments},
                      nearest.name().isEmpty() ? QString() : u"did you mean '%1'?"_s.arg(nearest.name()));
}

bool runQuit(Interpreter &interpreter, const QString &arguments)
{
    interpreter.state().isOver = arguments.isEmpty();
    return arguments.isEmpty() || tellUsage(interpreter, u"quit");
}

} // namespace veldmap
