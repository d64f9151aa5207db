// SPDX-License-Identifier: Zlib
// JPEG, GIF and WebP: streams of tagged blocks.
#include "platform/pictures/survey_formats.h"

namespace fenlight::platform {
namespace {

constexpr uint32_t kStartOfFrame = 0xC0;  // to 0xCF, less the three below
constexpr uint32_t kHuffmanTables = 0xC4;
constexpr uint32_t kJpegExtension = 0xC8;
constexpr uint32_t kArithmeticTables = 0xCC;
constexpr uint32_t kEndOfImage = 0xD9;
constexpr uint32_t kStartOfScan = 0xDA;
constexpr uint32_t kJfif = 0xE0;

bool IsFrameMarker(uint32_t marker) {
    return (marker & 0xF0) == kStartOfFrame && marker != kHuffmanTables && marker != kJpegExtension &&
           marker != kArithmeticTables;
}

// Markers without a length: restart marks and the temporary one.
bool StandsAlone(uint32_t marker) { return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8); }

// The place behind the next marker from `at` on, entropy-coded bytes and fill bytes passed over.
uint64_t PassToMarker(const FileBytes &jpeg, uint64_t at) {
    for (;;) {
        at = jpeg.Find(0xFF, at);
        while (jpeg.U8(at) == 0xFF) ++at;
        if (at >= jpeg.Size() || jpeg.U8(at) != 0) return at + 1;
    }
}

void ReadJfifDensity(const FileBytes &jpeg, uint64_t at, uint32_t length, PictureSurvey &survey) {
    if (length < 14 || !jpeg.StartsWith("JFIF", 5, at + 2)) return;
    const uint32_t unit = jpeg.U8(at + 9);
    const auto toDpi = [unit](uint32_t density) {
        return unit == 1 ? density : unit == 2 ? (density * 254 + 50) / 100 : 0;
    };
    survey.dpiX = toDpi(jpeg.U8(at + 10) << 8 | jpeg.U8(at + 11));
    survey.dpiY = toDpi(jpeg.U8(at + 12) << 8 | jpeg.U8(at + 13));
}

// Only what a Huffman decoder with 8 bits a sample reads: baseline, extended, progressive.
bool ReadFrame(const FileBytes &jpeg, uint64_t at, uint32_t marker, uint32_t length, PictureSurvey &survey) {
    if (marker > kStartOfFrame + 2 || length < 8 || jpeg.U8(at + 2) != 8) return false;
    survey.height = jpeg.U8(at + 3) << 8 | jpeg.U8(at + 4);
    survey.width = jpeg.U8(at + 5) << 8 | jpeg.U8(at + 6);
    return survey.width > 0 && survey.height > 0;
}

// Each scan walks the whole picture, however few bytes it has: a bound on the decoder's time.
constexpr uint64_t kMaxScannedPixels = uint64_t{1} << 32;
// Every block of 8 x 8 samples takes at least a bit. The component with the most columns has all of them, and
// a quarter of the lines at worst: 256 pixels a block.
constexpr uint64_t kMaxJpegPixelsPerByte = 256 * 8;

}  // namespace

bool SurveyJpeg(const FileBytes &file, PictureSurvey &survey) noexcept {
    uint64_t scans = 0;
    uint64_t at = PassToMarker(file, 2);
    while (at <= file.Size()) {
        const uint32_t marker = file.U8(at - 1);
        if (marker == kEndOfImage) {
            return scans > 0 && PixelCount(survey) <= file.Size() * kMaxJpegPixelsPerByte &&
                   PixelCount(survey) * scans <= kMaxScannedPixels;
        }
        if (!StandsAlone(marker)) {
            const uint32_t length = file.U8(at) << 8 | file.U8(at + 1);
            if (length < 2 || !file.Holds(at, length)) return false;
            if (marker == kJfif) ReadJfifDensity(file, at, length, survey);
            if (marker == kStartOfScan) ++scans;
            if (IsFrameMarker(marker) &&
                (survey.width != 0 || !ReadFrame(file, at, marker, length, survey))) {
                return false;
            }
            at += length;
        }
        at = PassToMarker(file, at);
    }
    return false;
}

namespace {

uint64_t ColourTableBytes(uint32_t packedBits) {
    return (packedBits & 0x80) != 0 ? 6u << (packedBits & 7) : 0u;
}

// The place behind a chain of sub-blocks and its empty last one; beyond the end where it is cut off.
uint64_t PassSubBlocks(const FileBytes &gif, uint64_t at) {
    while (at < gif.Size() && gif.U8(at) != 0) at += 1 + gif.U8(at);
    return at + 1;
}

// The first frame lies within the screen, as the format demands, and is filled by its data: the longest
// string of the code table has 4096 pixels, and no code is shorter than three bits. The rest of the screen
// may be empty.
bool FrameMakesSense(const FileBytes &gif, uint64_t at, uint64_t dataBytes, const PictureSurvey &screen) {
    const uint32_t width = gif.U16(at + 5);
    const uint32_t height = gif.U16(at + 7);
    const uint64_t mostPixels = dataBytes * 8 / 3 * 4096;
    return width > 0 && height > 0 && gif.U16(at + 1) + width <= screen.width &&
           gif.U16(at + 3) + height <= screen.height && uint64_t{width} * height <= mostPixels &&
           PixelCount(screen) <= mostPixels + kFreePixels;
}

}  // namespace

bool SurveyGif(const FileBytes &file, PictureSurvey &survey) noexcept {
    constexpr uint32_t kExtension = 0x21;
    constexpr uint32_t kFrame = 0x2C;
    constexpr uint32_t kTrailer = 0x3B;
    survey.width = file.U16(6);
    survey.height = file.U16(8);
    survey.usedBytes = 0;
    uint64_t at = 13 + ColourTableBytes(file.U8(10));
    while (at < file.Size()) {
        const uint32_t kind = file.U8(at);
        if (kind == kTrailer) return survey.usedBytes > 0;
        if (kind == kExtension) {
            at = PassSubBlocks(file, at + 2);
        } else if (kind == kFrame) {
            const uint64_t dataAt = at + 11 + ColourTableBytes(file.U8(at + 9));
            const uint64_t end = PassSubBlocks(file, dataAt);
            if (end > file.Size()) return false;
            if (survey.usedBytes == 0) {
                if (!FrameMakesSense(file, at, end - dataAt, survey)) return false;
                survey.usedBytes = static_cast<size_t>(end);
            }
            at = end;
        } else {
            return false;
        }
    }
    return false;
}

bool SurveyWebP(const FileBytes &file, PictureSurvey &survey) noexcept {
    if (!file.Holds(8, file.U32(4)) || file.U32(4) < 22) return false;
    const auto u24 = [&file](uint64_t at) { return file.U16(at) | file.U8(at + 2) << 16; };
    if (file.StartsWith("VP8X", 4, 12)) {
        survey.width = u24(24) + 1;
        survey.height = u24(27) + 1;
    } else if (file.StartsWith("VP8L", 4, 12) && file.U8(20) == 0x2F) {
        const uint32_t sizes = file.U32(21);
        survey.width = (sizes & 0x3FFF) + 1;
        survey.height = (sizes >> 14 & 0x3FFF) + 1;
    } else if (file.StartsWith("VP8 ", 4, 12) && file.Holds(26, 4)) {
        survey.width = file.U16(26) & 0x3FFF;
        survey.height = file.U16(28) & 0x3FFF;
    } else {
        return false;
    }
    // One colour over a whole picture takes next to no data, so the format gives no sharper bound.
    return PixelCount(survey) <= kFreePixels + file.Size() * 65536;
}

}  // namespace fenlight::platform
