#include "console/interpreter.h"

#include "console/commands.h"
#include "console/console_rules.h"
#include "console/value_texts.h"
#include "model/archive.h"
#include "model/memory_map.h"
#include "model/root_archive.h"
#include "model/valuable.h"
#include "text/names.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// \a line up to a "#" that begins a comment: it stands first, or behind a blank, and in no quotes.
QString withoutComment(const QString &line)
{
    bool isQuoted = false;
    for (qsizetype at = 0; at < line.size(); ++at) {
        isQuoted ^= line[at] == u'"';
        if (line[at] == u'#' && !isQuoted && (at == 0 || line[at - 1].isSpace()))
            return line.first(at).trimmed();
    }
    return line.trimmed();
}

QString firstWordOf(const QString &line)
{
    const auto end = std::ranges::find_if_not(line, [](QChar c) { return c.isLetter(); });
    return line.first(end - line.begin());
}

bool isName(const QString &text)
{
    return !text.isEmpty() && !text.front().isDigit() && std::ranges::all_of(text, isNameCharacter);
}

bool isVariable(const VMMemoryMap &map, const QString &name)
{
    for (const VMRootArchive *root : {map.chipRootArchive, map.softRootArchive}) {
        if (root && !root->xmlArchives.isEmpty() && root->xmlArchives.first()->variables->getVisibleVariable(name))
            return true;
    }
    return false;
}

} // namespace

qsizetype assignmentIn(QStringView line)
{
    for (qsizetype at = 0; at < line.size(); ++at) {
        if (line[at] == u'(' || line[at] == u'[') {
            const qsizetype close = closingOf(line, at);
            if (close < 0)
                return -1;
            at = close;
        } else if (line[at] == u'"') {
            return -1;
        } else if (line[at] == u'=') {
            const bool isComparison = (at > 0 && QStringView(u"<>!=").contains(line[at - 1])) ||
                                      (at + 1 < line.size() && line[at + 1] == u'=');
            return isComparison ? -1 : at;
        }
    }
    return -1;
}

bool Interpreter::run(const QString &line)
{
    const QString text = withoutComment(line);
    if (text.isEmpty())
        return true;
    const QString word = firstWordOf(text);
    const QString rest = text.sliced(word.size()).trimmed();
    const ConsoleCommand *command = commandNamed(word);
    const bool isCommand = command && (rest.isEmpty() || text[word.size()].isSpace());
    if (isCommand && assignmentIn(rest) != 0)
        return command->run(*this, rest);
    const qsizetype sign = assignmentIn(text);
    if (sign >= 0)
        return runAssignment(text.first(sign).trimmed(), text.sliced(sign + 1).trimmed());
    m_line = text;
    const std::optional<PreparedValue> prepared = prepare(text);
    return prepared && showValue(*prepared);
}

bool Interpreter::runAssignment(const QString &left, const QString &right)
{
    if (isName(left) && !isOfInstance(left))
        return keep(left, right);
    if (endOfPath(left, 0) != left.size() || left.isEmpty())
        return m_state.fail(console_rules::kNoName, {left});
    const std::optional<Operand> operand = find(left);
    if (!operand)
        return false;
    const std::optional<PreparedValue> value = prepare(right, elementCast<VMBitField>(operand->element));
    return value && assign(*operand, *value);
}

bool Interpreter::keep(const QString &name, const QString &right)
{
    if (isVariable(m_state.map, name))
        return m_state.fail(console_rules::kNameIsTaken, {name});
    const std::optional<variant::Variant> value = evaluate(right);
    if (value)
        m_state.kept.insert(name, *value);
    return value.has_value();
}

/// Runs a line that is an expression, and shows what comes of it.
bool Interpreter::showValue(const PreparedValue &prepared)
{
    const Operand *operand = prepared.isOperandAlone() ? &prepared.operands.front() : nullptr;
    if (operand && operand->operation.isEmpty())
        return show(*operand);
    const std::optional<variant::Variant> value = compute(prepared);
    if (!value)
        return false;
    // r and rf have printed their values, R and RF are asked not to.
    const bool isShown = value->getType() != variant::Variant::kNull &&
                         !(operand && operand->operation.compare("r"_L1, Qt::CaseInsensitive) == 0) &&
                         !(operand && operand->operation.compare("rf"_L1, Qt::CaseInsensitive) == 0);
    if (!isShown)
        return true;
    QString text = numberText(*value, m_state.settings.base);
    const bool isHex = text.startsWith("0x"_L1);
    const bool isOfField = operand && elementCast<VMBitField>(operand->element);
    if (isHex && operand && !(isOfField && operand->operation == "rl"_L1)) { // an address, or the value of a register
        const bool isAddress = operand->operation == "address"_L1;
        const VMXMLElement *whole = isOfField ? operand->element->parent : operand->element;
        unsigned long number = 0;
        value->asDWORD(number);
        text = hexText(static_cast<quint32>(number), isAddress ? 32 : whole->getBitSize());
    }
    if (!text.endsWith(u'\n'))
        text += u'\n';
    m_state.host.print(text);
    return true;
}

} // namespace veldmap
