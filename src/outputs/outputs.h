#pragma once

#include <veldmap/files/output_files.h>
#include <veldmap/veldmap_export.h>

#include <QString>
#include <QStringList>

#include <functional>
#include <limits>

class VMMemoryMap;

namespace veldmap {

class Sink;

/// What can be made of a loaded description.
enum class Output {
    Headers,   ///< C and assembly headers of a root
    Vhdl,      ///< VHDL packages of the chip
    Docs,      ///< the documentation site of a root
    Types,     ///< veldmap/types.h, which defines the words that headers use
    Accessors, ///< a header of functions beside each C header: they read and compose registers
    Globals,   ///< globals.h and globals_asm.h: the global variables, which no other header defines
    Site,      ///< the reference manual of all roots
};

/// How an output is written.
struct OutputOptions {
    QString directory;   ///< for the files, without trailing slash; must exist
    bool chip = true;    ///< of the chip's root, or else of the software's
    QString pool;        ///< the directory with the fixed files of a site
    int threads = 1;     ///< how many make texts at a time; from 1
    bool single = false; ///< a reference manual as one page, for printing

    /// Adds to headers and packages a file of assertions, with which a compiler or simulator checks them:
    /// SOC_self_check.c or SOC_self_check.vhd in the directory, named after the root file.
    bool selfCheck = false;
    bool accepted = false; ///< makes comments of what VHDL refuses in packages

    qint64 mostBytes = std::numeric_limits<qint64>::max(); ///< of all texts; what is beyond is not written

    QStringList sources = {}; ///< all files that were read for the description; if none are named, those of its tree
    bool asPublished = false; ///< as the operations of the memory map do: files that hold the same are written again, a
                              ///< header depends on its own description alone, links lead wherever they do

    std::function<void(const QString &path)> progress = {}; ///< hears of each file before it is written
    std::function<void(const QString &text)> trace = {};    ///< hears what VMMemoryMap::generateCHeaders traces
};

/// Writes \a output of \a map, headers as its skipUpToDate says, and tells what became of each file. Each is written
/// whole or not at all, and only if it does not hold the same already. Where several have one path, the last of them is
/// written. A text that goes beyond the most bytes is not written, and none behind it. A link that leads out of the
/// directory is replaced. A root that is not loaded has no files.
///
/// \a sink hears, in this order, what the texts are found to be lacking (what VHDL will not take of a description),
/// then what is to be told of the files: those outside the directory, pages that take the place of others, files that
/// are missing or could not be written. Its errors are those that leave OutputFiles::isComplete() false.
///
/// Files, what is told and traced, and their order are the same for every number of threads. Progress, traces and
/// findings come one at a time, also where other threads make texts meanwhile; nothing may change \a map until then.
VELDMAP_EXPORT OutputFiles writeOutput(const VMMemoryMap &map, Output output, const OutputOptions &options, Sink &sink);

/// The files that writeOutput would write, in their order, each once.
VELDMAP_EXPORT QStringList pathsOf(const VMMemoryMap &map, Output output, const OutputOptions &options);

} // namespace veldmap
