#include "access/completion.h"
#include "access/path_hint.h"
#include "console/console_rules.h"
#include "console/interpreter.h"
#include "model/memory_map.h"
#include "model/root_archive.h"
#include "model/valuable.h"
#include "text/names.h"
#include "text/nearest_name.h"

#include <algorithm>

using namespace Qt::StringLiterals;

// $UART0.chan[n+1].head.>.data.wl($UART0.ctrl.getl, fast)
// path                    op  arguments

namespace veldmap {

namespace {

/// The element at \a path, which an ending that lookups pass over does not have.
VMXMLElement *elementAt(const VMMemoryMap &map, const QString &path)
{
    VMXMLElement *found = map.getElementFromPath(path);
    const qsizetype dot = path.lastIndexOf(u'.');
    return found && dot >= 0 && map.getElementFromPath(path.first(dot)) == found ? nullptr : found;
}

} // namespace

qsizetype closingOf(QStringView text, qsizetype open)
{
    int depth = 0;
    for (qsizetype at = open; at < text.size(); ++at) {
        const QChar c = text[at];
        depth += c == u'(' || c == u'[' ? 1 : c == u')' || c == u']' ? -1 : 0;
        if (depth == 0)
            return at;
    }
    return -1;
}

qsizetype endOfPath(QStringView text, qsizetype begin)
{
    qsizetype at = begin + (text.sliced(begin).startsWith(u'$') ? 1 : 0);
    while (at < text.size()) {
        const QChar next = at + 1 < text.size() ? text[at + 1] : QChar();
        if (isNameCharacter(text[at]) || text[at].unicode() > 0x7F) {
            ++at;
        } else if (text[at] == u'.' && (isNameCharacter(next) || next == u'>' || next.unicode() > 0x7F)) {
            at += 2;
        } else if (text[at] == u'[') {
            const qsizetype close = closingOf(text, at);
            if (close < 0)
                return -1;
            at = close + 1;
        } else {
            break;
        }
    }
    return at;
}

bool Interpreter::isOfInstance(QStringView text) const
{
    if (text.startsWith(u'$'))
        return true;
    const qsizetype end =
        std::ranges::find_if_not(text, [](QChar c) { return isNameCharacter(c) || c.unicode() > 0x7F; }) - text.begin();
    const QStringView name = text.first(end);
    for (const VMRootArchive *root : {m_state.map.chipRootArchive, m_state.map.softRootArchive}) {
        if (root && std::ranges::any_of(root->instances, [&](const auto &i) { return i->getName() == name; }))
            return true;
    }
    return false;
}

/// \a path with the values of its indexes in their places; nothing, told, where one has none.
std::optional<QString> Interpreter::withIndexes(const QString &path, int depth)
{
    QString result;
    for (qsizetype at = 0; at < path.size();) {
        const qsizetype open = path.indexOf(u'[', at);
        if (open < 0) {
            result += QStringView(path).sliced(at);
            break;
        }
        const qsizetype close = closingOf(path, open);
        const QString index = path.sliced(open + 1, close - open - 1).trimmed();
        result += QStringView(path).sliced(at, open - at);
        at = close + 1;
        const bool isPlain = !index.isEmpty() && std::ranges::all_of(index, [](QChar c) { return c.isDigit(); });
        if (isPlain) {
            result += u'[' + index + u']';
            continue;
        }
        const std::optional<PreparedValue> prepared = prepare(index, nullptr, depth + 1);
        if (!prepared)
            return std::nullopt;
        if (!prepared->operands.empty()) { // the element must be known before anything is read
            m_state.fail(console_rules::kNoIndex, {index});
            return std::nullopt;
        }
        const std::optional<variant::Variant> value = compute(*prepared);
        if (!value)
            return std::nullopt;
        int number = -1;
        if (value->asInt(number) == 0 || number < 0) {
            m_state.fail(console_rules::kNoIndex, {index});
            return std::nullopt;
        }
        result += u'[' + QString::number(number) + u']';
    }
    return result;
}

bool Interpreter::tellNoMember(const QString &path, const QString &holder)
{
    const QString word = path.sliced(holder.size() + 1);
    NearestName nearest(word);
    for (const CXMLCompletionEntry &entry : m_state.map.getCompletionListFromPath(holder + u'.'))
        nearest.offer(entry.name);
    return m_state.fail(console_rules::kNoMember, {holder, word},
                        nearest.name().isEmpty() ? QString() : u"did you mean '%1.%2'?"_s.arg(holder, nearest.name()));
}

/// The operand whose \a path is a full one, without its arguments.
std::optional<Operand> Interpreter::resolve(const QString &path)
{
    const VMMemoryMap &map = m_state.map;
    const qsizetype dot = path.lastIndexOf(u'.');
    const QString holderPath = dot < 0 ? QString() : path.first(dot);
    VMXMLElement *holder = dot < 0 ? nullptr : elementAt(map, holderPath);
    const bool hasOperations = holder && (elementCast<VMValuable>(holder) || elementCast<VMBitField>(holder));
    if (hasOperations && isOperation(*holder, QStringView(path).sliced(dot + 1)))
        return Operand{holder, holderPath, path.sliced(dot + 1), {}};
    if (VMXMLElement *element = elementAt(map, path))
        return Operand{element, path, {}, {}};
    if (hasOperations || map.getElementFromPath(path))
        tellNoMember(path, holderPath);
    else
        findElement(map, path, m_state);
    return std::nullopt;
}

/// Reads the operand that begins at \a begin of \a text, and puts the place behind it into \a end. Nothing, told, when
/// it leads nowhere.
std::optional<Operand> Interpreter::operandAt(const QString &text, qsizetype begin, qsizetype *end, int depth)
{
    *end = endOfPath(text, begin);
    if (*end < 0) {
        m_state.fail(console_rules::kOpenBracket, {u"["_s, text});
        return std::nullopt;
    }
    std::optional<QString> path = withIndexes(text.sliced(begin, *end - begin), depth);
    if (!path)
        return std::nullopt;
    if (!path->startsWith(u'$'))
        path->prepend(u'$');
    std::optional<Operand> operand = resolve(*path);
    if (!operand)
        return std::nullopt;
    qsizetype open = *end;
    while (open < text.size() && text[open].isSpace())
        ++open;
    QString arguments;
    if (!operand->operation.isEmpty() && open < text.size() && text[open] == u'(') {
        const qsizetype close = closingOf(text, open);
        if (close < 0) {
            m_state.fail(console_rules::kOpenBracket, {u"("_s, text});
            return std::nullopt;
        }
        arguments = text.sliced(open + 1, close - open - 1);
        *end = close + 1;
    }
    return takeArguments(*operand, arguments, depth) ? operand : std::nullopt;
}

/// Reads the arguments of an operation, which \a text is a list of.
bool Interpreter::takeArguments(Operand &operand, const QString &text, int depth)
{
    if (operand.operation.isEmpty())
        return true;
    QStringList words;
    qsizetype begin = 0;
    for (qsizetype at = 0; at < text.size(); ++at) {
        const qsizetype close = text[at] == u'(' || text[at] == u'[' ? closingOf(text, at) : at;
        at = close < 0 ? text.size() - 1 : close;
        if (text[at] == u',') {
            words += text.sliced(begin, at - begin);
            begin = at + 1;
        }
    }
    if (!words.isEmpty() || !text.trimmed().isEmpty())
        words += text.sliced(begin);
    const OperationArguments wanted = argumentsOf(*operand.element, operand.operation);
    if (words.size() != wanted.count) {
        const QString names =
            m_state.map.getCompletionListFromPath(operand.path + u'.').value(operand.operation).arguments;
        const QString form = operand.text() + u'(' + (names.isEmpty() ? u"value"_s : names) + u')';
        return m_state.fail(console_rules::kArguments,
                            {operand.text(), wanted.count == 0 ? u"no argument"_s
                                                               : u"its argument%1: %2"_s.arg(
                                                                     wanted.count > 1 ? u"s"_s : QString(), form)});
    }
    const auto *field = elementCast<VMBitField>(operand.element);
    for (qsizetype at = 0; at < words.size(); ++at) {
        const bool isOfField = field && wanted.isLastOfField && at == words.size() - 1;
        std::optional<PreparedValue> value = prepare(words[at], isOfField ? field : nullptr, depth + 1);
        if (!value)
            return false;
        operand.arguments.push_back(*std::move(value));
    }
    return true;
}

std::optional<Operand> Interpreter::find(const QString &text)
{
    const QString path = text.trimmed();
    qsizetype end = 0;
    std::optional<Operand> operand;
    if (path.isEmpty() || endOfPath(path, 0) == path.size())
        operand = operandAt(path, 0, &end, 0);
    else
        findElement(m_state.map, path, m_state);
    if (operand && !operand->operation.isEmpty()) {
        m_state.fail(console_rules::kNoMember, {operand->path, operand->operation});
        return std::nullopt;
    }
    return operand;
}

} // namespace veldmap
