#include "check/tree_checks.h"

#include "check/readable_findings.h"
#include "check/tree_groups.h"
#include "model/archive.h"
#include "model/memory_map.h"
#include "model/root_archive.h"

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
        const qsizetype before = m_texts.size();
        m_texts.insert(placedText(finding));
        if (m_texts.size() != before)
            m_sink.take(finding);
    }

private:
    Sink &m_sink;
    QSet<QString> m_texts;
};

using TypeChecksList = std::vector<std::unique_ptr<TypeChecks>>;

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
    std::list<ReadableFindings> ofTypes; // which stay where they are
    std::list<QSet<QString>> usedNames;  // by root, likewise
    for (const VMRootArchive *root : {map.chipRootArchive, map.softRootArchive}) {
        if (!root)
            continue;
        const auto listFor = [&]() -> Sink & { return ofTypes.emplace_back(); };
        Sink &registers = listFor();
        Sink &structures = listFor();
        Sink &names = listFor();
        QSet<QString> &used = usedNames.emplace_back();
        const auto check = [root](const TypeChecksList &list) {
            for (const VMXMLArchive *archive : root->xmlArchives) {
                for (const auto &type : archive->templates) {
                    for (const auto &checks : list)
                        checks->check(*archive, *type);
                }
            }
        };
        const auto members = [=, &registers, &structures, &used](TypeChecksList &list) {
            list.push_back(registerChecks(registers));
            list.push_back(structureChecks(*root, structures));
            list.push_back(usedTypes(*root, used));
        };
        const auto generated = [=, &names](TypeChecksList &list) { list.push_back(generatedNameChecks(*root, names)); };
        const auto run = [=](auto... makers) {
            return [=](Sink &) {
                TypeChecksList list;
                (makers(list), ...);
                check(list);
            };
        };
        if (threads > 1) {
            groups.push_back({run(members)});
            groups.push_back({run(generated)});
        } else {
            groups.push_back({run(members, generated)});
        }
        groups.push_back({[=](Sink &to) { checkIncludes(*root, to); }});
    }
    groups.push_back({[&](Sink &to) { checkMemoryMap(map, to); }});
    runAll(groups, threads);
    DistinctSink distinct(sink);
    const auto pass = [&](const ReadableFindings &list) {
        for (const Finding &finding : list.findings)
            distinct.take(finding);
    };
    std::ranges::for_each(ofTypes, pass);
    std::ranges::for_each(groups, pass, &Group::found);
    QSet<QString> used;
    for (const QSet<QString> &names : usedNames)
        used += names;
    for (const VMRootArchive *root : {map.chipRootArchive, map.softRootArchive}) {
        if (root)
            tellUnusedTypes(*root, used, distinct);
    }
}

} // namespace veldmap
