#pragma once

#include <QString>

#include <filesystem>

namespace veldmap {

/// Whether \a path, once its ".." are followed, lies below \a directory.
bool liesBelow(const QString &directory, const QString &path);

/// \a path as the system's own calls take it.
std::filesystem::path nativePath(const QString &path);

} // namespace veldmap
