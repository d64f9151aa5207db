// SPDX-License-Identifier: Zlib
// The decoder library behind the picture loader. Only its source sees that library.
#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "platform/pictures/picture_survey.h"

struct _GdkPixbuf;  // NOLINT(bugprone-reserved-identifier): the decoder library's own name

namespace fenlight::platform {

struct PixbufRelease {
    void operator()(_GdkPixbuf *pixbuf) const noexcept;
};

// Rows from the top, 24 bits (blue, green, red) or 32 (and a 0), each row padded to 4 bytes: what a top-down
// device-independent bitmap looks like.
struct DecodedPicture {
    std::unique_ptr<_GdkPixbuf, PixbufRelease> owner;
    const uint8_t *pixels = nullptr;
    uint32_t width = 0;
    uint32_t height = 0;
    uint16_t bitCount = 0;

    explicit operator bool() const { return owner != nullptr; }
};

// Decodes data that SurveyPicture has accepted. Empty if the decoder refuses it, if it comes out larger than
// announced, or if there is no memory. The transparent parts of a GIF, icon, TIFF or WebP come out on white;
// BMP and TGA show their colours as they are stored, since their fourth byte is often left 0.
DecodedPicture DecodePicture(std::span<const uint8_t> data, const PictureSurvey &survey) noexcept;

}  // namespace fenlight::platform
