#pragma once

#include "files/generation_report.h"
#include "veldmap_export.h"

#include <QString>
#include <QStringList>

#include <functional>

class VMMemoryMap;

namespace veldmap {

/// What became of the files of one documentation site.
struct SiteReport : GenerationReport {
    QStringList missing;     ///< files of the site that the pool lacks
    QStringList unreached;   ///< instances without a page, since one before them could not be written
    QStringList overwritten; ///< names that several instances bear; the page is that of the last
};

/// Writes the site as VMMemoryMap::generateDocumentation does, with its fixed files from the directory \a pool, and
/// tells what became of each file. \a progress, if set, hears of each file that is made before it is written.
VELDMAP_EXPORT SiteReport writeDocumentation(const VMMemoryMap &map, const QString &path, bool chip,
                                             const QString &pool,
                                             const std::function<void(const QString &file)> &progress = {});

} // namespace veldmap
