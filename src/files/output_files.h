#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace veldmap {

/// A file that could not be written, or not in one step.
struct FailedFile {
    QString path;
    QString reason; ///< in words, as the system or the output gives it
};

/// What became of the files of one output. Paths begin with the directory that was asked for and stand in the order of
/// the files, which is that of the description.
struct OutputFiles {
    QStringList written;
    QStringList unchanged;     ///< left alone, since they hold the same already
    QStringList skipped;       ///< left alone, since they are newer than their description
    QList<FailedFile> inPlace; ///< those of the written that were written over, with what kept others from their places
    QList<FailedFile> failed;  ///< not written, or not whole
    QStringList copied;        ///< names of the fixed files that were read to be copied
    QStringList missing;       ///< names of fixed files that are not where they should be copied from
    QStringList unreached;     ///< names of pages that were not tried, since one before them failed
    QStringList outside;       ///< beside the directory, since their descriptions lie beside that of the root
    QStringList beyond;        ///< not written, since with them it would be more bytes than it may
    qint64 bytes = 0;          ///< of all texts, those of unchanged files included

    /// Whether all that was asked for is there.
    bool isComplete() const { return failed.isEmpty() && missing.isEmpty() && unreached.isEmpty() && beyond.isEmpty(); }
};

} // namespace veldmap
