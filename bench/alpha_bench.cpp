// SPDX-License-Identifier: Zlib
// Alpha images: ours with all that a call does, the plain loop, and the nearest that pixman (premultiplied,
// so it does less) and OpenCV offer. Where ours allocates its result, so do they.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdlib>
#include <random>
#include <vector>

#include "fenlight/alpha_images.h"
#include "fenlight/images.h"
#include "fx/fx_buffer.h"
#include "platform/graphics/screen_context.h"
#if BENCH_OPENCV
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#endif
#if BENCH_PIXMAN
#include <pixman.h>
#endif

namespace fenlight {
namespace {

using Bytes = std::vector<uint8_t>;

// Blocks that were freed just before serve again: what the system does with fresh pages is not ours.
void KeepMemory() {
    mallopt(M_MMAP_THRESHOLD, 32 << 20);
    mallopt(M_TRIM_THRESHOLD, 256 << 20);
}

struct Work {
    explicit Work(const benchmark::State &state)
        : width(static_cast<int32_t>(state.range(0))),
          height(static_cast<int32_t>(state.range(1))),
          pixels(static_cast<size_t>(width) * static_cast<size_t>(height)),
          image(Noise(1)),
          goal(Noise(2)) {
        KeepMemory();
    }
    Bytes Noise(unsigned seed) const {
        std::mt19937 random(seed);
        Bytes bytes(4 * pixels);
        for (uint8_t &byte : bytes) byte = static_cast<uint8_t>(random() >> 24);
        return bytes;
    }
    int32_t Size() const { return static_cast<int32_t>(image.size()); }

    int32_t width, height;
    size_t pixels;
    Bytes image, goal;
};

void Count(benchmark::State &state) {
    state.SetItemsProcessed(state.iterations() * state.range(0) * state.range(1));
}

template <typename Value>
void Keep(Value *memory) {
    benchmark::DoNotOptimize(memory);
    benchmark::ClobberMemory();
}

void PaintOurs(benchmark::State &state) {
    const Work work(state);
    const uintptr_t target = CreateImage(platform::ScreenContext(), work.width, work.height);
    ColorFillImage(target, 0x123456, 0, 0, work.width, work.height);
    for (auto _ : state) PaintPng(work.image.data(), work.Size(), target, 0, 0, work.width, work.height, 0);
    FreeImage(target);
    Count(state);
}

void PaintPlain(benchmark::State &state) {
    const Work work(state);
    Bytes target(work.image.size(), 0x34);
    for (auto _ : state) {
        for (size_t i = 0; i < work.image.size(); i += 4) {
            const int alpha = work.image[i + 3];
            if (alpha == 0) continue;
            for (size_t c = 0; c < 3; ++c)
                target[i + c] = static_cast<uint8_t>(
                    (work.image[i + 2 - c] * alpha + target[i + c] * (255 - alpha)) / 255);
        }
        Keep(target.data());
    }
    Count(state);
}

void InvertOurs(benchmark::State &state) {
    Work work(state);
    for (auto _ : state) InvertChannelPng(work.image.data(), work.Size());
    Count(state);
}

void InvertPlain(benchmark::State &state) {
    Work work(state);
    for (auto _ : state) {
        for (size_t i = 3; i < work.image.size(); i += 4)
            work.image[i] = static_cast<uint8_t>(255 - work.image[i]);
        Keep(work.image.data());
    }
    Count(state);
}

// The images come to be one; the goal is turned round before that would show.
template <int32_t Call(uint8_t *, const uint8_t *, int32_t, int32_t) noexcept>
void MergeOurs(benchmark::State &state) {
    Work work(state);
    for (auto _ : state) {
        if (Call(work.image.data(), work.goal.data(), work.Size(), 3) == 0)
            for (uint8_t &byte : work.goal) byte = static_cast<uint8_t>(255 - byte);
    }
    Count(state);
}

template <size_t First, size_t Last>
void MergePlain(benchmark::State &state) {
    Work work(state);
    for (auto _ : state) {
        int32_t count = 0;
        for (size_t i = 0; i < work.image.size(); i += 4)
            for (size_t c = First; c <= Last; ++c)
                for (int step = 0; step < 4; ++step) {
                    uint8_t &byte = work.image[i + c];
                    if (byte == work.goal[i + c]) continue;
                    byte = static_cast<uint8_t>(byte < work.goal[i + c] ? byte + 1 : byte - 1);
                    ++count;
                }
        Keep(work.image.data());
        if (count == 0)
            for (uint8_t &byte : work.goal) byte = static_cast<uint8_t>(255 - byte);
    }
    Count(state);
}

void WidenOurs(benchmark::State &state, bool hasAlpha) {
    const Work work(state);
    const uintptr_t fx = PngToFX(work.image.data(), work.width, work.height, work.Size(), nullptr);
    const uintptr_t alpha = PngToFX(work.goal.data(), work.width, work.height, work.Size(), nullptr);
    int32_t width = 0, height = 0, bytes = 0;
    for (auto _ : state) {
        uint8_t *image = FXToPng(fx, &width, &height, &bytes, hasAlpha ? alpha : 0);
        Keep(image);
        FreePng(image);
    }
    FreeFX(fx);
    FreeFX(alpha);
    Count(state);
}

void WidenPlain(benchmark::State &state, bool hasAlpha) {
    const Work work(state);
    for (auto _ : state) {
        auto *image = static_cast<uint8_t *>(std::malloc(4 * work.pixels));
        for (size_t i = 0; i < work.pixels; ++i) {
            const uint8_t *colour = work.image.data() + 3 * i, *grey = work.goal.data() + 3 * i;
            for (size_t c = 0; c < 3; ++c) image[4 * i + c] = colour[2 - c];
            image[4 * i + 3] = static_cast<uint8_t>(hasAlpha ? (grey[0] + grey[1] + grey[2]) / 3 : 255);
        }
        Keep(image);
        std::free(image);
    }
    Count(state);
}

void NarrowOurs(benchmark::State &state, bool hasAlpha) {
    const Work work(state);
    for (auto _ : state) {
        uintptr_t alpha = 0;
        const uintptr_t fx =
            PngToFX(work.image.data(), work.width, work.height, work.Size(), hasAlpha ? &alpha : nullptr);
        Keep(reinterpret_cast<void *>(fx));
        FreeFX(fx);
        FreeFX(alpha);
    }
    Count(state);
}

void NarrowPlain(benchmark::State &state, bool hasAlpha) {
    const Work work(state);
    for (auto _ : state) {
        auto *colours = static_cast<uint8_t *>(std::malloc(3 * work.pixels));
        auto *greys = hasAlpha ? static_cast<uint8_t *>(std::malloc(3 * work.pixels)) : nullptr;
        for (size_t i = 0; i < work.pixels; ++i)
            for (size_t c = 0; c < 3; ++c) {
                colours[3 * i + c] = work.image[4 * i + 2 - c];
                if (hasAlpha) greys[3 * i + c] = work.image[4 * i + 3];
            }
        Keep(colours);
        Keep(greys);
        std::free(greys);
        std::free(colours);
    }
    Count(state);
}

#if BENCH_PIXMAN
void PaintByPixman(benchmark::State &state) {
    Work work(state);
    for (size_t i = 0; i < work.image.size(); i += 4)
        for (size_t c = 0; c < 3; ++c)
            work.image[i + c] = static_cast<uint8_t>(work.image[i + c] * work.image[i + 3] / 255);
    const auto over = [&](Bytes &bytes, pixman_format_code_t format) {
        return pixman_image_create_bits(format, work.width, work.height,
                                        reinterpret_cast<uint32_t *>(bytes.data()), 4 * work.width);
    };
    pixman_image_t *source = over(work.image, PIXMAN_a8r8g8b8), *target = over(work.goal, PIXMAN_x8r8g8b8);
    for (auto _ : state)
        pixman_image_composite32(PIXMAN_OP_OVER, source, nullptr, target, 0, 0, 0, 0, 0, 0, work.width,
                                 work.height);
    pixman_image_unref(source);
    pixman_image_unref(target);
    Count(state);
}
#endif

#if BENCH_OPENCV
cv::Mat MatOf(Bytes &bytes, const Work &work, int type) {
    cv::setNumThreads(1);
    return {work.height, work.width, type, bytes.data()};
}

void InvertByOpenCv(benchmark::State &state) {
    Work work(state);
    const cv::Mat image = MatOf(work.image, work, CV_8UC4);
    for (auto _ : state) {
        cv::bitwise_xor(image, cv::Scalar(0, 0, 0, 255), image);
        benchmark::ClobberMemory();
    }
    Count(state);
}

void WidenByOpenCv(benchmark::State &state, bool hasAlpha) {
    Work work(state);
    const cv::Mat colours = MatOf(work.image, work, CV_8UC3), greys = MatOf(work.goal, work, CV_8UC3);
    for (auto _ : state) {
        cv::Mat image;
        cv::cvtColor(colours, image, cv::COLOR_BGR2RGBA);
        if (hasAlpha) {
            cv::Mat alpha;  // another mean, weighted, but as much work
            cv::cvtColor(greys, alpha, cv::COLOR_BGR2GRAY);
            cv::insertChannel(alpha, image, 3);
        }
        Keep(image.data);
    }
    Count(state);
}

void NarrowByOpenCv(benchmark::State &state, bool hasAlpha) {
    Work work(state);
    const cv::Mat image = MatOf(work.image, work, CV_8UC4);
    for (auto _ : state) {
        cv::Mat colours, alpha, greys;
        cv::cvtColor(image, colours, cv::COLOR_RGBA2BGR);
        if (hasAlpha) {
            cv::extractChannel(image, alpha, 3);
            cv::cvtColor(alpha, greys, cv::COLOR_GRAY2BGR);
        }
        Keep(colours.data);
        Keep(greys.data);
    }
    Count(state);
}
#endif

#define ALPHA_SIZES ->Args({256, 256})->Args({1920, 1080})
BENCHMARK(PaintOurs) ALPHA_SIZES;
BENCHMARK(PaintPlain) ALPHA_SIZES;
#if BENCH_PIXMAN
BENCHMARK(PaintByPixman) ALPHA_SIZES;
#endif
BENCHMARK(InvertOurs) ALPHA_SIZES;
BENCHMARK(InvertPlain) ALPHA_SIZES;
BENCHMARK(MergeOurs<MergeImagePng>)->Name("MergeImageOurs") ALPHA_SIZES;
BENCHMARK(MergePlain<0, 2>)->Name("MergeImagePlain") ALPHA_SIZES;
BENCHMARK(MergeOurs<MergeChannelPng>)->Name("MergeChannelOurs") ALPHA_SIZES;
BENCHMARK(MergePlain<3, 3>)->Name("MergeChannelPlain") ALPHA_SIZES;
#define ALPHA_CASES(work)                               \
    BENCHMARK_CAPTURE(work, opaque, false) ALPHA_SIZES; \
    BENCHMARK_CAPTURE(work, alpha, true) ALPHA_SIZES
ALPHA_CASES(WidenOurs);
ALPHA_CASES(WidenPlain);
ALPHA_CASES(NarrowOurs);
ALPHA_CASES(NarrowPlain);
#if BENCH_OPENCV
BENCHMARK(InvertByOpenCv) ALPHA_SIZES;
ALPHA_CASES(WidenByOpenCv);
ALPHA_CASES(NarrowByOpenCv);
#endif

}  // namespace
}  // namespace fenlight
