#pragma once

#include "access/field_values.h"
#include "target/target.h"

#include <QList>

class VMMemoryMap;

namespace veldmap {

struct Rule;

/// Writes registers, integers and fields of a target.
///
/// What assignments ask is checked before anything is written. A field is changed in its register, which is read first;
/// assignments to one register that follow each other are one write.
class VELDMAP_EXPORT TargetWriter {
public:
    /// Paths are those of \a map; \a sink hears what can't be done. All must outlive the writer.
    TargetWriter(const VMMemoryMap &map, Target &target, Sink &sink) : m_map(map), m_target(target), m_sink(sink) {}

    bool verifies = true; ///< whether what was written is read back, where the description lets it, and compared

    /// Does all \a assignments in their order. False, with a finding, when one can't be done, which ends it, or when a
    /// write did not stick.
    [[nodiscard]] bool write(const QList<Assignment> &assignments);

private:
    struct Pending {
        QString path;
        VMValuable *valuable = nullptr;
        quint32 value = 0;
    };

    bool check(const Assignment &assignment);
    bool prepare(const Assignment &assignment);
    bool writePending();
    void verify(const Pending &written);
    bool fail(const Rule &rule, const QString &path, const QString &reason);

    const VMMemoryMap &m_map;
    Target &m_target;
    Sink &m_sink;
    Pending m_pending;
    bool m_sticks = true;
};

} // namespace veldmap
