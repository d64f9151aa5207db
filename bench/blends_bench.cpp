// SPDX-License-Identifier: Zlib
// Blends and water beside OpenCV and the plain loops. A third of the pixels of merged pictures have the key
// colour, in runs as sprites have them; mask bytes are of any value. Fade is the blend alone, SemiTrans has
// its paint onto a 32-bit context with it; both are held against the same work of the peer.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "fenlight/fx_blends.h"
#include "fx/blends/blend_kernels.h"
#include "fx/blends/water.h"
#include "fx/blends/wave_tables.h"
#include "measured.h"
#include "platform/graphics/surface_access.h"

#if BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace fenlight {
namespace {

constexpr int32_t kPercent = 40;
constexpr int32_t kLossFirst = 102, kLossSecond = 153;  // of 256

struct Scene {
    explicit Scene(const benchmark::State &state)
        : width(static_cast<int32_t>(state.range(0))), height(static_cast<int32_t>(state.range(1))) {
        std::mt19937 random(5);
        for (const OwnedFX *picture : {&fx, &other, &mask})
            for (uint32_t i = 0; i < (*picture)->biSizeImage; ++i)
                (*picture)->Pixels[i] = static_cast<uint8_t>(random());
        uint8_t *pixel = fx->Pixels;
        for (int32_t run = 0, i = 0; i < width * height; ++i, --run, pixel += 3) {
            if (run <= -24) run = static_cast<int32_t>(random() % 24);
            if (run > 0) std::memset(pixel, 0, 3);
        }
        std::memset(fx->Pixels + fx->biSizeImage - 3, 0, 3);
    }
    static uintptr_t HandleOf(const OwnedFX &picture) { return reinterpret_cast<uintptr_t>(picture.get()); }
    int64_t Bytes() const { return fx->biSizeImage; }
#if BENCH_OPENCV
    cv::Mat Matrix(const OwnedFX &picture) const { return {height, width, CV_8UC3, picture->Pixels}; }
#endif

    int32_t width, height;
    OwnedFX fx = Make(), other = Make(), mask = Make(), result = Make();
    const HDC context = platform::CreateSurfaceContext(width, height);

  private:
    OwnedFX Make() const { return OwnedFX(FXFromHandle(MakeBlackFX(width, height))); }
};

void FadeOurs(benchmark::State &state) {
    const Scene scene(state);
    Measure(state, [&] {
        ChooseBlends().fade(scene.result->Pixels, scene.fx->Pixels, scene.other->Pixels, scene.Bytes(),
                            {kLossFirst, kLossSecond});
    });
}

void FadePlain(benchmark::State &state) {
    const Scene scene(state);
    const uint8_t *first = scene.fx->Pixels, *second = scene.other->Pixels;
    uint8_t *result = scene.result->Pixels;
    Measure(state, [=, bytes = scene.Bytes()] {
        for (int64_t i = 0; i < bytes; ++i) {
            const int a = first[i] - kLossFirst, b = second[i] - kLossSecond;
            result[i] = static_cast<uint8_t>((a > 0 ? a : 0) + (b > 0 ? b : 0));
        }
    });
}

void SemiTransOurs(benchmark::State &state) {
    const Scene scene(state);
    Measure(state, [&] {
        SemiTrans(scene.context, 0, 0, Scene::HandleOf(scene.fx), Scene::HandleOf(scene.other), kPercent);
    });
}

void AlphaTransOurs(benchmark::State &state) {
    const Scene scene(state);
    Measure(state, [&] {
        AlphaTrans(0, 0, 0, Scene::HandleOf(scene.fx), Scene::HandleOf(scene.other),
                   Scene::HandleOf(scene.mask));
    });
}

void AlphaTransPainted(benchmark::State &state) {
    const Scene scene(state);
    Measure(state, [&] {
        AlphaTrans(scene.context, 0, 0, Scene::HandleOf(scene.fx), Scene::HandleOf(scene.other),
                   Scene::HandleOf(scene.mask));
    });
}

void AlphaTransPlain(benchmark::State &state) {
    const Scene scene(state);
    const uint8_t *second = scene.other->Pixels, *mask = scene.mask->Pixels;
    uint8_t *first = scene.fx->Pixels;
    Measure(state, [=, bytes = scene.Bytes()] {
        for (int64_t i = 0; i < bytes; ++i) {
            const int share = mask[i] * 100 / 255;
            first[i] = static_cast<uint8_t>(((100 - share) * first[i] + share * second[i]) / 100);
        }
    });
}

template <int kFlags>
void MergeOurs(benchmark::State &state) {
    const Scene scene(state);
    Measure(state, [&] { Merge(Scene::HandleOf(scene.fx), Scene::HandleOf(scene.other), kFlags); });
}

template <int kFlags>
void MergePlain(benchmark::State &state) {
    ForceVectorLevel(VectorLevel::Plain);
    MergeOurs<kFlags>(state);
    ReleaseVectorLevel();
}

template <int kFlags>
void MergeAvx2(benchmark::State &state) {
    ForceVectorLevel(VectorLevel::Avx2);
    MergeOurs<kFlags>(state);
    ReleaseVectorLevel();
}

template <bool kIsPainted>
void WaterOurs(benchmark::State &state) {
    const Scene scene(state);
    Measure(state,
            [&] { Water(kIsPainted ? scene.context : 0, 0, 0, Scene::HandleOf(scene.fx), nullptr, 0); });
}

// Two passes over whole blocks and the copy back, rows by memcpy and blocks cleared, but never allocated.
void WaterPlain(benchmark::State &state) {
    const Scene scene(state);
    const auto bytes = static_cast<size_t>(scene.Bytes()), row = static_cast<size_t>(3 * scene.width);
    uint8_t *shifted = scene.other->Pixels, *stepped = scene.result->Pixels;
    std::vector<int32_t> shifts(static_cast<size_t>(scene.height)), sources(shifts.size());
    const Wave wave = WaveOf(nullptr);
    Measure(state, [&] {
        PlanShifts(shifts.data(), scene.height, scene.width, wave, TakeWaveStart(wave.count));
        const int64_t filled = PlanSources(sources.data(), *scene.fx, scene.height, 0, TakeRowStepStart());
        std::memset(shifted, 0, bytes);
        for (size_t y = 0; y < shifts.size(); ++y) {
            const uint8_t *from = scene.fx->Pixels + y * row;
            uint8_t *to = shifted + y * row;
            const auto past = static_cast<size_t>(3 * std::abs(shifts[y]));
            std::memcpy(to, from, 15);
            std::memcpy(to + (shifts[y] > 0 ? past : 0), from + (shifts[y] < 0 ? past : 0), row - past);
            std::memcpy(to + row - 15, from + row - 15, 15);
        }
        std::memset(stepped, 0, bytes);
        for (size_t y = 0; y < static_cast<size_t>(filled); ++y)
            std::memcpy(stepped + y * row, shifted + static_cast<size_t>(sources[y]) * row, row);
        std::memcpy(scene.fx->Pixels, stepped, bytes);
    });
}

void Memcpy(benchmark::State &state) {
    const Scene scene(state);
    Measure(state,
            [&] { std::memcpy(scene.result->Pixels, scene.fx->Pixels, static_cast<size_t>(scene.Bytes())); });
}

#if BENCH_OPENCV
struct Matrices {
    explicit Matrices(const Scene &scene)
        : fx(scene.Matrix(scene.fx)),
          other(scene.Matrix(scene.other)),
          mask(scene.Matrix(scene.mask)),
          result(scene.Matrix(scene.result)) {
        cv::setNumThreads(1);
    }
    void Fade() {
        cv::subtract(fx, cv::Scalar::all(kLossFirst), result);
        cv::subtract(other, cv::Scalar::all(kLossSecond), rest);
        cv::add(result, rest, result);
    }
    void Mix() {
        cv::multiply(other, mask, result, 1.0 / 255);
        cv::bitwise_not(mask, rest);
        cv::multiply(fx, rest, taken, 1.0 / 255);
        cv::add(result, taken, result);
    }
    void FindShape() {
        cv::inRange(fx, cv::Scalar::all(0), cv::Scalar::all(0), isKey);
        cv::bitwise_not(isKey, isShape);
    }
    // The shape without its edge; a cross, as diagonal neighbours do not count.
    void FindInside() {
        FindShape();
        cv::erode(isShape, isInside, cv::getStructuringElement(cv::MORPH_CROSS, {3, 3}));
    }

    cv::Mat fx, other, mask, result, rest, taken, isKey, isShape, isInside, mixed;
};

void FadeOpenCv(benchmark::State &state) {
    const Scene scene(state);
    Matrices matrices(scene);
    Measure(state, [&] { matrices.Fade(); });
}

void SemiTransOpenCv(benchmark::State &state) {
    const Scene scene(state);
    Matrices matrices(scene);
    cv::Mat context(scene.height, scene.width, CV_8UC4, cv::Scalar(0));
    Measure(state, [&] {
        matrices.Fade();
        cv::cvtColor(matrices.result, context, cv::COLOR_BGR2BGRA);
    });
}

void AlphaTransOpenCv(benchmark::State &state) {
    const Scene scene(state);
    Matrices matrices(scene);
    Measure(state, [&] { matrices.Mix(); });
}

void AlphaTransPaintedOpenCv(benchmark::State &state) {
    const Scene scene(state);
    Matrices matrices(scene);
    cv::Mat context(scene.height, scene.width, CV_8UC4, cv::Scalar(0));
    Measure(state, [&] {
        matrices.Mix();
        cv::cvtColor(matrices.result, context, cv::COLOR_BGR2BGRA);
    });
}

template <int kFlags>
void MergeOpenCv(benchmark::State &state) {
    const Scene scene(state);
    Matrices matrices(scene);
    Measure(state, [&] {
        if (kFlags == 0) {
            matrices.FindShape();
            matrices.fx.copyTo(matrices.other, matrices.isShape);
            return;
        }
        matrices.FindInside();
        if (kFlags == 1) {
            cv::addWeighted(matrices.fx, 0.5, matrices.other, 0.5, 0, matrices.mixed);
            matrices.mixed.copyTo(matrices.other, matrices.isShape);
        }
        matrices.fx.copyTo(matrices.other, matrices.isInside);
    });
}
#endif

void Sizes(benchmark::internal::Benchmark *bench) {
    bench->Args({256, 256})->Args({1920, 1080})->Unit(benchmark::kMicrosecond);
}

BENCHMARK(FadeOurs)->Name("Fade/ours")->Apply(Sizes);
BENCHMARK(FadePlain)->Name("Fade/plain")->Apply(Sizes);
BENCHMARK(SemiTransOurs)->Name("SemiTrans/ours")->Apply(Sizes);
BENCHMARK(AlphaTransOurs)->Name("AlphaTrans/ours")->Apply(Sizes);
BENCHMARK(AlphaTransPlain)->Name("AlphaTrans/plain")->Apply(Sizes);
BENCHMARK(AlphaTransPainted)->Name("AlphaTransPainted/ours")->Apply(Sizes);
BENCHMARK(MergeOurs<0>)->Name("Merge/ours")->Apply(Sizes);
BENCHMARK(MergePlain<0>)->Name("Merge/plain")->Apply(Sizes);
BENCHMARK(MergeOurs<1>)->Name("MergeSoft/ours")->Apply(Sizes);
BENCHMARK(MergePlain<1>)->Name("MergeSoft/plain")->Apply(Sizes);
BENCHMARK(MergeAvx2<1>)->Name("MergeSoft/avx2")->Apply(Sizes);
BENCHMARK(MergeOurs<3>)->Name("MergeCut/ours")->Apply(Sizes);
BENCHMARK(MergePlain<3>)->Name("MergeCut/plain")->Apply(Sizes);
BENCHMARK(MergeAvx2<3>)->Name("MergeCut/avx2")->Apply(Sizes);
BENCHMARK(WaterOurs<false>)->Name("Water/ours")->Apply(Sizes);
BENCHMARK(WaterPlain)->Name("Water/plain")->Apply(Sizes);
BENCHMARK(WaterOurs<true>)->Name("WaterPainted/ours")->Apply(Sizes);
BENCHMARK(Memcpy)->Name("memcpy")->Apply(Sizes);
#if BENCH_OPENCV
BENCHMARK(FadeOpenCv)->Name("Fade/opencv")->Apply(Sizes);
BENCHMARK(SemiTransOpenCv)->Name("SemiTrans/opencv")->Apply(Sizes);
BENCHMARK(AlphaTransOpenCv)->Name("AlphaTrans/opencv")->Apply(Sizes);
BENCHMARK(AlphaTransPaintedOpenCv)->Name("AlphaTransPainted/opencv")->Apply(Sizes);
BENCHMARK(MergeOpenCv<0>)->Name("Merge/opencv")->Apply(Sizes);
BENCHMARK(MergeOpenCv<1>)->Name("MergeSoft/opencv")->Apply(Sizes);
BENCHMARK(MergeOpenCv<3>)->Name("MergeCut/opencv")->Apply(Sizes);
#endif

}  // namespace
}  // namespace fenlight
