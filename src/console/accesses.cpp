#include "console/accesses.h"

#include "access/target_values.h"
#include "console/commands.h"
#include "console/console_rules.h"
#include "console/state.h"
#include "console/value_texts.h"
#include "model/visit.h"
#include "text/lines.h"

#include <vector>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Stands in the place of a target whose accesses are told and not made.
class TellingTarget final : public Target {
public:
    explicit TellingTarget(ConsoleHost &host) : m_host(host) {}

    TargetAnswer read(quint32 address, std::span<std::byte> bytes, int width) override
    {
        tell("read"_L1, address, bytes, width);
        return {};
    }
    TargetAnswer write(quint32 address, std::span<const std::byte> bytes, int width) override
    {
        tell("write"_L1, address, bytes, width);
        return {};
    }
    QString description() const override { return u"nothing"_s; }

private:
    void tell(QLatin1StringView verb, quint32 address, std::span<const std::byte> bytes, int width)
    {
        QString value;
        for (std::size_t at = bytes.size(); verb == "write"_L1 && at > 0; --at)
            value += hex8(static_cast<quint32>(bytes[at - 1])).right(2);
        if (!value.isEmpty())
            value.prepend(" 0x"_L1);
        const qsizetype count = std::ssize(bytes) / width;
        m_host.print(u"would %1%2 at 0x%3: %4 x %5 bits\n"_s.arg(verb, value, hex8(address), QString::number(count),
                                                                 QString::number(8 * width)));
    }

    ConsoleHost &m_host;
};

/// Keeps the values of the tree as they are, whatever becomes of them.
class ValuesAsTheyWere {
public:
    explicit ValuesAsTheyWere(VMXMLElement &element)
    {
        for (VMValuable *valuable : valuablesIn(element))
            m_values.push_back({valuable, valuable->getValue(), valuable->readError});
        for (VMXMLElement *holder = element.parent; holder; holder = holder->parent) {
            if (auto *pointer = elementCast<VMPointer>(holder))
                m_values.push_back({pointer, pointer->getValue(), pointer->readError});
        }
    }
    ValuesAsTheyWere(const ValuesAsTheyWere &) = delete;
    ValuesAsTheyWere &operator=(const ValuesAsTheyWere &) = delete;
    ~ValuesAsTheyWere()
    {
        for (const Value &value : m_values) {
            value.valuable->setValue(value.number);
            value.valuable->readError = value.isError;
        }
    }

private:
    struct Value {
        VMValuable *valuable;
        quint32 number;
        bool isError;
    };
    std::vector<Value> m_values;
};

/// Tells the reading of the pointers by which \a element is reached, whose values stay, so that what is behind them has
/// the address that it had last.
void tellPointers(TellingTarget &telling, const VMXMLElement &element)
{
    if (element.parent)
        tellPointers(telling, *element.parent);
    if (auto *pointer = elementCast<VMPointer>(element.parent)) {
        const ValuesAsTheyWere kept(*pointer);
        readValue(telling, *pointer);
    }
}

} // namespace

bool ConsoleState::reportInterruption()
{
    return fail(console_rules::kInterrupted);
}

bool Accesses::hasTarget()
{
    return m_state.target || m_state.fail(console_rules::kNoTarget);
}

QString Accesses::reasonOf(const TargetAnswer &answer) const
{
    return answer.outcome == TargetAnswer::NotHere
               ? answer.reason
               : u"%1 does not answer: %2; 'connect' tries again"_s.arg(m_state.target->description(), answer.reason);
}

bool Accesses::fail(const Rule &rule, const QString &path, const TargetAnswer &answer)
{
    m_isSilent = answer.outcome == TargetAnswer::NoAnswer;
    return m_state.goesOn() && m_state.fail(rule, {path, reasonOf(answer)});
}

bool Accesses::followPointersTo(const VMXMLElement &element)
{
    if (!hasTarget())
        return false;
    if (m_state.settings.dryRun) {
        TellingTarget telling(m_state.host);
        tellPointers(telling, element);
        return true;
    }
    const TargetAnswer answer = followPointers(*m_state.target, element);
    return answer || fail(console_rules::kNoWay, element.getPath(), answer);
}

bool Accesses::read(VMValuable &valuable)
{
    if (!followPointersTo(valuable)) {
        valuable.setReadError(true);
        return false;
    }
    if (m_state.settings.dryRun) {
        const ValuesAsTheyWere kept(valuable);
        TellingTarget telling(m_state.host);
        return bool(readValue(telling, valuable));
    }
    const TargetAnswer answer = readValue(*m_state.target, valuable);
    return answer || fail(console_rules::kCantRead, valuable.getPath(), answer);
}

bool Accesses::readAll(VMXMLElement &element)
{
    if (!hasTarget()) {
        element.setReadError(true);
        return false;
    }
    if (m_state.settings.dryRun) {
        TellingTarget telling(m_state.host);
        tellPointers(telling, element);
        const ValuesAsTheyWere kept(element);
        readValues(telling, element);
        return true;
    }
    const TargetAnswer answer = readValues(*m_state.target, element);
    return answer || fail(console_rules::kSomeUnread, element.getPath(), answer);
}

bool Accesses::write(VMValuable &valuable, quint32 value)
{
    if (!followPointersTo(valuable))
        return false;
    if (m_state.settings.dryRun) {
        const ValuesAsTheyWere kept(valuable);
        TellingTarget telling(m_state.host);
        return bool(writeValue(telling, valuable, value));
    }
    const TargetAnswer answer = writeValue(*m_state.target, valuable, value);
    if (!answer)
        return fail(console_rules::kCantWrite, valuable.getPath(), answer);
    return !m_state.settings.verify || verify(valuable, value);
}

bool Accesses::verify(VMValuable &valuable, quint32 written)
{
    const quint32 bits = bitsToVerify(valuable);
    if (bits == 0)
        return true;
    const TargetAnswer answer = readValue(*m_state.target, valuable);
    if (!answer)
        return fail(console_rules::kCantRead, valuable.getPath(), answer);
    const quint32 reads = valuable.getValue();
    if (((reads ^ written) & bits) == 0)
        return true;
    const int width = valuable.getBitSize();
    return m_state.fail(console_rules::kNotStuck, {valuable.getPath(), hexText(written, width), hexText(reads, width)});
}

} // namespace veldmap
