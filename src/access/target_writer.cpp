#include "access/target_writer.h"

#include "access/access_rules.h"
#include "access/path_hint.h"
#include "access/target_values.h"
#include "findings/finding.h"
#include "model/memory_map.h"
#include "model/valuable.h"
#include "text/bit_arithmetic.h"
#include "text/lines.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// What an assignment is about: a valuable, and the field in it if it is one.
struct Goal {
    VMValuable *valuable = nullptr; ///< null for what has no value
    const VMBitField *field = nullptr;
};

Goal goalOf(VMXMLElement *element)
{
    const auto *field = elementCast<VMBitField>(element);
    return {elementCast<VMValuable>(field ? field->parent : element), field};
}

/// Whether \a field is all that its register holds, so that the rest of it need not be known.
bool isWhole(const VMBitField &field, const VMValuable &valuable)
{
    const quint32 all = lowBits(valuable.getBitSize());
    return (field.getFullValueUnshifted() & all) == all;
}

std::optional<quint32> valueFor(const Goal &goal, quint32 before, const Assignment &assignment, Sink &sink)
{
    return goal.field ? valueToWrite(*goal.field, *goal.valuable, before, assignment, sink)
                      : valueToWrite(*goal.valuable, assignment, sink);
}

QString hexOf(quint32 value, const VMValuable &valuable)
{
    return "0x"_L1 + hex8(value).right(2 * valuable.sizeOf());
}

} // namespace

bool TargetWriter::write(const QList<Assignment> &assignments)
{
    for (const Assignment &assignment : assignments) {
        if (!check(assignment))
            return false;
    }
    m_sticks = true;
    for (const Assignment &assignment : assignments) {
        if (!prepare(assignment))
            return false;
    }
    if (!writePending())
        return false;
    if (const TargetAnswer answer = m_target.flush(); !answer) {
        m_sink.take(Finding(access_rules::kNotFlushed, {}, {answer.reason}));
        return false;
    }
    return m_sticks;
}

/// Whether \a assignment makes sense, as far as that can be told without the target.
bool TargetWriter::check(const Assignment &assignment)
{
    VMXMLElement *element = findElement(m_map, assignment.path, m_sink);
    if (!element)
        return false;
    const Goal goal = goalOf(element);
    const Rule *rule = nullptr;
    if (!goal.valuable)
        rule = &access_rules::kNoValue;
    else if (goal.field && !goal.valuable->writable && !assignment.force)
        rule = &access_rules::kNotWritable;
    else if (goal.field && !goal.valuable->readable && !isWhole(*goal.field, *goal.valuable))
        rule = &access_rules::kRestUnknown;
    if (rule)
        m_sink.take(Finding(*rule, {}, {assignment.path}));
    return !rule && valueFor(goal, 0, assignment, m_sink).has_value();
}

/// Joins \a assignment, which was checked, to the write of the same register before it, or begins a new one.
bool TargetWriter::prepare(const Assignment &assignment)
{
    const Goal goal = goalOf(m_map.getElementFromPath(assignment.path));
    VMValuable &valuable = *goal.valuable;
    if (m_pending.valuable != &valuable) {
        if (!writePending())
            return false;
        if (const TargetAnswer answer = followPointers(m_target, valuable); !answer)
            return fail(access_rules::kNotWritten, assignment.path, answer.reason);
        m_pending = {assignment.path, &valuable, 0};
        if (goal.field && !isWhole(*goal.field, valuable)) {
            if (const TargetAnswer answer = readValue(m_target, valuable); !answer)
                return fail(access_rules::kNotWritten, assignment.path, answer.reason);
            m_pending.value = valuable.getValueForWritingBitfield();
        }
    }
    const std::optional<quint32> value = valueFor(goal, m_pending.value, assignment, m_sink);
    m_pending.value = value.value_or(m_pending.value);
    return value.has_value();
}

bool TargetWriter::writePending()
{
    const Pending pending = std::exchange(m_pending, {});
    if (!pending.valuable)
        return true;
    if (const TargetAnswer answer = writeValue(m_target, *pending.valuable, pending.value); !answer)
        return fail(access_rules::kNotWritten, pending.path, answer.reason);
    if (verifies)
        verify(pending);
    return true;
}

void TargetWriter::verify(const Pending &written)
{
    VMValuable &valuable = *written.valuable;
    const quint32 bits = bitsToVerify(valuable);
    if (bits == 0)
        return;
    const TargetAnswer answer = readValue(m_target, valuable);
    if (!answer) {
        m_sticks = fail(access_rules::kNotReadBack, written.path, answer.reason);
    } else if ((valuable.getValue() & bits) != (written.value & bits)) {
        m_sink.take(Finding(access_rules::kDidNotStick, {},
                            {written.path, hexOf(written.value, valuable), hexOf(valuable.getValue(), valuable)}));
        m_sticks = false;
    }
}

bool TargetWriter::fail(const Rule &rule, const QString &path, const QString &reason)
{
    m_sink.take(Finding(rule, {}, {path, reason}));
    m_pending = {};
    return false;
}

} // namespace veldmap
