#pragma once

#include <veldmap/veldmap_export.h>

#include <QtGlobal>

#include <cstddef>

// The digest of RFC 1321: 16 bytes of any number of bytes, which may stand at any address. It is no protection against
// somebody who looks for two texts of one digest.

/// A digest that is being made.
struct MD5Context {
    quint32 state[4] = {};
    quint64 byteCount = 0;         ///< of all that was given
    unsigned char buffer[64] = {}; ///< the block that is not full yet
};

/// Begins a digest.
VELDMAP_EXPORT void MD5Init(MD5Context *context);

/// Adds \a length bytes.
VELDMAP_EXPORT void MD5Update(MD5Context *context, const unsigned char *bytes, std::size_t length);

/// Ends the digest and writes its 16 bytes to \a digest. The context is then empty; MD5Init begins another one.
VELDMAP_EXPORT void MD5Final(unsigned char *digest, MD5Context *context);

/// Adds the 16 words of one block to the 4 words of a state. A word is four bytes with the lowest first.
VELDMAP_EXPORT void MD5Transform(quint32 *state, const quint32 *block);

/// Writes the digest of \a length bytes to the 16 bytes at \a digest, which may lie in \a bytes.
VELDMAP_EXPORT void MD5Hash(const unsigned char *bytes, std::size_t length, unsigned char *digest);

/// Turns \a words words of four bytes each from the order lowest byte first to the machine's own, or back; on most
/// machines both are the same and nothing changes.
VELDMAP_EXPORT void byteReverse(unsigned char *bytes, unsigned int words);
