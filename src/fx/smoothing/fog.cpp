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
// Bytes whose draws are fetched under one lock of the generator.
constexpr int64_t kBatch = 1024;

// A draw for each byte of the mask that is not 0, in their order; what the others get has no meaning. No more
// than kBatch bytes.
void DrawForBatch(uint8_t *draws, const uint8_t *mask, int64_t count) {
    std::array<int32_t, kBatch + 1> numbers;
    const int64_t wanted = count - std::count(mask, mask + count, uint8_t{0});
    RandomFill(numbers.data(), wanted, 0, kDraws);
    numbers[static_cast<size_t>(wanted)] = 0;
    const int32_t *number = numbers.data();
    for (int64_t i = 0; i < count; ++i) {
        draws[i] = static_cast<uint8_t>(*number);
        number += mask[i] != 0 ? 1 : 0;
    }
}

void Draw(uint8_t *draws, const uint8_t *mask, int64_t count) {
    for (int64_t i = 0; i < count; i += kBatch)
        DrawForBatch(draws + i, mask + i, std::min(kBatch, count - i));
}

// Bytes that keep their value get a draw as all do.
void SkipDraws(const uint8_t *mask, int64_t begin, int64_t end) {
    std::array<uint8_t, kBatch> draws;
    for (int64_t i = begin; i < end; i += kBatch)
        DrawForBatch(draws.data(), mask + i, std::min(kBatch, end - i));
}

class FogEffect {
  public:
    FogEffect(const FXHeader &source, const FXHeader &fx, const FXHeader &mask) noexcept
        : source_(source),
          fx_(fx),
          mask_(mask),
          count_(WalkBytes(source, fx, mask).count),
          walk_(fx, count_),
          draws_(walk_.LongestPiece()),
          painted_(NeedsOwnBlock() ? source.biSizeImage : 0) {}

    // False without memory.
    explicit operator bool() const noexcept { return walk_ && draws_ && painted_; }

    void Run() const {
        ClearMaskBorder(mask_);
        const SmoothingKernels &kernels = ChooseSmoothingKernels();
        const ByteRange &filtered = walk_.Filtered();
        SkipDraws(mask_.Pixels, 0, std::min(filtered.begin, count_));
        walk_.ForEachPiece(kernels, [&](int64_t first, const SumRows &sums, int64_t count) {
            Draw(draws_.Bytes(), mask_.Pixels + first, count);
            kernels.fogMasked(fx_.Pixels + first, mask_.Pixels + first, sums,
                              {draws_.Bytes(), source_.Pixels + first}, count);
        });
        SkipDraws(mask_.Pixels, std::max(filtered.begin, filtered.end), count_);
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

    const FXHeader &source_, &fx_, &mask_;
    int64_t count_;
    MaskedWalk walk_;
    PixelBlock draws_;
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
