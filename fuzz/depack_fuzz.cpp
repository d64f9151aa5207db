// SPDX-License-Identifier: Zlib
// Any bytes as a container. The fuzzer can't guess checksums, so the target makes them right: the first byte
// says which fields are mended and whether with a password, the rest is the container. The sum of the content
// is mended after a first try, which tells what the content is. Blocks have exactly the sizes that are
// promised, so that the address sanitizer sees a byte too far.
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "fenlight/compression.h"
#include "fenlight/files.h"

namespace {

constexpr uint32_t kHeader = 24;
constexpr uint32_t kFirstCiphered = 64;
constexpr uint32_t kGreatestRoom = 1 << 20;

void Require(bool holds) {
    if (!holds) std::abort();
}

uint32_t Field(const uint8_t *container, int index) {
    uint32_t value;
    std::memcpy(&value, container + 4 * index, 4);
    return value;
}

void SetField(uint8_t *container, int index, uint32_t value) {
    std::memcpy(container + 4 * index, &value, 4);
}

// The block is as long as its first field says, for that is what DePack is promised.
void MendSizes(uint8_t *container, uint32_t size) {
    SetField(container, 0, size);
    SetField(container, 1, kHeader);
    SetField(container, 2, size - kHeader);
    SetField(container, 4, Field(container, 4) % kGreatestRoom);
}

void MendPackedCrc(uint8_t *container, uint32_t size, const char *password) {
    const uint64_t headerSize = Field(container, 1);
    const uint64_t packedSize = Field(container, 2);
    const uint64_t described = headerSize + packedSize;
    if (described > size) return;
    SetField(container, 3, static_cast<uint32_t>(crc32_z(0, container + headerSize, packedSize)));
    if (password == nullptr || described <= kFirstCiphered) return;
    Crypt(container + kFirstCiphered, static_cast<int32_t>(described - kFirstCiphered), password,
          static_cast<int32_t>(std::strlen(password)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    if (size < kHeader + 1) return 0;
    const uint8_t mode = bytes[0];
    const auto length = static_cast<uint32_t>(size - 1);
    const auto container = std::make_unique<uint8_t[]>(length);
    std::memcpy(container.get(), bytes + 1, length);
    if ((mode & 1) != 0) MendSizes(container.get(), length);
    // The tag for a size goes by the header alone, which may then tell more than there is here.
    SetField(container.get(), 0, std::min(Field(container.get(), 0), length));
    const char *const password = (mode & 4) != 0 ? "pass" : nullptr;
    if ((mode & 2) != 0) MendPackedCrc(container.get(), length, password);

    const int32_t told = GetOriginalSize(container.get());
    Require(told >= 0);
    if (told > static_cast<int32_t>(kGreatestRoom)) return 0;
    const auto room = std::make_unique<uint8_t[]>(static_cast<size_t>(told));
    int32_t result = DePack(container.get(), room.get(), password);
    Require(result == 0 || result == told);
    // A size that the memory does not back is no longer told apart from an opened container.
    if (result == 0 && uint64_t{Field(container.get(), 1)} + Field(container.get(), 2) <= length) {
        SetField(container.get(), 5,
                 static_cast<uint32_t>(crc32_z(0, room.get(), static_cast<size_t>(told))));
        result = DePack(container.get(), room.get(), password);
        Require(result == 0 || result == told);
    }
    if (result == 0) return 0;
    const auto again = std::make_unique<uint8_t[]>(static_cast<size_t>(told));
    Require(DePack(container.get(), again.get(), "other") == told);
    Require(std::memcmp(room.get(), again.get(), static_cast<size_t>(told)) == 0);
    return 0;
}
