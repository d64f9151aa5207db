// SPDX-License-Identifier: Zlib
// Filters of single pixels without the closing paint: the widest version, the plain loops, and the quickest
// way that OpenCV has to the same picture. Pictures are noise, but for ExchangeColor, where one colour comes
// in runs, as in drawings.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "fenlight/fx_filters.h"
#include "frame/vector_level.h"
#include "fx/fx_buffer.h"
#include "measured.h"
#if BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace fenlight {
namespace {

struct Scene {
    explicit Scene(const benchmark::State &state)
        : width(static_cast<int32_t>(state.range(0))), height(static_cast<int32_t>(state.range(1))) {
        std::mt19937 random(5);
        for (const OwnedFX *fx : {&buffer, &other})
            for (uint32_t i = 0; i < (*fx)->biSizeImage; ++i)
                (*fx)->Pixels[i] = static_cast<uint8_t>(random());
    }
    // A third of the pixels.
    void AddRuns() const {
        std::mt19937 random(6);
        for (int32_t run = 0, i = 0; i < width * height; ++i, --run) {
            if (run == -12) run = static_cast<int32_t>(random() % 12);
            if (run > 0) std::memcpy(buffer->Pixels + 3 * i, &runs, 3);
        }
    }
    uintptr_t Handle() const { return reinterpret_cast<uintptr_t>(buffer.get()); }
    uintptr_t Other() const { return reinterpret_cast<uintptr_t>(other.get()); }
#if BENCH_OPENCV
    cv::Mat Matrix() const { return {height, width, CV_8UC3, buffer->Pixels}; }
    cv::Mat Bytes() const { return {height, 3 * width, CV_8UC1, buffer->Pixels}; }
    cv::Mat OtherBytes() const { return {height, 3 * width, CV_8UC1, other->Pixels}; }
#endif

    int32_t width, height;
    COLORREF runs = 0x00FF00FF, others = 0x00FF01FF;
    OwnedFX buffer{FXFromHandle(MakeBlackFX(width, height))}, other{FXFromHandle(MakeBlackFX(width, height))};
};

using Filter = void (*)(Scene &scene);

void RunDarken(Scene &scene) { Darken(0, 0, 0, scene.Handle(), 3); }
void RunLighten(Scene &scene) { Lighten(0, 0, 0, scene.Handle(), 3); }
void RunGrey(Scene &scene) { Grey(0, 0, 0, scene.Handle()); }
void RunBlackWhite(Scene &scene) { BlackWhite(0, 0, 0, scene.Handle(), 120); }
void RunSharpen(Scene &scene) { Sharpen(0, 0, 0, scene.Handle()); }
void RunColorMove(Scene &scene) { ColorMove(0, 0, 0, scene.Handle(), scene.Other(), 3); }
void RunExchangeRgb(Scene &scene) { ExchangeRgb(0, 0, 0, scene.Handle(), 20, -30, 5); }
void RunColorFill(Scene &scene) { ColorFill(scene.Handle(), 0x112233); }
// There and back, so that each call meets the colour.
void RunExchangeColor(Scene &scene) {
    ExchangeColor(0, 0, 0, scene.Handle(), scene.runs, scene.others);
    std::swap(scene.runs, scene.others);
}

template <Filter kRun, VectorLevel kLevel>
void Ours(benchmark::State &state) {
    Scene scene(state);
    if (kRun == RunExchangeColor) scene.AddRuns();
    ForceVectorLevel(kLevel);
    Measure(state, [&] { kRun(scene); });
    ReleaseVectorLevel();
}

// The map is built and searched; no pixel is black.
template <VectorLevel kLevel>
void TraceNothing(benchmark::State &state) {
    const Scene scene(state);
    std::memset(scene.buffer->Pixels, 1, scene.buffer->biSizeImage);
    std::vector<int16_t> points(2);
    ForceVectorLevel(kLevel);
    Measure(state, [&] { PixelToMemory(scene.Handle(), points.data(), 1); });
    ReleaseVectorLevel();
}

// Reads and writes each byte once.
void InvertInPlace(benchmark::State &state) {
    const Scene scene(state);
    Measure(state, [&] {
        auto *words = reinterpret_cast<uint64_t *>(scene.buffer->Pixels);
        for (uint32_t i = 0; i < scene.buffer->biSizeImage / 8; ++i) words[i] = ~words[i];
    });
}

void SetMemory(benchmark::State &state) {
    const Scene scene(state);
    Measure(state, [&] { std::memset(scene.buffer->Pixels, 7, scene.buffer->biSizeImage); });
}

#if BENCH_OPENCV
template <typename Work>
void Peer(benchmark::State &state, const Work &work) {
    cv::setNumThreads(1);
    const Scene scene(state);
    Measure(state, [&] { work(scene); });
}

void PeerDarken(benchmark::State &state) {
    Peer(state, [](const Scene &scene) {
        cv::Mat bytes = scene.Bytes();
        cv::subtract(bytes, cv::Scalar(3), bytes);
    });
}

void PeerLighten(benchmark::State &state) {
    Peer(state, [](const Scene &scene) {
        cv::Mat bytes = scene.Bytes();
        cv::add(bytes, cv::Scalar(3), bytes);
    });
}

// With other weights: those that OpenCV has a quick way for.
void PeerGrey(benchmark::State &state) {
    cv::Mat grey;
    Peer(state, [&](const Scene &scene) {
        cv::Mat pixels = scene.Matrix();
        cv::cvtColor(pixels, grey, cv::COLOR_BGR2GRAY);
        cv::cvtColor(grey, pixels, cv::COLOR_GRAY2BGR);
    });
}

void PeerBlackWhite(benchmark::State &state) {
    cv::Mat grey;
    Peer(state, [&](const Scene &scene) {
        cv::Mat pixels = scene.Matrix();
        cv::cvtColor(pixels, grey, cv::COLOR_BGR2GRAY);
        cv::threshold(grey, grey, 120, 255, cv::THRESH_BINARY);
        cv::cvtColor(grey, pixels, cv::COLOR_GRAY2BGR);
    });
}

void PeerSharpen(benchmark::State &state) {
    cv::Mat table(1, 256, CV_8UC1);
    for (int i = 0; i < 256; ++i)
        table.data[i] = static_cast<uint8_t>(i == 0 || i == 255 ? i : i < 127 ? i - 1 : i + 1);
    Peer(state, [&](const Scene &scene) {
        cv::Mat bytes = scene.Bytes();
        cv::LUT(bytes, table, bytes);
    });
}

void PeerColorMove(benchmark::State &state) {
    cv::Mat lower, upper;
    Peer(state, [&](const Scene &scene) {
        cv::Mat bytes = scene.Bytes();
        const cv::Mat target = scene.OtherBytes();
        cv::subtract(bytes, cv::Scalar(3), lower);
        cv::add(bytes, cv::Scalar(3), upper);
        cv::max(target, lower, lower);
        cv::min(lower, upper, bytes);
    });
}

void PeerExchangeRgb(benchmark::State &state) {
    Peer(state, [](const Scene &scene) {
        cv::Mat pixels = scene.Matrix();
        cv::add(pixels, cv::Scalar(5, 0, 20), pixels);
        cv::subtract(pixels, cv::Scalar(0, 30, 0), pixels);
    });
}

void PeerExchangeColor(benchmark::State &state) {
    cv::Mat mask;
    cv::Scalar from(255, 0, 255), to(255, 1, 255);
    cv::setNumThreads(1);
    const Scene scene(state);
    scene.AddRuns();
    cv::Mat pixels = scene.Matrix();
    Measure(state, [&] {
        cv::inRange(pixels, from, from, mask);
        pixels.setTo(to, mask);
        std::swap(from, to);
    });
}

void PeerColorFill(benchmark::State &state) {
    Peer(state, [](const Scene &scene) { scene.Matrix().setTo(cv::Scalar(0x11, 0x22, 0x33)); });
}
#endif

void Sizes(benchmark::internal::Benchmark *bench) {
    bench->Args({256, 256})->Args({1920, 1080})->Unit(benchmark::kMicrosecond);
}

#if BENCH_OPENCV
#define FENLIGHT_PEER(name) BENCHMARK(Peer##name)->Name(#name "/OpenCV")->Apply(Sizes)
#else
#define FENLIGHT_PEER(name) static_assert(true)
#endif
#define FENLIGHT_FILTER(name)                                                           \
    BENCHMARK(Ours<Run##name, VectorLevel::Avx512>)->Name(#name)->Apply(Sizes);         \
    BENCHMARK(Ours<Run##name, VectorLevel::Avx2>)->Name(#name "/Avx2")->Apply(Sizes);   \
    BENCHMARK(Ours<Run##name, VectorLevel::Plain>)->Name(#name "/plain")->Apply(Sizes); \
    FENLIGHT_PEER(name)

FENLIGHT_FILTER(Darken);
FENLIGHT_FILTER(Lighten);
FENLIGHT_FILTER(Grey);
FENLIGHT_FILTER(BlackWhite);
FENLIGHT_FILTER(Sharpen);
FENLIGHT_FILTER(ColorMove);
FENLIGHT_FILTER(ExchangeRgb);
FENLIGHT_FILTER(ExchangeColor);
FENLIGHT_FILTER(ColorFill);
BENCHMARK(TraceNothing<VectorLevel::Avx512>)->Name("PixelToMemory")->Apply(Sizes);
BENCHMARK(TraceNothing<VectorLevel::Avx2>)->Name("PixelToMemory/Avx2")->Apply(Sizes);
BENCHMARK(TraceNothing<VectorLevel::Plain>)->Name("PixelToMemory/plain")->Apply(Sizes);
BENCHMARK(InvertInPlace)->Apply(Sizes);
BENCHMARK(SetMemory)->Apply(Sizes);

}  // namespace
}  // namespace fenlight
