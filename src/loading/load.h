#pragma once

#include <veldmap/files/file_stamp.h>
#include <veldmap/veldmap_export.h>

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>
#include <optional>
#include <vector>

class VMMemoryMap;
class VMRootArchive;

namespace veldmap {

class DocumentListener;
class Sink;

/// The files of a load, by the names with which they were opened, in the order in which the load asked for them.
struct ReadFiles {
    QStringList read;
    std::vector<FileStamp> stamps; ///< of each of these before it was read; none is a file for what a host has given
    QStringList missing;           ///< that could not be opened
};

/// A description that was made of a file of another format, whose places it has.
struct MadeDescription {
    /// Of a line, the line and column of what it was made of.
    struct SourcePosition {
        int line = 0;
        int column = 0;
    };
    struct File {
        QString path; ///< below the directory of the root
        QByteArray text;
        QList<SourcePosition> lines; ///< for each line of the text
    };

    QList<File> files; ///< the root first
};

/// What a load is asked for beside its root.
struct LoadOptions {
    int threads = 1;                       ///< with more than one, the others read files ahead
    DocumentListener *documents = nullptr; ///< sees each document before its tags are read; not owned
    std::optional<QByteArray> root = {};   ///< what the root file holds, if it is not to be read from its path
    const MadeDescription *made = nullptr; ///< loaded in place of what the root file holds; not owned
    bool outlines = false;      ///< instances of structures are VMStruct::outlineOf() their types, and of arrays the
                                ///< prototypes alone have fields: all that lint, headers and packages ask of them
    bool goesOn = false;        ///< tells of all faults, not of the first alone; it loads nothing all the same
    ReadFiles *files = nullptr; ///< learns what was read; not owned
    QString base = {};          ///< where the relative names of the tree start; empty for the directory of the root
    bool hasCommonBase = false; ///< they start at the lowest directory that all files lie below
};

/// Loads the description at \a path, with all that it includes, or the one in the options' root, whose messages name it
/// \a path and whose includes are relative to the working directory, for the memory map \a map; \a chip only chooses
/// the word in the notes. \a sink hears all there is to tell, in the order in which it arises, on the caller's thread.
/// Null when \a path is empty or the load failed. The caller stores the result in the map. Global variables of a failed
/// load stay in the map.
///
/// What is made and heard is the same for every number of threads; all have ended when it returns.
VELDMAP_EXPORT std::unique_ptr<VMRootArchive> loadRoot(VMMemoryMap &map, const QString &path, bool chip, Sink &sink,
                                                       const LoadOptions &options = {});

} // namespace veldmap
