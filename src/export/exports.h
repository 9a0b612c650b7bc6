#pragma once

#include <veldmap/veldmap_export.h>

#include <QByteArray>
#include <QString>

#include <span>

class VMMemoryMap;

namespace veldmap {

class ExportFindings;

/// A format of other tools that the tree can be written in.
struct ExportFormat {
    QLatin1StringView name; ///< as a user asks for it
    QLatin1StringView what; ///< what it is, in a few words
    /// The text, and what of the tree it can't say.
    QByteArray (*text)(const VMMemoryMap &map, ExportFindings &findings);
};

/// All of them.
VELDMAP_EXPORT std::span<const ExportFormat> exportFormats();

/// The one of that name, or null.
VELDMAP_EXPORT const ExportFormat *findExportFormat(const QString &name);

} // namespace veldmap
