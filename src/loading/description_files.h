#pragma once

#include "findings/finding.h"
#include "loading/document.h"
#include "xml/tag_document.h"

#include <memory>

namespace veldmap {

/// The document in a description file, plain or taken out of its container.
struct FileContent {
    XMDOpenError status = XMDOpenSuccess; ///< 0, 1 or 3
    QByteArray bytes;
    bool encrypted = false; ///< it was read from a container
};

/// Reads the file at \a path, and tells \a sink that it does, or why it can't. A file that can't be opened is an error
/// with \a openFailureIsError, else a warning.
FileContent readFileContent(const QString &path, Sink &sink, bool openFailureIsError);

/// One description file, opened and cut into its tags.
struct DescriptionFile {
    XMDOpenError status = XMDOpenSuccess; ///< 0, 1 or 3
    TagDocument document;                 ///< with status 0
    FindingList told;                     ///< what reading it had to say
};

/// Opens the description at \a path, plain or in a container, and cuts it into tags. A file that can't be opened is a
/// warning.
std::unique_ptr<DescriptionFile> readDescriptionFile(const QString &path);

/// Where a load gets its files from.
class DescriptionFiles {
public:
    virtual ~DescriptionFiles() = default;
    virtual std::unique_ptr<DescriptionFile> read(const QString &path) { return readDescriptionFile(path); }
};

} // namespace veldmap
