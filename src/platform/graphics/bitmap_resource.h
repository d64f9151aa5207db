// SPDX-License-Identifier: Zlib
// Bitmaps among a program's resources: a whole BMP file, or what follows the 14 bytes of its file header. The
// bytes are not trusted.
#pragma once

#include <span>

#include "fenlight/platform/graphics.h"
#include "platform/graphics/bitmap.h"

namespace fenlight::platform {

// Empty where there is none.
std::span<const uint8_t> FindBitmapResource(HINSTANCE module, const char *name) noexcept;
// A picture of the resource's depth and colours; one without memory where the bytes are no uncompressed
// bitmap or fewer than their header announces. One bit with the colours black and white becomes monochrome.
Picture ReadBitmapResource(std::span<const uint8_t> bytes) noexcept;

}  // namespace fenlight::platform
