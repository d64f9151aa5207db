// SPDX-License-Identifier: Zlib
// Filters that look at neighbours beside OpenCV and plain loops. OpenCV has no exact peer of the in-place
// Blur: its box filter is shown. One pixel in sixteen has the key colour, in runs; the mask chooses all bytes
// or those of a disc.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "fenlight/fx_smoothing.h"
#include "frame/random.h"
#include "frame/vector_level.h"
#include "fx/fx_buffer.h"
#include "measured.h"

#if BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace fenlight {
namespace {

constexpr uint32_t kKey = 0xFF00FF;

struct Scene {
    explicit Scene(const benchmark::State &state, bool hasDisc = false)
        : width(static_cast<int32_t>(state.range(0))), height(static_cast<int32_t>(state.range(1))) {
        std::mt19937 random(5);
        uint8_t *pixel = picture->Pixels;
        for (int32_t i = 0, run = 0; i < width * height; ++i, --run, pixel += 3) {
            if (run <= 0 && random() % 128 == 0) run = 8;
            const auto colour = run > 0 ? kKey : static_cast<uint32_t>(random());
            std::memcpy(pixel, &colour, 3);
        }
        const int64_t radius = height / 2;
        for (int32_t i = 0; i < 3 * width * height; ++i) {
            const int64_t x = i / 3 % width - width / 2, y = i / 3 / width - radius;
            mask->Pixels[i] = !hasDisc || x * x + y * y < radius * radius ? 255 : 0;
        }
        std::memcpy(source->Pixels, picture->Pixels, picture->biSizeImage);
    }
    uintptr_t Picture() const { return reinterpret_cast<uintptr_t>(picture.get()); }
    uintptr_t Source() const { return reinterpret_cast<uintptr_t>(source.get()); }
    uintptr_t Mask() const { return reinterpret_cast<uintptr_t>(mask.get()); }

    int32_t width, height;
    OwnedFX picture = Make(), source = Make(), mask = Make();

  private:
    OwnedFX Make() const { return OwnedFX(FXFromHandle(MakeBlackFX(width, height))); }
};

void BlurOurs(benchmark::State &state) {
    const Scene scene(state);
    Measure(state, [&] { Blur(0, 0, 0, scene.Picture()); });
}

void BlurPlain(benchmark::State &state) {
    const Scene scene(state);
    uint8_t *bytes = scene.picture->Pixels;
    const int64_t pitch = 3 * scene.width;
    Measure(state, [&] {
        for (int64_t row = 1; row < scene.height - 1; ++row)
            for (int64_t i = row * pitch + 3; i < row * pitch + pitch - 3; ++i)
                bytes[i] = static_cast<uint8_t>(
                    (bytes[i + pitch] + bytes[i - pitch] + bytes[i + 3] + bytes[i - 3]) >> 2);
    });
}

template <bool kHasDisc>
void SmoothOurs(benchmark::State &state) {
    const Scene scene(state, kHasDisc);
    Measure(state, [&] { Smooth(0, 0, 0, scene.Picture(), scene.Mask()); });
}

template <int kFlags>
void AntialiasingOurs(benchmark::State &state) {
    const Scene scene(state);
    Measure(state, [&] { Antialiasing(0, 0, 0, scene.Picture(), kKey, kFlags, 0); });
}

void FogOurs(benchmark::State &state) {
    const Scene scene(state);
    Measure(state, [&] { Fog(0, 0, 0, scene.Source(), scene.Picture(), scene.Mask()); });
}

// The generator alone, as often as Fog asks it.
void FogDraws(benchmark::State &state) {
    const Scene scene(state);
    std::vector<int32_t> draws(1024);
    const int64_t batches = int64_t{3} * scene.width * scene.height / 1024;
    Measure(state, [&] {
        for (int64_t i = 0; i < batches; ++i) RandomFill(draws.data(), 1024, 0, 80);
    });
}

void FogPlain(benchmark::State &state) {
    const Scene scene(state);
    const uint8_t *p = scene.picture->Pixels, *shown = scene.source->Pixels, *mask = scene.mask->Pixels;
    std::vector<uint8_t> result(scene.picture->biSizeImage);
    const int64_t s = 3 * scene.width, size = scene.picture->biSizeImage;
    Measure(state, [&] {
        for (int64_t i = s + 3; i < size - s - 3; ++i) {
            if (mask[i] == 0) continue;
            const uint32_t draw = RandomDraw(80);
            const int first = draw == 0 ? shown[i] : draw <= 3 ? 255 : p[i + 3];
            result[static_cast<size_t>(i)] =
                static_cast<uint8_t>((first + p[i - 3] + p[i + s] + p[i - s] + p[i + s + 3] + p[i - s + 3] +
                                      p[i + s - 3] + p[i - s - 3]) >>
                                     3);
        }
        std::memcpy(scene.picture->Pixels, result.data(), result.size());
    });
}

void RustleOurs(benchmark::State &state) {
    const Scene scene(state);
    Measure(state, [&] { Rustle(0, 0, 0, scene.Picture()); });
}

template <void (*kBench)(benchmark::State &), VectorLevel kLevel>
void AtLevel(benchmark::State &state) {
    ForceVectorLevel(kLevel);
    kBench(state);
    ReleaseVectorLevel();
}

#if BENCH_OPENCV
struct Matrices {
    explicit Matrices(const Scene &scene) : picture(Of(scene.picture)), mask(Of(scene.mask)) {
        cv::setNumThreads(1);
        cv::extractChannel(mask, oneChannel, 0);
        mask = oneChannel;
    }
    static cv::Mat Of(const OwnedFX &fx) { return {fx->biHeight, fx->biWidth, CV_8UC3, fx->Pixels}; }
    cv::Mat picture, mask, oneChannel, result;
};

void BlurOpenCv(benchmark::State &state) {
    const Scene scene(state);
    Matrices m(scene);
    Measure(state, [&] { cv::blur(m.picture, m.result, cv::Size(3, 3)); });
}

template <bool kHasDisc>
void SmoothOpenCv(benchmark::State &state) {
    const Scene scene(state, kHasDisc);
    Matrices m(scene);
    Measure(state, [&] {
        cv::blur(m.picture, m.result, cv::Size(3, 3));
        m.result.copyTo(m.picture, m.mask);
    });
}

cv::Mat CrossKernel(bool hasCentre) {
    const float centre = hasCentre ? 0.2f : 0.f, beside = hasCentre ? 0.2f : 0.25f;
    return (cv::Mat_<float>(3, 3) << 0, beside, 0, beside, centre, beside, 0, beside, 0);
}

template <bool kHasCentre>
void EverywhereOpenCv(benchmark::State &state) {
    const Scene scene(state);
    Matrices m(scene);
    const cv::Mat kernel = CrossKernel(kHasCentre);
    Measure(state, [&] { cv::filter2D(m.picture, m.result, -1, kernel); });
}

void NearKeyOpenCv(benchmark::State &state) {
    const Scene scene(state);
    Matrices m(scene);
    const cv::Mat kernel = CrossKernel(false);
    const cv::Mat diamond = (cv::Mat_<uint8_t>(5, 5) << 0, 0, 1, 0, 0, 0, 1, 1, 1, 0, 1, 1, 0, 1, 1, 0, 1, 1,
                             1, 0, 0, 0, 1, 0, 0);
    cv::Mat isKey, isNear;
    Measure(state, [&] {
        cv::filter2D(m.picture, m.result, -1, kernel);
        cv::inRange(m.picture, cv::Scalar(255, 0, 255), cv::Scalar(255, 0, 255), isKey);
        cv::dilate(isKey, isNear, diamond);
        m.result.copyTo(m.picture, isNear);
    });
}
#endif

void Sizes(benchmark::internal::Benchmark *bench) {
    bench->Args({256, 256})->Args({1920, 1080})->Unit(benchmark::kMicrosecond);
}

constexpr VectorLevel kAvx2 = VectorLevel::Avx2, kPlain = VectorLevel::Plain;

BENCHMARK(BlurOurs)->Apply(Sizes);
BENCHMARK(AtLevel<BlurOurs, kAvx2>)->Name("BlurAvx2")->Apply(Sizes);
BENCHMARK(AtLevel<BlurOurs, kPlain>)->Name("BlurNoVectors")->Apply(Sizes);
BENCHMARK(BlurPlain)->Apply(Sizes);
BENCHMARK(SmoothOurs<false>)->Name("Smooth")->Apply(Sizes);
BENCHMARK(AtLevel<SmoothOurs<false>, kAvx2>)->Name("SmoothAvx2")->Apply(Sizes);
BENCHMARK(AtLevel<SmoothOurs<false>, kPlain>)->Name("SmoothPlain")->Apply(Sizes);
BENCHMARK(SmoothOurs<true>)->Name("SmoothDisc")->Apply(Sizes);
BENCHMARK(AntialiasingOurs<0>)->Name("NearKey")->Apply(Sizes);
BENCHMARK(AtLevel<AntialiasingOurs<0>, kAvx2>)->Name("NearKeyAvx2")->Apply(Sizes);
BENCHMARK(AtLevel<AntialiasingOurs<0>, kPlain>)->Name("NearKeyPlain")->Apply(Sizes);
BENCHMARK(AntialiasingOurs<1>)->Name("NearKeyCentre")->Apply(Sizes);
BENCHMARK(AntialiasingOurs<2>)->Name("Everywhere")->Apply(Sizes);
BENCHMARK(AtLevel<AntialiasingOurs<2>, kAvx2>)->Name("EverywhereAvx2")->Apply(Sizes);
BENCHMARK(AtLevel<AntialiasingOurs<2>, kPlain>)->Name("EverywherePlain")->Apply(Sizes);
BENCHMARK(AntialiasingOurs<3>)->Name("EverywhereCentre")->Apply(Sizes);
BENCHMARK(FogOurs)->Name("Fog")->Apply(Sizes);
BENCHMARK(FogDraws)->Apply(Sizes);
BENCHMARK(FogPlain)->Apply(Sizes);
BENCHMARK(RustleOurs)->Name("Rustle")->Apply(Sizes);
#if BENCH_OPENCV
BENCHMARK(BlurOpenCv)->Apply(Sizes);
BENCHMARK(SmoothOpenCv<false>)->Name("SmoothOpenCv")->Apply(Sizes);
BENCHMARK(SmoothOpenCv<true>)->Name("SmoothDiscOpenCv")->Apply(Sizes);
BENCHMARK(NearKeyOpenCv)->Apply(Sizes);
BENCHMARK(EverywhereOpenCv<false>)->Name("EverywhereOpenCv")->Apply(Sizes);
BENCHMARK(EverywhereOpenCv<true>)->Name("EverywhereCentreOpenCv")->Apply(Sizes);
#endif

}  // namespace
}  // namespace fenlight
