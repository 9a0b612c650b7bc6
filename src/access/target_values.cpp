#include "access/target_values.h"

#include "model/kinds.h"
#include "model/visit.h"
#include "text/bit_arithmetic.h"
#include "text/lines.h"

#include <QList>

#include <array>
#include <vector>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr qint64 kAddressSpace = Q_INT64_C(1) << 32; // bytes

/// The width of an access to \a valuable: its own. Software integers may lie at any address, where narrower accesses
/// reach them; a register at such an address can't be reached, which is 0.
int widthOfAccess(const VMValuable &valuable)
{
    int width = valuable.sizeOf();
    const ScalarKind *kind = scalarKindOf(valuable.getType());
    const bool isRegister = kind && kind->isBusRegister;
    while (width > 0 && valuable.getBaseAddress() % quint32(width) != 0)
        width = isRegister ? 0 : width / 2;
    return valuable.getBaseAddress() + qint64(valuable.sizeOf()) <= kAddressSpace ? width : 0;
}

TargetAnswer outOfReach(const VMValuable &valuable)
{
    return {TargetAnswer::NotHere, u"no access of %1 bits is possible at %2"_s.arg(
                                       QString::number(valuable.getBitSize()), valuable.getAddressString())};
}

/// Valuables side by side that one block of accesses reads.
using Run = std::span<VMValuable *const>;

/// Reads the values of an element in blocks.
class BlockReader {
public:
    explicit BlockReader(Target &target) : m_target(target) {}

    void operator()(VMValuable &valuable)
    {
        if (!valuable.readable)
            return;
        const int width = widthOfAccess(valuable);
        const qint64 address = valuable.getBaseAddress();
        if (width != m_width || address != m_end)
            readRun();
        if (width == 0) {
            fail(valuable, outOfReach(valuable));
            return;
        }
        m_run.push_back(&valuable);
        m_width = width;
        m_end = address + valuable.sizeOf();
    }
    void operator()(VMStruct &structure) { addMembers(structure.memberList); }
    void operator()(VMArray &array) { addMembers(array.memberList); }
    void operator()(VMXMLElement &) {}

    TargetAnswer finish()
    {
        readRun();
        return m_firstFault;
    }

private:
    template <typename Members>
    void addMembers(Members &members)
    {
        for (auto &member : members)
            visit(*member, *this);
    }

    void readRun()
    {
        read(m_run);
        m_run.clear();
        m_end = -1;
    }

    /// Reads \a run. Where a part of it is not there, the halves are read by themselves.
    void read(Run run)
    {
        if (run.empty())
            return;
        const quint32 begin = run.front()->getBaseAddress();
        std::vector<std::byte> bytes(run.back()->getBaseAddress() + std::size_t(run.back()->sizeOf()) - begin);
        const TargetAnswer answer = m_isSilent ? m_firstFault : m_target.read(begin, bytes, m_width);
        m_isSilent = answer.outcome == TargetAnswer::NoAnswer;
        if (answer.outcome == TargetAnswer::NotHere && run.size() > 1) {
            read(run.first(run.size() / 2));
            read(run.subspan(run.size() / 2));
            return;
        }
        for (VMValuable *valuable : run) {
            if (!answer) {
                fail(*valuable, answer);
                continue;
            }
            valuable->memSet(reinterpret_cast<unsigned char *>(&bytes[valuable->getBaseAddress() - begin]));
            valuable->setReadError(false);
        }
    }

    void fail(VMValuable &valuable, const TargetAnswer &answer)
    {
        valuable.setReadError(true);
        if (m_firstFault || answer.outcome == TargetAnswer::NoAnswer)
            m_firstFault = answer;
    }

    Target &m_target;
    std::vector<VMValuable *> m_run;
    int m_width = 0; // of the accesses to the run
    qint64 m_end = -1;
    TargetAnswer m_firstFault;
    bool m_isSilent = false;
};

} // namespace

TargetAnswer followPointers(Target &target, const VMXMLElement &element)
{
    QList<VMPointer *> pointers; // the innermost first
    for (VMXMLElement *holder = element.parent; holder; holder = holder->parent) {
        if (auto *pointer = elementCast<VMPointer>(holder))
            pointers += pointer;
    }
    for (auto pointer = pointers.rbegin(); pointer != pointers.rend(); ++pointer) {
        if (const TargetAnswer answer = readValue(target, **pointer); !answer)
            return answer;
    }
    return {};
}

TargetAnswer readValue(Target &target, VMValuable &valuable)
{
    const int width = widthOfAccess(valuable);
    std::array<std::byte, sizeof(quint32)> bytes = {};
    const std::span value = std::span(bytes).first(qMin<std::size_t>(std::size_t(valuable.sizeOf()), bytes.size()));
    TargetAnswer answer = width == 0 ? outOfReach(valuable) : target.read(valuable.getBaseAddress(), value, width);
    if (answer)
        valuable.memSet(reinterpret_cast<unsigned char *>(bytes.data()));
    valuable.setReadError(!answer);
    return answer;
}

TargetAnswer writeValue(Target &target, VMValuable &valuable, quint32 value)
{
    const int width = widthOfAccess(valuable);
    if (width == 0)
        return outOfReach(valuable);
    const quint32 before = valuable.getValue();
    const quint32 address = valuable.getBaseAddress();
    valuable.setValue(value);
    std::array<std::byte, sizeof(quint32)> bytes = {};
    valuable.memGet(reinterpret_cast<unsigned char *>(bytes.data()));
    TargetAnswer answer = target.write(address, std::span(bytes).first(std::size_t(valuable.sizeOf())), width);
    if (answer)
        valuable.setReadError(false);
    else
        valuable.setValue(before);
    return answer;
}

TargetAnswer readValues(Target &target, VMXMLElement &element)
{
    VMXMLElement &holder = elementCast<VMBitField>(&element) ? *element.parent : element;
    TargetAnswer answer = followPointers(target, holder);
    if (!answer) {
        holder.setReadError(true);
        return answer;
    }
    BlockReader reader(target);
    visit(holder, reader);
    return reader.finish();
}

quint32 bitsToVerify(const VMValuable &valuable)
{
    if (!valuable.readable || !valuable.writable)
        return 0;
    quint32 plain = valuable.bitFields.empty() ? 0xFFFFFFFF : 0;
    quint32 others = 0;
    for (const auto &field : valuable.bitFields)
        (field->readable && field->writeMode == 1 ? plain : others) |= field->getFullValueUnshifted();
    return plain & ~others & lowBits(valuable.getBitSize());
}

} // namespace veldmap
