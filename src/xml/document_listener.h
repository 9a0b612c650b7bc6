#pragma once

#include "findings/place.h"

#include <QString>

namespace veldmap {

class TagDocument;

/// Sees the documents of a load as they were written, before their tags are read. They live only during the call.
class DocumentListener {
public:
    virtual ~DocumentListener() = default;
    /// \a file is the name that places in the document have.
    virtual void onDocument(const TagDocument &document, const QString &file) = 0;
    /// The tag at \a include is about to include \a file, which may have been read before.
    virtual void onInclude(const Place & /*include*/, const QString & /*file*/) {}
};

} // namespace veldmap
