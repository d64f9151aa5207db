// SPDX-License-Identifier: Zlib
// Any bytes through Pack and DePack, with the first byte saying whether with a password and how often the
// rest is repeated, so that far and long matches come about. Blocks have exactly the promised sizes.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "fenlight/compression.h"

namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

std::vector<uint8_t> Repeat(const uint8_t *bytes, size_t size, int times) {
    std::vector<uint8_t> block;
    for (int i = 0; i < times; ++i) {
        block.insert(block.end(), bytes, bytes + size);
        block.insert(block.end(), static_cast<size_t>(i) * 500, static_cast<uint8_t>(i));
    }
    return block;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    if (size < 1) return 0;
    const std::vector<uint8_t> block = Repeat(bytes + 1, size - 1, 1 + (bytes[0] >> 1) % 8);
    const char *const password = (bytes[0] & 1) != 0 ? "a password" : nullptr;
    const auto length = static_cast<int32_t>(block.size());
    const auto container = std::make_unique<uint8_t[]>(block.size() + block.size() / 8 + 64 + 24);
    const int32_t packed = Pack(block.data(), container.get(), length, password);
    if (length < 2) {
        Require(packed == 0);
        return 0;
    }
    Require(packed > 24 && GetOriginalSize(container.get()) == length);
    const auto source = std::make_unique<uint8_t[]>(static_cast<size_t>(packed));
    std::memcpy(source.get(), container.get(), static_cast<size_t>(packed));
    const auto room = std::make_unique<uint8_t[]>(block.size());
    Require(DePack(source.get(), room.get(), password) == length);
    Require(std::memcmp(room.get(), block.data(), block.size()) == 0);
    return 0;
}
