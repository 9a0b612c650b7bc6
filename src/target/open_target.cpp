#include "findings/finding.h"
#include "target/kinds.h"
#include "target/target_rules.h"
#include "text/lines.h"
#include "text/literals.h"

#include <algorithm>
#include <cstring>
#include <vector>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

/// A kind of target: its name, and what makes one.
struct TargetKind {
    QLatin1StringView name;
    bool hasDetails;
    std::unique_ptr<PlacedTarget> (*make)(const TargetWord &word);
};

constexpr TargetKind kKinds[] = {
    {"image"_L1, true, makeImageTarget},
#ifdef Q_OS_UNIX
    {"gdb"_L1, true, makeGdbTarget},        {"mem"_L1, true, makeMappedTarget},
#endif
    {"sim"_L1, false, makeSimulatedTarget},
#ifdef Q_OS_UNIX
    {"exec"_L1, true, makeProgramTarget},
#endif
};

QString namesOfKinds()
{
    QStringList names;
    for (const TargetKind &kind : kKinds)
        names += kind.name;
    const QString last = names.takeLast();
    return names.join(", "_L1) + " or "_L1 + last;
}

std::unique_ptr<PlacedTarget> makeTarget(const QString &text, const VMMemoryMap &map, Sink &sink)
{
    const TargetWord word = {text, text.section(u':', 1), map, sink};
    const auto kind = std::ranges::find(kKinds, text.section(u':', 0, 0), &TargetKind::name);
    if (kind == std::end(kKinds))
        return refuse(word, u"its kind is none of %1, as in image:dump.bin@0x40000000"_s.arg(namesOfKinds()));
    return kind->make(word);
}

/// Several targets as one. An access is cut where one of them begins or ends, and each part goes to the first one that
/// holds it.
class SeveralTargets final : public Target {
public:
    explicit SeveralTargets(std::vector<std::unique_ptr<PlacedTarget>> targets) : m_targets(std::move(targets)) {}

    TargetAnswer read(quint32 address, std::span<std::byte> bytes, int width) override
    {
        return share(address, bytes, width, &Target::read);
    }
    TargetAnswer write(quint32 address, std::span<const std::byte> bytes, int width) override
    {
        return share(address, bytes, width, &Target::write);
    }
    TargetAnswer connect() override { return all(&Target::connect); }
    TargetAnswer flush() override { return all(&Target::flush); }

    QString description() const override
    {
        QStringList names;
        for (const auto &target : m_targets)
            names += target->description();
        return names.join(" and "_L1);
    }

private:
    template <typename Bytes, typename Access>
    TargetAnswer share(quint32 address, Bytes bytes, int width, Access access)
    {
        while (!bytes.empty()) {
            const auto size = static_cast<std::size_t>(sizeOfPart(address, std::ssize(bytes), width));
            const TargetAnswer answer = askEach(address, bytes.first(size), width, access);
            if (!answer)
                return answer;
            bytes = bytes.subspan(size);
            address += static_cast<quint32>(size);
        }
        return {};
    }

    /// How many of the \a size bytes from \a address on come before the next border of a target.
    qint64 sizeOfPart(qint64 address, qint64 size, int width) const
    {
        for (const auto &target : m_targets) {
            for (const qint64 border : {target->begin(), target->end()}) {
                if (border > address && border < address + size)
                    size = qMax<qint64>((border - address) / width * width, width);
            }
        }
        return size;
    }

    template <typename Bytes, typename Access>
    TargetAnswer askEach(quint32 address, Bytes bytes, int width, Access access)
    {
        TargetAnswer first = notHere(u"none of the targets holds 0x%1"_s.arg(hex8(address)));
        bool isFirst = true;
        for (const auto &target : m_targets) {
            if (address < target->begin() || address + std::ssize(bytes) > target->end())
                continue;
            target->settings = settings;
            TargetAnswer answer = ((*target).*access)(address, bytes, width);
            if (answer.outcome != TargetAnswer::NotHere)
                return answer;
            if (std::exchange(isFirst, false))
                first = std::move(answer);
        }
        return first;
    }

    /// Asks all; the first answer that tells of a fault.
    TargetAnswer all(TargetAnswer (Target::*operation)())
    {
        TargetAnswer first;
        for (const auto &target : m_targets) {
            target->settings = settings;
            TargetAnswer answer = ((*target).*operation)();
            if (first)
                first = std::move(answer);
        }
        return first;
    }

    std::vector<std::unique_ptr<PlacedTarget>> m_targets;
};

} // namespace

std::nullptr_t refuse(const TargetWord &word, const QString &reason)
{
    word.sink.take(Finding(target_rules::kNoTarget, {}, {word.word, reason}));
    return nullptr;
}

std::optional<PlaceAndAddress> placeAndAddress(const QString &text, std::optional<quint32> otherwise)
{
    const qsizetype sign = text.lastIndexOf(u'@');
    if (sign < 0)
        return otherwise ? std::optional(PlaceAndAddress{text, *otherwise}) : std::nullopt;
    const std::optional<qint64> address = numberOf(text.sliced(sign + 1));
    if (!address || *address < 0 || *address > 0xFFFFFFFF)
        return {};
    return PlaceAndAddress{text.first(sign), static_cast<quint32>(*address)};
}

quint32 numberFrom(const std::byte *bytes, int width)
{
    const auto as = [bytes]<typename Word>(Word word) {
        std::memcpy(&word, bytes, sizeof(word));
        return quint32(word);
    };
    return width == 1 ? as(quint8()) : width == 2 ? as(quint16()) : as(quint32());
}

void storeNumber(quint32 value, std::byte *bytes, int width)
{
    const auto as = [bytes](auto word) { std::memcpy(bytes, &word, sizeof(word)); };
    if (width == 1)
        as(static_cast<quint8>(value));
    else if (width == 2)
        as(static_cast<quint16>(value));
    else
        as(value);
}

QStringList targetKinds()
{
    QStringList kinds;
    for (const TargetKind &kind : kKinds)
        kinds += kind.name + (kind.hasDetails ? u":"_s : QString());
    return kinds;
}

std::unique_ptr<Target> openTarget(const QStringList &words, const VMMemoryMap &map, const TargetSettings &settings,
                                   Sink &sink)
{
    std::vector<std::unique_ptr<PlacedTarget>> targets;
    for (const QString &word : words) {
        std::unique_ptr<PlacedTarget> target = makeTarget(word, map, sink);
        if (!target)
            return nullptr;
        target->settings = settings;
        if (const TargetAnswer answer = target->connect(); !answer) {
            sink.take(Finding(target_rules::kUnreachable, {}, {target->description(), answer.reason}));
            return nullptr;
        }
        targets.push_back(std::move(target));
    }
    if (targets.size() == 1)
        return std::move(targets.front());
    auto several = std::make_unique<SeveralTargets>(std::move(targets));
    several->settings = settings;
    return several;
}

} // namespace veldmap
