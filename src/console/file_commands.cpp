#include "console/commands.h"
#include "console/console_rules.h"
#include "console/interpreter.h"
#include "console/scripts.h"
#include "console/snapshot.h"
#include "console/value_texts.h"
#include "model/memory_map.h"
#include "model/root_archive.h"
#include "model/valuable.h"
#include "text/bit_arithmetic.h"

#include <QFile>
#include <QHash>

#include <algorithm>

using namespace Qt::StringLiterals;

// The commands that write or read files.

namespace veldmap {

namespace {

/// The elements that \a paths name, all instances if there are none.
std::optional<QList<VMXMLElement *>> elementsOf(Interpreter &interpreter, const QStringList &paths)
{
    QList<VMXMLElement *> elements;
    for (const QString &path : paths) {
        const std::optional<Operand> operand = interpreter.find(path);
        if (!operand)
            return std::nullopt;
        elements += operand->element;
    }
    const VMMemoryMap &map = interpreter.state().map;
    for (const VMRootArchive *root : {map.chipRootArchive, map.softRootArchive}) {
        for (std::size_t at = 0; paths.isEmpty() && root && at < root->instances.size(); ++at)
            elements += root->instances[at].get();
    }
    return elements;
}

std::optional<quint32> valueRead(const VMValuable &valuable)
{
    return valuable.readError ? std::nullopt
                              : std::optional<quint32>(valuable.getValue() & lowBits(valuable.getBitSize()));
}

/// Reads \a element for \a isWhole, which becomes false when a part of it can't be read. False when nothing can.
bool readPart(Interpreter &interpreter, VMXMLElement &element, bool &isWhole)
{
    if (!interpreter.state().goesOn())
        return false;
    if (interpreter.accesses().readAll(element))
        return true;
    isWhole = false;
    return !interpreter.accesses().isSilent() && !interpreter.state().isInterrupted;
}

/// Reads on the target what \a saved has values of: an instance whole that is there with all that it has.
bool readAgain(Interpreter &interpreter, const std::vector<SavedValue> &saved, bool &isWhole)
{
    QHash<VMXMLElement *, qsizetype> counts; // of values that lie in an instance
    const auto instanceOf = [](const SavedValue &value) {
        VMXMLElement *element = value.valuable;
        while (element->parent && !element->isInstance())
            element = element->parent;
        return element;
    };
    for (const SavedValue &value : saved)
        ++counts[instanceOf(value)];
    QHash<VMXMLElement *, bool> isInstanceRead;
    for (const SavedValue &value : saved) {
        VMXMLElement *instance = instanceOf(value);
        if (!isInstanceRead.contains(instance)) {
            const auto isReadable = [](const VMValuable *valuable) { return valuable->readable; };
            isInstanceRead[instance] =
                std::ranges::count_if(valuablesIn(*instance), isReadable) == counts.value(instance);
            if (isInstanceRead[instance] && !readPart(interpreter, *instance, isWhole))
                return false;
        }
        if (!isInstanceRead[instance] && !readPart(interpreter, *value.valuable, isWhole))
            return false;
    }
    return true;
}

/// Shows how two states differ; the register of each is that of the first.
void showDifferences(ConsoleState &state, const std::vector<SavedValue> &before,
                     const std::vector<std::optional<quint32>> &after)
{
    QString text;
    for (std::size_t at = 0; at < before.size(); ++at) {
        if (before[at].value != after[at])
            text += differenceText(*before[at].valuable, before[at].value, after[at]);
    }
    state.host.print(text.isEmpty() ? u"no differences\n"_s : text);
}

bool diffFiles(ConsoleState &state, const std::vector<SavedValue> &one, const QString &otherFile)
{
    const std::optional<std::vector<SavedValue>> other = readSnapshot(state, otherFile);
    if (!other)
        return false;
    QHash<const VMValuable *, std::optional<quint32>> values;
    for (const SavedValue &saved : *other)
        values.insert(saved.valuable, saved.value);
    std::vector<SavedValue> before;
    std::vector<std::optional<quint32>> after;
    for (const SavedValue &saved : one) {
        if (!values.contains(saved.valuable))
            continue;
        before.push_back(saved);
        after.push_back(values.value(saved.valuable));
    }
    showDifferences(state, before, after);
    if (before.size() < one.size() || before.size() < other->size())
        state.host.print(
            u"%1 registers are in one of the files alone\n"_s.arg(one.size() + other->size() - 2 * before.size()));
    return true;
}

/// Writes \a saved to the target. What fails is told, and the rest goes on.
bool restoreValues(Interpreter &interpreter, const std::vector<SavedValue> &saved)
{
    ConsoleState &state = interpreter.state();
    std::size_t failed = 0;
    for (const auto &[valuable, value] : saved) {
        if (!state.goesOn())
            return false;
        // A set or clear bit that was 1 would act again.
        if (interpreter.accesses().write(*valuable, valuable->getValueForWritingBitfieldFromCache(*value)))
            continue;
        ++failed;
        if (interpreter.accesses().isSilent())
            return false;
    }
    return failed == 0 ||
           state.fail(console_rules::kNotRestored, {QString::number(failed), QString::number(saved.size())});
}

} // namespace

bool runSnapshot(Interpreter &interpreter, const QString &arguments)
{
    QStringList words = wordsOf(arguments);
    if (words.isEmpty())
        return tellUsage(interpreter, u"snapshot");
    ConsoleState &state = interpreter.state();
    const QString file = fileNamed(words.takeFirst());
    const std::optional<QList<VMXMLElement *>> elements = elementsOf(interpreter, words);
    if (!elements || !interpreter.accesses().hasTarget())
        return false;
    std::vector<SavedValue> values;
    bool isWhole = true;
    for (VMXMLElement *element : *elements) {
        if (!readPart(interpreter, *element, isWhole))
            return false;
        for (VMValuable *valuable : valuablesIn(*element)) {
            if (valuable->readable)
                values.push_back({valuable, valueRead(*valuable)});
        }
    }
    if (state.settings.dryRun)
        return true;
    const auto isRead = [](const SavedValue &saved) { return saved.value.has_value(); };
    const auto count = std::ranges::count_if(values, isRead);
    if (count == 0)
        return state.fail(console_rules::kNothingToSave);
    if (!writeSnapshot(state, file, values))
        return false;
    state.host.print(u"%1 in %2\n"_s.arg(registersText(static_cast<std::size_t>(count)), file));
    return isWhole;
}

bool runDiff(Interpreter &interpreter, const QString &arguments)
{
    const QStringList words = wordsOf(arguments);
    if (words.isEmpty() || words.size() > 2)
        return tellUsage(interpreter, u"diff");
    ConsoleState &state = interpreter.state();
    const std::optional<std::vector<SavedValue>> before = readSnapshot(state, fileNamed(words.front()));
    if (!before)
        return false;
    if (words.size() == 2)
        return diffFiles(state, *before, fileNamed(words[1]));
    bool isWhole = true;
    if (!interpreter.accesses().hasTarget() || !readAgain(interpreter, *before, isWhole))
        return false;
    std::vector<std::optional<quint32>> after;
    for (const SavedValue &saved : *before)
        after.push_back(valueRead(*saved.valuable));
    if (!state.settings.dryRun)
        showDifferences(state, *before, after);
    return isWhole;
}

bool runRestore(Interpreter &interpreter, const QString &arguments)
{
    QStringList words = wordsOf(arguments);
    const bool isSure = words.removeAll(u"--yes"_s) > 0;
    if (words.size() != 1)
        return tellUsage(interpreter, u"restore");
    ConsoleState &state = interpreter.state();
    std::optional<std::vector<SavedValue>> saved = readSnapshot(state, fileNamed(words.front()));
    if (!saved || !interpreter.accesses().hasTarget())
        return false;
    const std::size_t all = saved->size();
    std::erase_if(*saved, [](const SavedValue &one) { return !one.value || !one.valuable->writable; });
    const QString registers = u"%1 of %2"_s.arg(QString::number(saved->size()), registersText(all));
    const bool isAnswered = isSure || state.settings.force || state.settings.dryRun;
    const bool canAsk = state.host.isInteractive();
    if (!isAnswered && !canAsk)
        return state.fail(console_rules::kNotAsked);
    if (!isAnswered && !state.host.confirm(u"Write %1?"_s.arg(registers)))
        return state.fail(console_rules::kRefused);
    if (!restoreValues(interpreter, *saved))
        return false;
    if (!state.settings.dryRun)
        state.host.print(u"%1 written\n"_s.arg(registers));
    return true;
}

bool runRecord(Interpreter &interpreter, const QString &arguments)
{
    const QStringList words = wordsOf(arguments);
    if (words.size() != 1)
        return tellUsage(interpreter, u"record");
    ConsoleState &state = interpreter.state();
    if (words.front() == "off"_L1) {
        state.recordFile.clear();
        return true;
    }
    QFile file(fileNamed(words.front()));
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append))
        return state.fail(console_rules::kFileUnwritable, {file.fileName(), file.errorString()});
    state.recordFile = file.fileName();
    state.recordDepth = state.sourceDepth;
    return true;
}

bool runSource(Interpreter &interpreter, const QString &arguments)
{
    const QStringList words = wordsOf(arguments);
    return words.size() == 1 ? runFile(interpreter.state(), fileNamed(words.front()))
                             : tellUsage(interpreter, u"source");
}

} // namespace veldmap
