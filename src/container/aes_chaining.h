#pragma once

#include "container/aes.h"

namespace veldmap {

/// \a blocks whole blocks of 16 bytes in CBC mode, from \a in to \a out, which are the same or don't overlap, with a
/// \a key set for the direction and the 16 bytes at \a iv.
using Chaining = void(const RijndaelKey &key, const unsigned char *in, unsigned char *out, int blocks,
                      const unsigned char *iv);

/// With tables, on any processor.
VELDMAP_EXPORT Chaining encryptByTables;
VELDMAP_EXPORT Chaining decryptByTables;

/// Whether the processor has instructions for the cipher that are used here; without them the two below do nothing.
VELDMAP_EXPORT bool hasCipherInstructions();
VELDMAP_EXPORT Chaining encryptByInstructions;
VELDMAP_EXPORT Chaining decryptByInstructions;

} // namespace veldmap
