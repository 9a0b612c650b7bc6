#pragma once

#include <veldmap/model/variables.h>

#include <QMap>

class CXMLCompletionEntry;
class VMRootArchive;
class VMXMLElement;

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
    /// out. Text: headers/header_texts.cpp.
    void generateCHeaders(const QString &path, bool chip);

    /// Writes one VHDL package for each file of the chip below \a outputDirectory, which has no trailing slash. The
    /// chip must be loaded. A package that can't be written, or whose name leads out of the directory, is left out.
    /// Text: vhdl/packages.cpp, vhdl/maps.cpp.
    void generateVHDL(const QString &outputDirectory);
    /// The element that \a path names, as getPath writes it: $top.ctrl.enable, $top.table[3].val, $top.head.>.next. The
    /// chip's instances come first. Null when the path leads nowhere. Following a pointer may create the element behind
    /// it. Text: access/path_lookup.cpp.
    VMXMLElement *getElementFromPath(const QString &path) const;
    /// All that may stand behind the last dot of \a path, by key; what stands there already does not narrow it. Without
    /// a dot, all instances. Empty when the path leads nowhere. May create an element as getElementFromPath does. Text:
    /// access/completion.cpp.
    QMap<QString, CXMLCompletionEntry> getCompletionListFromPath(const QString &path) const;
    /// Writes the documentation site of the chip's (\a chip) or the software's root into the directory \a path, which
    /// has no trailing slash and must exist. That root must be loaded. A file that can't be written is left out; the
    /// first page that can't be ends the pages. Text: docsite/site.cpp, docsite/menu.cpp, docsite/pages.cpp.
    void generateDocumentation(const QString &path, bool chip);
    /// Copies the fixed files of a site from the directory docpool in the current one into the directory \a path. One
    /// that is missing is left out.
    void copyDocumentationFiles(const QString &path);
    /// Puts a copy of the file \a source in the place of \a target; false when that is not possible.
    bool copyFile(const QString &source, const QString &target);
    /// Writes chip.html, what a site shows at first, into the directory \a path.
    void generateChipHtml(const QString &path, VMRootArchive *root);
    /// Writes index.html, the frames of a site, into the directory \a path.
    void generateIndexHtml(const QString &path, VMRootArchive *root);
    /// Writes menu.js, the script of a site's menu, into the directory \a path.
    void generateChipJSMenu(const QString &path, VMRootArchive *root);

    bool skipUpToDate = false; ///< leave headers alone that are newer than their description; the host sets it
    std::unique_ptr<VMVariableManager> globalVariables;
    VMRootArchive *chipRootArchive = nullptr; ///< owned
    VMRootArchive *softRootArchive = nullptr; ///< owned

    /// The map that the host calls current. The library only clears it, when that map is destroyed.
    static VMMemoryMap *m_activeMemoryMap;
};
