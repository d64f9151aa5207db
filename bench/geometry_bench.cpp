// SPDX-License-Identifier: Zlib
// Mirrors and turns beside OpenCV's best way to the same picture and the plain loops of their definition.
// Mirrors are measured on the buffer alone. Free rotation has no outcome without its paint, which is in ours
// and in the plain loop, but not in OpenCV's row unless it says so. Rolls are by 1000 bytes and, "Far", by 38
// %.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <vector>

#include "fenlight/fx_geometry.h"
#include "fenlight/images.h"
#include "fx/fx_buffer.h"
#include "fx/geometry/angle_tables.h"
#include "platform/graphics/screen_context.h"

#if BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace fenlight {
namespace {

constexpr int32_t kAngle = 30;
constexpr uint32_t kKey = 0xFF00FF;

// Noise, a good half of it in runs of the key colour, as sprites have them; the last pixel has it too.
void FillWithNoise(FXHeader &fx) {
    std::mt19937 random(5);
    const int32_t pixels = fx.biWidth * fx.biHeight;
    for (int32_t run = 0, i = 0; i < pixels; ++i, --run) {
        if (run == -12) run = static_cast<int32_t>(random() % 24);
        const uint32_t colour = run > 0 || i == pixels - 1 ? kKey : static_cast<uint32_t>(random());
        std::memcpy(fx.Pixels + 3 * i, &colour, 3);
    }
}

struct Scene {
    explicit Scene(const benchmark::State &state)
        : width(static_cast<int32_t>(state.range(0))), height(static_cast<int32_t>(state.range(1))) {
        FillWithNoise(*fx);
        CopyFX(source, 0, 0, reinterpret_cast<uintptr_t>(fx.get()));
    }
    ~Scene() {
        FreeImage(image);
        FreeImage(source);
    }
    Scene(const Scene &) = delete;
    Scene &operator=(const Scene &) = delete;
    uintptr_t Handle() const { return reinterpret_cast<uintptr_t>(fx.get()); }
    uintptr_t Background() const { return reinterpret_cast<uintptr_t>(background.get()); }
#if BENCH_OPENCV
    cv::Mat Matrix() const { return {height, width, CV_8UC3, fx->Pixels}; }
    cv::Mat Behind() const { return {height, width, CV_8UC3, background->Pixels}; }
    cv::Mat Turn() const {
        return cv::getRotationMatrix2D({static_cast<float>(width) / 2, static_cast<float>(height) / 2},
                                       kAngle, 1);
    }
#endif

    const int32_t width, height;
    const OwnedFX fx{FXFromHandle(MakeBlackFX(width, height))};
    const OwnedFX background{FXFromHandle(MakeBlackFX(width, height))};
    const uintptr_t image = CreateImage(platform::ScreenContext(), width, height);
    const uintptr_t source = CreateImage(platform::ScreenContext(), width, height);
};

using Work = void (*)(const Scene &scene);

void Measure(benchmark::State &state, Work work) {
    const Scene scene(state);
#if BENCH_OPENCV
    cv::setNumThreads(1);
#endif
    for (auto _ : state) {
        work(scene);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * scene.width * scene.height);
}

void SwapPixels(uint8_t *a, uint8_t *b) { std::swap_ranges(a, a + 3, b); }

void FlipXPlainly(const Scene &scene) {
    for (int32_t y = 0; y < scene.height; ++y) {
        uint8_t *row = scene.fx->Pixels + 3 * scene.width * y;
        for (int32_t k = 0; k < scene.width / 2; ++k)
            SwapPixels(row + 3 * k, row + 3 * (scene.width - 1 - k));
    }
}

void Rotate180Plainly(const Scene &scene) {
    uint8_t *first = scene.fx->Pixels, *last = first + scene.fx->biSizeImage - 3;
    for (; first < last; first += 3, last -= 3) SwapPixels(first, last);
}

void FlipYPlainly(const Scene &scene) {
    const int32_t rowBytes = 3 * scene.width;
    uint8_t *first = scene.fx->Pixels, *last = first + rowBytes * (scene.height - 1);
    for (; first < last; first += rowBytes, last -= rowBytes) std::swap_ranges(first, first + rowBytes, last);
}

// Where pixel (x, y) of a picture lands.
struct Turn {
    Turn(const Scene &scene, int32_t degrees) : direction(DirectionOf(degrees)) {
        const int32_t x = scene.width / 2, y = scene.height / 2;
        originX = x - ((direction.cosine * x >> 10) - (direction.sine * y >> 10));
        originY = y - ((direction.sine * x >> 10) + (direction.cosine * y >> 10));
    }
    int32_t X(int32_t x, int32_t y) const {
        return ((direction.cosine * x - direction.sine * y) >> 10) + originX;
    }
    int32_t Y(int32_t x, int32_t y) const {
        return ((direction.sine * x + direction.cosine * y) >> 10) + originY;
    }
    const Direction direction;
    int32_t originX, originY;
};

void RotatePlainly(const Scene &scene, bool isKeyed) {
    const Turn turn(scene, 360 - kAngle);
    std::vector<uint8_t> result(scene.background->Pixels, scene.background->Pixels + scene.fx->biSizeImage);
    const uint8_t *pixel = scene.fx->Pixels;
    for (int32_t y = 0; y < scene.height; ++y) {
        for (int32_t x = 0; x < scene.width; ++x, pixel += 3) {
            if (isKeyed && pixel[0] == 0xFF && pixel[1] == 0 && pixel[2] == 0xFF) continue;
            const int32_t toX = turn.X(x, y), toY = turn.Y(x, y);
            if (toX < 0 || toX + 1 >= scene.width || toY < 0 || toY >= scene.height) continue;
            uint8_t *to = &result[static_cast<size_t>(3 * (toY * scene.width + toX))];
            for (int i = 0; i < 6; ++i) to[i] = pixel[i % 3];
        }
    }
    PaintFX(scene.image, 0, 0, *scene.fx, result.data());
}

void RotateImagePlainly(const Scene &scene, bool isKeyed) {
    const Turn turn(scene, kAngle);
    const COLORREF key = GetPixel(scene.source, scene.width - 1, 0);
    for (int32_t y = scene.height - 1; y > 0; --y) {
        for (int32_t x = scene.width - 1; x > 0; --x) {
            const COLORREF colour = GetPixel(scene.source, x, y);
            if (isKeyed && colour == key) continue;
            SetPixel(scene.image, turn.X(x, y), turn.Y(x, y), colour);
            SetPixel(scene.image, turn.X(x, y) - 1, turn.Y(x, y), colour);
        }
    }
}

void RotateImageOurs(const Scene &scene, int32_t mode) {
    RotateImage(scene.image, 0, 0, scene.width, scene.height, scene.source, 0, 0, kAngle, mode);
}

// As many bytes as the picture has, the amount in thousandths of them or, below 0, in bytes.
constexpr int32_t kRolled = -1000;
int32_t AmountOf(const Scene &scene, int32_t amount) {
    return amount < 0 ? -amount : static_cast<int32_t>(int64_t{scene.fx->biSizeImage} * amount / 1000);
}
template <int32_t amount>
void RollOurs(const Scene &scene) {
    RotateMem(scene.fx->Pixels, 0, static_cast<int32_t>(scene.fx->biSizeImage), AmountOf(scene, amount), 0);
}
template <int32_t amount>
void RollByStd(const Scene &scene) {
    uint8_t *end = scene.fx->Pixels + scene.fx->biSizeImage;
    std::rotate(scene.fx->Pixels, end - AmountOf(scene, amount), end);
}

struct Row {
    const char *name;
    Work work;
};

constexpr Row kRows[] = {
    {"FlipX/ours", [](const Scene &s) { FlipX(0, 0, 0, s.Handle()); }},
    {"FlipX/plain", FlipXPlainly},
    {"FlipY/ours", [](const Scene &s) { FlipY(0, 0, 0, s.Handle()); }},
    {"FlipY/plain", FlipYPlainly},
    {"Rotate180/ours", [](const Scene &s) { Rotate180(0, 0, 0, s.Handle()); }},
    {"Rotate180/plain", Rotate180Plainly},
    {"Rotate/ours", [](const Scene &s) { Rotate(s.image, 0, 0, s.Background(), s.Handle(), kAngle, 0); }},
    {"Rotate/plain", [](const Scene &s) { RotatePlainly(s, false); }},
    {"RotateKeyed/ours",
     [](const Scene &s) { Rotate(s.image, 0, 0, s.Background(), s.Handle(), kAngle, -1); }},
    {"RotateKeyed/plain", [](const Scene &s) { RotatePlainly(s, true); }},
    {"RotateImage/ours", [](const Scene &s) { RotateImageOurs(s, 0); }},
    {"RotateImage/plain", [](const Scene &s) { RotateImagePlainly(s, false); }},
    {"RotateImageKeyed/ours", [](const Scene &s) { RotateImageOurs(s, -1); }},
    {"RotateImageKeyed/plain", [](const Scene &s) { RotateImagePlainly(s, true); }},
    {"RotateMem/ours", RollOurs<kRolled>},
    {"RotateMem/std", RollByStd<kRolled>},
    {"RotateMemFar/ours", RollOurs<382>},
    {"RotateMemFar/std", RollByStd<382>},
#if BENCH_OPENCV
    {"FlipX/opencv", [](const Scene &s) { cv::flip(s.Matrix(), s.Matrix(), 1); }},
    {"FlipY/opencv", [](const Scene &s) { cv::flip(s.Matrix(), s.Matrix(), 0); }},
    {"Rotate180/opencv", [](const Scene &s) { cv::flip(s.Matrix(), s.Matrix(), -1); }},
    {"Rotate/opencv",
     [](const Scene &s) {
         static cv::Mat result;
         s.Behind().copyTo(result);
         cv::warpAffine(s.Matrix(), result, s.Turn(), result.size(), cv::INTER_NEAREST,
                        cv::BORDER_TRANSPARENT);
     }},
    {"Rotate/opencv_painted",
     [](const Scene &s) {
         static cv::Mat result, painted;
         s.Behind().copyTo(result);
         cv::warpAffine(s.Matrix(), result, s.Turn(), result.size(), cv::INTER_NEAREST,
                        cv::BORDER_TRANSPARENT);
         cv::cvtColor(result, painted, cv::COLOR_BGR2BGRA);
     }},
    {"RotateKeyed/opencv",
     [](const Scene &s) {
         static cv::Mat result, turned, isKey;
         s.Behind().copyTo(result);
         cv::warpAffine(s.Matrix(), turned, s.Turn(), result.size(), cv::INTER_NEAREST, cv::BORDER_CONSTANT,
                        {0xFF, 0, 0xFF});
         cv::inRange(turned, cv::Scalar(0xFF, 0, 0xFF), cv::Scalar(0xFF, 0, 0xFF), isKey);
         cv::bitwise_not(isKey, isKey);
         turned.copyTo(result, isKey);
     }},
    {"RotateImage/opencv",
     [](const Scene &s) {
         static cv::Mat source, result;
         if (source.cols != s.width) {
             source = cv::Mat(s.height, s.width, CV_8UC4, cv::Scalar(1, 2, 3, 4));
             result = source.clone();
         }
         cv::warpAffine(source, result, s.Turn(), result.size(), cv::INTER_NEAREST, cv::BORDER_TRANSPARENT);
     }},
#endif
};

const bool kAreRegistered = [] {
    for (const Row &row : kRows)
        benchmark::RegisterBenchmark(row.name, Measure, row.work)->Args({256, 256})->Args({1920, 1080});
    return true;
}();

}  // namespace
}  // namespace fenlight
