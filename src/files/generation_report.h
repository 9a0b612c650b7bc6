#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace veldmap {

/// A file that could not be written.
struct FailedFile {
    QString path;
    QString reason;
};

/// What became of the files of one run of a generator.
struct GenerationReport {
    int written = 0;
    int skipped = 0;
    QList<FailedFile> failed;
    QStringList outside; ///< beside the directory, since their descriptions lie beside that of the root
};

} // namespace veldmap
