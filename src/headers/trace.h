#pragma once

#include "veldmap_export.h"

#include <QString>

#include <cstdio>

namespace veldmap {

/// Generation traces on the standard output what it skips and which instances it points to. A program whose output is
/// its result sends the trace elsewhere for as long as one of these lives; null drops it.
class VELDMAP_EXPORT TraceRedirection {
public:
    explicit TraceRedirection(std::FILE *target);
    TraceRedirection(const TraceRedirection &) = delete;
    TraceRedirection &operator=(const TraceRedirection &) = delete;
    ~TraceRedirection();

private:
    std::FILE *m_previous;
};

/// Writes \a text and a line feed to the trace.
void trace(const QString &text);

} // namespace veldmap
