#include "access/path_hint.h"

#include "access/access_rules.h"
#include "findings/finding.h"
#include "model/memory_map.h"
#include "model/visit.h"
#include "text/nearest_name.h"

using namespace Qt::StringLiterals;

namespace veldmap {

namespace {

constexpr int kMostSegments = 64; // of a path that is worth correcting

/// The longest part of \a path from its begin that names an element; empty when none does, or when it would be long to
/// find.
QString knownPart(const VMMemoryMap &map, QString path)
{
    if (path.count(u'.') > kMostSegments)
        return {};
    while (!path.isEmpty() && !map.getElementFromPath(path))
        path.truncate(qMax(path.lastIndexOf(u'.'), 0));
    return path;
}

/// The name of those that \a offer gives which is nearest to \a word; null when none is near.
template <typename Offer>
QString nearestTo(const QString &word, const Offer &offer)
{
    NearestName nearest(word);
    offer([&](const VMXMLElement &element) { nearest.offer(element.getName()); });
    return nearest.name();
}

/// Gives \a take all that a path may go on with behind \a element.
template <typename Take>
void forEachInside(const VMXMLElement &element, const Take &take)
{
    visit(element, Overloads{[&](const VMStruct &structure) {
                                 for (const auto &member : structure.memberList) {
                                     take(*member);
                                     if (const auto *array = elementCast<VMArray>(member.get()))
                                         forEachInside(*array, take);
                                 }
                             },
                             [&](const VMArray &array) {
                                 constexpr std::size_t kMost = 256; // indexes that are compared by their letters
                                 for (std::size_t at = 0; at < qMin(array.memberList.size(), kMost); ++at)
                                     take(*array.memberList[at]);
                             },
                             [&](const VMValuable &valuable) {
                                 for (const auto &field : valuable.bitFields)
                                     take(*field);
                             },
                             [](const VMXMLElement &) {}});
}

/// \a path with each name that leads nowhere replaced by the one that is spelt most like it; null where there is none.
QString corrected(const VMMemoryMap &map, const QString &path)
{
    QStringList segments = path.sliced(path.startsWith(u'$') ? 1 : 0).split(u'.');
    if (segments.size() > kMostSegments)
        return {};
    QString known;
    const VMXMLElement *holder = nullptr;
    for (const QString &segment : std::as_const(segments)) {
        const QString front = holder ? known + u'.' : u"$"_s;
        QString next = front + segment;
        if (!map.getElementFromPath(next)) {
            const QString nearest = nearestTo(segment, [&](const auto &offer) {
                if (holder) {
                    forEachInside(*holder, offer);
                    return;
                }
                for (const VMRootArchive *root : {map.chipRootArchive, map.softRootArchive}) {
                    for (std::size_t at = 0; root && at < root->instances.size(); ++at)
                        offer(*root->instances[at]);
                }
            });
            if (nearest.isEmpty())
                return {};
            next = front + nearest;
        }
        known = next;
        holder = map.getElementFromPath(known);
        if (!holder)
            return {};
    }
    return known;
}

/// "$U.chan has 4 members, [0] to [3]", where \a path has an index that is beyond them.
QString rangeHint(const VMMemoryMap &map, const QString &path, const QString &known)
{
    const qsizetype begin = path.indexOf(u'[', known.size());
    const QString front = begin < 0 ? QString() : path.first(begin);
    const auto *array = front.isEmpty() || path.sliced(known.size(), begin - known.size()).count(u'.') > 1
                            ? nullptr
                            : elementCast<VMArray>(map.getElementFromPath(front));
    if (!array)
        return {};
    return u"%1 has %2 members, [0] to [%3]"_s.arg(front, QString::number(array->count()),
                                                   QString::number(array->count() - 1));
}

Finding noElement(const VMMemoryMap &map, const QString &path)
{
    constexpr qsizetype kShown = 200; // characters of a path that may have millions
    const QString shown = path.size() > kShown ? path.first(kShown) + u"..."_s : path;
    const QString known = path.startsWith(u'$') ? knownPart(map, path) : QString();
    Finding finding = !path.startsWith(u'$') ? Finding(access_rules::kNoPath, {}, {shown})
                      : known.isEmpty()      ? Finding(access_rules::kNoElement, {}, {shown})
                                             : Finding(access_rules::kPathEnds, {}, {shown, known});
    finding.hint = rangeHint(map, path, known);
    if (finding.hint.isEmpty() && path.size() <= kShown) {
        const QString nearest = corrected(map, path);
        finding.hint = nearest.isEmpty() ? QString() : u"did you mean '%1'?"_s.arg(nearest);
    }
    return finding;
}

} // namespace

VMXMLElement *findElement(const VMMemoryMap &map, const QString &path, Sink &sink)
{
    VMXMLElement *found = map.getElementFromPath(path);
    if (!found)
        sink.take(noElement(map, path));
    return found;
}

} // namespace veldmap
