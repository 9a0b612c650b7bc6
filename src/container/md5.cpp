#include "container/md5.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

constexpr std::size_t kBlockBytes = 64;
constexpr std::size_t kLengthAt = 56; // where the last block holds the number of bits
constexpr std::size_t kBlockWords = 16;
constexpr int kSteps = 64;

/// The whole part of 4294967296 times the sine of 1, 2, ... radians, without its sign.
constexpr quint32 kSines[kSteps] = {
    0xD76AA478, 0xE8C7B756, 0x242070DB, 0xC1BDCEEE, 0xF57C0FAF, 0x4787C62A, 0xA8304613, 0xFD469501,
    0x698098D8, 0x8B44F7AF, 0xFFFF5BB1, 0x895CD7BE, 0x6B901122, 0xFD987193, 0xA679438E, 0x49B40821,
    0xF61E2562, 0xC040B340, 0x265E5A51, 0xE9B6C7AA, 0xD62F105D, 0x02441453, 0xD8A1E681, 0xE7D3FBC8,
    0x21E1CDE6, 0xC33707D6, 0xF4D50D87, 0x455A14ED, 0xA9E3E905, 0xFCEFA3F8, 0x676F02D9, 0x8D2A4C8A,
    0xFFFA3942, 0x8771F681, 0x6D9D6122, 0xFDE5380C, 0xA4BEEA44, 0x4BDECFA9, 0xF6BB4B60, 0xBEBFBC70,
    0x289B7EC6, 0xEAA127FA, 0xD4EF3085, 0x04881D05, 0xD9D4D039, 0xE6DB99E5, 0x1FA27CF8, 0xC4AC5665,
    0xF4292244, 0x432AFF97, 0xAB9423A7, 0xFC93A039, 0x655B59C3, 0x8F0CCC92, 0xFFEFF47D, 0x85845DD1,
    0x6FA87E4F, 0xFE2CE6E0, 0xA3014314, 0x4E0811A1, 0xF7537E82, 0xBD3AF235, 0x2AD7D2BB, 0xEB86D391};

/// How far each step of a round rotates; the four repeat.
constexpr int kRotations[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};

/// The bits that a step of \a round takes from the three words that it does not change.
constexpr quint32 mix(int round, quint32 b, quint32 c, quint32 d)
{
    switch (round) {
    case 0:
        return (b & c) | (~b & d);
    case 1:
        return (b & d) | (c & ~d);
    case 2:
        return b ^ c ^ d;
    default:
        return c ^ (b | ~d);
    }
}

/// Which word of the block \a step takes: each round goes through them with a stride of its own.
constexpr std::size_t wordOf(int step)
{
    constexpr int kStrides[4] = {1, 5, 3, 7};
    constexpr int kFirst[4] = {0, 1, 5, 0};
    const int round = step / 16;
    return static_cast<std::size_t>(kFirst[round] + kStrides[round] * step) % kBlockWords;
}

void addBlock(quint32 *state, const unsigned char *bytes)
{
    unsigned char ordered[kBlockBytes];
    std::memcpy(ordered, bytes, kBlockBytes);
    byteReverse(ordered, kBlockWords);
    quint32 words[kBlockWords];
    std::memcpy(words, ordered, kBlockBytes);
    MD5Transform(state, words);
}

} // namespace

void MD5Init(MD5Context *context)
{
    *context = {{0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476}, 0, {}};
}

void MD5Update(MD5Context *context, const unsigned char *bytes, std::size_t length)
{
    std::size_t filled = context->byteCount % kBlockBytes;
    context->byteCount += length;
    while (length > 0) {
        if (filled == 0 && length >= kBlockBytes) {
            addBlock(context->state, bytes);
            bytes += kBlockBytes;
            length -= kBlockBytes;
            continue;
        }
        const std::size_t taken = std::min(length, kBlockBytes - filled);
        std::memcpy(context->buffer + filled, bytes, taken);
        bytes += taken;
        length -= taken;
        filled = (filled + taken) % kBlockBytes;
        if (filled == 0)
            addBlock(context->state, context->buffer);
    }
}

void MD5Final(unsigned char *digest, MD5Context *context)
{
    // Behind the text stand a bit that is set, clear ones up to the length, and the number of bits in eight bytes.
    static constexpr unsigned char kPadding[kBlockBytes] = {0x80};
    const quint64 bits = context->byteCount * 8;
    const std::size_t filled = context->byteCount % kBlockBytes;
    MD5Update(context, kPadding, filled < kLengthAt ? kLengthAt - filled : kBlockBytes + kLengthAt - filled);
    const quint32 length[2] = {static_cast<quint32>(bits), static_cast<quint32>(bits >> 32)};
    unsigned char bytes[sizeof length];
    std::memcpy(bytes, length, sizeof length);
    byteReverse(bytes, 2);
    MD5Update(context, bytes, sizeof bytes);
    std::memcpy(digest, context->state, sizeof context->state);
    byteReverse(digest, 4);
    *context = {};
}

void MD5Transform(quint32 *state, const quint32 *block)
{
    quint32 a = state[0];
    quint32 b = state[1];
    quint32 c = state[2];
    quint32 d = state[3];
    for (int step = 0; step < kSteps; ++step) {
        const int round = step / 16;
        const quint32 sum = a + mix(round, b, c, d) + block[wordOf(step)] + kSines[step];
        a = d;
        d = c;
        c = b;
        b += std::rotl(sum, kRotations[round][step % 4]);
    }
    state[0] += a;
    state[1] += b;
    state[2] += c;
    state[3] += d;
}

void MD5Hash(const unsigned char *bytes, std::size_t length, unsigned char *digest)
{
    MD5Context context;
    MD5Init(&context);
    MD5Update(&context, bytes, length);
    MD5Final(digest, &context);
}

void byteReverse(unsigned char *bytes, unsigned int words)
{
    if constexpr (std::endian::native == std::endian::big) {
        for (; words > 0; --words, bytes += 4)
            std::reverse(bytes, bytes + 4);
    }
}
