#pragma once

#include "files/file_stamp.h"
#include "findings/finding.h"
#include "loading/document.h"
#include "xml/document_listener.h"
#include "xml/tag_document.h"

#include <memory>

namespace veldmap {

/// The document in a description file, plain or taken out of its container.
struct FileContent {
    XMDOpenError status = XMDOpenSuccess; ///< 0, 1 or 3
    QByteArray bytes;
    bool encrypted = false;    ///< it was read from a container
    bool mayBeDamaged = false; ///< that has no digest
};

/// Reads the file at \a path, and tells \a sink that it does, or why it can't. A file that can't be opened is an error
/// with \a openFailureIsError, else a warning.
FileContent readFileContent(const QString &path, Sink &sink, bool openFailureIsError);

/// How a load names a file.
struct FileName {
    QString path;         ///< by which it is opened
    QString relativeFile; ///< by which the tree knows it, below basePath
    QString basePath;

    /// The name of \a file, which the description \a relativeFile below \a basePath includes.
    static FileName included(const QString &basePath, const QString &relativeFile, const QString &file);
};

/// One description file, opened and cut into its tags.
struct DescriptionFile {
    XMDOpenError status = XMDOpenSuccess; ///< 0, 1 or 3
    TagDocument document;                 ///< with status 0
    qint64 bytes = 0;                     ///< of the file
    FileStamp stamp = {};                 ///< of the file, before it was read
    FindingList told;                     ///< what reading it had to say
    QString shownAs = {};                 ///< the file that the places of its tags are in, empty for itself
    std::unique_ptr<DocumentStudy> study; ///< of who listens, if it was read ahead
};

/// Cuts the description in \a bytes, the content of a file that messages call \a path, into tags.
std::unique_ptr<DescriptionFile> readDescription(const QString &path, const QByteArray &bytes);

/// Opens the description at \a path, plain or in a container, and cuts it into tags. A file that can't be opened is a
/// warning.
std::unique_ptr<DescriptionFile> readDescriptionFile(const QString &path);

/// Where a load gets its files from.
class DescriptionFiles {
public:
    virtual ~DescriptionFiles() = default;
    virtual std::unique_ptr<DescriptionFile> read(const FileName &name) { return readDescriptionFile(name.path); }
};

} // namespace veldmap
