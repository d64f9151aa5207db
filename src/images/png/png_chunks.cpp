// SPDX-License-Identifier: Zlib
#include "images/png/png_chunks.h"

#include <cstring>

#include "images/png/png_format.h"

namespace fenlight {

namespace {

constexpr uint8_t kSignature[8] = {0x89, 'P', 'N', 'G', 13, 10, 26, 10};
constexpr uint32_t kMinStreamSize = 16;
constexpr size_t kChunkOverhead = 12;  // length, type, CRC
constexpr uint32_t kHeaderLength = 13;

uint32_t ReadBigEndian(const uint8_t *bytes) {
    return uint32_t{bytes[0]} << 24 | uint32_t{bytes[1]} << 16 | uint32_t{bytes[2]} << 8 | bytes[3];
}

void ForgetStreamFields(PngContext &context) {
    context.chunkPosition = nullptr;
    context.headerData = nullptr;
    context.firstImageData = nullptr;
    context.paletteData = nullptr;
    context.lastError = PngErrorNone;
}

PngError ReadSize(PngContext &context) {
    PngChunk chunk;
    if (!ReadPngChunk(context, context.sourceData + sizeof kSignature, chunk)) return PngErrorData;
    if (KindOfChunk(chunk) != kChunkIhdr || chunk.length < kHeaderLength) return PngErrorData;
    context.headerData = chunk.payload;
    context.width = ReadBigEndian(chunk.payload);
    context.height = ReadBigEndian(chunk.payload + 4);
    return context.width == 0 || context.height == 0 ? PngErrorData : PngErrorNone;
}

PngError ExamineChunk(PngContext &context, const PngChunk &chunk) {
    switch (KindOfChunk(chunk)) {
        case kChunkPlte:
            if (context.paletteData != nullptr) break;
            context.paletteData = chunk.payload;
            context.paletteCount = chunk.length / 3;
            break;
        case kChunkIdat:
            if (context.firstImageData == nullptr) context.firstImageData = chunk.position;
            break;
        case kChunkIhdr:
        case kChunkIend:
            break;
        default:
            if ((chunk.type & kFirstLetterCase) == 0) return PngErrorFormat;
    }
    return PngErrorNone;
}

PngError WalkChunks(PngContext &context) {
    PngChunk chunk;
    context.chunkPosition = context.sourceData + sizeof kSignature;
    while (ReadPngChunk(context, context.chunkPosition, chunk)) {
        const PngError error = ExamineChunk(context, chunk);
        if (error != PngErrorNone) return error;
        context.chunkPosition = chunk.Next();
    }
    return PngErrorNone;
}

PngError CheckHeader(PngContext &context) {
    const uint8_t *const fields = context.headerData + 8;
    context.bitDepth = fields[0];
    context.colourType = fields[1];
    context.interlace = fields[4];
    const bool hasKnownMethods = fields[2] == 0 && fields[3] == 0 && context.interlace <= 1;
    if (!hasKnownMethods || FindPngFormat(context.colourType, context.bitDepth) == nullptr)
        return PngErrorFormat;
    if (uint64_t{context.width} * context.height > kMaxPixels) return PngErrorFormat;
    if (context.colourType == kPaletteColour && context.paletteData == nullptr) return PngErrorFormat;
    return PngErrorNone;
}

}  // namespace

bool ReadPngChunk(const PngContext &context, const uint8_t *position, PngChunk &chunk) noexcept {
    const auto left = static_cast<size_t>(context.sourceData + context.sourceSize - position);
    if (left < kChunkOverhead) return false;
    const uint32_t length = ReadBigEndian(position);
    if (length > left - kChunkOverhead) return false;
    chunk = {position, position + 8, length, ReadBigEndian(position + 4)};
    return true;
}

PngError ParsePngStream(PngContext &context) noexcept {
    ForgetStreamFields(context);
    if (context.sourceData == nullptr || context.sourceSize < kMinStreamSize) return PngErrorData;
    if (std::memcmp(context.sourceData, kSignature, sizeof kSignature) != 0) return PngErrorData;
    if (const PngError error = ReadSize(context); error != PngErrorNone) return error;
    if (const PngError error = WalkChunks(context); error != PngErrorNone) return error;
    return CheckHeader(context);
}

}  // namespace fenlight
