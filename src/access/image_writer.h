#pragma once

#include "access/field_values.h"
#include "target/image.h"

#include <QSet>

class VMMemoryMap;

namespace veldmap {

/// Writes into an image, one assignment after the other. What an assignment asks is checked before any byte changes,
/// and nothing reaches the file before save().
class VELDMAP_EXPORT ImageWriter {
public:
    /// Paths are those of \a map; \a sink hears what can't be done. Both must outlive the writer.
    ImageWriter(const VMMemoryMap &map, TargetImage image, Sink &sink);

    /// Sets the element at the path of \a assignment. False, with a finding, when that can't be done.
    bool assign(const Assignment &assignment);
    /// Puts the image in the place of its file; false, with a finding, when that is not possible.
    [[nodiscard]] bool save() const { return m_image.save(m_sink); }

private:
    quint32 baseOf(const VMValuable &valuable) const;

    const VMMemoryMap &m_map;
    TargetImage m_image;
    Sink &m_sink;
    QSet<quint32> m_written; // addresses; two paths may lead to one
};

} // namespace veldmap
