// SPDX-License-Identifier: Zlib
#include "fx/geometry/rotation.h"

#include <algorithm>
#include <cstring>

#include "fenlight/fx_geometry.h"
#include "fx/geometry/angle_tables.h"
#include "fx/geometry/geometry_kernels.h"
#include "fx/geometry/landing.h"
#include "fx/pixel_walks.h"

namespace fenlight {
namespace {

// Below this sum of both sizes no coordinate leaves 32 bits: 1023 times it stays under 2^31.
constexpr int64_t kWrappingSize = int64_t{1} << 21;
constexpr int64_t kOffsetsAtOnce = 128;

// The target: all that the walk needs to know, with every number in 32 bits that wrap.
struct Frame {
    uint8_t *result;
    int64_t spare;  // place in `result` for six bytes that nobody looks at
    int64_t width, height;
    uint32_t sine, cosine;
    uint32_t originX, originY;

    LandingLine LineOf(int64_t row) const {
        const auto y = static_cast<uint32_t>(row);
        const auto pitch = static_cast<uint32_t>(kFXPixelBytes * width);
        return {0 - sine * y, cosine * y, cosine, sine, kFXPixelBytes, pitch, originX * 3 + originY * pitch};
    }
    // Sizes whose coordinates do not wrap.
    PixelSpan SpanOf(int64_t row) const {
        const LandingLine line = LineOf(row);
        const int64_t x = static_cast<int32_t>(originX), y = static_cast<int32_t>(originY);
        return LandingSpan(static_cast<int32_t>(line.x), static_cast<int32_t>(line.stepX), -x,
                           width - 2 - x) &
               LandingSpan(static_cast<int32_t>(line.y), static_cast<int32_t>(line.stepY), -y,
                           height - 1 - y);
    }
};

uint32_t Shifted(uint32_t product) { return static_cast<uint32_t>(static_cast<int32_t>(product) >> 10); }

Frame MakeFrame(const FXHeader &background, uint8_t *result, int32_t degrees) {
    const Direction direction = DirectionOf(360 - degrees % 360);
    const auto sine = static_cast<uint32_t>(direction.sine), cosine = static_cast<uint32_t>(direction.cosine);
    const auto x = static_cast<uint32_t>(background.biWidth) >> 1;
    const auto y = static_cast<uint32_t>(background.biHeight) >> 1;
    return {result,
            background.biSizeImage,
            background.biWidth,
            background.biHeight,
            sine,
            cosine,
            x - (Shifted(cosine * x) - Shifted(sine * y)),
            y - (Shifted(sine * x) + Shifted(cosine * y))};
}

uint32_t LoadWord(const uint8_t *bytes) {
    uint32_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

// A pixel twice, side by side; the highest byte of `pixel` is of no account.
void StoreTwice(uint8_t *bytes, uint32_t pixel) {
    const uint32_t first = (pixel & 0xFFFFFF) | pixel << 24;
    const auto rest = static_cast<uint16_t>(pixel >> 8);
    std::memcpy(bytes, &first, sizeof first);
    std::memcpy(bytes + sizeof first, &rest, sizeof rest);
}

// One byte behind the last pixel is read, which the last pixel of a buffer may not have. Pixels of the key
// colour, if that is one, go where nobody looks: which pixel has it cannot be foretold, and a wrong guess
// costs more than the two stores.
template <bool isKeyed>
void DrawSpan(const Frame &frame, const LandingLine &line, const uint8_t *pixels, int64_t count,
              uint32_t key) {
    const auto findLandings = CurrentGeometryKernels().findLandings;
    int32_t offsets[kOffsetsAtOnce];
    for (int64_t done = 0; done < count; done += kOffsetsAtOnce) {
        const int64_t piece = std::min(kOffsetsAtOnce, count - done);
        findLandings(line.From(done), offsets, piece);
        for (int64_t i = 0; i < piece; ++i, pixels += kFXPixelBytes) {
            const uint32_t pixel = LoadWord(pixels);
            int64_t offset = offsets[i];
            if (isKeyed && (pixel & 0xFFFFFF) == key) offset = frame.spare;
            StoreTwice(frame.result + offset, pixel);
        }
    }
}

uint32_t PixelAt(const uint8_t *bytes) {
    return uint32_t{bytes[0]} | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16;
}

// Coordinates may wrap, so nothing is known about which pixels of a row land.
void DrawWrapping(const Frame &frame, const uint8_t *pixels, int64_t count, bool isKeyed, uint32_t key) {
    for (int64_t i = 0; i < count && i < frame.width * frame.height; ++i) {
        const uint32_t pixel = PixelAt(pixels + kFXPixelBytes * i);
        if (isKeyed && pixel == key) continue;
        const LandingLine line = frame.LineOf(i / frame.width).From(i % frame.width);
        const auto x = static_cast<int32_t>(Shifted(line.x) + frame.originX);
        const auto y = static_cast<int32_t>(Shifted(line.y) + frame.originY);
        if (x < 0 || x >= frame.width - 1 || y < 0 || y >= frame.height) continue;
        StoreTwice(frame.result + kFXPixelBytes * (y * frame.width + x), pixel);
    }
}

}  // namespace

void DrawTurned(const FXHeader &background, const FXHeader &fx, uint8_t *result, int32_t degrees,
                bool isKeyed) noexcept {
    const Frame frame = MakeFrame(background, result, degrees);
    const int64_t pixels = WalkPixels(fx).count;
    if (pixels == 0) return;
    const uint8_t *const last = fx.Pixels + kFXPixelBytes * (pixels - 1);
    const uint32_t key = PixelAt(last);
    if (frame.width + frame.height >= kWrappingSize)
        return DrawWrapping(frame, fx.Pixels, pixels, isKeyed, key);

    const uint8_t lastWord[4]{last[0], last[1], last[2], 0};
    const auto drawSpan = isKeyed ? DrawSpan<true> : DrawSpan<false>;
    const auto spanOf = [&](int64_t row) {
        return frame.SpanOf(row) & PixelSpan{0, std::min(frame.width, pixels - row * frame.width)};
    };
    const auto draw = [&](int64_t row, PixelSpan span) {
        const int64_t first = row * frame.width + span.begin;
        const int64_t count = span.end - span.begin, words = std::min(count, pixels - 1 - first);
        const LandingLine line = frame.LineOf(row).From(span.begin);
        drawSpan(frame, line, fx.Pixels + kFXPixelBytes * first, words, key);
        if (words < count) drawSpan(frame, line.From(words), lastWord, 1, key);
    };
    DrawInTiles(frame.height, kTileColumns, spanOf, draw);
}

}  // namespace fenlight

using namespace fenlight;

int32_t Rotate(uintptr_t dc, int32_t x, int32_t y, uintptr_t background, uintptr_t fx, int32_t angle,
               int32_t mode) noexcept {
    if (dc == 0 || background == 0 || fx == 0) return 0;
    const FXHeader &behind = *FXFromHandle(background);
    const PixelBlock result(int64_t{behind.biSizeImage} + 8);
    if (!result) return 0;
    std::memcpy(result.Bytes(), behind.Pixels, behind.biSizeImage);
    DrawTurned(behind, *FXFromHandle(fx), result.Bytes(), angle, mode == -1);
    PaintFX(dc, x, y, behind, result.Bytes());
    return 0;
}
