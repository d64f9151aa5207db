// SPDX-License-Identifier: Zlib
// Bitmaps as JPEG files, through libjpeg. Keeps no state.
#pragma once

#include <cstdint>

#include "fenlight/platform/graphics.h"

namespace fenlight {

// Writes a bitmap of any depth, which may be selected into a context meanwhile, as a colour JPEG. `quality`
// goes from 1 to 10; above counts as 10, below as 1. Returns 1 if the whole file was written. Else 0: the
// bitmap is dead or 0, a side is longer than the 65500 pixels of libjpeg, memory ran out, and the file system
// was left alone; or the file could not be opened or wholly written. Any thread.
uint32_t WriteJpegFile(HBITMAP bitmap, const char *fileName, int32_t quality) noexcept;

}  // namespace fenlight
