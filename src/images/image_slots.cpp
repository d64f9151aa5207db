// SPDX-License-Identifier: Zlib
#include "images/image_slots.h"

#include <cstring>

#include "fenlight/images.h"
#include "images/raster_modes.h"

namespace fenlight {

namespace {

constexpr ImageTable MakeEmptyTable() {
    ImageTable table{};
    table.back() = ImageSlotEnd;
    return table;
}

}  // namespace

// No call has to set them up: they are whole as soon as the library is loaded.
constinit ImageTable ImageDCTable = MakeEmptyTable();
constinit ImageTable ImageBitmapTable = MakeEmptyTable();
constinit uint32_t CurrentImageSlot = 0;

namespace {

BITMAPINFOHEADER ImageInfoBlock;

void FreeSlot(uint32_t slot) {
    // The context goes first, so that the bitmap is no longer selected anywhere.
    DeleteDC(ImageDCTable[slot]);
    DeleteObject(ImageBitmapTable[slot]);
    ImageDCTable[slot] = 0;
    ImageBitmapTable[slot] = 0;
}

// The slot of a handle, or the end marker's index. 0 finds a free slot: see ReleaseImage.
uint32_t SlotOf(ImageHandle image) {
    uint32_t slot = 0;
    while (ImageDCTable[slot] != ImageSlotEnd && ImageDCTable[slot] != image) ++slot;
    return slot;
}

}  // namespace

bool FindFreeSlot() noexcept {
    const uint32_t slot = SlotOf(0);
    if (ImageDCTable[slot] == ImageSlotEnd) return false;
    CurrentImageSlot = slot;
    return true;
}

ImageHandle FillSlot(HDC dc, HBITMAP bitmap) noexcept {
    const uint32_t slot = CurrentImageSlot;
    ImageBitmapTable[slot] = bitmap;
    ImageDCTable[slot] = CreateCompatibleDC(dc);
    if (ImageDCTable[slot] == 0 || SelectObject(ImageDCTable[slot], bitmap) == 0) {
        FreeSlot(slot);
        return 0;
    }
    return ImageDCTable[slot];
}

ImageHandle CreateImageInSlot(HDC dc, int32_t width, int32_t height) noexcept {
    if (!FindFreeSlot()) return 0;
    const HBITMAP bitmap = CreateCompatibleBitmap(dc, width, height);
    return bitmap != 0 ? FillSlot(dc, bitmap) : 0;
}

// A free slot answers to the handle 0: its two entries are 0 already, and the platform refuses to delete 0.
int32_t ReleaseImage(ImageHandle image) noexcept {
    const uint32_t slot = SlotOf(image);
    if (ImageDCTable[slot] == ImageSlotEnd) return 0;
    FreeSlot(slot);
    return static_cast<int32_t>(slot * 4 + 1);
}

int32_t ReleaseAllImages() noexcept {
    int32_t count = 0;
    for (uint32_t slot = 0; ImageDCTable[slot] != ImageSlotEnd; ++slot) {
        if (ImageDCTable[slot] == 0) continue;
        FreeSlot(slot);
        ++count;
    }
    return count;
}

const BITMAPINFOHEADER *QueryImageHeader(ImageHandle image) noexcept {
    std::memset(&ImageInfoBlock, 0, sizeof ImageInfoBlock);
    ImageInfoBlock.biSize = sizeof ImageInfoBlock;
    const uint32_t slot = image == 0 ? kImageSlots : SlotOf(image);
    if (ImageDCTable[slot] == ImageSlotEnd) return nullptr;
    // Without bits and with a bit count of 0 the header alone is filled, never a colour table behind it.
    GetDIBits(image, ImageBitmapTable[slot], 0, 0, nullptr, reinterpret_cast<BITMAPINFO *>(&ImageInfoBlock),
              DIB_RGB_COLORS);
    return &ImageInfoBlock;
}

}  // namespace fenlight

using namespace fenlight;

uintptr_t CreateImage(uintptr_t dc, int32_t width, int32_t height) noexcept {
    return CreateImageInSlot(dc, width, height);
}

int32_t FreeImage(uintptr_t image) noexcept { return ReleaseImage(image); }

int32_t FreeAllImages() noexcept { return ReleaseAllImages(); }

int32_t GetWidthImage(uintptr_t image) noexcept {
    const BITMAPINFOHEADER *header = QueryImageHeader(image);
    return header != nullptr ? header->biWidth : -1;
}

int32_t GetHeightImage(uintptr_t image) noexcept {
    const BITMAPINFOHEADER *header = QueryImageHeader(image);
    return header != nullptr ? header->biHeight : 0;
}

int32_t GetInfosImage(uintptr_t image, void *info) noexcept {
    const BITMAPINFOHEADER *header = QueryImageHeader(image);
    if (header == nullptr || info == nullptr) return 0;
    std::memcpy(info, header, sizeof *header);
    return 1;
}

int32_t ColorFillImage(uintptr_t dc, uint32_t colour, int32_t left, int32_t top, int32_t right,
                       int32_t bottom) noexcept {
    const HBRUSH brush = CreateSolidBrush(colour);
    const RECT rectangle = {left, top, right, bottom};
    FillRect(dc, &rectangle, brush);
    DeleteObject(brush);
    return 0;
}

int32_t SizeImage(uintptr_t destDC, int32_t destX, int32_t destY, int32_t destWidth, int32_t destHeight,
                  uintptr_t srcDC, int32_t srcX, int32_t srcY, int32_t srcWidth, int32_t srcHeight,
                  int32_t mode) noexcept {
    SetStretchBltMode(destDC, COLORONCOLOR);
    SetStretchBltMode(srcDC, COLORONCOLOR);
    return StretchBlt(destDC, destX, destY, destWidth, destHeight, srcDC, srcX, srcY, srcWidth, srcHeight,
                      RasterCodeOfMode(mode));
}
