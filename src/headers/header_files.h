#pragma once

#include "veldmap_export.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

class VMMemoryMap;

namespace veldmap {

/// A file that could not be written.
struct FailedFile {
    QString path;
    QString reason;
};

/// What became of the files of one run of a generator.
struct GenerationReport {
    int written = 0;
    int skipped = 0;
    QList<FailedFile> failed;
    QStringList outside; ///< beside the directory, since their descriptions lie beside that of the root
};

/// Writes the headers as VMMemoryMap::generateCHeaders does, and tells what became of them. \a progress, if set, hears
/// of each file before it is written.
VELDMAP_EXPORT GenerationReport writeCHeaders(const VMMemoryMap &map, const QString &path, bool chip,
                                              const std::function<void(const QString &file)> &progress = {});

} // namespace veldmap
