#pragma once

#include <veldmap/veldmap_export.h>

#include <QtGlobal>

// The block cipher of FIPS 197 with blocks of 16 bytes, and the chaining of SP 800-38A (CBC) with keys of 32 bytes.
// Bytes may stand at any address. On a processor without instructions for the cipher, and always for single blocks,
// tables are looked up by secret bytes, so that who shares the processor's cache may learn of them.

/// One key, spread over the rounds for one direction.
struct RijndaelKey {
    static constexpr int kMaxRounds = 14;

    int rounds = 0;
    quint32 words[4 * (kMaxRounds + 1)] = {};
};

enum class RijndaelDirection { Encrypt, Decrypt };

/// Spreads the \a bits / 8 bytes at \a bytes over \a key. False, with \a key untouched, unless \a bits is 128, 192
/// or 256.
VELDMAP_EXPORT bool rijndael_set_key(RijndaelKey *key, const unsigned char *bytes, int bits,
                                     RijndaelDirection direction);

/// Enciphers the 16 bytes at \a in to the 16 at \a out, which may be the same, with a \a key set for this direction.
VELDMAP_EXPORT void rijndael_encrypt(const RijndaelKey *key, const unsigned char *in, unsigned char *out);

/// Deciphers the 16 bytes at \a in to the 16 at \a out, which may be the same, with a \a key set for this direction.
VELDMAP_EXPORT void rijndael_decrypt(const RijndaelKey *key, const unsigned char *in, unsigned char *out);

/// Enciphers \a length bytes, a multiple of 16, from \a in to \a out in CBC mode; what is beyond the last whole block
/// is left alone. \a in and \a out are the same or don't overlap. \a iv has 16 bytes and \a key 32; both stay as they
/// are. Always 1.
VELDMAP_EXPORT int AES_Encrypt(unsigned char *in, unsigned char *out, int length, unsigned char *iv,
                               unsigned char *key);

/// Deciphers what AES_Encrypt has enciphered, under the same terms. Always 1.
VELDMAP_EXPORT int AES_Decrypt(unsigned char *in, unsigned char *out, int length, unsigned char *iv,
                               unsigned char *key);
