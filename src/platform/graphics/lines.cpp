// SPDX-License-Identifier: Zlib
#include "platform/graphics/lines.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "platform/raster/raster.h"

namespace fenlight::platform {
namespace {

// Products of a step number and a length reach 2^66.
__extension__ using Wide = __int128;

constexpr double kFlatness = 0.25;  // pixels

// Step i of a line stands at major = majorStart + i * majorStep and
// minor = minorStart + minorStep * floor((2 * i * minorLength + bias) / (2 * majorLength)).
// The bias rounds a half towards the smaller coordinate whatever the direction.
struct LineWalk {
    bool isSteep;  // the longer axis is y
    int64_t majorStart, minorStart;
    int64_t majorLength, minorLength;
    int majorStep, minorStep;

    LineWalk(POINT from, POINT to) {
        const int64_t width = int64_t{to.x} - from.x;
        const int64_t height = int64_t{to.y} - from.y;
        isSteep = std::abs(height) > std::abs(width);
        majorStart = isSteep ? from.y : from.x;
        minorStart = isSteep ? from.x : from.y;
        majorLength = std::abs(isSteep ? height : width);
        minorLength = std::abs(isSteep ? width : height);
        majorStep = (isSteep ? height : width) < 0 ? -1 : 1;
        minorStep = (isSteep ? width : height) < 0 ? -1 : 1;
    }

    int64_t Bias() const { return minorStep > 0 ? majorLength - 1 : majorLength; }
    // The first step whose minor offset is `offset` or more. Only for lines that are not parallel to an axis.
    int64_t FirstStepAt(int64_t offset) const {
        const Wide needed = Wide{2} * majorLength * offset - Bias();
        if (needed <= 0) return 0;
        const Wide step = (needed + 2 * minorLength - 1) / (2 * minorLength);
        return static_cast<int64_t>(std::min<Wide>(step, majorLength));
    }
};

// Steps from `first` up to, not including, `end`.
struct StepRange {
    int64_t first, end;
};

StepRange Intersect(StepRange one, StepRange other) {
    return {std::max(one.first, other.first), std::min(one.end, other.end)};
}

// Offsets of at least 0 along one direction at which `start + step * offset` lies in 0 to size - 1.
StepRange OffsetsInside(int64_t start, int step, int64_t size) {
    return step > 0 ? StepRange{-start, size - start} : StepRange{start - size + 1, start + 1};
}

StepRange VisibleSteps(const LineWalk &walk, const PixelView &view) {
    const int64_t majorSize = walk.isSteep ? view.height : view.width;
    const int64_t minorSize = walk.isSteep ? view.width : view.height;
    const StepRange steps =
        Intersect({0, walk.majorLength}, OffsetsInside(walk.majorStart, walk.majorStep, majorSize));
    const StepRange minor = OffsetsInside(walk.minorStart, walk.minorStep, minorSize);
    if (walk.minorLength == 0) return minor.first <= 0 && minor.end > 0 ? steps : StepRange{0, 0};
    return Intersect(steps, {walk.FirstStepAt(minor.first), walk.FirstStepAt(minor.end)});
}

void DrawSteps(const PixelView &view, const LineWalk &walk, StepRange steps, COLORREF colour) {
    const Wide scaled = Wide{2} * steps.first * walk.minorLength + walk.Bias();
    const int64_t wholeStep = 2 * walk.majorLength;
    int64_t minor = walk.minorStart + walk.minorStep * static_cast<int64_t>(scaled / wholeStep);
    int64_t error = static_cast<int64_t>(scaled % wholeStep);
    int64_t major = walk.majorStart + walk.majorStep * steps.first;
    for (int64_t step = steps.first; step < steps.end; ++step, major += walk.majorStep) {
        const auto x = static_cast<int32_t>(walk.isSteep ? minor : major);
        const auto y = static_cast<int32_t>(walk.isSteep ? major : minor);
        WritePixel(view, x, y, colour);
        error += 2 * walk.minorLength;
        if (error >= wholeStep) {
            error -= wholeStep;
            minor += walk.minorStep;
        }
    }
}

// Lines that keep the chain within the flatness of the curve: the distance of a chord is at most an eighth of
// the largest second derivative times the square of the parameter's step.
int32_t CountChords(std::span<const POINT, 4> points) {
    double largest = 0;
    for (size_t first = 0; first < 2; ++first) {
        const double x =
            static_cast<double>(points[first].x) - 2.0 * points[first + 1].x + points[first + 2].x;
        const double y =
            static_cast<double>(points[first].y) - 2.0 * points[first + 1].y + points[first + 2].y;
        largest = std::max(largest, std::hypot(x, y));
    }
    return std::max(1, static_cast<int32_t>(std::ceil(std::sqrt(6.0 * largest / (8.0 * kFlatness)))));
}

int32_t Blend(double t, double start, double control, double otherControl, double end) {
    const double u = 1 - t;
    const double value =
        u * u * u * start + 3 * u * u * t * control + 3 * u * t * t * otherControl + t * t * t * end;
    // The curve lies within its control points, but the sum of four rounded products may not.
    return static_cast<int32_t>(std::clamp(std::floor(value + 0.5), -2147483648.0, 2147483647.0));
}

POINT PointAt(std::span<const POINT, 4> points, double t) {
    return {Blend(t, points[0].x, points[1].x, points[2].x, points[3].x),
            Blend(t, points[0].y, points[1].y, points[2].y, points[3].y)};
}

}  // namespace

void DrawLine(const PixelView &view, POINT from, POINT to, COLORREF colour) noexcept {
    const LineWalk walk(from, to);
    const StepRange steps = VisibleSteps(walk, view);
    if (steps.first < steps.end) DrawSteps(view, walk, steps, colour);
}

void DrawBezier(const PixelView &view, std::span<const POINT, 4> points, COLORREF colour) noexcept {
    const int32_t chords = CountChords(points);
    POINT from = points[0];
    for (int32_t chord = 1; chord <= chords; ++chord) {
        const POINT to = chord == chords ? points[3] : PointAt(points, static_cast<double>(chord) / chords);
        DrawLine(view, from, to, colour);
        from = to;
    }
}

}  // namespace fenlight::platform
