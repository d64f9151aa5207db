// SPDX-License-Identifier: Zlib
#include "fenlight/fx_smoothing.h"
#include "fx/pixel_walks.h"

namespace fenlight {
namespace {

// Two words that the picture's own bytes keep going.
class RustleGenerator {
  public:
    explicit RustleGenerator(uint32_t start) : state_(start) {}

    bool Draw(uint8_t byte) {
        state_ = (state_ & ~0xFFu) | ((state_ + byte) & 0xFF);
        state_ += 87 + carry_;
        const bool isWhite = (state_ & 1) != 0;
        const auto halved = static_cast<uint32_t>(static_cast<int32_t>(state_) >> 1);
        const uint64_t product = uint64_t{halved} * carry_;
        state_ = static_cast<uint32_t>(product);
        carry_ = static_cast<uint32_t>(product >> 32) + 23;
        return isWhite;
    }

  private:
    uint32_t state_;
    uint32_t carry_ = 0;
};

void RustlePixels(const FXHeader &fx) {
    const BufferRun<1> run = WalkPixels(fx);
    // Reaches the first pixel only.
    const uint64_t start = static_cast<uint64_t>(2 * run.count) + reinterpret_cast<uintptr_t>(fx.Pixels) +
                           reinterpret_cast<uintptr_t>(&fx) + GetTickCount();
    RustleGenerator generator(static_cast<uint32_t>(start));
    uint8_t *pixel = run.starts[0];
    for (int64_t i = 0; i < run.count; ++i, pixel += 3)
        pixel[0] = pixel[1] = pixel[2] = generator.Draw(pixel[0]) ? 255 : 0;
}

}  // namespace
}  // namespace fenlight

using namespace fenlight;

int32_t Rustle(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx) noexcept {
    return ChangeAndPaint(dc, x, y, fx, RustlePixels);
}
