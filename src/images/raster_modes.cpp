// SPDX-License-Identifier: Zlib
#include "images/raster_modes.h"

#include <iterator>

#include "fenlight/platform/graphics.h"

namespace fenlight {
namespace {

constexpr DWORD kRasterModes[] = {
    SRCCOPY,    SRCAND,  SRCPAINT, SRCINVERT, DSTINVERT, NOTSRCCOPY, NOTSRCERASE, MERGECOPY,
    MERGEPAINT, PATCOPY, PATPAINT, PATINVERT, SRCERASE,  BLACKNESS,  WHITENESS,
};

}  // namespace

DWORD RasterCodeOfMode(int32_t mode) noexcept {
    const auto code = static_cast<uint32_t>(mode);
    return code < std::size(kRasterModes) ? kRasterModes[code] : code;
}

}  // namespace fenlight
