// SPDX-License-Identifier: Zlib
#include <algorithm>
#include <array>
#include <cstdint>

#include "fenlight/paths.h"

namespace fenlight {
namespace {

// Points are pairs of words in memory, x first. Sweeps go over points 1 to `last` of an axis.
struct Axis {
    uint16_t *words;
    int64_t last;
};

// Each point of a sweep waits for the one before it, so several passes run side by side, each two points
// behind the one before: there its neighbours are as that pass left them.
template <int kPasses>
class PassGroup {
  public:
    explicit PassGroup(const Axis &axis) noexcept : axis_(axis) { left_.fill(axis.words[0]); }

    // The first pass is at point `at`.
    [[gnu::always_inline]] void StepAll(int64_t at) noexcept {
        for (int pass = 0; pass < kPasses; ++pass) Step(pass, at - 2 * pass);
    }

    // Where some of the passes are outside the sweep.
    void StepSome(int64_t at) noexcept {
        for (int pass = 0; pass < kPasses; ++pass) {
            const int64_t point = at - 2 * pass;
            if (point >= 1 && point <= axis_.last) Step(pass, point);
        }
    }

    // Whether the last of the passes changed a point. If not, no further one does.
    bool HasChanged() const noexcept { return changes_ != 0; }

  private:
    [[gnu::always_inline]] void Step(int pass, int64_t point) noexcept {
        uint16_t *word = axis_.words + 2 * point;
        const auto number = static_cast<size_t>(pass);
        const uint32_t old = word[0];
        left_[number] = (left_[number] + old + word[2]) / 3;
        word[0] = static_cast<uint16_t>(left_[number]);
        if (pass == kPasses - 1) changes_ |= left_[number] ^ old;
    }

    const Axis axis_;
    std::array<uint32_t, kPasses> left_;
    uint32_t changes_ = 0;
};

// False if nothing is left to change.
template <int kPasses>
bool RunPasses(const Axis &x, const Axis &y) noexcept {
    constexpr int64_t kLag = 2 * (kPasses - 1);
    PassGroup<kPasses> xGroup(x), yGroup(y);
    int64_t at = 1;
    const auto stepSome = [&](int64_t behind) {
        for (; at < behind; ++at) {
            xGroup.StepSome(at);
            yGroup.StepSome(at);
        }
    };
    stepSome(1 + kLag);
    for (; at <= std::min(x.last, y.last); ++at) {
        xGroup.StepAll(at);
        yGroup.StepAll(at);
    }
    stepSome(std::max(x.last, y.last) + kLag + 1);
    return xGroup.HasChanged() || yGroup.HasChanged();
}

// At least three points.
void Smooth(uint16_t *words, int64_t points, int32_t passes) noexcept {
    const Axis x{words, std::max<int64_t>(points - 3, 1)}, y{words + 1, points - 2};
    for (; passes >= 4; passes -= 4)
        if (!RunPasses<4>(x, y)) return;
    for (; passes > 0; --passes) RunPasses<1>(x, y);
}

}  // namespace
}  // namespace fenlight

int32_t SmoothPath(int16_t *pathArray, int32_t byteCount, int32_t passes) noexcept {
    constexpr int32_t kPointBytes = 4;
    if (pathArray == nullptr || byteCount < 3 * kPointBytes || passes == 0) return 0;
    fenlight::Smooth(reinterpret_cast<uint16_t *>(pathArray), byteCount / kPointBytes,
                     passes < 0 ? 1 : passes);
    return 0;
}
