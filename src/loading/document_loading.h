#pragma once

#include "loading/document.h"
#include "loading/tag_document.h"

class QFile;

namespace veldmap {

/// Opens the description at \a path and reads its tags into \a document; 0, 1 or 3 of XMDOpenError, with the messages
/// of loadXMLDocument.
XMDOpenError loadTags(const QString &path, TagDocument &document, const Callbacks &callbacks, bool openFailureIsError);

/// All that the open \a file holds, or one byte more than \a limit where it holds more.
QByteArray readAtMost(QFile &file, qint64 limit);

/// What is said of a document beyond the limit of its size.
QString tooLargeError();

} // namespace veldmap
