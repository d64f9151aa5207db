// SPDX-License-Identifier: Zlib
// BMP, ICO and CUR: device-independent bitmaps with different wrappings.
#include "platform/pictures/survey_formats.h"

namespace fenlight::platform {
namespace {

constexpr uint32_t kFileHeaderSize = 14;
constexpr uint32_t kCoreHeaderSize = 12;
constexpr uint32_t kInfoHeaderSize = 40;
constexpr uint32_t kRle8 = 1;
constexpr uint32_t kRle4 = 2;

struct DibHeader {
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t bitCount = 0;
    uint32_t compression = 0;
    uint32_t pelsPerMetreX = 0;
    uint32_t pelsPerMetreY = 0;
};

uint32_t Magnitude(uint32_t bits) { return static_cast<int32_t>(bits) < 0 ? 0u - bits : bits; }

DibHeader ReadDibHeader(const FileBytes &file, uint64_t at, uint32_t headerSize) {
    if (headerSize == kCoreHeaderSize) {
        return {.width = file.U16(at + 4), .height = file.U16(at + 6), .bitCount = file.U16(at + 10)};
    }
    return {.width = file.U32(at + 4),
            .height = Magnitude(file.U32(at + 8)),  // negative: rows from the top
            .bitCount = file.U16(at + 14),
            .compression = file.U32(at + 16),
            .pelsPerMetreX = file.U32(at + 24),
            .pelsPerMetreY = file.U32(at + 28)};
}

uint64_t RowBytes(uint32_t width, uint32_t bitCount) { return (uint64_t{width} * bitCount + 31) / 32 * 4; }

// Stored as whole pixels per metre, so that 96 per inch comes as 3779 or 3780: whole pixels per inch again
// keep such a picture at its own size.
uint32_t DpiOfPelsPerMetre(uint32_t pelsPerMetre) {
    return static_cast<uint32_t>((uint64_t{pelsPerMetre} * 254 + 5000) / 10000);
}

// Walks the codes to the one that ends the bitmap.
bool RunLengthDataIsWhole(const FileBytes &file, uint64_t at, bool isRle4) {
    while (file.Holds(at, 2)) {
        const uint32_t count = file.U8(at);
        const uint32_t code = file.U8(at + 1);
        at += 2;
        if (count != 0 || code == 0) continue;
        if (code == 1) return true;
        const uint32_t literalBytes = isRle4 ? (code + 1) / 2 : code;
        at += code == 2 ? 2 : (literalBytes + 1) & ~1u;
    }
    return false;
}

}  // namespace

bool SurveyBmp(const FileBytes &file, PictureSurvey &survey) noexcept {
    const uint32_t dataAt = file.U32(10);
    const uint32_t headerSize = file.U32(kFileHeaderSize);
    if (headerSize != kCoreHeaderSize && headerSize < kInfoHeaderSize) return false;
    if (!file.Holds(kFileHeaderSize, headerSize) || dataAt < kFileHeaderSize + uint64_t{headerSize})
        return false;
    const DibHeader header = ReadDibHeader(file, kFileHeaderSize, headerSize);
    survey.width = header.width;
    survey.height = header.height;
    survey.dpiX = DpiOfPelsPerMetre(header.pelsPerMetreX);
    survey.dpiY = DpiOfPelsPerMetre(header.pelsPerMetreY);
    if (PixelCount(survey) > kMaxPicturePixels || header.bitCount > 32) return false;
    if (header.compression == kRle8 || header.compression == kRle4) {
        // A code of two bytes draws at most 255 pixels; lines that the codes skip stay empty.
        return PixelCount(survey) <= kFreePixels + file.Size() * 128 &&
               RunLengthDataIsWhole(file, dataAt, header.compression == kRle4);
    }
    return file.Holds(dataAt, RowBytes(header.width, header.bitCount) * header.height);
}

namespace {

// The format tops out at 256; larger PNG entries exist, but none beyond this.
constexpr uint32_t kMaxIconSide = 1024;

// A picture within an icon: a PNG stream, or a bitmap of twice the height with a mask in its lower half.
bool SurveyIconEntry(const FileBytes &file, uint64_t at, uint64_t size, PictureSurvey &entry) {
    if (!file.Holds(at, size)) return false;
    if (file.StartsWith("\x89PNG", 4, at)) {
        // The icon decoder passes such a picture over, so it goes to a decoder of its own.
        entry.format = PictureFormat::PngIcon;
        entry.firstByte = static_cast<size_t>(at);
        entry.usedBytes = static_cast<size_t>(size);
        // Big-endian sizes whose upper halves must be 0.
        if (size < 33 || file.U16(at + 16) != 0 || file.U16(at + 20) != 0) return false;
        entry.width = file.U8(at + 18) << 8 | file.U8(at + 19);
        entry.height = file.U8(at + 22) << 8 | file.U8(at + 23);
    } else {
        const uint32_t headerSize = file.U32(at);
        if (headerSize < kInfoHeaderSize || headerSize > size) return false;
        const DibHeader header = ReadDibHeader(file, at, headerSize);
        entry.width = header.width;
        entry.height = header.height / 2;
        if (header.bitCount > 32 || PixelCount(entry) > kMaxPicturePixels) return false;
        const uint64_t paletteBytes = header.bitCount <= 8 ? 4u << header.bitCount : 0u;
        const uint64_t needed = headerSize + paletteBytes +
                                RowBytes(entry.width, header.bitCount) * entry.height +
                                RowBytes(entry.width, 1) * entry.height;
        if (!file.Holds(at, needed)) return false;
    }
    return entry.width > 0 && entry.height > 0 && entry.width <= kMaxIconSide && entry.height <= kMaxIconSide;
}

}  // namespace

bool SurveyIcon(const FileBytes &file, PictureSurvey &survey) noexcept {
    const PictureSurvey wholeFile = survey;
    const uint32_t count = file.U16(4);
    if (!file.Holds(6, uint64_t{count} * 16)) return false;
    for (uint32_t i = 0; i < count; ++i) {
        const uint64_t at = 6 + uint64_t{i} * 16;
        PictureSurvey entry = wholeFile;
        if (!SurveyIconEntry(file, file.U32(at + 12), file.U32(at + 8), entry)) return false;
        if (PixelCount(entry) > PixelCount(survey)) survey = entry;
    }
    return true;
}

}  // namespace fenlight::platform
