#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>
#include <QStringList>

namespace veldmap {

/// A file of dependencies as make and ninja read it: \a targets depend on \a sources. Behind the targets and a colon
/// each source stands in a line of its own, then each again with a colon of its own: one that is not there, or not any
/// more, is no error then but a reason to make the targets anew.
VELDMAP_EXPORT QString depfileText(const QStringList &targets, const QStringList &sources);

} // namespace veldmap
