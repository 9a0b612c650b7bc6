#pragma once

#include <QList>
#include <QStringList>
#include <QStringView>

#include <span>

namespace veldmap {

/// What a path goes on with: views of the segments of a text or list that outlives them.
using Segments = std::span<const QStringView>;

/// The segments of a path; none of an empty one. A path may be longer than any chain of elements, which makes no
/// difference behind the first million segments.
QList<QStringView> segmentsOf(QStringView path);
QList<QStringView> segmentsOf(const QStringList &tokens);

} // namespace veldmap
