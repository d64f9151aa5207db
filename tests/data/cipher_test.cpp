// SPDX-License-Identifier: Zlib
#include <gtest/gtest.h>

#include <numeric>
#include <random>

#include "data/memory_guard.h"
#include "fenlight/files.h"
#include "support/each_level.h"

namespace fenlight {
namespace {

std::string RandomBytes(size_t count) {
    static std::mt19937 random(7);
    std::string bytes(count, 0);
    for (char &byte : bytes) byte = static_cast<char>(random());
    return bytes;
}

TEST(Crypt, XorsEachByteWithItsByteOfTheKey) {
    for (const size_t keyLength : {1, 2, 3, 13, 63, 64, 65, 1000, 2047, 2048, 2049, 4096, 5000})
        for (const size_t length :
             {0, 1, 7, 31, 32, 33, 63, 64, 65, 127, 191, 999, 4095, 4096, 4097, 20011}) {
            const std::string plain = RandomBytes(length);
            const std::string key = RandomBytes(keyLength);
            std::string expected = plain;
            for (size_t i = 0; i < length; ++i)
                expected[i] = static_cast<char>(plain[i] ^ key[i % keyLength]);
            WithEachLevel([&] {
                const GuardedMemory memory(plain), heldKey(key);
                const auto crypt = [&] {
                    Crypt(memory.Data(), static_cast<int32_t>(length), heldKey.Data(),
                          static_cast<int32_t>(keyLength));
                };
                crypt();
                ASSERT_EQ(memory.Text(), expected) << length << " bytes, key of " << keyLength;
                crypt();
                ASSERT_EQ(memory.Text(), plain) << length << " bytes, key of " << keyLength;
            });
        }
}

TEST(GenerateChecksum, AddsAllBytesToTheStartValue) {
    for (size_t length = 0; length < 1200; length += length < 300 ? 1 : 37) {
        const std::string bytes = RandomBytes(length);
        const uint32_t start = 0xFFFFFFF0u + static_cast<uint32_t>(length);
        const uint32_t expected =
            std::accumulate(bytes.begin(), bytes.end(), start,
                            [](uint32_t sum, char byte) { return sum + static_cast<uint8_t>(byte); });
        WithEachLevel([&] {
            const GuardedMemory memory(bytes);
            const auto count = static_cast<int32_t>(length);
            ASSERT_EQ(GenerateChecksum(memory.Data(), count, start), expected) << length;
            const uint32_t half = GenerateChecksum(memory.Data(), count / 2, start);
            ASSERT_EQ(GenerateChecksum(memory.Data() + count / 2, count - count / 2, half), expected)
                << length;
        });
    }
    // More than 2^32 in all.
    const std::string most(17000000, '\xFF');
    WithEachLevel([&] { EXPECT_EQ(GenerateChecksum(most.data(), 17000000, 0), 17000000u * 255u); });
}

TEST(Cipher, DoesNothingForEmptySizes) {
    char bytes[] = "abc";
    for (const int32_t none : {0, -1}) {
        Crypt(nullptr, none, "k", 1);
        Crypt(bytes, 3, nullptr, none);
        EXPECT_STREQ(bytes, "abc");
        EXPECT_EQ(GenerateChecksum(nullptr, none, 5), 5u);
    }
}

}  // namespace
}  // namespace fenlight
