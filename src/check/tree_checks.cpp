#include "check/tree_checks.h"

#include "check/readable_findings.h"
#include "check/tree_groups.h"
#include "model/archive.h"
#include "model/memory_map.h"
#include "model/root_archive.h"

#include <QHash>
#include <QSet>

#include <algorithm>
#include <atomic>
#include <functional>
#include <list>
#include <memory>
#include <system_error>
#include <thread>
#include <vector>

namespace veldmap {

namespace {

/// Passes each finding on once: the software may include files of the chip, which are in both trees then.
class DistinctSink final : public Sink {
public:
    explicit DistinctSink(Sink &sink) : m_sink(sink) {}

    void take(const Finding &finding) override
    {
        const Place &place = finding.place;
        QList<Finding> &alike = m_passed[qHashMulti(0, finding.rule, place.line, place.column, place.file)];
        const auto isSame = [&](const Finding &other) {
            return other.rule == finding.rule && other.place.line == place.line && other.place.column == place.column &&
                   other.place.file == place.file && other.arguments == finding.arguments;
        };
        if (std::ranges::any_of(alike, isSame))
            return;
        alike.append(finding);
        m_sink.take(finding);
    }

private:
    Sink &m_sink;
    QHash<std::size_t, QList<Finding>> m_passed;
};

/// Types of one root that follow each other, and what is found in them.
struct StretchOfTypes {
    struct Entry {
        const VMXMLArchive *archive;
        const VMXMLElement *type;
    };

    std::vector<Entry> types = {};
    ReadableFindings ofRegisters = {};
    ReadableFindings ofStructures = {};
    ReadableFindings ofNames = {};
    QSet<QString> used = {}; ///< names of types
};

constexpr int kStretches = 4; // for each thread, since some types have many more registers than others

/// The types of a root, in stretches that may be looked at on several threads. A thread makes all checks of a type, so
/// that only one has it in its cache.
struct TypesOfRoot {
    TypesOfRoot(const VMRootArchive &root, int most) : root(root), names(generatedNameChecks(root, ofArchives))
    {
        std::vector<StretchOfTypes::Entry> types;
        for (const VMXMLArchive *archive : root.xmlArchives) {
            for (const auto &type : archive->templates)
                types.push_back({archive, type.get()});
        }
        const std::size_t length = types.size() / static_cast<std::size_t>(most) + 1;
        for (std::size_t at = 0; at < types.size(); at += length) {
            const auto begin = types.begin() + static_cast<std::ptrdiff_t>(at);
            const auto rest = static_cast<std::size_t>(types.end() - begin);
            stretches.push_back({{begin, begin + static_cast<std::ptrdiff_t>(std::min(length, rest))}});
        }
    }

    void check(StretchOfTypes &stretch) const
    {
        const std::unique_ptr<TypeChecks> checks[] = {
            registerChecks(stretch.ofRegisters),
            structureChecks(root, stretch.ofStructures),
            usedTypes(stretch.used),
            names->another(stretch.ofNames),
        };
        for (const auto &[archive, type] : stretch.types) {
            for (const auto &check : checks)
                check->check(*archive, *type);
        }
    }

    const VMRootArchive &root;
    ReadableFindings ofArchives;
    std::unique_ptr<GeneratedNameChecks> names;
    std::vector<StretchOfTypes> stretches;
};

/// A group of rules and what it finds.
struct Group {
    std::function<void(Sink &)> check;
    ReadableFindings found = {};
};

/// Runs all of \a groups on \a threads threads, this one among them; on fewer where the system gives no more. The tree
/// is not changed by looking at it.
void runAll(std::vector<Group> &groups, int threads)
{
    std::atomic<std::size_t> next = 0;
    const auto work = [&] {
        for (std::size_t at = next++; at < groups.size(); at = next++)
            groups[at].check(groups[at].found);
    };
    std::vector<std::jthread> others;
    try {
        while (others.size() + 1 < qMin(groups.size(), static_cast<std::size_t>(qMax(threads, 1))))
            others.emplace_back(work);
    } catch (const std::system_error &) {
    }
    work();
}

} // namespace

void checkTree(const VMMemoryMap &map, Sink &sink, int threads)
{
    std::vector<Group> groups;
    std::list<TypesOfRoot> roots; // which stay where they are
    for (const VMRootArchive *root : {map.chipRootArchive, map.softRootArchive}) {
        if (!root)
            continue;
        TypesOfRoot &types = roots.emplace_back(*root, threads > 1 ? threads * kStretches : 1);
        for (StretchOfTypes &stretch : types.stretches)
            groups.push_back({[&](Sink &) { types.check(stretch); }});
        groups.push_back({[=](Sink &to) { checkIncludes(*root, to); }});
    }
    groups.push_back({[&](Sink &to) { checkMemoryMap(map, to); }});
    runAll(groups, threads);
    DistinctSink distinct(sink);
    const auto pass = [&](const ReadableFindings &list) {
        for (const Finding &finding : list.findings)
            distinct.take(finding);
    };
    QSet<QString> used;
    for (const TypesOfRoot &types : roots) {
        for (const auto &instance : types.root.instances)
            used += instance->typedefName;
        pass(types.ofArchives);
        for (const StretchOfTypes &stretch : types.stretches) {
            pass(stretch.ofRegisters);
            pass(stretch.ofStructures);
            pass(stretch.ofNames);
            used += stretch.used;
        }
    }
    std::ranges::for_each(groups, pass, &Group::found);
    for (const TypesOfRoot &types : roots)
        tellUnusedTypes(types.root, used, distinct);
}

} // namespace veldmap
