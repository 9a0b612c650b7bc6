#pragma once

#include <veldmap/findings/callbacks.h>
#include <veldmap/veldmap_export.h>

#include <QString>

class QDomDocument;

/// How opening one description file ended.
enum XMDOpenError {
    XMDOpenSuccess = 0,       ///< the document was read and its whole content accepted
    XMDOpenUnreadable = 1,    ///< the file can't be opened for reading
    XMDOpenAlreadyLoaded = 2, ///< the root archive holds it already; nothing was read
    XMDOpenInvalid = 3        ///< no well-formed document, or a tag of it was refused
};

/// Opens the description at \a path, plain or in a container, and parses it into \a document; 0, 1 or 3 of
/// XMDOpenError. \a encrypted tells whether it was read from a container; a document that was not read is not encrypted
/// either. A failure to open goes to \a error with \a openFailureIsError, else to \a warning. Null callbacks drop their
/// messages.
///
/// In a `comment` or `cjoker`, an element with several attributes gets one more, whose name is no legal XML name and
/// whose value lists the names of the others in the order of the document, which QDomElement does not keep and comments
/// need.
VELDMAP_EXPORT XMDOpenError loadXMLDocument(const QString &path, QDomDocument &document, bool &encrypted,
                                            VMMessageCallback log, VMMessageCallback error, VMMessageCallback warning,
                                            bool openFailureIsError);

/// A callback that does nothing.
VELDMAP_EXPORT void LoadUtilsDummySilentPrint(const char *text);
