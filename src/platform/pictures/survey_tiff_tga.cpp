// SPDX-License-Identifier: Zlib
#include <algorithm>
#include <iterator>

#include "platform/pictures/survey_formats.h"

namespace fenlight::platform {
namespace {

enum Tag : uint16_t {
    kImageWidth = 256,
    kImageLength = 257,
    kCompression = 259,
    kStripOffsets = 273,
    kStripByteCounts = 279,
    kXResolution = 282,
    kYResolution = 283,
    kResolutionUnit = 296,
    kTileOffsets = 324,
    kTileByteCounts = 325,
};

// One entry of a directory: `count` numbers of 2 or 4 bytes, in the entry itself where they fit into 4.
struct Field {
    uint32_t type = 0;
    uint32_t count = 0;
    uint64_t at = 0;
};

constexpr uint32_t kShort = 3;
constexpr uint32_t kLong = 4;
constexpr uint32_t kRational = 5;

uint64_t SizeOfType(uint32_t type) {
    constexpr uint8_t kSizes[] = {1, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8};
    return type < std::size(kSizes) ? kSizes[type] : 1;
}

Field ReadField(const FileBytes &tiff, uint64_t entryAt) {
    Field field{.type = tiff.U16(entryAt + 2), .count = tiff.U32(entryAt + 4), .at = entryAt + 8};
    if (field.count * SizeOfType(field.type) > 4) field.at = tiff.U32(field.at);
    return field;
}

uint32_t Number(const FileBytes &tiff, const Field &field, uint32_t index = 0) {
    if (index >= field.count) return 0;
    if (field.type == kShort) return tiff.U16(field.at + uint64_t{index} * 2);
    return field.type == kLong ? tiff.U32(field.at + uint64_t{index} * 4) : 0;
}

// Pixels per inch of a rational number in inches (unit 2) or centimetres (3); else 0.
uint32_t Dpi(const FileBytes &tiff, const Field &field, uint32_t unit) {
    const uint64_t divisor = field.type == kRational ? tiff.U32(field.at + 4) : 0;
    const uint64_t perUnit100 = unit == 2 ? 100 : unit == 3 ? 254 : 0;
    if (divisor == 0) return 0;
    const uint64_t dpi = (tiff.U32(field.at) * perUnit100 + divisor * 50) / (divisor * 100);
    return dpi <= 0xFFFF ? static_cast<uint32_t>(dpi) : 0;
}

struct Directory {
    Field width, height, compression, offsets, byteCounts, dpiX, dpiY, unit;

    Field *For(uint32_t tag) {
        switch (tag) {
            case kImageWidth:
                return &width;
            case kImageLength:
                return &height;
            case kCompression:
                return &compression;
            case kStripOffsets:
            case kTileOffsets:
                return &offsets;
            case kStripByteCounts:
            case kTileByteCounts:
                return &byteCounts;
            case kXResolution:
                return &dpiX;
            case kYResolution:
                return &dpiY;
            case kResolutionUnit:
                return &unit;
            default:
                return nullptr;
        }
    }
};

// The bytes of all strips or tiles, or 0 if one of them is not in the file. Strips that share their bytes
// count as one file's worth.
uint64_t StoredBytes(const FileBytes &tiff, const Directory &directory) {
    const Field &offsets = directory.offsets;
    const Field &counts = directory.byteCounts;
    if (offsets.count != counts.count) return 0;
    uint64_t sum = 0;
    for (uint32_t i = 0; i < offsets.count; ++i) {
        const uint32_t bytes = Number(tiff, counts, i);
        if (!tiff.Holds(Number(tiff, offsets, i), bytes)) return 0;
        sum += bytes;
    }
    return std::min(sum, tiff.Size());
}

// The fax codings spend at least a bit on a row of any width; the others are far below 4096 bytes for one.
bool CouldFill(uint32_t compression, const PictureSurvey &survey, uint64_t storedBytes) {
    if (compression == 1) return PixelCount(survey) <= storedBytes * 8;
    if (compression >= 2 && compression <= 4) return survey.height <= storedBytes * 8;
    return PixelCount(survey) <= storedBytes * 8 * 4096;
}

}  // namespace

bool SurveyTiff(const FileBytes &file, PictureSurvey &survey) noexcept {
    // `file` reads little-endian; the mark at the start tells which order this one has.
    const FileBytes tiff = file.U8(0) == 'M' ? file.AsBigEndian() : file;
    const uint64_t directoryAt = tiff.U32(4);
    const uint32_t entryCount = tiff.U16(directoryAt);
    if (!tiff.Holds(directoryAt, 2 + uint64_t{entryCount} * 12 + 4)) return false;
    Directory directory;
    for (uint32_t i = 0; i < entryCount; ++i) {
        const uint64_t at = directoryAt + 2 + uint64_t{i} * 12;
        const Field field = ReadField(tiff, at);
        if (!tiff.Holds(field.at, field.count * SizeOfType(field.type))) return false;
        if (Field *known = directory.For(tiff.U16(at))) *known = field;
    }
    survey.width = Number(tiff, directory.width);
    survey.height = Number(tiff, directory.height);
    const uint32_t unit = directory.unit.count == 0 ? 2 : Number(tiff, directory.unit);
    survey.dpiX = Dpi(tiff, directory.dpiX, unit);
    survey.dpiY = Dpi(tiff, directory.dpiY, unit);
    const uint32_t compression = directory.compression.count == 0 ? 1 : Number(tiff, directory.compression);
    return CouldFill(compression, survey, StoredBytes(tiff, directory));
}

namespace {

struct TgaHeader {
    uint32_t paletteKind, imageType, paletteLength, paletteBits, width, height, bitCount, descriptor;
    uint64_t dataAt;
};

TgaHeader ReadTgaHeader(const FileBytes &file) {
    TgaHeader header{.paletteKind = file.U8(1),
                     .imageType = file.U8(2),
                     .paletteLength = file.U16(5),
                     .paletteBits = file.U8(7),
                     .width = file.U16(12),
                     .height = file.U16(14),
                     .bitCount = file.U8(16),
                     .descriptor = file.U8(17),
                     .dataAt = 18 + file.U8(0)};
    if (header.paletteKind == 1) {
        header.dataAt += uint64_t{header.paletteLength} * ((header.paletteBits + 7) / 8);
    }
    return header;
}

bool MakesSense(const TgaHeader &header) {
    if (header.paletteKind > 1 || (header.descriptor & 0xC0) != 0) return false;
    const uint32_t bits = header.paletteBits;
    switch (header.imageType & ~8u) {
        case 1:
            return header.paletteKind == 1 && header.bitCount == 8 && header.paletteLength > 0 &&
                   header.paletteLength <= 256 && (bits == 15 || bits == 16 || bits == 24 || bits == 32);
        case 2:
            return header.bitCount == 15 || header.bitCount == 16 || header.bitCount == 24 ||
                   header.bitCount == 32;
        case 3:
            return header.bitCount == 8;
        default:
            return false;
    }
}

bool RunLengthPacketsFill(const FileBytes &file, uint64_t at, uint64_t pixels, uint32_t pixelBytes) {
    uint64_t filled = 0;
    while (filled < pixels) {
        if (!file.Holds(at, 1)) return false;
        const uint32_t packet = file.U8(at);
        const uint32_t count = (packet & 0x7F) + 1;
        const uint64_t bytes = uint64_t{pixelBytes} * ((packet & 0x80) != 0 ? 1 : count);
        if (!file.Holds(at + 1, bytes)) return false;
        at += 1 + bytes;
        filled += count;
    }
    return true;
}

}  // namespace

bool SurveyTga(const FileBytes &file, PictureSurvey &survey) noexcept {
    const TgaHeader header = ReadTgaHeader(file);
    if (!file.Holds(0, 18) || !MakesSense(header)) return false;
    survey.width = header.width;
    survey.height = header.height;
    const uint32_t pixelBytes = (header.bitCount + 7) / 8;
    if (header.imageType >= 8) {
        return RunLengthPacketsFill(file, header.dataAt, PixelCount(survey), pixelBytes);
    }
    return file.Holds(header.dataAt, PixelCount(survey) * pixelBytes);
}

}  // namespace fenlight::platform
