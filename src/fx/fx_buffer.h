// SPDX-License-Identifier: Zlib
#pragma once

#include <cstddef>
#include <cstdint>

#include "fenlight/fx_buffer.h"
#include "fenlight/platform/graphics.h"

namespace fenlight {

static_assert(sizeof(BITMAPINFOHEADER) == 40 && offsetof(FXHeader, Pixels) == 40);

// The header that an FX handle is the address of.
inline FXHeader *FXFromHandle(uintptr_t fx) noexcept { return reinterpret_cast<FXHeader *>(fx); }

}  // namespace fenlight
