// SPDX-License-Identifier: Zlib
// What we read of a picture ourselves before a decoder sees it: its kind by its first bytes, its size and
// resolution, and whether all of it is there. The decoder library takes a cut-off BMP, JPEG or icon for a
// success and allocates what a forged header asks for; neither happens behind this check.
//
// Pure functions over the bytes: no state, no allocation.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace fenlight::platform {

enum class PictureFormat : uint8_t { Bmp, Jpeg, Gif, Icon, PngIcon, Tiff, Tga, WebP };

struct PictureSurvey {
    PictureFormat format = PictureFormat::Bmp;
    // Pixels; for an icon those of its largest picture.
    uint32_t width = 0;
    uint32_t height = 0;
    // Pixels per inch as stored, 96 where the file stores none.
    uint32_t dpiX = 96;
    uint32_t dpiY = 96;
    // The part of the data that the decoder needs: of a GIF all before the second frame, of an icon whose
    // largest picture is a PNG stream that stream.
    size_t firstByte = 0;
    size_t usedBytes = 0;
};

// 1 GiB as 32-bit pixels.
inline constexpr uint64_t kMaxPicturePixels = uint64_t{1} << 28;

// Empty for data that is no picture of a known kind, is cut off, or announces more than kMaxPicturePixels or
// more than its data could ever fill.
std::optional<PictureSurvey> SurveyPicture(std::span<const uint8_t> data) noexcept;

}  // namespace fenlight::platform
