#pragma once

#include "findings/place.h"

#include <QString>

#include <memory>

namespace veldmap {

class TagDocument;

/// What a listener has found in one document.
class DocumentStudy {
public:
    virtual ~DocumentStudy() = default;
};

/// Sees the documents of a load as they were written, before their tags are read. They live only during the call.
class DocumentListener {
public:
    virtual ~DocumentListener() = default;
    /// Looks at a document as soon as it is read, on the thread that reads it, several at once. What is found is handed
    /// to onDocument(), or dropped when the load never asks for the document.
    virtual std::unique_ptr<DocumentStudy> study(const TagDocument & /*document*/) const { return nullptr; }
    /// \a file is the name that places in the document have. Without a \a study nobody has looked at it before.
    virtual void onDocument(const TagDocument &document, const QString &file, const DocumentStudy *study) = 0;
    /// The tag at \a include is about to include \a file, which may have been read before.
    virtual void onInclude(const Place & /*include*/, const QString & /*file*/) {}
};

} // namespace veldmap
