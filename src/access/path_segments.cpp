#include "access/path_segments.h"

namespace veldmap {

QList<QStringView> segmentsOf(QStringView path)
{
    constexpr qsizetype kMost = 1024 * 1024;
    QList<QStringView> segments;
    while (!path.isEmpty() && segments.size() < kMost) {
        const qsizetype dot = path.indexOf(u'.');
        segments += dot < 0 ? path : path.first(dot);
        if (dot < 0)
            break;
        path = path.sliced(dot + 1);
        if (path.isEmpty())
            segments += path; // behind the last dot
    }
    return segments;
}

QList<QStringView> segmentsOf(const QStringList &tokens)
{
    return {tokens.cbegin(), tokens.cend()};
}

} // namespace veldmap
