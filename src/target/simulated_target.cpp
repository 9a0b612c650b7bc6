#include "model/memory_map.h"
#include "model/visit.h"
#include "target/kinds.h"
#include "text/bit_arithmetic.h"
#include "text/lines.h"

#include <QFile>
#include <QHash>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

using namespace Qt::StringLiterals;

// The description as a chip that was just reset: sim, or sim:log=FILE.
//
// A register answers accesses of its own width. What its access words do not let read reads as 0, and what they do not
// let write stays, as a chip does it, which tells nobody. Bits that no field of a register with fields has read as 0.
// Memories and software integers are plain memory.
//
// The log has a line for each access: r 0x40004008 4 0x00000003

namespace veldmap {

namespace {

constexpr int kSetMode = 2;
constexpr int kClearMode = 3;
constexpr quint32 kPageSize = 4096; // bytes

/// The bits of a register by what becomes of them.
struct BitMasks {
    quint32 read = 0;
    quint32 write = 0;
    quint32 set = 0;   ///< writing 1 sets them
    quint32 clear = 0; ///< writing 1 clears them
    quint32 reset = 0; ///< which are 1 after a reset

    explicit BitMasks(const VMValuable &valuable)
    {
        const quint32 all = lowBits(valuable.getBitSize());
        if (valuable.bitFields.empty())
            read = write = all;
        for (const auto &field : valuable.bitFields) {
            const quint32 mask = field->getFullValueUnshifted() & all;
            read |= field->readable ? mask : 0;
            write |= field->writeMode == 1 ? mask : 0;
            set |= field->writeMode == kSetMode ? mask : 0;
            clear |= field->writeMode == kClearMode ? mask : 0;
            reset |= field->hasReset ? shiftLeft(field->resetValue, field->downPos) & mask : 0;
        }
        if (!valuable.readable)
            read = 0;
        if (!valuable.writable)
            write = set = clear = 0;
    }
};

bool isRegister(const VMValuable &valuable)
{
    constexpr std::array kRegisters = {VMXMLElement::XML_REGISTER32, VMXMLElement::XML_REGISTER16,
                                       VMXMLElement::XML_REGISTER8, VMXMLElement::XML_INTERNAL_REGISTER8};
    return std::ranges::find(kRegisters, valuable.getType()) != kRegisters.end();
}

struct SimulatedRegister {
    quint32 address;
    quint32 value;
    const VMValuable *valuable;
};

/// Addresses from \a begin on up to the one before \a end.
struct AddressRange {
    qint64 begin;
    qint64 end;
};

/// Memory that takes room only where something was written.
class SparseMemory {
public:
    void allow(qint64 begin, qint64 size) { m_ranges.push_back({begin, begin + size}); }

    /// Brings the ranges into order, so that neighbours become one.
    void finish()
    {
        std::ranges::sort(m_ranges, {}, &AddressRange::begin);
        std::vector<AddressRange> joined;
        for (const AddressRange &range : m_ranges) {
            if (!joined.empty() && range.begin <= joined.back().end)
                joined.back().end = qMax(joined.back().end, range.end);
            else
                joined.push_back(range);
        }
        m_ranges = std::move(joined);
    }

    bool holds(qint64 address, qint64 size) const
    {
        const auto behind = std::ranges::upper_bound(m_ranges, address, {}, &AddressRange::begin);
        return behind != m_ranges.begin() && address + size <= std::prev(behind)->end;
    }

    // An access lies in one page, since its address is a multiple of its width.
    quint32 read(quint32 address, int width) const
    {
        const auto page = m_pages.constFind(address / kPageSize);
        if (page == m_pages.cend())
            return 0;
        return numberFrom(reinterpret_cast<const std::byte *>(page->constData()) + address % kPageSize, width);
    }

    void write(quint32 address, quint32 value, int width)
    {
        QByteArray &page = m_pages[address / kPageSize];
        if (page.isEmpty())
            page.fill('\0', kPageSize);
        storeNumber(value, reinterpret_cast<std::byte *>(page.data()) + address % kPageSize, width);
    }

private:
    std::vector<AddressRange> m_ranges;
    QHash<quint32, QByteArray> m_pages; // by number
};

class SimulatedTarget final : public PlacedTarget {
public:
    explicit SimulatedTarget(const VMMemoryMap &map)
    {
        for (const VMRootArchive *root : {map.chipRootArchive, map.softRootArchive}) {
            if (!root)
                continue;
            for (const auto &instance : root->instances)
                add(*instance, instance->getBaseAddress());
        }
        m_memory.finish();
        std::ranges::stable_sort(m_registers, {}, &SimulatedRegister::address);
    }

    bool openLog(const QString &path)
    {
        m_log.setFileName(path);
        return m_log.open(QIODevice::WriteOnly | QIODevice::Truncate);
    }
    QString faultOfLog() const { return m_log.errorString(); }

    QString description() const override { return u"the simulator"_s; }

    TargetAnswer read(quint32 address, std::span<std::byte> bytes, int width) override
    {
        for (std::size_t at = 0; at < bytes.size(); at += std::size_t(width)) {
            quint32 value = 0;
            if (const TargetAnswer answer = readOne(address + quint32(at), width, value); !answer)
                return answer;
            storeNumber(value, bytes.data() + at, width);
        }
        return {};
    }

    TargetAnswer write(quint32 address, std::span<const std::byte> bytes, int width) override
    {
        for (std::size_t at = 0; at < bytes.size(); at += std::size_t(width)) {
            if (const TargetAnswer answer = writeOne(address + quint32(at), width, numberFrom(&bytes[at], width));
                !answer)
                return answer;
        }
        return {};
    }

    TargetAnswer flush() override
    {
        if (!m_log.isOpen() || m_log.flush())
            return {};
        return noAnswer(u"%1 can't be written: %2"_s.arg(m_log.fileName(), m_log.errorString()));
    }

private:
    void add(const VMXMLElement &element, quint32 address)
    {
        const auto addMembers = [&](const auto &members) {
            for (const auto &member : members)
                add(*member, address + member->offset);
        };
        visit(element, Overloads{[&](const VMStruct &structure) { addMembers(structure.memberList); },
                                 [&](const VMArray &array) { addMembers(array.memberList); },
                                 [&](const VMMemory &memory) { m_memory.allow(address, memory.sizeOf()); },
                                 [&](const VMValuable &valuable) { addValuable(valuable, address); },
                                 [](const VMXMLElement &) {}});
    }

    void addValuable(const VMValuable &valuable, quint32 address)
    {
        const quint32 reset = BitMasks(valuable).reset;
        const int width = valuable.sizeOf();
        if (isRegister(valuable)) {
            m_registers.push_back({address, reset, &valuable});
            return;
        }
        m_memory.allow(address, width);
        if (reset != 0 && address % quint32(width) == 0)
            m_memory.write(address, reset, width);
    }

    TargetAnswer readOne(quint32 address, int width, quint32 &value)
    {
        if (const SimulatedRegister *found = findRegister(address, width, &VMValuable::readable))
            value = found->value & BitMasks(*found->valuable).read;
        else if (m_memory.holds(address, width))
            value = m_memory.read(address, width);
        else
            return nothingAt(address, width);
        log(u"r"_s, address, width, value);
        return {};
    }

    TargetAnswer writeOne(quint32 address, int width, quint32 value)
    {
        if (SimulatedRegister *found = findRegister(address, width, &VMValuable::writable)) {
            const BitMasks bits(*found->valuable);
            const quint32 written = (found->value & ~bits.write) | (value & bits.write);
            found->value = (written | (value & bits.set)) & ~(value & bits.clear);
        } else if (m_memory.holds(address, width)) {
            m_memory.write(address, value, width);
        } else {
            return nothingAt(address, width);
        }
        log(u"w"_s, address, width, value);
        return {};
    }

    /// The register of that width at \a address. Of several the first one for which \a isAble, if there is one: a chip
    /// may have another register for reading than for writing.
    SimulatedRegister *findRegister(quint32 address, int width, bool VMValuable::*isAble)
    {
        SimulatedRegister *found = nullptr;
        auto candidate = std::ranges::lower_bound(m_registers, address, {}, &SimulatedRegister::address);
        for (; candidate != m_registers.end() && candidate->address == address; ++candidate) {
            if (candidate->valuable->sizeOf() != width)
                continue;
            if (candidate->valuable->*isAble)
                return &*candidate;
            found = found ? found : &*candidate;
        }
        return found;
    }

    TargetAnswer nothingAt(quint32 address, int width) const
    {
        return notHere(
            u"the description has nothing of %1 bits at 0x%2"_s.arg(QString::number(8 * width), hex8(address)));
    }

    void log(const QString &direction, quint32 address, int width, quint32 value)
    {
        if (m_log.isOpen()) {
            m_log.write(u"%1 0x%2 %3 0x%4\n"_s
                            .arg(direction, hex8(address), QString::number(width), hex8(value).right(2 * width))
                            .toLatin1());
        }
    }

    std::vector<SimulatedRegister> m_registers; // by address, of one address in load order
    SparseMemory m_memory;
    QFile m_log;
};

} // namespace

std::unique_ptr<PlacedTarget> makeSimulatedTarget(const TargetWord &word)
{
    const bool hasLog = word.details.startsWith("log="_L1) && word.details.size() > 4;
    if (!word.details.isEmpty() && !hasLog)
        return refuse(word, u"a simulator is sim, or sim:log=FILE"_s);
    auto target = std::make_unique<SimulatedTarget>(word.map);
    if (hasLog && !target->openLog(word.details.sliced(4)))
        return refuse(word, u"its log can't be written: %1"_s.arg(target->faultOfLog()));
    return target;
}

} // namespace veldmap
