// SPDX-License-Identifier: Zlib
// Follows a black line in a picture from pixel to pixel.
#include <cstring>
#include <iterator>

#include "fenlight/fx_filters.h"
#include "fx/filters/filter_kernels.h"
#include "fx/pixel_walks.h"

namespace fenlight {
namespace {

// Places count backwards from the last pixel of the picture, and so do columns and rows.
struct Place {
    int64_t at;
    int64_t column;
    int64_t row;
};

// The black pixels that are not visited yet, a byte for each pixel of the picture.
class BlackMap {
  public:
    BlackMap(const FXHeader &fx, uint8_t *entries)
        : entries_(entries), count_(WalkPixels(fx).count), width_(fx.biWidth) {
        ChooseFilters().mapBlack(entries_, fx.Pixels, count_);
    }

    // False where no pixel is black.
    bool FindFirst(Place &place) const {
        const void *first = std::memchr(entries_, 1, static_cast<size_t>(count_));
        if (first == nullptr) return false;
        const int64_t at = static_cast<const uint8_t *>(first) - entries_;
        place = {at, at % width_, at / width_};
        return true;
    }

    void Visit(const Place &place) { entries_[place.at] = 0; }

    // The first neighbour that is left, in the order that is part of the definition. Neighbours are taken on
    // the map as one line: beyond the end of a row stands the next row's first pixel, while the column counts
    // on. False where there is none.
    bool MoveOn(Place &place) const {
        static constexpr int8_t kColumns[] = {1, 1, 0, -1, -1, -1, 0, 1};
        static constexpr int8_t kRows[] = {0, 1, 1, 1, 0, -1, -1, -1};
        for (size_t i = 0; i < std::size(kColumns); ++i) {
            const int64_t next = place.at + kColumns[i] + kRows[i] * width_;
            if (next < 0 || next >= count_ || entries_[next] == 0) continue;
            place = {next, place.column + kColumns[i], place.row + kRows[i]};
            return true;
        }
        return false;
    }

  private:
    uint8_t *entries_;
    int64_t count_;
    int64_t width_;
};

struct TraceCounts {
    int64_t bytes;        // written to the list
    uint32_t sinceTaken;  // pixels since the last that was written
};

TraceCounts Trace(BlackMap &map, int64_t width, int16_t *points, int32_t step) {
    TraceCounts counts{};
    Place place{};
    for (bool isOn = map.FindFirst(place); isOn; isOn = map.MoveOn(place)) {
        map.Visit(place);
        if (++counts.sinceTaken != static_cast<uint32_t>(step)) continue;
        counts.sinceTaken = 0;
        *points++ = static_cast<int16_t>(width - place.column);
        *points++ = static_cast<int16_t>(place.row);
        counts.bytes += 4;
    }
    return counts;
}

}  // namespace
}  // namespace fenlight

using namespace fenlight;

int32_t PixelToMemory(uintptr_t fx, int16_t *destination, int32_t step) noexcept {
    if (fx == 0 || destination == nullptr) return 0;
    FXHeader &buffer = *FXFromHandle(fx);
    const int64_t pixels = WalkPixels(buffer).count;
    const PixelBlock block(pixels);
    if (!block) return 0;
    BlackMap map(buffer, block.Bytes());
    const TraceCounts counts = Trace(map, buffer.biWidth, destination, step);
    buffer.biXPelsPerMeter = static_cast<int32_t>(pixels);
    buffer.biYPelsPerMeter = static_cast<int32_t>(counts.bytes);
    buffer.biClrUsed = counts.sinceTaken;
    return buffer.biYPelsPerMeter;
}
