#include "check/tree_groups.h"
#include "check/tree_rules.h"
#include "model/aggregates.h"
#include "model/memory_map.h"
#include "model/root_archive.h"
#include "text/lines.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// Behind the last address.
constexpr qint64 kMemory = qint64(1) << 32;

QString addressText(quint32 address)
{
    return "0x"_L1 + hex8(address);
}

/// An instance and the memory that its members take. A gap at its begin or end is another's to fill.
struct Placed {
    explicit Placed(const VMXMLElement &element)
        : instance(&element), address(element.getBaseAddress()), begin(address), end(begin + qMax(element.sizeOf(), 0))
    {
        const auto *structure = elementCast<VMStruct>(instance);
        if (!structure)
            return;
        const auto isMember = [](const auto &member) { return member->getType() != VMXMLElement::XML_HOLE; };
        const auto &members = structure->memberList;
        const auto first = std::ranges::find_if(members, isMember);
        const auto last = std::find_if(members.rbegin(), members.rend(), isMember);
        if (last == members.rend()) {
            end = begin;
            return;
        }
        end = begin + (*last)->offset + qMax((*last)->sizeOf(), 0);
        begin += (*first)->offset;
    }

    bool isEmpty() const { return end <= begin; }
    QString place() const { return addressText(address); }
    QStringList range() const
    {
        const auto text = [](qint64 byte) { return addressText(static_cast<quint32>(qMin(byte, kMemory - 1))); };
        return {text(begin), text(end - 1)};
    }

    const VMXMLElement *instance;
    quint32 address;
    qint64 begin; ///< the first byte of a member
    qint64 end;   ///< behind the last
};

/// The instances of both roots, the chip's first, each in load order. What both roots hold, because the software
/// includes files of the chip, is taken once.
QList<Placed> instancesOf(const VMMemoryMap &map)
{
    QList<Placed> all;
    QSet<std::pair<quint32, QStringList>> ofChip;
    for (const VMRootArchive *root : {map.chipRootArchive, map.softRootArchive}) {
        if (!root)
            continue;
        for (const auto &instance : root->instances) {
            const quint32 address = instance->getBaseAddress();
            const std::pair key(address, QStringList{instance->getName(), instance->getTypeString()});
            if (root == map.softRootArchive && ofChip.contains(key))
                continue;
            if (root == map.chipRootArchive)
                ofChip.insert(key);
            all.append(Placed(*instance));
        }
    }
    return all;
}

class MemoryMapChecks {
public:
    explicit MemoryMapChecks(Sink &sink) : m_sink(sink) {}

    void checkAlone(const Placed &placed)
    {
        constexpr int kLargestAlignment = 4; // no member of a type is aligned to more
        const VMXMLElement &instance = *placed.instance;
        const int align = qMin(instance.getAlignConstraint(), kLargestAlignment);
        if (align > 0 && placed.address % static_cast<quint32>(align) != 0)
            take(lint::instanceUnaligned, instance,
                 {instance.getName(), placed.place(), QString::number(align), instance.getTypeString()});
        if (placed.end > kMemory)
            take(lint::instanceBeyondMemory, instance,
                 {instance.getName(), placed.place(), QString::number(placed.end - placed.address),
                  QString::number(placed.end - kMemory)});
    }

    /// Macros have names in capitals, so "uart0" and "UART0" are one there.
    void checkNames(const QList<Placed> &all)
    {
        QHash<QString, const Placed *> known;
        for (const Placed &placed : all) {
            const Placed *&first = known[placed.instance->getName().toUpper()];
            if (first)
                take(lint::instanceNameTwice, *placed.instance,
                     {placed.instance->getName(), placed.place(), first->instance->getName(), first->place()},
                     first->instance);
            else
                first = &placed;
        }
    }

    /// Two types at one address are two views of a block that can do either; one type is there twice by mistake.
    void checkAddresses(const QList<Placed> &all)
    {
        QHash<quint32, const Placed *> firstAt;
        for (const Placed &placed : all) {
            if (placed.isEmpty())
                continue;
            const Placed *&first = firstAt[placed.address];
            if (!first)
                first = &placed;
            else if (first->instance->getTypeString() == placed.instance->getTypeString())
                tellOverlap(placed, *first);
            else
                take(lint::instanceView, *placed.instance,
                     {placed.instance->getName(), placed.instance->getTypeString(), placed.place(),
                      first->instance->getName(), first->instance->getTypeString()},
                     first->instance);
        }
    }

    /// Goes upwards through memory. An instance that overlaps any from further down overlaps the one that reaches
    /// furthest; where that lies at the same address, the one that reaches furthest among the others.
    void checkOverlaps(QList<Placed> all)
    {
        std::ranges::stable_sort(all, {}, &Placed::begin);
        const Placed *furthest = nullptr;
        const Placed *next = nullptr; // of all at another address
        for (const Placed &placed : std::as_const(all)) {
            if (placed.isEmpty())
                continue;
            const bool isSame = furthest && furthest->address == placed.address;
            const Placed *other = isSame ? next : furthest;
            if (other && placed.begin < other->end)
                tellOverlap(placed, *other);
            if (!furthest || placed.end > furthest->end) {
                if (!isSame)
                    next = furthest;
                furthest = &placed;
            } else if (!isSame && (!next || placed.end > next->end)) {
                next = &placed;
            }
        }
    }

private:
    void tellOverlap(const Placed &placed, const Placed &other)
    {
        take(lint::instanceOverlap, *placed.instance,
             QStringList{placed.instance->getName()} + placed.range() + QStringList{other.instance->getName()} +
                 other.range(),
             other.instance);
    }

    void take(const LintRule &rule, const VMXMLElement &instance, const QStringList &arguments,
              const VMXMLElement *other = nullptr)
    {
        Finding finding(rule.rule, instance.source.place(), arguments);
        m_sink.take(other ? finding.withPlace(other->source.place(), u"the other instance"_s) : finding);
    }

    Sink &m_sink;
};

} // namespace

void checkMemoryMap(const VMMemoryMap &map, Sink &sink)
{
    const QList<Placed> all = instancesOf(map);
    MemoryMapChecks checks(sink);
    for (const Placed &placed : all)
        checks.checkAlone(placed);
    checks.checkNames(all);
    checks.checkAddresses(all);
    checks.checkOverlaps(all);
}

} // namespace veldmap
