// SPDX-License-Identifier: Zlib
// Free rotation from one context to another, with both surfaces locked once. Rows and pixels are taken from
// the last to the first, so rows and columns here count from the right bottom corner of the rectangle.
#include <algorithm>
#include <cstring>

#include "fenlight/fx_geometry.h"
#include "fx/geometry/angle_tables.h"
#include "fx/geometry/geometry_kernels.h"
#include "fx/geometry/landing.h"
#include "platform/graphics/surface_access.h"

namespace fenlight {
namespace {

using platform::PixelFormat;
using platform::PixelView;

// Up to here a product with a sine stays within 32 bits.
constexpr int32_t kMostPixels = 1 << 21;
constexpr int64_t kOffsetsAtOnce = 128;

bool Contains(const PixelView &view, int64_t x, int64_t y) {
    return x >= 0 && y >= 0 && x < view.width && y < view.height;
}

uint32_t *WordAt(const PixelView &view, int64_t x, int64_t y) {
    return reinterpret_cast<uint32_t *>(view.topRow + y * view.pitch) + x;
}

// As GetPixel and SetPixel.
COLORREF ColourAt(const PixelView &view, int64_t x, int64_t y) {
    if (!Contains(view, x, y)) return CLR_INVALID;
    if (view.format == PixelFormat::Bgrx32) return platform::SwapRedBlue(*WordAt(view, x, y));
    return platform::ReadSurfacePixel(view, static_cast<int32_t>(x), static_cast<int32_t>(y));
}

void DrawPixel(const PixelView &view, int64_t x, int64_t y, COLORREF colour) {
    if (!Contains(view, x, y)) return;
    if (view.format == PixelFormat::Bgrx32) {
        *WordAt(view, x, y) = platform::SwapRedBlue(colour);
        return;
    }
    platform::WriteSurfacePixel(view, static_cast<int32_t>(x), static_cast<int32_t>(y), colour);
}

int32_t Shifted(uint32_t product) { return static_cast<int32_t>(product) >> 10; }

struct Corner {
    int32_t x, y;
};

class ImageTurn {
  public:
    ImageTurn(const platform::SurfacePairAccess &surfaces, int32_t width, int32_t height, Corner source,
              Direction direction, Corner origin, bool isKeyed, COLORREF key)
        : target_(surfaces.TargetView()),
          source_(surfaces.SourceView()),
          areWords_(target_.format == PixelFormat::Bgrx32 && source_.format == PixelFormat::Bgrx32),
          columns_(std::min(width, kMostPixels) - 1),
          rows_(std::min(height, kMostPixels) - 1),
          corner_(source),
          direction_(direction),
          origin_(origin),
          isKeyed_(isKeyed),
          key_(key) {}

    void Draw() const {
        for (int32_t row = 0; row < rows_; ++row) DrawRow(LineAt(row));
    }

  private:
    // A row of the rectangle, and what it adds to where its pixels land.
    struct Line {
        int64_t sourceY;
        int64_t x, y;
    };

    Line LineAt(int64_t row) const {
        const int64_t y = rows_ - row;
        return {y + corner_.y, origin_.x - (direction_.sine * y >> 10),
                origin_.y + (direction_.cosine * y >> 10)};
    }

    // The pixels whose right copy lands at `lowest` to `highest` of a line of the target.
    PixelSpan Landing(const Line &line, int64_t lowest, int64_t highest) const {
        const int64_t sine = direction_.sine, cosine = direction_.cosine;
        return LandingSpan(cosine * columns_, -cosine, lowest - line.x, highest - line.x) &
               LandingSpan(sine * columns_, -sine, -line.y, target_.height - 1 - line.y);
    }
    // With one copy at least, and with both.
    PixelSpan Touched(const Line &line) const { return Landing(line, 0, target_.width); }
    PixelSpan Whole(const Line &line) const { return Landing(line, 1, target_.width - 1); }

    PixelSpan InSource(const Line &line) const {
        if (line.sourceY < 0 || line.sourceY >= source_.height) return {0, 0};
        const int64_t end = int64_t{columns_} + corner_.x + 1;
        return {end - source_.width, end};
    }

    void DrawRow(const Line &line) const {
        const PixelSpan touched = Touched(line) & PixelSpan{0, columns_};
        if (touched.IsEmpty()) return;
        const PixelSpan words = areWords_ ? Whole(line) & InSource(line) & touched : PixelSpan{0, 0};
        if (words.IsEmpty()) return DrawSingly(line, touched);
        DrawSingly(line, {touched.begin, words.begin});
        if (isKeyed_)
            DrawWords<true>(line, words);
        else
            DrawWords<false>(line, words);
        DrawSingly(line, {words.end, touched.end});
    }

    void DrawSingly(const Line &line, PixelSpan span) const {
        for (int64_t i = span.begin; i < span.end; ++i) {
            const int64_t column = columns_ - i;
            const COLORREF colour = ColourAt(source_, column + corner_.x, line.sourceY);
            if (isKeyed_ && colour == key_) continue;
            const int64_t x = (direction_.cosine * column >> 10) + line.x;
            const int64_t y = (direction_.sine * column >> 10) + line.y;
            DrawPixel(target_, x, y, colour);
            DrawPixel(target_, x - 1, y, colour);
        }
    }

    LandingLine WordLine(const Line &line) const {
        const auto sine = static_cast<uint32_t>(direction_.sine),
                   cosine = static_cast<uint32_t>(direction_.cosine);
        const auto columns = static_cast<uint32_t>(columns_), pitch = static_cast<uint32_t>(target_.pitch);
        const auto x = static_cast<uint32_t>(line.x), y = static_cast<uint32_t>(line.y);
        return {cosine * columns, sine * columns, 0 - cosine, 0 - sine, 4, pitch, (x - 1) * 4 + y * pitch};
    }

    // All pixels of the span are in the source and land with both copies.
    template <bool isKeyed>
    void DrawWords(const Line &line, PixelSpan span) const {
        const auto findLandings = CurrentGeometryKernels().findLandings;
        const LandingLine landing = WordLine(line);
        const uint32_t key = key_ == CLR_INVALID ? CLR_INVALID : platform::SwapRedBlue(key_);
        int32_t offsets[kOffsetsAtOnce];
        uint64_t spare;
        for (int64_t done = span.begin; done < span.end; done += kOffsetsAtOnce) {
            const int64_t count = std::min(kOffsetsAtOnce, span.end - done);
            findLandings(landing.From(done), offsets, count);
            const uint32_t *pixel = WordAt(source_, columns_ - done + corner_.x, line.sourceY);
            for (int64_t i = 0; i < count; ++i) {
                const uint32_t word = *(pixel - i) & 0xFFFFFF;
                const uint64_t both = word | uint64_t{word} << 32;
                uint8_t *place = target_.topRow + offsets[i];
                // Which pixel has the key colour cannot be foretold, and a wrong guess costs more.
                if (isKeyed && word == key) place = reinterpret_cast<uint8_t *>(&spare);
                std::memcpy(place, &both, sizeof both);
            }
        }
    }

    const PixelView target_, source_;
    const bool areWords_;
    const int32_t columns_, rows_;
    const Corner corner_;
    const Direction direction_;
    const Corner origin_;  // where pixel (0, 0) of the rectangle lands
    const bool isKeyed_;
    const COLORREF key_;
};

// The pixel in the middle stays in the middle of the rectangle at (x, y). In 32 bits that wrap.
Corner OriginOf(int32_t x, int32_t y, int32_t width, int32_t height, Direction direction) {
    const auto sine = static_cast<uint32_t>(direction.sine), cosine = static_cast<uint32_t>(direction.cosine);
    const auto middleX = static_cast<uint32_t>(width >> 1), middleY = static_cast<uint32_t>(height >> 1);
    const auto turnedX =
        static_cast<uint32_t>(Shifted(cosine * middleX)) - static_cast<uint32_t>(Shifted(sine * middleY));
    const auto turnedY =
        static_cast<uint32_t>(Shifted(sine * middleX)) + static_cast<uint32_t>(Shifted(cosine * middleY));
    return {static_cast<int32_t>(static_cast<uint32_t>(x) + middleX - turnedX),
            static_cast<int32_t>(static_cast<uint32_t>(y) + middleY - turnedY)};
}

}  // namespace
}  // namespace fenlight

using namespace fenlight;

uint32_t RotateImage(uintptr_t dc, int32_t x, int32_t y, int32_t width, int32_t height, uintptr_t sourceDC,
                     int32_t sourceX, int32_t sourceY, int32_t angle, int32_t mode) noexcept {
    const int64_t keyX = int64_t{sourceX} + width - 1;
    if (width >= 2 && height >= 2) {
        platform::SurfacePairAccess surfaces(dc, sourceDC);
        if (surfaces.TargetView().topRow != nullptr) {
            const COLORREF key = ColourAt(surfaces.SourceView(), keyX, sourceY);
            const Direction direction = DirectionOf(angle);
            const ImageTurn turn(surfaces, width, height, {sourceX, sourceY}, direction,
                                 OriginOf(x, y, width, height, direction), mode == -1, key);
            turn.Draw();
            surfaces.MarkTargetChanged();
            return key;
        }
    }
    // Nothing to be drawn, or nothing to draw on.
    return GetPixel(sourceDC, static_cast<int32_t>(std::clamp<int64_t>(keyX, INT32_MIN, INT32_MAX)), sourceY);
}
