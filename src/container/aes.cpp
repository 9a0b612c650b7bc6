#include "container/aes.h"

#include "container/aes_chaining.h"

#include <QtEndian>

#include <algorithm>
#include <array>
#include <bit>

namespace {

constexpr int kBlockBytes = 16;
constexpr int kWords = 4; // of a block
constexpr int kKeyBits = 256;

using Bytes = std::array<quint8, 256>;
/// For each of the four bytes of a word what its value adds to a column of the next state.
using ColumnTables = std::array<std::array<quint32, 256>, kWords>;
using State = std::array<quint32, kWords>;

// Arithmetic on bytes as polynomials over two elements, reduced by x^8 + x^4 + x^3 + x + 1.

constexpr quint8 timesX(quint8 value)
{
    return static_cast<quint8>((value << 1) ^ ((value & 0x80) != 0 ? 0x1B : 0));
}

constexpr quint8 product(quint8 left, quint8 right)
{
    quint8 sum = 0;
    for (; right != 0; right >>= 1, left = timesX(left))
        sum ^= (right & 1) != 0 ? left : 0;
    return sum;
}

/// The substitution of the cipher: the inverse of the byte, then an affine map of its bits.
constexpr Bytes kSubstitution = [] {
    Bytes powers = {}; // of x + 1, which goes through all values but 0
    powers[0] = 1;
    for (std::size_t at = 1; at < 256; ++at)
        powers[at] = static_cast<quint8>(powers[at - 1] ^ timesX(powers[at - 1]));
    Bytes table = {};
    table[0] = 0x63;
    for (std::size_t at = 0; at < 255; ++at) {
        const quint8 inverse = powers[255 - at];
        quint8 image = 0x63;
        for (int shift = 0; shift <= 4; ++shift)
            image ^= std::rotl(inverse, shift);
        table[powers[at]] = image;
    }
    return table;
}();

constexpr Bytes kInverseSubstitution = [] {
    Bytes table = {};
    for (std::size_t at = 0; at < 256; ++at)
        table[kSubstitution[at]] = static_cast<quint8>(at);
    return table;
}();

/// Substitution and mixing in one: a byte's substitute times the \a factors, which are the column of its mixing.
constexpr ColumnTables columnTables(const Bytes &substitution, const std::array<quint8, kWords> &factors)
{
    ColumnTables tables = {};
    for (std::size_t value = 0; value < 256; ++value) {
        quint32 column = 0;
        for (const quint8 factor : factors)
            column = column << 8 | product(substitution[value], factor);
        for (int byte = 0; byte < kWords; ++byte)
            tables[static_cast<std::size_t>(byte)][value] = std::rotr(column, 8 * byte);
    }
    return tables;
}

/// What tells one direction from the other.
struct Encryption {
    static constexpr const Bytes &kBytes = kSubstitution;
    static constexpr ColumnTables kColumns = columnTables(kSubstitution, {2, 1, 1, 3});
    static constexpr std::size_t kRowShift = 1; // columns from which the next byte of a column comes
};
struct Decryption {
    static constexpr const Bytes &kBytes = kInverseSubstitution;
    static constexpr ColumnTables kColumns = columnTables(kInverseSubstitution, {14, 9, 13, 11});
    static constexpr std::size_t kRowShift = 3;
};

/// Byte \a byte of \a word, the highest being number 0.
constexpr quint8 byteOf(quint32 word, std::size_t byte)
{
    return static_cast<quint8>(word >> (24 - 8 * byte));
}

State load(const unsigned char *bytes)
{
    State state;
    for (std::size_t at = 0; at < kWords; ++at)
        state[at] = qFromBigEndian<quint32>(bytes + 4 * at);
    return state;
}

void store(const State &state, unsigned char *bytes)
{
    for (std::size_t at = 0; at < kWords; ++at)
        qToBigEndian(state[at], bytes + 4 * at);
}

State operator^(const State &left, const State &right)
{
    return {left[0] ^ right[0], left[1] ^ right[1], left[2] ^ right[2], left[3] ^ right[3]};
}

/// Column \a column of the state after a round without its key.
template <typename Direction>
quint32 mixedColumn(const State &state, std::size_t column)
{
    quint32 sum = 0;
    for (std::size_t byte = 0; byte < kWords; ++byte)
        sum ^= Direction::kColumns[byte][byteOf(state[(column + byte * Direction::kRowShift) % kWords], byte)];
    return sum;
}

/// The same in the last round, which mixes nothing.
template <typename Direction>
quint32 lastColumn(const State &state, std::size_t column)
{
    quint32 word = 0;
    for (std::size_t byte = 0; byte < kWords; ++byte)
        word = word << 8 | Direction::kBytes[byteOf(state[(column + byte * Direction::kRowShift) % kWords], byte)];
    return word;
}

State roundKey(const RijndaelKey &key, int round)
{
    const quint32 *words = key.words + kWords * round;
    return {words[0], words[1], words[2], words[3]};
}

template <typename Direction>
State transformed(const RijndaelKey &key, State state)
{
    state = state ^ roundKey(key, 0);
    for (int round = 1; round < key.rounds; ++round)
        state = State{mixedColumn<Direction>(state, 0), mixedColumn<Direction>(state, 1),
                      mixedColumn<Direction>(state, 2), mixedColumn<Direction>(state, 3)} ^
                roundKey(key, round);
    return State{lastColumn<Direction>(state, 0), lastColumn<Direction>(state, 1), lastColumn<Direction>(state, 2),
                 lastColumn<Direction>(state, 3)} ^
           roundKey(key, key.rounds);
}

constexpr quint32 substituted(quint32 word)
{
    quint32 result = 0;
    for (std::size_t byte = 0; byte < 4; ++byte)
        result = result << 8 | kSubstitution[byteOf(word, byte)];
    return result;
}

/// Fills the words of \a key behind the first \a keyWords, which are the key itself.
void expand(RijndaelKey &key, int keyWords)
{
    quint8 constant = 1;
    for (int at = keyWords; at < kWords * (key.rounds + 1); ++at) {
        quint32 word = key.words[at - 1];
        if (at % keyWords == 0) {
            word = substituted(std::rotl(word, 8)) ^ quint32 { constant } << 24;
            constant = timesX(constant);
        } else if (keyWords > 6 && at % keyWords == 4) {
            word = substituted(word);
        }
        key.words[at] = key.words[at - keyWords] ^ word;
    }
}

/// Turns the words for enciphering into those for deciphering: the rounds backwards, and the keys of all but the first
/// and the last unmixed, so that a round of either direction has the same steps.
void invert(RijndaelKey &key)
{
    for (int low = 0, high = key.rounds; low < high; ++low, --high)
        std::swap_ranges(key.words + kWords * low, key.words + kWords * (low + 1), key.words + kWords * high);
    for (int at = kWords; at < kWords * key.rounds; ++at) {
        quint32 unmixed = 0;
        for (std::size_t byte = 0; byte < kWords; ++byte)
            unmixed ^= Decryption::kColumns[byte][kSubstitution[byteOf(key.words[at], byte)]];
        key.words[at] = unmixed;
    }
}

} // namespace

bool rijndael_set_key(RijndaelKey *key, const unsigned char *bytes, int bits, RijndaelDirection direction)
{
    if (bits != 128 && bits != 192 && bits != 256)
        return false;
    const int keyWords = bits / 32;
    key->rounds = keyWords + 6;
    for (int at = 0; at < keyWords; ++at)
        key->words[at] = qFromBigEndian<quint32>(bytes + 4 * at);
    expand(*key, keyWords);
    if (direction == RijndaelDirection::Decrypt)
        invert(*key);
    return true;
}

void rijndael_encrypt(const RijndaelKey *key, const unsigned char *in, unsigned char *out)
{
    store(transformed<Encryption>(*key, load(in)), out);
}

void rijndael_decrypt(const RijndaelKey *key, const unsigned char *in, unsigned char *out)
{
    store(transformed<Decryption>(*key, load(in)), out);
}

void veldmap::encryptByTables(const RijndaelKey &key, const unsigned char *in, unsigned char *out, int blocks,
                              const unsigned char *iv)
{
    State chained = load(iv);
    for (; blocks > 0; --blocks, in += kBlockBytes, out += kBlockBytes) {
        chained = transformed<Encryption>(key, load(in) ^ chained);
        store(chained, out);
    }
}

void veldmap::decryptByTables(const RijndaelKey &key, const unsigned char *in, unsigned char *out, int blocks,
                              const unsigned char *iv)
{
    State chained = load(iv);
    for (; blocks > 0; --blocks, in += kBlockBytes, out += kBlockBytes) {
        const State cipher = load(in);
        store(transformed<Decryption>(key, cipher) ^ chained, out);
        chained = cipher;
    }
}

int AES_Encrypt(unsigned char *in, unsigned char *out, int length, unsigned char *iv, unsigned char *key)
{
    RijndaelKey schedule;
    rijndael_set_key(&schedule, key, kKeyBits, RijndaelDirection::Encrypt);
    veldmap::Chaining &chain =
        veldmap::hasCipherInstructions() ? veldmap::encryptByInstructions : veldmap::encryptByTables;
    chain(schedule, in, out, length / kBlockBytes, iv);
    return 1;
}

int AES_Decrypt(unsigned char *in, unsigned char *out, int length, unsigned char *iv, unsigned char *key)
{
    RijndaelKey schedule;
    rijndael_set_key(&schedule, key, kKeyBits, RijndaelDirection::Decrypt);
    veldmap::Chaining &chain =
        veldmap::hasCipherInstructions() ? veldmap::decryptByInstructions : veldmap::decryptByTables;
    chain(schedule, in, out, length / kBlockBytes, iv);
    return 1;
}
