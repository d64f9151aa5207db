// SPDX-License-Identifier: Zlib
#include <algorithm>
#include <array>
#include <cstring>

#include "fenlight/fx_smoothing.h"
#include "frame/random.h"
#include "fx/smoothing/masked_walk.h"

namespace fenlight {
namespace {

constexpr uint32_t kDraws = 80;
constexpr int32_t kSourceBelow = 1;
constexpr int32_t kBrightBelow = 4;  // any other draw leaves the neighbour
// Bytes whose draws are fetched under one lock of the generator.
constexpr int64_t kBatch = 1024;

// place(index, draw) for each byte of the mask that is not 0, in rising order.
template <typename Place>
void DrawForBatch(const uint8_t *mask, int64_t count, Place place) {
    std::array<int32_t, kBatch> draws;
    const int64_t wanted = count - std::count(mask, mask + count, uint8_t{0});
    RandomFill(draws.data(), wanted, 0, kDraws);
    const int32_t *draw = draws.data();
    for (int64_t i = 0; i < count; ++i)
        if (mask[i] != 0) place(i, *draw++);
}

template <typename Place>
void DrawForMask(const uint8_t *mask, int64_t count, Place place) {
    for (int64_t start = 0; start < count; start += kBatch)
        DrawForBatch(mask + start, std::min(kBatch, count - start),
                     [&](int64_t i, int32_t draw) { place(start + i, draw); });
}

// For bytes that get a draw as all do, but keep their value.
void SkipDraws(const FXHeader &mask, const ByteRange &range) {
    DrawForMask(mask.Pixels + range.begin, range.end - range.begin, [](int64_t, int32_t) {});
}

class FogEffect {
  public:
    FogEffect(const FXHeader &source, const FXHeader &fx, const FXHeader &mask) noexcept
        : source_(source),
          fx_(fx),
          mask_(mask),
          count_(WalkBytes(source, fx, mask).count),
          walk_(fx, count_),
          right_(walk_.LongestPiece()),
          painted_(NeedsOwnBlock() ? source.biSizeImage : 0) {}

    // False without memory.
    explicit operator bool() const noexcept { return walk_ && right_ && painted_; }

    void Run() const {
        ClearMaskBorder(mask_);
        const SmoothingKernels &kernels = ChooseSmoothingKernels();
        const ByteRange &filtered = walk_.Filtered();
        const int64_t end = std::max(filtered.begin, filtered.end);
        SkipDraws(mask_, {0, std::min(filtered.begin, count_)});
        walk_.ForEachPiece(kernels, [&](int64_t first, const SumRows &sums, int64_t count) {
            FindRightNeighbours(first, count);
            kernels.fogMasked(fx_.Pixels + first, mask_.Pixels + first, sums, right_.Bytes(), count);
        });
        SkipDraws(mask_, {end, count_});
    }

    // The new picture in the size of the source; black where it has no byte for that.
    void Paint(uintptr_t dc, int32_t x, int32_t y) const {
        if (!NeedsOwnBlock()) return PaintFX(dc, x, y, source_, fx_.Pixels);
        std::memcpy(painted_.Bytes(), fx_.Pixels, fx_.biSizeImage);
        std::memset(painted_.Bytes() + fx_.biSizeImage, 0, source_.biSizeImage - fx_.biSizeImage);
        PaintFX(dc, x, y, source_, painted_.Bytes());
    }

  private:
    bool NeedsOwnBlock() const { return source_.biSizeImage > fx_.biSizeImage; }

    void FindRightNeighbours(int64_t first, int64_t count) const {
        const uint8_t *shown = source_.Pixels + first;
        uint8_t *right = right_.Bytes();
        std::memcpy(right, fx_.Pixels + first + kFXPixelBytes, static_cast<size_t>(count));
        DrawForMask(mask_.Pixels + first, count, [=](int64_t i, int32_t draw) {
            if (draw < kBrightBelow) right[i] = draw < kSourceBelow ? shown[i] : 255;
        });
    }

    const FXHeader &source_, &fx_, &mask_;
    int64_t count_;
    MaskedWalk walk_;
    PixelBlock right_;
    PixelBlock painted_;
};

}  // namespace
}  // namespace fenlight

using namespace fenlight;

int32_t Fog(uintptr_t dc, int32_t x, int32_t y, uintptr_t source, uintptr_t fx, uintptr_t mask) noexcept {
    if (source == 0 || fx == 0 || mask == 0) return 0;
    const FogEffect effect(*FXFromHandle(source), *FXFromHandle(fx), *FXFromHandle(mask));
    if (!effect) return 0;
    effect.Run();
    effect.Paint(dc, x, y);
    return 0;
}
