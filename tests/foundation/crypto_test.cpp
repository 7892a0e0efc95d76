// SPDX-License-Identifier: Apache-2.0
//
// Values of RFC 1321 (MD5), RFC 3174 (SHA-1) and RFC 6229 (RC4).
#include <string>

#include <gtest/gtest.h>

#include "foundation/crypto.h"

namespace foundation::crypto {
namespace {

template <class Bytes>
std::string hex(const Bytes& bytes) {
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (const char byte : bytes) {
        text += digits[static_cast<unsigned char>(byte) >> 4];
        text += digits[byte & 15];
    }
    return text;
}

TEST(Hashes, GiveThePublishedValues) {
    const std::string digits(80, '0');
    EXPECT_EQ(hex(md5("")), "d41d8cd98f00b204e9800998ecf8427e");
    EXPECT_EQ(hex(md5("message digest")), "f96b697d7cb7938d525a2f31aaf161d0");
    EXPECT_EQ(hex(sha1("abc")), "a9993e364706816aba3e25717850c26c9cd0d89d");
    EXPECT_EQ(hex(sha1("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq")),
              "84983e441c3bd26ebaae4aa1f95129e5e54670f1");
}

TEST(Rc4, GivesThePublishedKeyStreamHoweverItIsCut) {
    const struct {
        std::string key, stream;
    } cases[] = {
        {std::string("\1\2\3\4\5", 5), "b2396305f03dc027ccc3524a0a1118a8"},
        {std::string("\1\2\3\4\5\6\7\10\11\12\13\14\15\16\17\20", 16),
         "9ac7cc9a609d1ef7b2932899cde41b97"},
    };
    Rc4 cipher;
    for (const auto& [key, stream] : cases) {
        std::string bytes(16, '\0');
        cipher.set_key(key);
        cipher.apply(bytes.data(), 5);
        cipher.apply(bytes.data() + 5, 11);
        EXPECT_EQ(hex(bytes), stream);
    }
}

} // namespace
} // namespace foundation::crypto
