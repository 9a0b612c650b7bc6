#pragma once

#include "model/variables.h"

class VMRootArchive;

/// The top object that a host creates: up to two loaded descriptions, one of the chip and one of the software, and the
/// variables that both see.
///
/// Owns both root archives, which the host stores here after loading. One thread uses a memory map at a time.
class VELDMAP_EXPORT VMMemoryMap {
public:
    VMMemoryMap();
    VMMemoryMap(const VMMemoryMap &) = delete;
    VMMemoryMap &operator=(const VMMemoryMap &) = delete;
    virtual ~VMMemoryMap();

    /// Writes the C and, where asked for, assembly headers of the chip's (\a chip) or the software's files below the
    /// directory \a path, which has no trailing slash. That root must be loaded. A file that can't be written is left
    /// out. Text: headers/header_files.cpp.
    void generateCHeaders(const QString &path, bool chip);

    bool skipUpToDate = false; ///< leave headers alone that are newer than their description; the host sets it
    std::unique_ptr<VMVariableManager> globalVariables;
    VMRootArchive *chipRootArchive = nullptr; ///< owned
    VMRootArchive *softRootArchive = nullptr; ///< owned

    /// The map that the host calls current. The library only clears it, when that map is destroyed.
    static VMMemoryMap *m_activeMemoryMap;
};
