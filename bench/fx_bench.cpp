// SPDX-License-Identifier: Zlib
// Pictures into FX buffers and back: ours with all that a call does, a plain loop, and OpenCV's conversion
// between 32 and 24 bits, which allocates its result where ours does. "reused" takes memory that was freed
// just before, "fresh" such as the system hands out page by page.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <vector>

#include "fenlight/images.h"
#include "fx/fx_buffer.h"
#include "platform/graphics/screen_context.h"
#if BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif

namespace fenlight {
namespace {

// Blocks above the threshold are mapped anew and given back at once, unless the heap has room for them.
void UseFreshMemory(bool isFresh) {
    mallopt(M_MMAP_THRESHOLD, isFresh ? 128 << 10 : 32 << 20);
    mallopt(M_TRIM_THRESHOLD, isFresh ? 0 : 256 << 20);
    if (isFresh) malloc_trim(0);
}

struct Size {
    explicit Size(const benchmark::State &state)
        : width(static_cast<int32_t>(state.range(0))), height(static_cast<int32_t>(state.range(1))) {}
    size_t Pixels() const { return static_cast<size_t>(width) * static_cast<size_t>(height); }
    int32_t width, height;
};

// An image of the screen's format with every pixel drawn on.
class DrawnImage {
  public:
    explicit DrawnImage(const Size &size)
        : image(CreateImage(platform::ScreenContext(), size.width, size.height)) {
        ColorFillImage(image, 0x123456, 0, 0, size.width, size.height);
    }
    DrawnImage(const DrawnImage &) = delete;
    DrawnImage &operator=(const DrawnImage &) = delete;
    ~DrawnImage() { FreeImage(image); }
    const uintptr_t image;
};

void CountPixels(benchmark::State &state) {
    state.SetItemsProcessed(state.iterations() * state.range(0) * state.range(1));
}

void InitOurs(benchmark::State &state, bool isFresh) {
    const DrawnImage drawn{Size(state)};
    UseFreshMemory(isFresh);
    for (auto _ : state) {
        const uintptr_t fx = InitFX(drawn.image);
        benchmark::DoNotOptimize(fx);
        FreeFX(fx);
    }
    CountPixels(state);
}

void InitPlain(benchmark::State &state, bool isFresh) {
    const Size size(state);
    const std::vector<uint8_t> source(4 * size.Pixels(), 0x34);
    UseFreshMemory(isFresh);
    for (auto _ : state) {
        auto *target = static_cast<uint8_t *>(std::malloc(3 * size.Pixels()));
        for (size_t i = 0; i < size.Pixels(); ++i) {
            target[3 * i] = source[4 * i];
            target[3 * i + 1] = source[4 * i + 1];
            target[3 * i + 2] = source[4 * i + 2];
        }
        benchmark::DoNotOptimize(target);
        benchmark::ClobberMemory();
        std::free(target);
    }
    CountPixels(state);
}

void PaintOurs(benchmark::State &state) {
    const DrawnImage source{Size(state)}, target{Size(state)};
    const uintptr_t fx = InitFX(source.image);
    for (auto _ : state) CopyFX(target.image, 0, 0, fx);
    FreeFX(fx);
    CountPixels(state);
}

void PaintPlain(benchmark::State &state) {
    const Size size(state);
    const std::vector<uint8_t> source(3 * size.Pixels(), 0x34);
    std::vector<uint32_t> target(size.Pixels());
    for (auto _ : state) {
        for (size_t i = 0; i < size.Pixels(); ++i)
            target[i] =
                static_cast<uint32_t>(source[3 * i + 2] << 16 | source[3 * i + 1] << 8 | source[3 * i]);
        benchmark::DoNotOptimize(target.data());
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}

void CloneOurs(benchmark::State &state, bool isFresh) {
    const DrawnImage source{Size(state)};
    const uintptr_t fx = InitFX(source.image);
    UseFreshMemory(isFresh);
    for (auto _ : state) {
        const uintptr_t copy = CloneFX(fx);
        benchmark::DoNotOptimize(copy);
        FreeFX(copy);
    }
    FreeFX(fx);
    CountPixels(state);
}

#if BENCH_OPENCV
void InitByOpenCv(benchmark::State &state, bool isFresh) {
    cv::setNumThreads(1);
    const Size size(state);
    const cv::Mat source(size.height, size.width, CV_8UC4, cv::Scalar(1, 2, 3, 4));
    UseFreshMemory(isFresh);
    for (auto _ : state) {
        cv::Mat target;
        cv::cvtColor(source, target, cv::COLOR_BGRA2BGR);
        benchmark::DoNotOptimize(target.data);
    }
    CountPixels(state);
}

void InitByOpenCvInto(benchmark::State &state) {
    cv::setNumThreads(1);
    const Size size(state);
    const cv::Mat source(size.height, size.width, CV_8UC4, cv::Scalar(1, 2, 3, 4));
    cv::Mat target(size.height, size.width, CV_8UC3, cv::Scalar(0));
    for (auto _ : state) {
        cv::cvtColor(source, target, cv::COLOR_BGRA2BGR);
        benchmark::DoNotOptimize(target.data);
    }
    CountPixels(state);
}

void PaintByOpenCv(benchmark::State &state) {
    cv::setNumThreads(1);
    const Size size(state);
    const cv::Mat source(size.height, size.width, CV_8UC3, cv::Scalar(1, 2, 3));
    cv::Mat target(size.height, size.width, CV_8UC4, cv::Scalar(0));
    for (auto _ : state) {
        cv::cvtColor(source, target, cv::COLOR_BGR2BGRA);
        benchmark::DoNotOptimize(target.data);
    }
    CountPixels(state);
}

void CloneByOpenCv(benchmark::State &state, bool isFresh) {
    const Size size(state);
    const cv::Mat source(size.height, size.width, CV_8UC3, cv::Scalar(1, 2, 3));
    UseFreshMemory(isFresh);
    for (auto _ : state) {
        cv::Mat copy = source.clone();
        benchmark::DoNotOptimize(copy.data);
    }
    CountPixels(state);
}
#endif

// Into the files of a memory file system where there is one, so that the disk does not count.
constexpr const char *kFile = "/dev/shm/fenlight_fx_bench.bmp";

void SaveOurs(benchmark::State &state) {
    const DrawnImage source{Size(state)};
    const uintptr_t fx = InitFX(source.image);
    for (auto _ : state) benchmark::DoNotOptimize(SaveFX(fx, kFile, 0));
    FreeFX(fx);
    std::remove(kFile);
}

void SavePlain(benchmark::State &state) {
    const std::vector<uint8_t> bytes(54 + 3 * Size(state).Pixels());
    for (auto _ : state) {
        std::FILE *file = std::fopen(kFile, "wb");
        if (file == nullptr) return state.SkipWithError("no memory file system");
        benchmark::DoNotOptimize(std::fwrite(bytes.data(), 1, bytes.size(), file));
        std::fclose(file);
    }
    std::remove(kFile);
}

void Sizes(benchmark::internal::Benchmark *bench) { bench->Args({256, 256})->Args({1920, 1080}); }

BENCHMARK_CAPTURE(InitOurs, reused, false)->Name("InitFX/reused/ours")->Apply(Sizes);
BENCHMARK_CAPTURE(InitPlain, reused, false)->Name("InitFX/reused/plain")->Apply(Sizes);
BENCHMARK_CAPTURE(InitOurs, fresh, true)->Name("InitFX/fresh/ours")->Apply(Sizes);
BENCHMARK_CAPTURE(InitPlain, fresh, true)->Name("InitFX/fresh/plain")->Apply(Sizes);
BENCHMARK(PaintOurs)->Name("CopyFX/ours")->Apply(Sizes);
BENCHMARK(PaintPlain)->Name("CopyFX/plain")->Apply(Sizes);
BENCHMARK_CAPTURE(CloneOurs, reused, false)->Name("CloneFX/reused/ours")->Apply(Sizes);
BENCHMARK_CAPTURE(CloneOurs, fresh, true)->Name("CloneFX/fresh/ours")->Apply(Sizes);
#if BENCH_OPENCV
BENCHMARK_CAPTURE(InitByOpenCv, reused, false)->Name("InitFX/reused/opencv")->Apply(Sizes);
BENCHMARK_CAPTURE(InitByOpenCv, fresh, true)->Name("InitFX/fresh/opencv")->Apply(Sizes);
BENCHMARK(InitByOpenCvInto)->Name("InitFX/into/opencv")->Apply(Sizes);
BENCHMARK(PaintByOpenCv)->Name("CopyFX/opencv")->Apply(Sizes);
BENCHMARK_CAPTURE(CloneByOpenCv, reused, false)->Name("CloneFX/reused/opencv")->Apply(Sizes);
BENCHMARK_CAPTURE(CloneByOpenCv, fresh, true)->Name("CloneFX/fresh/opencv")->Apply(Sizes);
#endif
BENCHMARK(SaveOurs)->Name("SaveFX/ours")->Apply(Sizes);
BENCHMARK(SavePlain)->Name("SaveFX/fwrite")->Apply(Sizes);

}  // namespace
}  // namespace fenlight
