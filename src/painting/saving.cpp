// SPDX-License-Identifier: Zlib
#include "painting/saving.h"

#include <algorithm>

#include "fenlight/images.h"
#include "frame/codec_binding.h"
#include "fx/fx_buffer.h"

namespace fenlight {
namespace {

// 0 for a handle that is not in the table.
HBITMAP BitmapOfImage(ImageHandle image) {
    const auto slots = ImageDCTable.begin() + kImageSlots;
    const auto slot = std::find(ImageDCTable.begin(), slots, image);
    return slot != slots ? ImageBitmapTable[static_cast<size_t>(slot - ImageDCTable.begin())] : 0;
}

}  // namespace

int32_t SaveImageAsBmp(ImageHandle image, const char *fileName) noexcept {
    const OwnedFX buffer(FXFromHandle(MakeFX(image, RowOrder::BottomUp)));
    if (buffer == nullptr) return 0;
    WriteBitmapFile(*buffer, fileName);
    return 1;
}

// The bitmap stays selected into the image's context: the codec reads it there, under its lock, and sprites
// go on drawing from the image.
int32_t SaveImageAsJpeg(ImageHandle image, const char *fileName, int32_t quality) noexcept {
    if (Dib2Jpg == nullptr) return 0;
    Dib2Jpg(BitmapOfImage(image), fileName, quality);
    return 1;
}

}  // namespace fenlight

using namespace fenlight;

int32_t SaveImage(uintptr_t image, const char *fileName, int32_t format, int32_t quality) noexcept {
    if (format == kSaveBmp) return SaveImageAsBmp(image, fileName);
    if (format == kSaveJpeg) return SaveImageAsJpeg(image, fileName, quality);
    return format;
}
