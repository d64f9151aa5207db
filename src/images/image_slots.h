// SPDX-License-Identifier: Zlib
// The store of off-screen images: 32 slots, each with a memory context and the bitmap selected into it. The
// context's value is the image's handle. The store owns both objects from creation until FreeImage or
// FreeAllImages; what is still there at the end of the process is the platform's to clean up.
//
// Everything here belongs to the caller's thread, which is one at a time: no lock guards the tables. The
// library's own threads draw from the contexts, but never look into the tables.
#pragma once

#include <array>
#include <cstdint>

#include "fenlight/platform/graphics.h"

namespace fenlight {

using ImageHandle = uintptr_t;

inline constexpr uint32_t kImageSlots = 32;
// Ends both tables. Searches stop at this value, and never count.
inline constexpr uintptr_t ImageSlotEnd = 3;

// Parallel tables; a free slot is 0 in both.
using ImageTable = std::array<uintptr_t, kImageSlots + 1>;
extern ImageTable ImageDCTable;
extern ImageTable ImageBitmapTable;
// The slot that the creation or loading under way has chosen. Means nothing between calls.
extern uint32_t CurrentImageSlot;

// Notes the lowest free slot in CurrentImageSlot. False if the table is full: nothing changes then.
bool FindFreeSlot() noexcept;

// Puts `bitmap` with a context compatible with `dc` into CurrentImageSlot. On failure the bitmap is deleted
// and the slot free.
ImageHandle FillSlot(HDC dc, HBITMAP bitmap) noexcept;

ImageHandle CreateImageInSlot(HDC dc, int32_t width, int32_t height) noexcept;
int32_t ReleaseImage(ImageHandle image) noexcept;
int32_t ReleaseAllImages() noexcept;

// The header of the image's bitmap as the platform reports it, in the one ImageInfoBlock that the next query
// overwrites; all zero but its size if nothing could be reported. Null if `image` is not in the table.
const BITMAPINFOHEADER *QueryImageHeader(ImageHandle image) noexcept;

}  // namespace fenlight
