#include "headers/trace.h"

#include <utility>

namespace veldmap {

namespace {

std::FILE *&traceTarget()
{
    static thread_local std::FILE *target = stdout;
    return target;
}

} // namespace

TraceRedirection::TraceRedirection(std::FILE *target) : m_previous(std::exchange(traceTarget(), target)) {}

TraceRedirection::~TraceRedirection()
{
    traceTarget() = m_previous;
}

void trace(const QString &text)
{
    if (traceTarget())
        std::fprintf(traceTarget(), "%s\n", text.toUtf8().constData());
}

} // namespace veldmap
