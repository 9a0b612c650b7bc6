#pragma once

#include <veldmap/findings/callbacks.h>
#include <veldmap/veldmap_export.h>

#include <QString>

class VMMemoryMap;
class VMRootArchive;

/// Loads one root description. A host creates one for a load and keeps it as long.
class VELDMAP_EXPORT VMMemoryMapLoader {
public:
    /// Loads the description at \a path and all that it includes into \a map; \a chip only chooses the word in the log
    /// messages. Null when \a path is empty or the load failed, with its reason reported. The caller owns the result
    /// and stores it in the map. Global variables of a failed load stay in the map.
    VMRootArchive *loadRootArchiveFromFile(VMMemoryMap *map, const QString &path, VMMessageCallback log,
                                           VMMessageCallback error, VMMessageCallback warning, bool chip);

    void LogMessage(const QString &message) const;
    void ErrorMessage(const QString &message) const;
    void WarningMessage(const QString &message) const;

    veldmap::Callbacks callbacks;
    QString basePath; ///< absolute directory of the root file
};
