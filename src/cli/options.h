#pragma once

#include "cli/lint_options.h"
#include "cli/output_options.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <optional>

namespace veldmap::cli {

struct Session;

/// The exit status of the program.
enum ExitStatus {
    kDone = 0,
    kFailed = 1,    ///< a description did not load, something has no value, or a file could not be written
    kWrongUsage = 2 ///< the command line does not say what to do
};

/// A file of the target's memory, and the address of its first byte.
struct ImageOption {
    QString file;
    quint32 address = 0;
};

/// What the command line says.
struct Options {
    QString chip; ///< root description of the chip, empty if there is none
    QString soft; ///< root description of the software, empty if there is none
    QString outputDirectory;
    QString headersDirectory;
    QString vhdlDirectory;
    QString docsDirectory;
    QString siteDirectory;
    QString format;            ///< of the findings: text, json or sarif
    QString exportFormat;      ///< of an export, empty for none
    QString outputFile;        ///< of an export; "-" for the standard output
    qsizetype mostOfAKind = 0; ///< how many findings of one rule an export tells, 0 for all
    bool list = false;
    bool skipUpToDate = false;
    bool types = false;     ///< with the header of the words that headers use
    bool accessors = false; ///< with the headers of functions
    bool globals = false;   ///< with the headers of the global variables
    bool json = false;
    bool recursive = false;
    bool force = false;
    bool selfCheck = false;
    bool single = false;
    bool exact = false;    ///< a container without digest
    bool accepted = false; ///< packages that VHDL takes
    bool update = false;   ///< keeps what was added to an import
    LintOptions lint;
    OutputSettings output;
    int threads = 1; ///< how many make the text of files
    std::optional<ImageOption> image;
    QStringList targets; ///< as openTarget() takes them
    std::optional<std::chrono::milliseconds> timeout;
    bool verifies = true;
    QStringList words;       ///< what the command is about: expressions, paths, assignments or a text
    QStringList lines;       ///< for the console
    bool keepsGoing = false; ///< behind a line that fails
    QString source;          ///< of an encrypted container, or the console's lines
    QString destination;     ///< of an encrypted container or a new description

    bool readsInput() const { return chip == QLatin1StringView("-") || soft == QLatin1StringView("-"); }
    /// Whether values are read from somewhere, or written to.
    bool namesTarget() const { return image || !targets.isEmpty(); }
    bool hasRoot() const { return !chip.isEmpty() || !soft.isEmpty(); }
    bool hasBothRoots() const { return !chip.isEmpty() && !soft.isEmpty(); }
};

/// The address that \a text is: a number of 32 bits. Nothing when it is none.
std::optional<quint32> addressOf(const QString &text);

/// Reads the command line and runs the command that it names; the exit status.
int runCommandLine(int argc, char **argv, Session &session);

} // namespace veldmap::cli
