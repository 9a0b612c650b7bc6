#include "console/commands.h"
#include "console/console_rules.h"
#include "console/interpreter.h"
#include "console/value_texts.h"
#include "model/memory_map.h"
#include "model/root_archive.h"
#include "model/visit.h"
#include "text/lines.h"
#include "text/literals.h"

#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <vector>

using namespace Qt::StringLiterals;

// The commands that look at the target for a while, or at a range of it.

namespace veldmap {

namespace {

// 0x40004FF0  0000000D 000000F0 00000005 000000B1  ................
//             ^ words, the lowest first            ^ their bytes as letters

constexpr int kRowBytes = 16;
constexpr quint32 kMostBytes = 1024 * 1024;
constexpr qint64 kAddressSpace = Q_INT64_C(1) << 32;

/// A range of a target's memory.
struct Range {
    qint64 begin = 0;
    qint64 size = 0;
    int width = 0;        ///< of words
    bool isExact = false; ///< all accesses have that width, whatever lies there

    qint64 end() const { return begin + size; }
};

/// What became of a byte.
enum class ByteState : char { Unread, Read, MustNot, NotThere };

/// How each byte of a range is read.
struct ByteAccess {
    ByteState state = ByteState::Unread;
    quint8 width = 1; ///< of the access
};

/// Finds what the description tells of a range: which bytes are not readable, and which lie in registers that are
/// narrower than the words of the range.
class RangeReader {
public:
    RangeReader(const Range &range, std::vector<ByteAccess> &bytes) : m_range(range), m_bytes(bytes) {}

    void look(VMXMLElement &element)
    {
        const qint64 begin = element.getBaseAddress();
        if (begin < m_range.end() && begin + element.sizeOf() > m_range.begin)
            visit(element, *this);
    }
    void operator()(VMStruct &structure) { lookAtMembers(structure.memberList); }
    void operator()(VMArray &array) { lookAtMembers(array.memberList); }
    void operator()(VMValuable &valuable)
    {
        const qint64 begin = valuable.getBaseAddress() - m_range.begin;
        const qint64 end = begin + valuable.sizeOf();
        const qint64 firstWord = qMax<qint64>(begin, 0) / m_range.width * m_range.width;
        const qint64 lastWord = qMin<qint64>((end + m_range.width - 1) / m_range.width * m_range.width, m_range.size);
        const bool isNarrow = !m_range.isExact && valuable.sizeOf() < m_range.width;
        for (qint64 at = firstWord; isNarrow && at < lastWord; ++at) {
            const bool isInside = at >= begin && at < end;
            const bool isAligned = valuable.getBaseAddress() % static_cast<unsigned>(valuable.sizeOf()) == 0;
            quint8 &width = byteAt(at).width;
            if (isInside || width == m_range.width)
                width = isInside && isAligned ? static_cast<quint8>(valuable.sizeOf()) : quint8(1);
        }
        for (qint64 at = firstWord; !valuable.readable && at < lastWord; ++at) {
            if (!isNarrow || (at >= begin && at < end))
                byteAt(at).state = ByteState::MustNot;
        }
    }
    void operator()(VMXMLElement &) {}

private:
    template <typename Members>
    void lookAtMembers(Members &members)
    {
        for (auto &member : members)
            look(*member);
    }

    ByteAccess &byteAt(qint64 at) { return m_bytes[static_cast<std::size_t>(at)]; }

    const Range &m_range;
    std::vector<ByteAccess> &m_bytes;
};

/// Reads and shows one range.
class Dump {
public:
    Dump(Interpreter &interpreter, const Range &range)
        : m_interpreter(interpreter), m_state(interpreter.state()), m_range(range),
          m_bytes(static_cast<std::size_t>(range.size)),
          m_accesses(static_cast<std::size_t>(range.size), {ByteState::Unread, static_cast<quint8>(range.width)})
    {
        RangeReader reader(m_range, m_accesses);
        for (const VMRootArchive *root : {m_state.map.chipRootArchive, m_state.map.softRootArchive}) {
            for (std::size_t at = 0; root && at < root->instances.size(); ++at)
                reader.look(*root->instances[at]);
        }
    }

    /// A page at a time, so that the user sees something and can end it.
    bool run()
    {
        constexpr qint64 kPage = 4096;
        for (qint64 at = 0; at < m_range.size; at += kPage) {
            if (!m_state.goesOn() || !readPart(at, qMin(at + kPage, m_range.size)))
                return false;
            print(at, qMin(at + kPage, m_range.size));
        }
        return true;
    }

private:
    bool isWanted(qint64 at)
    {
        const ByteState state = accessAt(at).state;
        return state == ByteState::Unread || (state == ByteState::MustNot && m_state.settings.force);
    }

    /// The width of the access that reads what begins at \a at, 0 for none. Registers may overlap: bytes that do not go
    /// together are read by themselves.
    int widthAt(qint64 at, qint64 end)
    {
        const int width = accessAt(at).width;
        bool isOne = (m_range.begin + at) % width == 0 && at + width <= end;
        for (qint64 byte = at; isOne && byte < at + width; ++byte)
            isOne = accessAt(byte).width == width && isWanted(byte);
        return isOne ? width : isWanted(at) && !m_range.isExact ? 1 : 0;
    }

    /// Reads the bytes from \a begin to \a end of the range in as few blocks as possible.
    bool readPart(qint64 begin, qint64 end)
    {
        for (qint64 at = begin; at < end;) {
            const int width = widthAt(at, end);
            qint64 last = at;
            while (width > 0 && last < end && widthAt(last, end) == width)
                last += width;
            if (last > at && !readBlock(at, last, width))
                return false;
            at = qMax(last, at + 1);
        }
        return true;
    }

    /// Where a part of a block is not there, its halves are read by themselves.
    bool readBlock(qint64 begin, qint64 end, int width)
    {
        const auto address = static_cast<quint32>(m_range.begin + begin);
        const auto size = static_cast<std::size_t>(end - begin);
        const TargetAnswer answer =
            m_state.target->read(address, std::span(m_bytes).subspan(static_cast<std::size_t>(begin), size), width);
        if (answer.outcome == TargetAnswer::NoAnswer)
            return m_interpreter.accesses().fail(console_rules::kCantRead, "0x"_L1 + hex8(address), answer);
        if (!answer && end - begin > width) {
            const qint64 middle = begin + (end - begin) / width / 2 * width;
            return m_state.goesOn() && readBlock(begin, middle, width) && readBlock(middle, end, width);
        }
        for (qint64 at = begin; at < end; ++at)
            accessAt(at).state = answer ? ByteState::Read : ByteState::NotThere;
        return true;
    }

    void print(qint64 begin, qint64 end)
    {
        QString text;
        for (qint64 row = begin; row < end; row += kRowBytes) {
            QString words;
            QString letters;
            for (qint64 at = row; at < qMin(row + kRowBytes, end); at += m_range.width)
                appendWord(at, words, letters);
            const int column = 12 + kRowBytes / m_range.width * (2 * m_range.width + 1) + 1;
            text +=
                lineOf("0x"_L1, hex8(static_cast<quint32>(m_range.begin + row)), u" ", words, Column{column}, letters);
        }
        m_state.host.print(text);
    }

    void appendWord(qint64 at, QString &words, QString &letters)
    {
        QString digits;
        for (qint64 byte = at; byte < at + m_range.width; ++byte) {
            const ByteState state = accessAt(byte).state;
            const auto value = static_cast<unsigned char>(m_bytes[static_cast<std::size_t>(byte)]);
            const bool isLetter = state == ByteState::Read && value >= 0x20 && value < 0x7F;
            digits.prepend(state == ByteState::Read      ? hex8(value).right(2)
                           : state == ByteState::MustNot ? u"--"_s
                                                         : u"??"_s);
            letters += isLetter ? QChar(char16_t(value)) : QChar(u'.');
        }
        words += u' ' + digits;
    }

    ByteAccess &accessAt(qint64 at) { return m_accesses[static_cast<std::size_t>(at)]; }

    Interpreter &m_interpreter;
    ConsoleState &m_state;
    const Range m_range;
    std::vector<std::byte> m_bytes;
    std::vector<ByteAccess> m_accesses; // one for each byte
};

/// The range that \a words ask for; nothing, told, when they don't say one.
std::optional<Range> rangeOf(Interpreter &interpreter, const QStringList &words)
{
    Range range;
    const QString &place = words.front();
    const bool isPath = interpreter.isOfInstance(place) && endOfPath(place, 0) == place.size();
    const std::optional<Operand> operand = isPath ? interpreter.find(place) : std::nullopt;
    if (isPath ? !operand || !interpreter.accesses().followPointersTo(*operand->element) : false)
        return std::nullopt;
    if (words.size() < 2 && !isPath) {
        tellUsage(interpreter, u"dump");
        return std::nullopt;
    }
    const std::optional<quint32> begin = isPath ? operand->element->getBaseAddress() : interpreter.number(place);
    const VMXMLElement *whole = isPath && elementCast<VMBitField>(operand->element) ? operand->element->parent
                                : isPath                                            ? operand->element
                                                                                    : nullptr;
    const std::optional<quint32> size =
        words.size() > 1 ? interpreter.number(words[1]) : static_cast<quint32>(qMax(whole->sizeOf(), 0));
    const std::optional<quint32> width = words.size() > 2 ? interpreter.number(words[2]) : 0;
    if (!begin || !size || !width)
        return std::nullopt;
    range = {*begin, *size, static_cast<int>(*width), words.size() > 2};
    if (*size == 0 || *size > kMostBytes || range.end() > kAddressSpace) {
        interpreter.state().fail(console_rules::kDumpRange,
                                 {QString::number(*size), "0x"_L1 + hex8(*begin), QString::number(kMostBytes)});
        return std::nullopt;
    }
    const auto isMultiple = [&](int bytes) { return range.begin % bytes == 0 && range.size % bytes == 0; };
    if (words.size() > 2) {
        if ((*width != 1 && *width != 2 && *width != 4) || !isMultiple(range.width)) {
            interpreter.state().fail(console_rules::kDumpWidth, {words[2]});
            return std::nullopt;
        }
        return range;
    }
    range.width = isMultiple(4) ? 4 : isMultiple(2) ? 2 : 1;
    return range;
}

/// The time that \a text is in seconds; nothing, told, when it is none.
std::optional<qint64> millisecondsOf(Interpreter &interpreter, const QString &text)
{
    bool isNumber = false;
    const double seconds = text.toDouble(&isNumber);
    constexpr double kMost = 1e6;
    if (isNumber && seconds >= 0 && seconds <= kMost)
        return static_cast<qint64>(seconds * 1000);
    interpreter.state().fail(console_rules::kNoSeconds, {text});
    return std::nullopt;
}

/// Sleeps for \a milliseconds, or until the user asks for an end.
void pause(ConsoleState &state, qint64 milliseconds)
{
    constexpr qint64 kStep = 10;
    for (; milliseconds > 0 && !state.isInterrupted; milliseconds -= kStep)
        QThread::msleep(static_cast<unsigned long>(qMin(milliseconds, kStep)));
}

using Values = std::vector<std::optional<quint32>>;

Values valuesOf(const QList<VMValuable *> &valuables)
{
    Values values;
    for (const VMValuable *valuable : valuables)
        values.push_back(valuable->readError ? std::nullopt : std::optional<quint32>(valuable->getValue()));
    return values;
}

/// Reads \a operand again and again and shows what changes.
bool watch(Interpreter &interpreter, const Operand &operand, std::optional<qint64> milliseconds)
{
    constexpr qint64 kInterval = 100; // milliseconds
    ConsoleState &state = interpreter.state();
    const QList<VMValuable *> valuables = valuablesIn(*operand.element);
    if (!interpreter.show(operand))
        return false;
    if (state.settings.dryRun)
        return true;
    QElapsedTimer time;
    time.start();
    for (Values before = valuesOf(valuables); !state.isInterrupted;) {
        const qint64 left = milliseconds ? *milliseconds - time.elapsed() : kInterval;
        if (left <= 0)
            return true;
        pause(state, qMin(left, kInterval));
        if (state.isInterrupted)
            break;
        if (!interpreter.accesses().readAll(*operand.element))
            return false;
        const QString margin = u"%1 s  "_s.arg(QString::number(double(time.elapsed()) / 1000, 'f', 3), 8);
        const Values now = valuesOf(valuables);
        for (std::size_t at = 0; at < now.size(); ++at) {
            if (now[at] != before[at])
                state.host.print(differenceText(*valuables[qsizetype(at)], before[at], now[at], margin));
        }
        before = now;
    }
    return true; // which Ctrl-C is the ordinary end of
}

/// A condition: two sides and what compares them. Without an operator the left side alone.
struct Condition {
    QString left;
    QString right;
    int (*compare)(const variant::Variant &, const variant::Variant &, variant::Variant &) = nullptr;
};

Condition conditionOf(const QString &text)
{
    using Compare = decltype(Condition::compare);
    constexpr std::pair<QLatin1StringView, Compare> kOperators[] = {
        {"=="_L1, variant::Variant::EQ}, {"!="_L1, variant::Variant::NE}, {"<="_L1, variant::Variant::LE},
        {">="_L1, variant::Variant::GE}, {"<"_L1, variant::Variant::LT},  {">"_L1, variant::Variant::GT}};
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (text[at] == u'(' || text[at] == u'[') {
            const qsizetype close = closingOf(text, at);
            if (close < 0)
                break;
            at = close;
            continue;
        }
        const QStringView rest = QStringView(text).sliced(at);
        if (rest.startsWith("<<"_L1) || rest.startsWith(">>"_L1)) {
            ++at;
            continue;
        }
        if (rest.front() == u'>' && at > 0 && text[at - 1] == u'.') // behind a pointer
            continue;
        for (const auto &[sign, compare] : kOperators) {
            if (rest.startsWith(sign))
                return {text.first(at).trimmed(), text.sliced(at + sign.size()).trimmed(), compare};
        }
    }
    return {text, {}, nullptr};
}

/// Whether \a condition holds for \a left and \a right; nothing when they can't be compared.
std::optional<bool> holds(const Condition &condition, const variant::Variant &left, const variant::Variant &right)
{
    variant::Variant result = left;
    int isTrue = 0;
    const bool isKnown =
        (!condition.compare || condition.compare(left, right, result) != 0) && result.asBool(isTrue) != 0;
    return isKnown ? std::optional<bool>(isTrue != 0) : std::nullopt;
}

} // namespace

bool runDump(Interpreter &interpreter, const QString &arguments)
{
    const QStringList words = wordsOf(arguments);
    if (words.isEmpty() || words.size() > 3)
        return tellUsage(interpreter, u"dump");
    if (!interpreter.accesses().hasTarget())
        return false;
    const std::optional<Range> range = rangeOf(interpreter, words);
    if (!range)
        return false;
    if (interpreter.state().settings.dryRun) {
        interpreter.state().host.print(u"would read at 0x%1: %2 x %3 bits\n"_s.arg(
            hex8(static_cast<quint32>(range->begin)), QString::number(range->size / range->width),
            QString::number(8 * range->width)));
        return true;
    }
    return Dump(interpreter, *range).run();
}

bool runWatch(Interpreter &interpreter, const QString &arguments)
{
    const QStringList words = wordsOf(arguments);
    if (words.isEmpty() || words.size() > 2)
        return tellUsage(interpreter, u"watch");
    std::optional<qint64> milliseconds;
    if (words.size() == 2 && !(milliseconds = millisecondsOf(interpreter, words[1])))
        return false;
    ConsoleState &state = interpreter.state();
    if (!milliseconds && (!state.host.isInteractive() || state.sourceDepth > 0))
        return state.fail(console_rules::kWatchForEver, {"watch PATH SECONDS"_L1});
    const std::optional<Operand> operand = interpreter.find(words.front());
    return operand && watch(interpreter, *operand, milliseconds);
}

bool runWait(Interpreter &interpreter, const QString &arguments)
{
    constexpr qint64 kInterval = 10; // milliseconds
    constexpr QLatin1StringView kWithin = " within "_L1;
    ConsoleState &state = interpreter.state();
    const qsizetype within = arguments.lastIndexOf(kWithin);
    if (within < 0)
        return tellUsage(interpreter, u"wait");
    QString seconds = arguments.sliced(within + kWithin.size()).trimmed();
    if (seconds.endsWith(u's'))
        seconds = seconds.chopped(1).trimmed();
    const std::optional<qint64> milliseconds = millisecondsOf(interpreter, seconds);
    const QString text = arguments.first(within).trimmed();
    const Condition condition = conditionOf(text);
    const std::optional<PreparedValue> left = milliseconds ? interpreter.prepare(condition.left) : std::nullopt;
    if (!left)
        return false;
    const auto *field = left->isOperandAlone() ? elementCast<VMBitField>(left->operands.front().element) : nullptr;
    const std::optional<variant::Variant> right =
        condition.compare ? interpreter.evaluate(condition.right, field) : variant::Variant();
    if (!right)
        return false;
    QElapsedTimer time;
    time.start();
    while (state.goesOn()) {
        const bool isLast = time.elapsed() >= *milliseconds;
        const std::optional<variant::Variant> value = interpreter.compute(*left);
        if (!value)
            return false;
        const std::optional<bool> isTrue = holds(condition, *value, *right);
        if (!isTrue)
            return state.fail(console_rules::kNoNumberHere, {text});
        if (*isTrue || state.settings.dryRun)
            return true;
        if (isLast) {
            unsigned long number = 0;
            const bool isOfField = field && left->operands.front().operation.isEmpty() && value->asDWORD(number) != 0;
            return state.fail(console_rules::kNotYet,
                              {text, seconds,
                               isOfField ? field->convertValueToValueString(static_cast<quint32>(number),
                                                                            DISPLAY_DEFAULT, true, false)
                                         : numberText(*value, state.settings.base)});
        }
        pause(state, kInterval);
    }
    return false;
}

} // namespace veldmap
