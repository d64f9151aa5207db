// SPDX-License-Identifier: Zlib
// How the filters that a mask steers go through a picture in place.
//
// A byte's new value comes from its eight neighbours as they were. Rows of sums of three bytes side by side
// are made a row ahead of the bytes that are written, and kept for two rows more: the picture itself is never
// copied. The bytes of the block are one run in which the row above lies 3 * width bytes back, whatever
// padding there is; a byte with a neighbour outside the block keeps its value.
//
// Scratch memory is taken before anything changes. Nothing here outlives a call.
#pragma once

#include <algorithm>
#include <utility>

#include "fx/pixel_walks.h"
#include "fx/smoothing/smoothing_kernels.h"

namespace fenlight {

// Makes the outermost pixels of a mask black, in packed rows.
void ClearMaskBorder(const FXHeader &mask) noexcept;

// Bytes of a block, from `begin` up to `end`; none if that is not above.
struct ByteRange {
    int64_t begin;
    int64_t end;
};

class MaskedWalk {
  public:
    // Changes the first `count` bytes of `fx` and no others.
    MaskedWalk(const FXHeader &fx, int64_t count) noexcept
        : bytes_(fx.Pixels),
          pitch_(kFXPixelBytes * fx.biWidth),
          filtered_{pitch_ + kFXPixelBytes, std::min(fx.biSizeImage - pitch_ - kFXPixelBytes, count)},
          piece_(std::clamp<int64_t>(filtered_.end - filtered_.begin, 0, pitch_)),
          sums_(3 * piece_ * int64_t{sizeof(uint16_t)}) {}

    // False without memory.
    explicit operator bool() const noexcept { return static_cast<bool>(sums_); }
    // The bytes that have all their neighbours.
    const ByteRange &Filtered() const noexcept { return filtered_; }
    // The most bytes that an action gets.
    int64_t LongestPiece() const noexcept { return piece_; }

    // action(first byte, sums, count) for each row, in rising order; it writes these bytes and no others.
    template <typename Action>
    void ForEachPiece(const SmoothingKernels &kernels, Action action) const {
        auto *above = reinterpret_cast<uint16_t *>(sums_.Bytes()), *row = above + piece_,
             *below = row + piece_;
        kernels.addAcross(above, bytes_ + kFXPixelBytes, piece_);
        kernels.addAcross(row, bytes_ + kFXPixelBytes + pitch_, piece_);
        for (int64_t first = filtered_.begin; first < filtered_.end; first += pitch_) {
            const int64_t count = std::min(piece_, filtered_.end - first);
            kernels.addAcross(below, bytes_ + first + pitch_, count);
            action(first, SumRows{above, row, below}, count);
            std::swap(above, row);
            std::swap(row, below);
        }
    }

  private:
    uint8_t *bytes_;
    int64_t pitch_;
    ByteRange filtered_;
    int64_t piece_;
    PixelBlock sums_;
};

}  // namespace fenlight
