// SPDX-License-Identifier: Zlib
// Bitmaps: their memory, their handles, their locks.
//
// The picture (view, palette, memory) and the change counter's writes are guarded by the bitmap's own lock.
// Which context holds a bitmap, and its birth and end, are guarded by the object mutex. Whoever needs both
// takes the object mutex first; of two bitmap locks the one at the lower address first.
#pragma once

#include <atomic>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <span>

#include "fenlight/platform/graphics.h"
#include "platform/graphics/bitmap_lock.h"
#include "platform/raster/pixel_view.h"

namespace fenlight::platform {

struct Context;

// Pixels of one bitmap: 1 GiB at 32 bits. More is a mistake or an attack.
inline constexpr int64_t kMaxBitmapPixels = int64_t{1} << 28;
// Rows of compatible bitmaps take 64 bytes at least, so thin and high ones need a limit of their own.
inline constexpr int64_t kMaxBitmapBytes = int64_t{1} << 31;
inline constexpr int kPaletteSize = 256;

struct FreeMemory {
    void operator()(void *memory) const noexcept { std::free(memory); }
};

// What belongs to one picture and goes with it.
struct Picture {
    PixelView view;
    std::unique_ptr<uint8_t, FreeMemory> memory;
    std::unique_ptr<uint32_t[]> palette;
};

struct PictureShape {
    int32_t width = 0;
    int32_t height = 0;
    PixelFormat format = PixelFormat::Bgrx32;
    bool isTopDown = true;
    // The layout of DIB sections: rows on 4 bytes. Else rows on 64 bytes with a pitch that is no multiple of
    // 4096: such a pitch puts the rows of a sprite into the same cache sets and costs a third.
    bool hasPackedRows = false;
    std::span<const uint32_t> palette = {};  // words 0x00RRGGBB; empty for the formats without one
};

class Bitmap {
  public:
    BitmapLock lock;
    std::atomic<HBITMAP> handle{0};    // 0: not alive, or a context's own picture
    std::atomic<uint32_t> changes{0};  // grows with every writing operation, under the lock
    Picture picture;                   // under the lock
    Context *owner = nullptr;          // the context that has selected it; under the object mutex
    Bitmap *nextFree = nullptr;        // under the object mutex

    void CountChange() noexcept {
        changes.store(changes.load(std::memory_order_relaxed) + 1, std::memory_order_relaxed);
    }
};

std::mutex &ObjectMutex() noexcept;

bool IsBitmapSize(int32_t width, int32_t height) noexcept;
// Bytes of a row of whole units of `alignment`.
int64_t RowBytes(int32_t width, PixelFormat format, int alignment) noexcept;
bool IsIndexed(PixelFormat format) noexcept;
// The colours that an indexed bitmap gets where nobody names any.
std::span<const uint32_t> DefaultPalette(PixelFormat format) noexcept;

// A black picture (index 0) of that shape; the view's memory is null where there was none or the size is
// refused.
Picture MakePicture(const PictureShape &shape) noexcept;
// Gives the picture a record and a handle. 0 where memory or handles ran out, or the picture has no memory.
HBITMAP PublishBitmap(Picture picture) noexcept;
// False for a dead handle and for a bitmap that is selected into a context; nothing has changed then.
bool DeleteBitmap(HBITMAP handle) noexcept;
// The record of a live bitmap, for who holds the object mutex: it stays alive that long.
Bitmap *FindBitmap(HBITMAP handle) noexcept;

// A bitmap found by its handle, locked as long as this stands.
class LockedBitmap {
  public:
    explicit LockedBitmap(HBITMAP handle) noexcept;
    LockedBitmap(const LockedBitmap &) = delete;
    LockedBitmap &operator=(const LockedBitmap &) = delete;
    ~LockedBitmap() {
        if (bitmap_ != nullptr) bitmap_->lock.Unlock();
    }
    explicit operator bool() const noexcept { return bitmap_ != nullptr; }
    const PixelView &View() const noexcept { return bitmap_->picture.view; }

  private:
    Bitmap *bitmap_ = nullptr;
};

}  // namespace fenlight::platform
