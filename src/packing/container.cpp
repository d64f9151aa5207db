// SPDX-License-Identifier: Zlib
#include "packing/container.h"

#include <zlib.h>

#include <cstring>
#include <memory>

#include "data/cipher.h"
#include "fenlight/compression.h"
#include "fenlight/platform/system.h"
#include "packing/compressor.h"
#include "packing/depacker.h"
#include "packing/stream_format.h"

namespace fenlight {
namespace {

struct GlobalBlockFreer {
    void operator()(WorkArea *area) const noexcept { GlobalFree(area); }
};
using WorkAreaOwner = std::unique_ptr<WorkArea, GlobalBlockFreer>;

WorkAreaOwner AllocateWorkArea() noexcept {
    return WorkAreaOwner(static_cast<WorkArea *>(GlobalAlloc(GMEM_ZEROINIT, kWorkAreaBytes)));
}

uint32_t Crc(const uint8_t *bytes, size_t count) noexcept {
    return static_cast<uint32_t>(crc32_z(0, bytes, count));
}

PackHeader ReadHeader(const uint8_t *container) noexcept {
    PackHeader header;
    std::memcpy(&header, container, sizeof header);
    return header;
}

void WriteFirstField(uint8_t *container, uint32_t value) noexcept {
    std::memcpy(container, &value, sizeof value);
}

uint32_t ReadFirstField(const uint8_t *container) noexcept {
    uint32_t value;
    std::memcpy(&value, container, sizeof value);
    return value;
}

// The key stream starts anew with each container, so that the same call ciphers and deciphers.
void Cipher(uint8_t *container, uint64_t containerBytes, const char *password) noexcept {
    if (password == nullptr || containerBytes <= kFirstCipheredByte) return;
    XorWithKey(container + kFirstCipheredByte, static_cast<int64_t>(containerBytes - kFirstCipheredByte),
               reinterpret_cast<const uint8_t *>(password), static_cast<int64_t>(std::strlen(password)));
}

// May the sizes be those of a container of `totalSize` bytes?
bool SizesFit(const PackHeader &header, uint64_t totalSize) noexcept {
    return header.headerSize >= kHeaderBytes &&
           uint64_t{header.headerSize} + header.packedSize <= totalSize && totalSize <= kMaxContainerBytes &&
           header.originalSize <= kMaxContainerBytes;
}

}  // namespace

uint32_t PackContainer(const uint8_t *source, uint8_t *destination, uint32_t length,
                       const char *password) noexcept {
    const WorkAreaOwner area = AllocateWorkArea();
    if (area == nullptr) return 0;
    uint8_t *const stream = destination + kHeaderBytes;
    const uint32_t packedSize = Compress(source, stream, length, *area);
    const uint64_t totalSize = uint64_t{packedSize} + kHeaderBytes;
    if (packedSize == 0 || totalSize > kMaxContainerBytes) return 0;
    const PackHeader header{static_cast<uint32_t>(totalSize), kHeaderBytes, packedSize,
                            Crc(stream, packedSize),          length,       Crc(source, length)};
    std::memcpy(destination, &header, sizeof header);
    Cipher(destination, totalSize, password);
    return header.totalSize;
}

uint32_t OpenContainer(uint8_t *source, uint8_t *destination, const char *password) noexcept {
    const uint32_t firstField = ReadFirstField(source);
    WriteFirstField(source, kContainerTag);
    if (firstField < kHeaderBytes) return 0;
    const PackHeader header = ReadHeader(source);
    const uint64_t describedSize = uint64_t{header.headerSize} + header.packedSize;
    // An opened container, or one of other origin: the tag is no size, unless the header says so too, and the
    // stream is in the clear.
    const bool isOpened = firstField == kContainerTag && describedSize != kContainerTag;
    if (!SizesFit(header, isOpened ? describedSize : firstField)) return 0;
    // What lies behind the stream is not looked at.
    if (!isOpened) Cipher(source, describedSize, password);
    const uint8_t *const stream = source + header.headerSize;
    if (Crc(stream, header.packedSize) != header.packedCrc) return 0;
    const uint32_t made = Depack({stream, header.packedSize}, {destination, header.originalSize});
    if (made != header.originalSize || Crc(destination, made) != header.originalCrc) return 0;
    return made;
}

}  // namespace fenlight

using namespace fenlight;

int32_t Pack(const void *source, void *destination, int32_t length, const char *password) noexcept {
    if (source == nullptr || destination == nullptr || length < 2) return 0;
    return static_cast<int32_t>(PackContainer(static_cast<const uint8_t *>(source),
                                              static_cast<uint8_t *>(destination),
                                              static_cast<uint32_t>(length), password));
}

int32_t DePack(void *source, void *destination, const char *password) noexcept {
    if (source == nullptr || destination == nullptr) return 0;
    return static_cast<int32_t>(
        OpenContainer(static_cast<uint8_t *>(source), static_cast<uint8_t *>(destination), password));
}

int32_t GetOriginalSize(void *source) noexcept {
    if (source == nullptr) return 0;
    const PackHeader header = ReadHeader(static_cast<const uint8_t *>(source));
    const bool isContainer = header.headerSize >= kHeaderBytes && header.originalSize <= kMaxContainerBytes;
    return isContainer ? static_cast<int32_t>(header.originalSize) : 0;
}
