// SPDX-License-Identifier: Zlib
#include "fx/fx_buffer.h"

#include <algorithm>
#include <cstring>
#include <limits>

#include "images/image_slots.h"
#include "platform/graphics/surface_access.h"
#include "platform/system/large_pages.h"

namespace fenlight {
namespace {

constexpr size_t kCacheLine = 64;
// Zeros behind the pixels: callers may read the last pixel as a word.
constexpr int64_t kSlack = 16;
// A bitmap file reports its size as a signed word.
constexpr int64_t kMostImageBytes = std::numeric_limits<int32_t>::max() - kBitmapHeaderBytes;

struct PlacedBlock {
    void *block = nullptr;
    uint8_t *pixels = nullptr;  // on a cache line, or on a large page
};

// The gap before a large page costs addresses, but no memory as long as nobody writes to it. Clearing would.
size_t AlignmentOf(size_t bytes, UINT flags) {
    const bool isCleared = (flags & GMEM_ZEROINIT) != 0;
    return bytes >= platform::kLargePage && !isCleared ? platform::kLargePage : kCacheLine;
}

// `front` bytes of the block lie before the pixels, at its start.
PlacedBlock AllocatePixels(size_t front, int64_t bytes, UINT flags) {
    const auto size = static_cast<size_t>(bytes);
    const size_t alignment = AlignmentOf(size, flags);
    void *block = GlobalAlloc(flags, front + alignment - 1 + size);
    if (block == nullptr) return {};
    uint8_t *earliest = static_cast<uint8_t *>(block) + front;
    const size_t past = reinterpret_cast<uintptr_t>(earliest) % alignment;
    uint8_t *pixels = earliest + (past == 0 ? 0 : alignment - past);
    platform::AdviseLargePages(pixels, size);
    return {block, pixels};
}

// 0 for a size that no buffer has. The product of the sizes is looked at first: padding adds a third of it
// and overflows no longer.
int64_t ImageBytes(int32_t width, int32_t height, int64_t rowBytes) {
    if (width < 1 || height < 1 || int64_t{width} * height > kMostImageBytes) return 0;
    const int64_t bytes = rowBytes * height;
    return bytes <= kMostImageBytes ? bytes : 0;
}

// The slack is cleared, the pixels are as `flags` leave them.
OwnedFX AllocateFX(const FXHeader &header, UINT flags) {
    const PlacedBlock placed = AllocatePixels(sizeof(FXHeader), header.biSizeImage + kSlack, flags);
    if (placed.block == nullptr) return nullptr;
    auto *fx = static_cast<FXHeader *>(placed.block);
    *fx = header;
    fx->Pixels = placed.pixels;
    std::memset(fx->Pixels + header.biSizeImage, 0, kSlack);
    return OwnedFX(fx);
}

OwnedFX AllocateFX(int32_t width, int32_t height, int64_t rowBytes, UINT flags) {
    const int64_t bytes = ImageBytes(width, height, rowBytes);
    if (bytes == 0) return nullptr;
    FXHeader header{};
    header.biSize = sizeof(BITMAPINFOHEADER);
    header.biWidth = width;
    header.biHeight = height;
    header.biPlanes = 1;
    header.biBitCount = 24;
    header.biCompression = BI_RGB;
    header.biSizeImage = static_cast<uint32_t>(bytes);
    return AllocateFX(header, flags);
}

uintptr_t HandOver(OwnedFX fx) { return reinterpret_cast<uintptr_t>(fx.release()); }

platform::PixelView ViewOf(const FXHeader &fx, RowOrder order) {
    const auto pitch = static_cast<ptrdiff_t>(PaddedRowBytes(fx.biWidth));
    platform::PixelView view;
    view.topRow = order == RowOrder::TopDown ? fx.Pixels : fx.Pixels + pitch * (fx.biHeight - 1);
    view.pitch = order == RowOrder::TopDown ? pitch : -pitch;
    view.width = fx.biWidth;
    view.height = fx.biHeight;
    view.format = platform::PixelFormat::Bgr24;
    return view;
}

void ClearRowEnds(const platform::PixelView &view) {
    const int64_t used = kFXPixelBytes * view.width;
    const auto rest = static_cast<size_t>(PaddedRowBytes(view.width) - used);
    if (rest == 0) return;
    for (int32_t y = 0; y < view.height; ++y) std::memset(view.Row(y) + used, 0, rest);
}

}  // namespace

uintptr_t MakeFX(uintptr_t image, RowOrder order) noexcept {
    const BITMAPINFOHEADER *info = QueryImageHeader(image);
    if (info == nullptr) return 0;
    OwnedFX fx = AllocateFX(info->biWidth, info->biHeight, PaddedRowBytes(info->biWidth), GMEM_FIXED);
    if (fx == nullptr) return 0;
    const platform::PixelView view = ViewOf(*fx, order);
    if (!platform::FetchPixels(image, view)) return 0;
    ClearRowEnds(view);
    return HandOver(std::move(fx));
}

uintptr_t MakeBlackFX(int32_t width, int32_t height) noexcept {
    return HandOver(AllocateFX(width, height, kFXPixelBytes * width, GPTR));
}

uintptr_t MakeBlankFX(int32_t width, int32_t height) noexcept {
    return HandOver(AllocateFX(width, height, kFXPixelBytes * width, GMEM_FIXED));
}

uintptr_t CopyOfFX(const FXHeader &fx) noexcept {
    OwnedFX copy = AllocateFX(fx, GMEM_FIXED);
    if (copy == nullptr) return 0;
    std::memcpy(copy->Pixels, fx.Pixels, fx.biSizeImage);
    return HandOver(std::move(copy));
}

void ReleaseFX(FXHeader *fx) noexcept { GlobalFree(fx); }

PixelBlock::PixelBlock(int64_t bytes) noexcept {
    const PlacedBlock placed = AllocatePixels(0, bytes, GMEM_FIXED);
    block_ = placed.block;
    bytes_ = placed.pixels;
}

}  // namespace fenlight

using namespace fenlight;

uintptr_t InitFX(uintptr_t image) noexcept { return MakeFX(image, RowOrder::TopDown); }

uintptr_t CreateExtFX(int32_t width, int32_t height) noexcept { return MakeBlackFX(width, height); }

uintptr_t CloneFX(uintptr_t fx) noexcept { return fx != 0 ? CopyOfFX(*FXFromHandle(fx)) : 0; }

int32_t FreeFX(uintptr_t fx) noexcept {
    ReleaseFX(FXFromHandle(fx));
    return 0;
}
