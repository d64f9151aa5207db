// SPDX-License-Identifier: Zlib
#include "images/png/png_inflate.h"

#include <zlib.h>

#include <cstring>

#include "fenlight/platform/system.h"
#include "images/png/png_chunks.h"

namespace fenlight {

namespace {

// Goes through the IDAT run, chunk by chunk.
class ImageDataReader {
  public:
    explicit ImageDataReader(const PngContext &context) noexcept
        : context_(context), position_(context.firstImageData) {}

    bool Next(PngChunk &chunk) noexcept {
        if (position_ == nullptr || !ReadPngChunk(context_, position_, chunk)) return false;
        if (KindOfChunk(chunk) != kChunkIdat) return false;
        position_ = chunk.Next();
        return true;
    }

  private:
    const PngContext &context_;
    const uint8_t *position_;
};

void *AllocateForZlib(void *, uInt count, uInt size) { return GlobalAlloc(GMEM_FIXED, size_t{count} * size); }

void FreeForZlib(void *, void *block) { GlobalFree(block); }

// Its check bits don't matter.
bool IsZlibHeader(uint8_t method, uint8_t flags) {
    return (method & 0x0F) == 8 && (method >> 4) <= 7 && (flags & 0x20) == 0;
}

// The inflation of one picture. Each chunk is handed to zlib where it lies.
class Inflation {
  public:
    Inflation(uint8_t *target, uint32_t size) noexcept : left_(size) {
        stream_.zalloc = AllocateForZlib;
        stream_.zfree = FreeForZlib;
        stream_.next_out = target;
        stream_.avail_out = size;
        isReady_ = inflateInit2(&stream_, -MAX_WBITS) == Z_OK;
    }
    Inflation(const Inflation &) = delete;
    Inflation &operator=(const Inflation &) = delete;
    ~Inflation() {
        if (isReady_) inflateEnd(&stream_);
    }

    bool IsReady() const noexcept { return isReady_; }
    bool IsComplete() const noexcept { return isComplete_; }
    uint32_t BytesMissing() const noexcept { return left_; }

    PngError Feed(const uint8_t *bytes, uint32_t size) noexcept {
        stream_.next_in = const_cast<uint8_t *>(bytes);  // zlib only reads there
        stream_.avail_in = size;
        // Z_FINISH spares the copy of the window where all data comes in one chunk.
        int result = inflate(&stream_, Z_FINISH);
        if (!isPastEnd_) left_ = stream_.avail_out;
        if (result == Z_BUF_ERROR && stream_.avail_out == 0) result = LookPastEnd();
        isComplete_ = result == Z_STREAM_END || (isPastEnd_ && stream_.avail_out == 0);
        if (result == Z_MEM_ERROR) return PngErrorMemory;
        return isComplete_ || result == Z_BUF_ERROR ? PngErrorNone : PngErrorData;
    }

  private:
    // The block is full and the stream goes on: whether it is more data or only the end mark shows when one
    // more byte may come.
    int LookPastEnd() noexcept {
        if (isPastEnd_) return Z_BUF_ERROR;
        isPastEnd_ = true;
        stream_.next_out = &excess_;
        stream_.avail_out = 1;
        return inflate(&stream_, Z_FINISH);
    }

    z_stream stream_{};
    uint32_t left_;
    uint8_t excess_ = 0;
    bool isReady_ = false;
    bool isPastEnd_ = false;
    bool isComplete_ = false;
};

}  // namespace

uint64_t CountImageData(const PngContext &context) noexcept {
    ImageDataReader reader(context);
    PngChunk chunk;
    uint64_t bytes = 0;
    while (reader.Next(chunk)) bytes += chunk.length;
    return bytes;
}

PngError InflateImageData(const PngContext &context, uint8_t *target, uint32_t size) noexcept {
    Inflation inflation(target, size);
    if (!inflation.IsReady()) return PngErrorMemory;
    ImageDataReader reader(context);
    PngChunk chunk;
    uint8_t header[2];
    uint32_t headerBytes = 0;  // the header may be spread over chunks, too
    while (!inflation.IsComplete()) {
        if (!reader.Next(chunk)) return PngErrorData;
        uint32_t skip = 0;
        while (headerBytes < 2 && skip < chunk.length) header[headerBytes++] = chunk.payload[skip++];
        if (headerBytes < 2) continue;
        if (!IsZlibHeader(header[0], header[1])) return PngErrorData;
        if (skip == chunk.length) continue;
        const PngError error = inflation.Feed(chunk.payload + skip, chunk.length - skip);
        if (error != PngErrorNone) return error;
    }
    std::memset(target + (size - inflation.BytesMissing()), 0, inflation.BytesMissing());
    return PngErrorNone;
}

}  // namespace fenlight
