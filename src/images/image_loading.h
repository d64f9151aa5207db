// SPDX-License-Identifier: Zlib
// Pictures from files, memory and resources into a free image slot. The caller's thread only, one load at a
// time.
#pragma once

#include <cstdint>

#include "images/image_slots.h"

namespace fenlight {

// The resource type that the loader looks for before it tries bitmap resources.
inline constexpr char ImageResourceType[] = "IMAGE";

// A handle, or 0 with all slots as they were. `fileName` and `name` as the exported functions take them.
ImageHandle LoadImageFromFile(const char *fileName) noexcept;
ImageHandle LoadImageFromMemory(const void *data, int32_t size) noexcept;
ImageHandle LoadImageFromResource(HMODULE module, const char *name) noexcept;

}  // namespace fenlight
