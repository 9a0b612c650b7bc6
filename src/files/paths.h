#pragma once

#include <veldmap/veldmap_export.h>

#include <QString>
#include <QStringList>

#include <filesystem>

namespace veldmap {

/// Whether \a path, once its ".." are followed, lies below \a directory.
bool liesBelow(const QString &directory, const QString &path);

/// The same of what the names lead to once links are followed too; what is not there need not be.
bool leadsBelow(const QString &directory, const QString &path);

/// The directory that all of \a paths lie below, ".." and "." once followed; empty for none.
VELDMAP_EXPORT QString commonDirectory(const QStringList &paths);

/// \a path as the system's own calls take it.
VELDMAP_EXPORT std::filesystem::path nativePath(const QString &path);

/// What the system's \a error means, in words.
VELDMAP_EXPORT QString systemText(int error);

} // namespace veldmap
