#pragma once

#include "findings/finding.h"
#include "import/description_writer.h"
#include "loading/load.h"

#include <optional>

namespace veldmap {

/// A description that was made of a vendor's file.
struct Import {
    chip::Device device;
    std::vector<WrittenFile> files;
    QList<Finding> findings; ///< what was changed, approximated and left out, in the order of the source
};

/// Whether a file that begins with \a bytes is one that descriptions are made of.
VELDMAP_EXPORT bool isImportable(const QByteArray &bytes);

/// Makes a description of \a bytes, the content of a file that messages call \a file. Nothing when that can't be read;
/// \a sink hears why, and nothing else.
VELDMAP_EXPORT std::optional<Import> importDescription(const QByteArray &bytes, const QString &file, Sink &sink);

/// The same for a load.
VELDMAP_EXPORT MadeDescription madeDescription(const Import &import);

/// What IMPORT.md says of \a import: how many findings of each kind there are, and each of them.
VELDMAP_EXPORT QString importReport(const Import &import);

/// The table at its head, in which a row is a number and what it counts.
VELDMAP_EXPORT QString importSummary(const Import &import);

} // namespace veldmap
