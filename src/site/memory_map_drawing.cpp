#include "site/memory_map_drawing.h"

#include "model/element.h"
#include "site/chapter.h"
#include "site/html_text.h"
#include "site/site_plan.h"

#include <bit>
#include <vector>

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr std::size_t kMostRegions = 120; // that a reader can overlook

/// Instances that lie side by side.
struct Region {
    qint64 begin;
    qint64 end; ///< behind the last byte
    std::size_t first;
    std::size_t count;
};

qint64 beginOf(const SiteInstance &instance)
{
    return instance.element->getBaseAddress();
}

qint64 endOf(const SiteInstance &instance)
{
    return beginOf(instance) + static_cast<quint32>(instance.element->sizeOf());
}

/// The instances in their order, those together that lie at most \a distance apart; with -1 each alone.
std::vector<Region> regionsOf(const std::vector<SiteInstance> &instances, qint64 distance)
{
    std::vector<Region> regions;
    for (std::size_t at = 0; at < instances.size(); ++at) {
        const SiteInstance &instance = instances[at];
        if (distance >= 0 && !regions.empty() && beginOf(instance) - regions.back().end <= distance) {
            regions.back().end = qMax(regions.back().end, endOf(instance));
            ++regions.back().count;
        } else {
            regions.push_back({beginOf(instance), endOf(instance), at, 1});
        }
    }
    return regions;
}

std::vector<Region> readableRegions(const std::vector<SiteInstance> &instances)
{
    std::vector<Region> regions = regionsOf(instances, -1);
    for (qint64 distance = 0; regions.size() > kMostRegions; distance = qMax<qint64>(16 * distance, 0x100))
        regions = regionsOf(instances, distance);
    return regions;
}

/// The step of the scale for \a bytes: 1 for up to 256 bytes, then one more for each 16 times as many.
int stepOf(qint64 bytes)
{
    const int bits = std::bit_width(static_cast<quint64>(qMax<qint64>(bytes, 1)) - 1);
    return qBound(1, (bits - 5) / 4 + 1, 6);
}

void appendBytes(HtmlText &text, qint64 bytes)
{
    constexpr qint64 kUnit = 1024;
    struct Row {
        qint64 unit;
        QLatin1StringView word;
    };
    constexpr Row kRows[] = {{kUnit * kUnit * kUnit, " GB"_L1}, {kUnit * kUnit, " MB"_L1}, {kUnit, " KB"_L1}};
    for (const Row &row : kRows) {
        if (bytes < row.unit)
            continue;
        text.put(bytes / row.unit);
        if (const qint64 tenth = bytes % row.unit * 10 / row.unit; tenth > 0)
            text.put("."_L1, tenth);
        text.put(row.word);
        return;
    }
    text.put(bytes, " B"_L1);
}

void appendRegion(HtmlText &text, const SitePlan &plan, const Region &region, qint64 before, bool isAlone)
{
    const SiteInstance &first = plan.instances()[region.first];
    const qint64 bytes = region.end - region.begin;
    text.put("<li class=\"s"_L1, stepOf(bytes), first.isChip ? ""_L1 : " soft"_L1,
             region.begin < before ? " over\">"_L1 : "\">"_L1, "<code>0x"_L1, Hex{quint32(region.begin), 8},
             "</code><a href=\""_L1);
    appendLink(text, first, isAlone);
    text.put("\"><b>"_L1, first.element->getName());
    if (region.count > 1)
        text.put(" … "_L1, plan.instances()[region.first + region.count - 1].element->getName());
    text.put("</b>"_L1);
    if (region.count > 1)
        text.put(" "_L1, qint64(region.count), " instances"_L1);
    else if (first.element->typedefName != first.element->getName())
        text.put(" "_L1, first.element->typedefName);
    text.put("</a><span>"_L1);
    appendBytes(text, bytes);
    text.put("</span></li>\n"_L1);
}

void appendGap(HtmlText &text, qint64 begin, qint64 bytes)
{
    text.put("<li class=\"gap s"_L1, stepOf(bytes), "\"><code>0x"_L1, Hex{quint32(begin), 8},
             "</code><i>unused</i><span>"_L1);
    appendBytes(text, bytes);
    text.put("</span></li>\n"_L1);
}

} // namespace

void appendMemoryMap(HtmlText &text, const SitePlan &plan, bool isAlone)
{
    text.put("<ol class=\"map\">\n"_L1);
    qint64 end = -1;
    for (const Region &region : readableRegions(plan.instances())) {
        if (end >= 0 && region.begin > end)
            appendGap(text, end, region.begin - end);
        appendRegion(text, plan, region, end, isAlone);
        end = qMax(end, region.end);
    }
    text.put("</ol>\n"_L1);
}

} // namespace veldmap
