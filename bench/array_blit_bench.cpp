// SPDX-License-Identifier: Zlib
// Rectangles between FX buffers beside OpenCV, the plain loops and rows of memcpy. Half of the source's
// pixels have the key colour, in runs as sprites have them; mask bytes are of any value.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <vector>

#include "fx/array_blit.h"
#include "measured.h"

#if BENCH_OPENCV
#include <opencv2/core.hpp>
#endif

namespace fenlight {
namespace {

constexpr uint32_t kKey = 0xFF00FF;

struct Buffer {
    Buffer(int32_t width, int32_t height) : block(static_cast<size_t>(3 * width * height) + 128) {
        header.biWidth = width;
        header.biHeight = height;
        header.biSizeImage = static_cast<uint32_t>(3 * width * height);
        header.Pixels = block.data() + 64 - reinterpret_cast<uintptr_t>(block.data()) % 64;
    }
    Buffer(const Buffer &) = delete;
    Buffer &operator=(const Buffer &) = delete;
    uintptr_t Handle() const { return reinterpret_cast<uintptr_t>(&header); }
#if BENCH_OPENCV
    cv::Mat Matrix() const { return {header.biHeight, header.biWidth, CV_8UC3, header.Pixels}; }
#endif

    FXHeader header{};
    std::vector<uint8_t> block;
};

struct Scene {
    explicit Scene(const benchmark::State &state)
        : width(static_cast<int32_t>(state.range(0))), height(static_cast<int32_t>(state.range(1))) {
        std::mt19937 random(5);
        for (uint32_t i = 0; i < source.header.biSizeImage; ++i) {
            source.header.Pixels[i] = static_cast<uint8_t>(random());
            mask.header.Pixels[i] = static_cast<uint8_t>(random());
        }
        uint8_t *pixel = source.header.Pixels;
        for (int32_t run = 0, i = 0; i < width * height; ++i, --run, pixel += 3) {
            if (run == -12) run = static_cast<int32_t>(random() % 24);
            if (run <= 0) continue;
            pixel[0] = pixel[2] = 0xFF;
            pixel[1] = 0;
        }
    }
    void Blit(int32_t mode) const {
        BitBltArray(target.Handle(), 0, 0, width, height, source.Handle(), 0, 0, mode,
                    mode == kArrayMask ? mask.Handle() : uintptr_t{kKey});
    }

    int32_t width, height;
    Buffer target{width, height}, source{width, height}, mask{width, height};
};

template <int kMode>
void Ours(benchmark::State &state) {
    const Scene scene(state);
    Measure(state, [&] { scene.Blit(kMode); });
}

template <int kMode>
void OursAvx2(benchmark::State &state) {
    ForceVectorLevel(VectorLevel::Avx2);
    Ours<kMode>(state);
    ReleaseVectorLevel();
}

template <int kMode>
void Plain(benchmark::State &state) {
    ForceVectorLevel(VectorLevel::Plain);
    Ours<kMode>(state);
    ReleaseVectorLevel();
}

void CopyMemcpyRows(benchmark::State &state) {
    const Scene scene(state);
    const auto pitch = static_cast<size_t>(3 * scene.width);
    Measure(state, [&] {
        for (size_t row = 0; row < static_cast<size_t>(scene.height); ++row)
            std::memcpy(scene.target.header.Pixels + row * pitch, scene.source.header.Pixels + row * pitch,
                        pitch);
    });
}

#if BENCH_OPENCV
void KeyOpenCv(benchmark::State &state) {
    cv::setNumThreads(1);
    const Scene scene(state);
    const cv::Mat source = scene.source.Matrix();
    cv::Mat target = scene.target.Matrix(), isKey, isOpaque;
    Measure(state, [&] {
        cv::inRange(source, cv::Scalar(255, 0, 255), cv::Scalar(255, 0, 255), isKey);
        cv::bitwise_not(isKey, isOpaque);
        source.copyTo(target, isOpaque);
    });
}

void MaskOpenCv(benchmark::State &state) {
    cv::setNumThreads(1);
    const Scene scene(state);
    const cv::Mat source = scene.source.Matrix(), mask = scene.mask.Matrix();
    cv::Mat target = scene.target.Matrix(), kept, rest, taken;
    Measure(state, [&] {
        cv::multiply(target, mask, kept, 1.0 / 255);
        cv::bitwise_not(mask, rest);
        cv::multiply(source, rest, taken, 1.0 / 255);
        cv::add(kept, taken, target);
    });
}
#endif

void Sizes(benchmark::internal::Benchmark *bench) {
    bench->Args({32, 32})
        ->Args({256, 256})
        ->Args({1920, 1080})
        ->Args({5120, 2880})
        ->Unit(benchmark::kMicrosecond);
}

BENCHMARK(Ours<0>)->Name("Copy")->Apply(Sizes);
BENCHMARK(CopyMemcpyRows)->Apply(Sizes);
BENCHMARK(Ours<kArrayKey>)->Name("Key")->Apply(Sizes);
BENCHMARK(OursAvx2<kArrayKey>)->Name("KeyAvx2")->Apply(Sizes);
BENCHMARK(Plain<kArrayKey>)->Name("KeyPlain")->Apply(Sizes);
BENCHMARK(Ours<kArrayMask>)->Name("Mask")->Apply(Sizes);
BENCHMARK(OursAvx2<kArrayMask>)->Name("MaskAvx2")->Apply(Sizes);
BENCHMARK(Plain<kArrayMask>)->Name("MaskPlain")->Apply(Sizes);
#if BENCH_OPENCV
BENCHMARK(KeyOpenCv)->Apply(Sizes);
BENCHMARK(MaskOpenCv)->Apply(Sizes);
#endif

}  // namespace
}  // namespace fenlight
