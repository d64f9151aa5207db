// SPDX-License-Identifier: Zlib
// Block transfers beside SDL2's surfaces and OpenCV's resize. Rates are target pixels per second. For ratios
// run with --benchmark_enable_random_interleaving=true --benchmark_repetitions=15 and compare the "best"
// rows.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <random>
#include <span>
#include <vector>

#include "platform/raster/raster.h"

#if BENCH_SDL2
#include <SDL.h>
#endif
#if BENCH_OPENCV
#include <opencv2/imgproc.hpp>
#endif

namespace {

using fenlight::platform::PixelFormat;
using fenlight::platform::PixelView;

constexpr uint32_t kKey = 0x00FF00FF;  // 0x00RRGGBB and COLORREF alike

double Best(const std::vector<double> &values) { return *std::min_element(values.begin(), values.end()); }

void Repeat(benchmark::internal::Benchmark *bench) {
    bench->ComputeStatistics("best", Best)->Repetitions(5)->ReportAggregatesOnly(true)->MinTime(0.02);
}

void Squares(benchmark::internal::Benchmark *bench) {
    bench->Args({32, 32})->Args({256, 256})->Args({1920, 1080})->Apply(Repeat);
}

void Counts(benchmark::internal::Benchmark *bench) {
    bench->Arg(10)->Arg(100)->Arg(300)->Arg(1000)->Arg(5000)->Apply(Repeat);
}

// A pitch as the platform's bitmaps have it: rows on 64 bytes, no multiple of 4096.
ptrdiff_t PaddedPitch(int width, int bits) {
    ptrdiff_t pitch = ((width * bits + 7) / 8 + 63) / 64 * 64;
    return pitch % 4096 == 0 ? pitch + 64 : pitch;
}

// Something like sprites: a little over half of the pixels keyed out, in runs, an ellipse in each 32x32 cell.
bool IsInside(int x, int y) {
    const int dx = x % 32 * 2 - 31;
    const int dy = y % 32 * 2 - 31;
    return dx * dx + dy * dy < 590;
}

struct Picture {
    Picture(int width, int height, PixelFormat format) : palette(256) {
        const int bits = fenlight::platform::BitsPerPixel(format);
        const ptrdiff_t pitch = PaddedPitch(width, bits);
        memory.resize(static_cast<size_t>(pitch * height) + 64);
        auto *start =
            reinterpret_cast<uint8_t *>((reinterpret_cast<uintptr_t>(memory.data()) + 63) / 64 * 64);
        for (uint32_t i = 0; i < 256; ++i) palette[i] = i * 0x010203;
        palette[255] = kKey;
        view = {start, pitch, width, height, format, palette.data(), 256};
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) Paint(x, y, bits / 8);
        }
    }
    void Paint(int x, int y, int pixelBytes) {
        const auto index = static_cast<uint32_t>((x * 7 + y * 13) % 200);
        const uint32_t value =
            pixelBytes == 1 ? (IsInside(x, y) ? index : 255) : (IsInside(x, y) ? palette[index] : kKey);
        std::memcpy(view.Row(y) + x * pixelBytes, &value, static_cast<size_t>(pixelBytes));
    }
    std::vector<uint8_t> memory;
    std::vector<uint32_t> palette;
    PixelView view;
};

void CountPixels(benchmark::State &state, int64_t width, int64_t height) {
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * width * height);
}

template <PixelFormat kFrom>
void Copy(benchmark::State &state) {
    const auto width = static_cast<int>(state.range(0));
    const auto height = static_cast<int>(state.range(1));
    Picture source(width, height, kFrom);
    Picture target(width, height, PixelFormat::Bgrx32);
    for (auto _ : state) {
        BlitBlock(target.view, &source.view, {0, 0, width, height, 0, 0}, SRCCOPY, {});
        benchmark::ClobberMemory();
    }
    CountPixels(state, width, height);
}

template <PixelFormat kFrom>
void Key(benchmark::State &state) {
    const auto width = static_cast<int>(state.range(0));
    const auto height = static_cast<int>(state.range(1));
    Picture source(width, height, kFrom);
    Picture target(width, height, PixelFormat::Bgrx32);
    for (auto _ : state) {
        KeyedBlock(target.view, source.view, {0, 0, width, height, 0, 0, width, height}, kKey, {});
        benchmark::ClobberMemory();
    }
    CountPixels(state, width, height);
}

// The target is `numerator / denominator` of the source.
template <int kNumerator, int kDenominator>
void Scale(benchmark::State &state) {
    const auto width = static_cast<int>(state.range(0));
    const auto height = static_cast<int>(state.range(1));
    const int targetWidth = width * kNumerator / kDenominator;
    const int targetHeight = height * kNumerator / kDenominator;
    Picture source(width, height, PixelFormat::Bgrx32);
    Picture target(targetWidth, targetHeight, PixelFormat::Bgrx32);
    for (auto _ : state) {
        StretchBlock(target.view, &source.view, {0, 0, targetWidth, targetHeight, 0, 0, width, height},
                     SRCCOPY, {});
        benchmark::ClobberMemory();
    }
    CountPixels(state, targetWidth, targetHeight);
}

// `isMoving`: every other rectangle is the one before, moved by two pixels, as a sprite's old and new places
// are.
std::vector<RECT> RandomRectangles(int64_t count, bool isMoving) {
    std::mt19937 random(5);
    std::vector<RECT> rectangles;
    LONG x = 0;
    LONG y = 0;
    for (int64_t i = 0; i < count; ++i) {
        x = isMoving && i % 2 == 1 ? x + 2 : static_cast<LONG>(random() % (1024 - 34));
        y = isMoving && i % 2 == 1 ? y + 1 : static_cast<LONG>(random() % (768 - 34));
        rectangles.push_back({x, y, x + 32, y + 32});
    }
    return rectangles;
}

template <bool kIsMoving>
void UnionOfRectangles(benchmark::State &state) {
    Picture source(1024, 768, PixelFormat::Bgrx32);
    Picture target(1024, 768, PixelFormat::Bgrx32);
    const std::vector<RECT> rectangles = RandomRectangles(state.range(0), kIsMoving);
    for (auto _ : state) {
        CopyUnion(target.view, source.view, rectangles, {});
        benchmark::ClobberMemory();
    }
    CountPixels(state, 32, 32 * state.range(0));
}

template <bool kIsMoving>
void EachRectangle(benchmark::State &state) {
    Picture source(1024, 768, PixelFormat::Bgrx32);
    Picture target(1024, 768, PixelFormat::Bgrx32);
    const std::vector<RECT> rectangles = RandomRectangles(state.range(0), kIsMoving);
    for (auto _ : state) {
        for (const RECT &r : rectangles) {
            BlitBlock(target.view, &source.view, {r.left, r.top, 32, 32, r.left, r.top}, SRCCOPY, {});
        }
        benchmark::ClobberMemory();
    }
    CountPixels(state, 32, 32 * state.range(0));
}

BENCHMARK(Copy<PixelFormat::Bgrx32>)->Name("copy32/ours")->Apply(Squares);
BENCHMARK(Copy<PixelFormat::Bgr24>)->Name("copy24/ours")->Apply(Squares);
BENCHMARK(Copy<PixelFormat::Indexed8>)->Name("copy8/ours")->Apply(Squares);
BENCHMARK(Key<PixelFormat::Bgrx32>)->Name("key32/ours")->Apply(Squares);
BENCHMARK(Key<PixelFormat::Bgr24>)->Name("key24/ours")->Apply(Squares);
BENCHMARK(Key<PixelFormat::Indexed8>)->Name("key8/ours")->Apply(Squares);
BENCHMARK((Scale<2, 1>))->Name("double/ours")->Apply(Squares);
BENCHMARK((Scale<1, 2>))->Name("half/ours")->Apply(Squares);
BENCHMARK((Scale<7, 5>))->Name("sevenfifths/ours")->Apply(Squares);
BENCHMARK(UnionOfRectangles<false>)->Name("union/ours")->Apply(Counts);
BENCHMARK(EachRectangle<false>)->Name("union/each")->Apply(Counts);
BENCHMARK(UnionOfRectangles<true>)->Name("movedunion/ours")->Apply(Counts);
BENCHMARK(EachRectangle<true>)->Name("movedunion/each")->Apply(Counts);

#if BENCH_SDL2
enum class Form { Opaque, Key, KeyRle };

SDL_Surface *MakeSurface(const Picture &picture) {
    const PixelView &view = picture.view;
    const int bits = fenlight::platform::BitsPerPixel(view.format);
    SDL_Surface *surface =
        bits == 8 ? SDL_CreateRGBSurface(0, view.width, view.height, 8, 0, 0, 0, 0)
                  : SDL_CreateRGBSurface(0, view.width, view.height, bits, 0xFF0000, 0xFF00, 0xFF, 0);
    for (int y = 0; y < view.height; ++y) {
        std::memcpy(static_cast<uint8_t *>(surface->pixels) + y * surface->pitch, view.Row(y),
                    static_cast<size_t>(view.width * bits / 8));
    }
    for (int i = 0; bits == 8 && i < 256; ++i) {
        const uint32_t word = picture.palette[static_cast<size_t>(i)];
        const SDL_Color colour{static_cast<Uint8>(word >> 16), static_cast<Uint8>(word >> 8),
                               static_cast<Uint8>(word), 255};
        SDL_SetPaletteColors(surface->format->palette, &colour, i, 1);
    }
    SDL_SetSurfaceBlendMode(surface, SDL_BLENDMODE_NONE);
    return surface;
}

template <PixelFormat kFrom, Form kForm>
void SdlBlit(benchmark::State &state) {
    const auto width = static_cast<int>(state.range(0));
    const auto height = static_cast<int>(state.range(1));
    SDL_Surface *source = MakeSurface(Picture(width, height, kFrom));
    SDL_Surface *target = MakeSurface(Picture(width, height, PixelFormat::Bgrx32));
    const Uint32 key = kFrom == PixelFormat::Indexed8 ? 255 : kKey;
    if (kForm != Form::Opaque) SDL_SetColorKey(source, SDL_TRUE, key);
    if (kForm == Form::KeyRle) SDL_SetSurfaceRLE(source, 1);
    for (auto _ : state) {
        SDL_BlitSurface(source, nullptr, target, nullptr);
        benchmark::ClobberMemory();
    }
    CountPixels(state, width, height);
    SDL_FreeSurface(source);
    SDL_FreeSurface(target);
}

template <int kNumerator, int kDenominator>
void SdlScale(benchmark::State &state) {
    const auto width = static_cast<int>(state.range(0));
    const auto height = static_cast<int>(state.range(1));
    const int targetWidth = width * kNumerator / kDenominator;
    const int targetHeight = height * kNumerator / kDenominator;
    SDL_Surface *source = MakeSurface(Picture(width, height, PixelFormat::Bgrx32));
    SDL_Surface *target = MakeSurface(Picture(targetWidth, targetHeight, PixelFormat::Bgrx32));
    for (auto _ : state) {
        SDL_BlitScaled(source, nullptr, target, nullptr);
        benchmark::ClobberMemory();
    }
    CountPixels(state, targetWidth, targetHeight);
    SDL_FreeSurface(source);
    SDL_FreeSurface(target);
}

BENCHMARK((SdlBlit<PixelFormat::Bgrx32, Form::Opaque>))->Name("copy32/sdl")->Apply(Squares);
BENCHMARK((SdlBlit<PixelFormat::Bgr24, Form::Opaque>))->Name("copy24/sdl")->Apply(Squares);
BENCHMARK((SdlBlit<PixelFormat::Indexed8, Form::Opaque>))->Name("copy8/sdl")->Apply(Squares);
BENCHMARK((SdlBlit<PixelFormat::Bgrx32, Form::Key>))->Name("key32/sdl")->Apply(Squares);
BENCHMARK((SdlBlit<PixelFormat::Bgr24, Form::Key>))->Name("key24/sdl")->Apply(Squares);
BENCHMARK((SdlBlit<PixelFormat::Indexed8, Form::Key>))->Name("key8/sdl")->Apply(Squares);
BENCHMARK((SdlBlit<PixelFormat::Bgrx32, Form::KeyRle>))->Name("key32/sdlrle")->Apply(Squares);
BENCHMARK((SdlBlit<PixelFormat::Bgr24, Form::KeyRle>))->Name("key24/sdlrle")->Apply(Squares);
BENCHMARK((SdlBlit<PixelFormat::Indexed8, Form::KeyRle>))->Name("key8/sdlrle")->Apply(Squares);
BENCHMARK((SdlScale<2, 1>))->Name("double/sdl")->Apply(Squares);
BENCHMARK((SdlScale<1, 2>))->Name("half/sdl")->Apply(Squares);
BENCHMARK((SdlScale<7, 5>))->Name("sevenfifths/sdl")->Apply(Squares);
#endif

#if BENCH_OPENCV
template <int kNumerator, int kDenominator>
void CvScale(benchmark::State &state) {
    const auto width = static_cast<int>(state.range(0));
    const auto height = static_cast<int>(state.range(1));
    cv::setNumThreads(1);
    const cv::Mat source(height, width, CV_8UC4, cv::Scalar(1, 2, 3, 4));
    cv::Mat target(height * kNumerator / kDenominator, width * kNumerator / kDenominator, CV_8UC4);
    for (auto _ : state) {
        cv::resize(source, target, target.size(), 0, 0, cv::INTER_NEAREST);
        benchmark::ClobberMemory();
    }
    CountPixels(state, target.cols, target.rows);
}

BENCHMARK((CvScale<2, 1>))->Name("double/opencv")->Apply(Squares);
BENCHMARK((CvScale<1, 2>))->Name("half/opencv")->Apply(Squares);
BENCHMARK((CvScale<7, 5>))->Name("sevenfifths/opencv")->Apply(Squares);
#endif

}  // namespace
