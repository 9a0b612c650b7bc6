#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace veldmap {

/// A file that could not be written.
struct FailedFile {
    QString path;
    QString reason; ///< in words, as the system or the output gives it
};

/// What became of the files of one output. Paths begin with the directory that was asked for and stand in the order of
/// the files, which is that of the description.
struct OutputFiles {
    QStringList written;      ///< a path stands twice where a later file took the place of an earlier one
    QStringList skipped;      ///< left alone, since they are newer than their description
    QList<FailedFile> failed; ///< not written, or not whole
    QStringList missing;      ///< names of fixed files that are not where they should be copied from
    QStringList unreached;    ///< names of pages that were not tried, since one before them failed
    QStringList outside;      ///< beside the directory, since their descriptions lie beside that of the root

    /// Whether all that was asked for is there.
    bool isComplete() const { return failed.isEmpty() && missing.isEmpty() && unreached.isEmpty(); }
};

} // namespace veldmap
