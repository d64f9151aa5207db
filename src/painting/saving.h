// SPDX-License-Identifier: Zlib
// Images as files. Belongs to the caller's thread; nothing stays behind a save.
#pragma once

#include <cstdint>

#include "images/image_slots.h"

namespace fenlight {

inline constexpr int32_t kSaveBmp = 0;
inline constexpr int32_t kSaveJpeg = 1;

// 1 once writing has begun, whatever came of it; 0 if `image` is not in the table or memory ran out.
int32_t SaveImageAsBmp(ImageHandle image, const char *fileName) noexcept;
// 1 once the codec was called, whatever it answered; 0 without the codec. `quality` is 1 to 10.
int32_t SaveImageAsJpeg(ImageHandle image, const char *fileName, int32_t quality) noexcept;

}  // namespace fenlight
