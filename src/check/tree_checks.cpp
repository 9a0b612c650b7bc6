#include "check/tree_checks.h"

#include "check/tree_groups.h"
#include "model/memory_map.h"
#include "model/root_archive.h"

#include <QSet>

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

} // namespace

void checkTree(const VMMemoryMap &map, Sink &sink)
{
    DistinctSink distinct(sink);
    for (const VMRootArchive *root : {map.chipRootArchive, map.softRootArchive}) {
        if (!root)
            continue;
        checkRegisters(*root, distinct);
        checkStructures(*root, distinct);
        checkGeneratedNames(*root, distinct);
        checkIncludes(*root, distinct);
    }
    checkUnusedTypes(map, distinct);
    checkMemoryMap(map, distinct);
}

} // namespace veldmap
