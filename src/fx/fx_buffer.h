// SPDX-License-Identifier: Zlib
// FX buffers: 24-bit pictures in plain memory, what makes, copies, saves and frees them, and the paint that
// effects end with.
//
// A buffer is one block: the header that its handle is the address of, and the pixels behind it. It belongs
// to who made it, until ReleaseFX; no list of buffers is kept and no lock guards one, so a buffer is for one
// thread at a time. Painting only reads it.
//
// Rows of MakeFX are padded to 4 bytes, rows of MakeBlackFX are packed at three bytes a pixel. At widths that
// are no multiple of 4 effects must not ask which: pixel_walks.h says how they reach pixels.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "fenlight/fx_buffer.h"
#include "fenlight/platform/graphics.h"
#include "fenlight/platform/system.h"

namespace fenlight {

static_assert(sizeof(BITMAPINFOHEADER) == 40 && offsetof(FXHeader, Pixels) == 40);

inline constexpr int64_t kFXPixelBytes = 3;
// What stands before the rows in a bitmap file.
inline constexpr int64_t kBitmapHeaderBytes = 54;

// The header that an FX handle is the address of; null for the handle 0.
inline FXHeader *FXFromHandle(uintptr_t fx) noexcept { return reinterpret_cast<FXHeader *>(fx); }

// Rows of a buffer as the platform paints and a bitmap file holds them.
constexpr int64_t PaddedRowBytes(int32_t width) noexcept { return (kFXPixelBytes * width + 3) / 4 * 4; }

enum class RowOrder : uint8_t {
    TopDown,   // what every effect expects
    BottomUp,  // for a bitmap file; upside down for everything else
};

// Each maker gives a handle, or 0 where it cannot: the image is in no slot, a size is below 1 or so large
// that a bitmap file of it would have more than 2^31 - 1 bytes, or there is no memory. Nothing stays behind
// then.
uintptr_t MakeFX(uintptr_t image, RowOrder order) noexcept;
uintptr_t MakeBlackFX(int32_t width, int32_t height) noexcept;
// The same without clearing, for who writes every pixel.
uintptr_t MakeBlankFX(int32_t width, int32_t height) noexcept;
uintptr_t CopyOfFX(const FXHeader &fx) noexcept;
void ReleaseFX(FXHeader *fx) noexcept;

// Ends the life of a buffer with the scope that made it.
struct FXReleaser {
    void operator()(FXHeader *fx) const noexcept { ReleaseFX(fx); }
};
using OwnedFX = std::unique_ptr<FXHeader, FXReleaser>;

// The buffer as a bitmap file, its rows in their own order. Returns the bytes of the picture that were
// written plus 54 for the headers; 0 if the file could not be made.
int32_t WriteBitmapFile(const FXHeader &fx, const char *fileName) noexcept;
// The same bytes, all of them.
int32_t WriteBitmapToMemory(const FXHeader &fx, void *destination) noexcept;

// Paints a whole picture of the size of `fx` with its top left corner at (x, y) of a context. Only the sizes
// of `fx` are used: `pixels` is its own block or another one of biSizeImage bytes, and nothing behind those
// is read. Rows are taken as padded, whatever they are; bytes that the block does not have are 0. Does
// nothing for a dead context, for 0, and where no memory was to be had for a block that is too short.
void PaintFX(uintptr_t dc, int32_t x, int32_t y, const FXHeader &fx, const uint8_t *pixels) noexcept;

// A block for the outcome of an effect: `bytes` bytes of any content, placed like the pixels of a buffer.
class PixelBlock {
  public:
    explicit PixelBlock(int64_t bytes) noexcept;
    PixelBlock(const PixelBlock &) = delete;
    PixelBlock &operator=(const PixelBlock &) = delete;
    ~PixelBlock() { GlobalFree(block_); }

    // False without memory; the effect then returns with the buffers as they were.
    explicit operator bool() const noexcept { return block_ != nullptr; }
    uint8_t *Bytes() const noexcept { return bytes_; }

  private:
    void *block_;
    uint8_t *bytes_;
};

}  // namespace fenlight
