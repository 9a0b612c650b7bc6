// The cipher and the digest against the vectors of their standards: FIPS 197, SP 800-38A and RFC 1321.

#include "container/aes.h"
#include "container/aes_chaining.h"
#include "container/md5.h"

#include <QByteArray>
#include <QCryptographicHash>

#include <gtest/gtest.h>

#include <cstring>
#include <utility>

namespace {

const unsigned char *data(const QByteArray &bytes)
{
    return reinterpret_cast<const unsigned char *>(bytes.constData());
}

unsigned char *data(QByteArray &bytes)
{
    return reinterpret_cast<unsigned char *>(bytes.data());
}

} // namespace

TEST(Aes, BlocksOfTheStandard)
{
    const struct {
        QByteArray key, plain, cipher;
    } rows[] = {
        {"2b7e151628aed2a6abf7158809cf4f3c", "3243f6a8885a308d313198a2e0370734", "3925841d02dc09fbdc118597196a0b32"},
        {"000102030405060708090a0b0c0d0e0f", "00112233445566778899aabbccddeeff", "69c4e0d86a7b0430d8cdb78070b4c55a"},
        {"000102030405060708090a0b0c0d0e0f1011121314151617", "00112233445566778899aabbccddeeff",
         "dda97ca4864cdfe06eaf70a0ec0d7191"},
        {"000102030405060708090a0b0c0d0e0f101112131415161718191a1b1c1d1e1f", "00112233445566778899aabbccddeeff",
         "8ea2b7ca516745bfeafc49904b496089"}};
    for (const auto &row : rows) {
        const QByteArray bytes = QByteArray::fromHex(row.key);
        const int bits = static_cast<int>(bytes.size()) * 8;
        RijndaelKey key;
        QByteArray block = QByteArray::fromHex(row.plain);
        ASSERT_TRUE(rijndael_set_key(&key, data(bytes), bits, RijndaelDirection::Encrypt));
        rijndael_encrypt(&key, data(block), data(block));
        EXPECT_EQ(block.toHex(), row.cipher);
        ASSERT_TRUE(rijndael_set_key(&key, data(bytes), bits, RijndaelDirection::Decrypt));
        rijndael_decrypt(&key, data(block), data(block));
        EXPECT_EQ(block.toHex(), row.plain);
    }
    RijndaelKey key;
    for (const int bits : {-1, 0, 64, 160, 512})
        EXPECT_FALSE(rijndael_set_key(&key, nullptr, bits, RijndaelDirection::Encrypt));
}

TEST(Aes, ChainsBlocksAtAnyAddressAndInPlace)
{
    const QByteArray plain = QByteArray::fromHex("6bc1bee22e409f96e93d7e117393172aae2d8a571e03ac9c9eb76fac45af8e51"
                                                 "30c81c46a35ce411e5fbc1191a0a52eff69f2445df4f9b17ad2b417be66c3710");
    const QByteArray cipher = QByteArray::fromHex("f58c4c04d6e5f1ba779eabfb5f7bfbd69cfc4e967edb808d679f777bc6702c7d"
                                                  "39f23369a9d9bacfa530e26304231461b2eb05e2c39be9fcda6c19078c6a9d1b");
    const QByteArray key = QByteArray::fromHex("603deb1015ca71be2b73aef0857d77811f352c073b6108d72d9810a30914dff4");
    const QByteArray iv = QByteArray::fromHex("000102030405060708090a0b0c0d0e0f");
    for (qsizetype shift = 0; shift < 9; ++shift) {
        const QByteArray gap(shift, '#');
        QByteArray in = gap + plain + "rest";
        QByteArray out(shift + 1 + plain.size() + 4, '#');
        QByteArray keyHere = gap + key;
        QByteArray ivHere = gap + iv;
        const auto call = [&](auto *operation, unsigned char *to, int length) {
            EXPECT_EQ(operation(data(in) + shift, to, length, data(ivHere) + shift, data(keyHere) + shift), 1);
        };
        call(AES_Encrypt, data(out) + shift + 1, 64 + 4);
        EXPECT_EQ(out, gap + '#' + cipher + "####") << "only whole blocks are written";
        EXPECT_EQ(in, gap + plain + "rest");
        call(AES_Encrypt, data(in) + shift, 64);
        EXPECT_EQ(in, gap + cipher + "rest");
        call(AES_Decrypt, data(out) + shift + 1, 64 + 15);
        EXPECT_EQ(out, gap + '#' + plain + "####");
        call(AES_Decrypt, data(in) + shift, 64);
        EXPECT_EQ(in, gap + plain + "rest");
        EXPECT_EQ(keyHere + ivHere, gap + key + gap + iv);
    }
}

TEST(Aes, InstructionsAndTablesAgree)
{
    if (!veldmap::hasCipherInstructions())
        GTEST_SKIP() << "the processor has no instructions for the cipher";
    QByteArray plain;
    for (int at = 0; at < 16 * 21; ++at)
        plain += static_cast<char>(at * at);
    const QByteArray iv = plain.last(16);
    RijndaelKey forward;
    RijndaelKey backward;
    rijndael_set_key(&forward, data(plain) + 3, 256, RijndaelDirection::Encrypt);
    rijndael_set_key(&backward, data(plain) + 3, 256, RijndaelDirection::Decrypt);
    for (int blocks = 0; blocks <= 20; ++blocks) {
        QByteArray byTables = plain;
        QByteArray byInstructions = plain;
        veldmap::encryptByTables(forward, data(plain), data(byTables) + 1, blocks, data(iv));
        veldmap::encryptByInstructions(forward, data(plain), data(byInstructions) + 1, blocks, data(iv));
        EXPECT_EQ(byInstructions, byTables) << blocks;
        veldmap::decryptByTables(backward, data(byTables) + 1, data(byTables) + 1, blocks, data(iv));
        EXPECT_EQ(byTables.sliced(1, 16 * blocks), plain.first(16 * blocks)) << blocks;
        veldmap::decryptByInstructions(backward, data(byInstructions) + 1, data(byInstructions) + 1, blocks, data(iv));
        EXPECT_EQ(byInstructions, byTables) << blocks;
    }
}

TEST(Md5, DigestsOfTheStandard)
{
    const std::pair<QByteArray, QByteArray> rows[] = {
        {"", "d41d8cd98f00b204e9800998ecf8427e"},
        {"a", "0cc175b9c0f1b6a831c399e269772661"},
        {"abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789", "d174ab98d277d9f5a5611c2c9f419d9f"},
        {QByteArray("1234567890").repeated(8), "57edf4a22be3c955ac49da2e2107b67a"}};
    for (const auto &[text, digest] : rows) {
        QByteArray found(16, '\0');
        MD5Hash(data(text), static_cast<std::size_t>(text.size()), data(found));
        EXPECT_EQ(found.toHex(), digest) << text.constData();
    }
}

TEST(Md5, PiecesMakeTheDigestOfTheWhole)
{
    QByteArray text;
    for (int at = 0; at < 200; ++at)
        text += static_cast<char>(at * 7);
    for (qsizetype length = 0; length <= text.size(); ++length) {
        const QByteArray whole = text.first(length);
        MD5Context context;
        MD5Init(&context);
        const qsizetype first = length * 5 / 8;
        MD5Update(&context, data(whole), static_cast<std::size_t>(first));
        MD5Update(&context, data(whole) + first, static_cast<std::size_t>(length - first));
        QByteArray digest(16, '\0');
        MD5Final(data(digest), &context);
        EXPECT_EQ(digest, QCryptographicHash::hash(whole, QCryptographicHash::Md5)) << length;
    }
    unsigned char bytes[] = {0xFF, 1, 2, 3, 4, 0xFF}; // a word at an odd address
    byteReverse(bytes + 1, 1);
    quint32 word = 0;
    std::memcpy(&word, bytes + 1, sizeof word);
    EXPECT_EQ(word, 0x04030201u);
}
