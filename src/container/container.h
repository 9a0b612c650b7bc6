#pragma once

#include <veldmap/findings/callbacks.h>
#include <veldmap/veldmap_export.h>

#include <QString>

namespace VMXML {

/// The key of every container, for both directions: a secret of who builds the library (VELDMAP_KEY_FILE).
extern VELDMAP_EXPORT const unsigned char AESVeldKey[32];

} // namespace VMXML

/// Writes the description \a source enciphered to \a destination, in place of an earlier file. The result is read
/// wherever a description is, whatever its name. \a source is taken as it is, well-formed or not.
///
/// False when either can't be opened or written, when both are one file, and when \a source is larger than a
/// description may be; \a error has the reason, and what was at \a destination is still there. \a log and \a warning
/// are not called. Sets the seed of the C library's rand().
VELDMAP_EXPORT bool encryptXMLDocument(const QString &source, const QString &destination, VMMessageCallback log,
                                       VMMessageCallback error, VMMessageCallback warning);

/// Fills the 16 bytes at \a iv with an initialisation vector that depends on the time in seconds. Sets the seed of the
/// C library's rand().
VELDMAP_EXPORT void makeIV(unsigned char *iv);

namespace veldmap {

class Sink;

/// Whether a container has a digest of its document, by which readers notice damage and a wrong key.
enum class ContainerDigest {
    None,     ///< the document is that of the file, byte for byte
    InTheEnd, ///< it stands behind it in a processing instruction, which other readers pass over
};

/// As encryptXMLDocument, telling \a sink what is wrong.
VELDMAP_EXPORT bool encryptDescription(const QString &source, const QString &destination, Sink &sink,
                                       ContainerDigest digest = ContainerDigest::None);

/// Whether AESVeldKey is the key that stands in the sources, which keeps nothing secret.
VELDMAP_EXPORT bool usesDevelopmentKey();

} // namespace veldmap
