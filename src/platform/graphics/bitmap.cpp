// SPDX-License-Identifier: Zlib
#include "platform/graphics/bitmap.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <new>
#include <utility>

#include "platform/graphics/record_pool.h"
#include "platform/system/handle_table.h"
#include "platform/system/large_pages.h"

namespace fenlight::platform {
namespace {

constexpr int kCacheLine = 64;
constexpr int kBadPitch = 4096;

constinit std::mutex objectMutex;
constinit RecordPool<Bitmap> bitmapPool;  // under the object mutex

// What the handle table owns; the record outlives it.
struct BitmapEntry final : HandleObject {
    explicit BitmapEntry(Bitmap &bitmap) : record(bitmap) {}
    Bitmap &record;
};
using PinnedBitmap = Pinned<BitmapEntry, HandleKind::Bitmap>;

constexpr std::array<uint32_t, 2> kBlackAndWhite{0x000000, 0xFFFFFF};
constexpr std::array<uint32_t, 16> kSixteenColours{0x000000, 0x800000, 0x008000, 0x808000, 0x000080, 0x800080,
                                                   0x008080, 0x808080, 0xC0C0C0, 0xFF0000, 0x00FF00, 0xFFFF00,
                                                   0x0000FF, 0xFF00FF, 0x00FFFF, 0xFFFFFF};

// The sixteen colours, a cube of six steps each, and 24 greys between its own.
constexpr std::array<uint32_t, kPaletteSize> kManyColours = [] {
    std::array<uint32_t, kPaletteSize> colours{};
    size_t next = 0;
    for (const uint32_t colour : kSixteenColours) colours[next++] = colour;
    for (uint32_t red = 0; red < 6; ++red)
        for (uint32_t green = 0; green < 6; ++green)
            for (uint32_t blue = 0; blue < 6; ++blue)
                colours[next++] = red * 51 << 16 | green * 51 << 8 | blue * 51;
    for (uint32_t grey = 10; next < kPaletteSize; grey += 10) colours[next++] = grey << 16 | grey << 8 | grey;
    return colours;
}();

int64_t PitchOf(const PictureShape &shape) {
    if (shape.hasPackedRows) return RowBytes(shape.width, shape.format, 4);
    const int64_t pitch = RowBytes(shape.width, shape.format, kCacheLine);
    return pitch % kBadPitch == 0 ? pitch + kCacheLine : pitch;
}

bool CopyPalette(Picture &picture, std::span<const uint32_t> colours) {
    const size_t count = std::min<size_t>(colours.size(), kPaletteSize);
    picture.palette.reset(new (std::nothrow) uint32_t[kPaletteSize]());
    if (picture.palette == nullptr) return false;
    std::copy_n(colours.begin(), count, picture.palette.get());
    picture.view.palette = picture.palette.get();
    picture.view.paletteCount = static_cast<int32_t>(count);
    return true;
}

}  // namespace

std::mutex &ObjectMutex() noexcept { return objectMutex; }

bool IsBitmapSize(int32_t width, int32_t height) noexcept {
    return width > 0 && height > 0 && int64_t{width} * height <= kMaxBitmapPixels;
}

int64_t RowBytes(int32_t width, PixelFormat format, int alignment) noexcept {
    const int64_t bits = int64_t{width} * BitsPerPixel(format);
    return (bits + alignment * 8 - 1) / (alignment * 8) * alignment;
}

bool IsIndexed(PixelFormat format) noexcept {
    return format == PixelFormat::Indexed1 || format == PixelFormat::Indexed4 ||
           format == PixelFormat::Indexed8;
}

std::span<const uint32_t> DefaultPalette(PixelFormat format) noexcept {
    switch (format) {
        case PixelFormat::Indexed1:
            return kBlackAndWhite;
        case PixelFormat::Indexed4:
            return kSixteenColours;
        case PixelFormat::Indexed8:
            return kManyColours;
        default:
            return {};
    }
}

Picture MakePicture(const PictureShape &shape) noexcept {
    Picture picture;
    if (!IsBitmapSize(shape.width, shape.height)) return picture;
    if (IsIndexed(shape.format) && !CopyPalette(picture, shape.palette)) return picture;
    const int64_t pitch = PitchOf(shape);
    if (pitch * shape.height > kMaxBitmapBytes) return picture;
    // calloc leaves the pages of a large picture untouched until something draws on them.
    const auto bytes = static_cast<size_t>(pitch * shape.height);
    const size_t alignment = bytes >= kLargePage ? kLargePage : kCacheLine;
    picture.memory.reset(static_cast<uint8_t *>(std::calloc(bytes + alignment, 1)));
    if (picture.memory == nullptr) return picture;
    const auto start = reinterpret_cast<uintptr_t>(picture.memory.get());
    uint8_t *firstRow = picture.memory.get() + (alignment - start % alignment) % alignment;
    AdviseLargePages(firstRow, bytes);
    PixelView &view = picture.view;
    view.topRow = shape.isTopDown ? firstRow : firstRow + pitch * (shape.height - 1);
    view.pitch = shape.isTopDown ? pitch : -pitch;
    view.width = shape.width;
    view.height = shape.height;
    view.format = shape.format;
    return picture;
}

HBITMAP PublishBitmap(Picture picture) noexcept {
    if (picture.memory == nullptr) return 0;
    const std::lock_guard guard(objectMutex);
    Bitmap *bitmap = bitmapPool.Take();
    if (bitmap == nullptr) return 0;
    auto *entry = new (std::nothrow) BitmapEntry(*bitmap);
    const HBITMAP handle = entry != nullptr ? InsertHandle(HandleKind::Bitmap, entry) : 0;
    if (handle == 0) {
        bitmapPool.GiveBack(*bitmap);
        return 0;
    }
    bitmap->lock.Lock();
    bitmap->picture = std::move(picture);
    bitmap->handle.store(handle, std::memory_order_relaxed);
    bitmap->lock.Unlock();
    return handle;
}

Bitmap *FindBitmap(HBITMAP handle) noexcept {
    const PinnedBitmap entry(handle);
    return entry ? &entry->record : nullptr;
}

bool DeleteBitmap(HBITMAP handle) noexcept {
    Picture picture;  // ends behind the mutex: giving a large block back takes its time
    const std::lock_guard guard(objectMutex);
    Bitmap *bitmap = FindBitmap(handle);
    if (bitmap == nullptr || bitmap->owner != nullptr) return false;
    bitmap->lock.Lock();
    bitmap->handle.store(0, std::memory_order_relaxed);
    picture = std::exchange(bitmap->picture, Picture());
    bitmap->lock.Unlock();
    RemoveHandle(HandleKind::Bitmap, handle);
    bitmapPool.GiveBack(*bitmap);
    return true;
}

LockedBitmap::LockedBitmap(HBITMAP handle) noexcept {
    Bitmap *bitmap = FindBitmap(handle);
    if (bitmap == nullptr) return;
    bitmap->lock.Lock();
    // Between the look-up and the lock the bitmap may have been deleted, and its record used anew.
    if (bitmap->handle.load(std::memory_order_relaxed) == handle)
        bitmap_ = bitmap;
    else
        bitmap->lock.Unlock();
}

}  // namespace fenlight::platform
