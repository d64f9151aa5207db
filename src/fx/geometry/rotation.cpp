// SPDX-License-Identifier: Zlib
#include "fx/geometry/rotation.h"

#include <algorithm>
#include <cstring>

#include "fenlight/fx_geometry.h"
#include "fx/geometry/angle_tables.h"
#include "fx/geometry/geometry_kernels.h"
#include "fx/geometry/landing.h"
#include "fx/pixel_walks.h"
#include "platform/graphics/surface_access.h"
#include "platform/graphics/surface_painting.h"

namespace fenlight {
namespace {

using platform::PixelFormat;
using platform::PixelView;

// Below this sum of both sizes no coordinate leaves 32 bits: 1023 times it stays under 2^31.
constexpr int64_t kWrappingSize = int64_t{1} << 21;
constexpr int64_t kOffsetsAtOnce = 128;

uint32_t Shifted(uint32_t product) { return static_cast<uint32_t>(static_cast<int32_t>(product) >> 10); }

// The target and where pixels land in it, with coordinates of 32 bits that wrap.
struct Frame {
    Frame(const PixelView &view, int32_t degrees)
        : pixels(view.topRow),
          pitch(view.pitch),
          pixelBytes(view.format == PixelFormat::Bgrx32 ? 4 : 3),
          width(view.width),
          height(view.height) {
        const Direction direction = DirectionOf(360 - degrees % 360);
        sine = static_cast<uint32_t>(direction.sine);
        cosine = static_cast<uint32_t>(direction.cosine);
        const auto x = static_cast<uint32_t>(width) >> 1, y = static_cast<uint32_t>(height) >> 1;
        originX = x - (Shifted(cosine * x) - Shifted(sine * y));
        originY = y - (Shifted(sine * x) + Shifted(cosine * y));
    }

    LandingLine LineOf(int64_t row) const {
        const auto y = static_cast<uint32_t>(row), bytes = static_cast<uint32_t>(pixelBytes);
        const auto rowBytes = static_cast<uint32_t>(pitch);
        return {
            0 - sine * y, cosine * y, cosine, sine, bytes, rowBytes, originX * bytes + originY * rowBytes};
    }
    // Sizes whose coordinates do not wrap.
    PixelSpan SpanOf(const LandingLine &line) const {
        const int64_t x = static_cast<int32_t>(originX), y = static_cast<int32_t>(originY);
        return LandingSpan(static_cast<int32_t>(line.x), static_cast<int32_t>(line.stepX), -x,
                           width - 2 - x) &
               LandingSpan(static_cast<int32_t>(line.y), static_cast<int32_t>(line.stepY), -y,
                           height - 1 - y);
    }

    uint8_t *pixels;
    ptrdiff_t pitch;
    int64_t pixelBytes, width, height;
    uint32_t sine, cosine;
    uint32_t originX, originY;
};

uint32_t LoadWord(const uint8_t *bytes) {
    uint32_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

uint32_t LoadPixel(const uint8_t *bytes) {
    return uint32_t{bytes[0]} | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16;
}

// A pixel twice, side by side.
template <int pixelBytes>
void StoreTwice(uint8_t *place, uint32_t pixel) {
    if (pixelBytes == 4) {
        const uint64_t both = pixel | uint64_t{pixel} << 32;
        std::memcpy(place, &both, sizeof both);
        return;
    }
    const uint32_t first = pixel | pixel << 24;
    const auto rest = static_cast<uint16_t>(pixel >> 8);
    std::memcpy(place, &first, sizeof first);
    std::memcpy(place + sizeof first, &rest, sizeof rest);
}

// One byte behind the last pixel is read, which the last pixel of a buffer may not have. Pixels of the key
// colour, if that is one, go where nobody looks: which pixel has it cannot be foretold, and a wrong guess
// costs more than a store.
template <int pixelBytes, bool isKeyed>
void DrawSpan(uint8_t *target, const LandingLine &line, const uint8_t *pixels, int64_t count, uint32_t key) {
    const auto findLandings = CurrentGeometryKernels().findLandings;
    int32_t offsets[kOffsetsAtOnce];
    uint8_t spare[8];
    for (int64_t done = 0; done < count; done += kOffsetsAtOnce) {
        const int64_t piece = std::min(kOffsetsAtOnce, count - done);
        findLandings(line.From(done), offsets, piece);
        for (int64_t i = 0; i < piece; ++i, pixels += kFXPixelBytes) {
            const uint32_t pixel = LoadWord(pixels) & 0xFFFFFF;
            StoreTwice<pixelBytes>(isKeyed && pixel == key ? spare : target + offsets[i], pixel);
        }
    }
}

using SpanDrawer = void (*)(uint8_t *, const LandingLine &, const uint8_t *, int64_t, uint32_t);

SpanDrawer ChooseDrawer(int64_t pixelBytes, bool isKeyed) {
    if (pixelBytes == 4) return isKeyed ? DrawSpan<4, true> : DrawSpan<4, false>;
    return isKeyed ? DrawSpan<3, true> : DrawSpan<3, false>;
}

// Coordinates may wrap, so nothing is known about which pixels of a row land.
void DrawWrapping(const Frame &frame, const uint8_t *pixels, int64_t count, bool isKeyed, uint32_t key) {
    for (int64_t i = 0; i < count && i < frame.width * frame.height; ++i) {
        const uint32_t pixel = LoadPixel(pixels + kFXPixelBytes * i);
        if (isKeyed && pixel == key) continue;
        const LandingLine line = frame.LineOf(i / frame.width).From(i % frame.width);
        const auto x = static_cast<int32_t>(Shifted(line.x) + frame.originX);
        const auto y = static_cast<int32_t>(Shifted(line.y) + frame.originY);
        if (x < 0 || x >= frame.width - 1 || y < 0 || y >= frame.height) continue;
        uint8_t *const place = frame.pixels + y * frame.pitch + x * frame.pixelBytes;
        (frame.pixelBytes == 4 ? StoreTwice<4> : StoreTwice<3>)(place, pixel);
    }
}

PixelView PackedView(const FXHeader &fx, uint8_t *pixels) {
    PixelView view;
    view.topRow = pixels;
    view.pitch = static_cast<ptrdiff_t>(kFXPixelBytes * fx.biWidth);
    view.width = fx.biWidth;
    view.height = static_cast<int32_t>(WalkRows(fx).rows);
    view.format = PixelFormat::Bgr24;
    return view;
}

// Where the whole picture lies on the surface with rows as they are painted, it is composed there: nobody
// sees the surface before it is unlocked. False, with nothing drawn, elsewhere.
bool DrawOnSurface(platform::SurfaceAccess &surface, int32_t x, int32_t y, const FXHeader &background,
                   const FXHeader &fx, int32_t degrees, bool isKeyed) {
    PixelView view = surface.View();
    const BufferRows<1> rows = WalkRows(background);
    const bool isInside = x >= 0 && y >= 0 && rows.width <= view.width - x && rows.rows <= view.height - y;
    const bool isAsPainted = background.biWidth % 4 == 0 && rows.rows == background.biHeight;
    if (view.format != PixelFormat::Bgrx32 || !isInside || !isAsPainted) return false;
    platform::PaintOnSurface(view, x, y, PackedView(background, background.Pixels));
    view.topRow = view.Row(y) + 4 * x;
    view.width = background.biWidth;
    view.height = background.biHeight;
    DrawTurned(view, fx, degrees, isKeyed);
    surface.MarkChanged();
    return true;
}

}  // namespace

void DrawTurned(const PixelView &target, const FXHeader &fx, int32_t degrees, bool isKeyed) noexcept {
    const Frame frame(target, degrees);
    const int64_t pixels = WalkPixels(fx).count;
    if (pixels == 0) return;
    const uint8_t *const last = fx.Pixels + kFXPixelBytes * (pixels - 1);
    const uint32_t key = LoadPixel(last);
    if (frame.width + frame.height >= kWrappingSize)
        return DrawWrapping(frame, fx.Pixels, pixels, isKeyed, key);

    const uint8_t lastWord[4]{last[0], last[1], last[2], 0};
    const SpanDrawer draw = ChooseDrawer(frame.pixelBytes, isKeyed);
    for (int64_t row = 0; row < frame.height && row * frame.width < pixels; ++row) {
        const int64_t first = row * frame.width;
        const LandingLine line = frame.LineOf(row);
        const PixelSpan span = frame.SpanOf(line) & PixelSpan{0, std::min(frame.width, pixels - first)};
        const int64_t words = std::min(span.end, pixels - 1 - first);
        draw(frame.pixels, line.From(span.begin), fx.Pixels + kFXPixelBytes * (first + span.begin),
             words - span.begin, key);
        if (words < span.end && !span.IsEmpty()) draw(frame.pixels, line.From(words), lastWord, 1, key);
    }
}

}  // namespace fenlight

using namespace fenlight;

int32_t Rotate(uintptr_t dc, int32_t x, int32_t y, uintptr_t background, uintptr_t fx, int32_t angle,
               int32_t mode) noexcept {
    if (dc == 0 || background == 0 || fx == 0) return 0;
    const FXHeader &behind = *FXFromHandle(background), &picture = *FXFromHandle(fx);
    {
        platform::SurfaceAccess surface(dc);
        if (!surface || DrawOnSurface(surface, x, y, behind, picture, angle, mode == -1)) return 0;
    }
    const PixelBlock result(behind.biSizeImage);
    if (!result) return 0;
    std::memcpy(result.Bytes(), behind.Pixels, behind.biSizeImage);
    DrawTurned(PackedView(behind, result.Bytes()), picture, angle, mode == -1);
    PaintFX(dc, x, y, behind, result.Bytes());
    return 0;
}
