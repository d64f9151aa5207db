// SPDX-License-Identifier: Zlib
// What a call through a handle costs: single pixels against a plain array, a sprite's transfer against SDL2's
// opaque blit. Rows of one name before the slash belong together; their ratio is what counts.
#include <benchmark/benchmark.h>

#include <vector>

#include "fenlight/platform/graphics.h"
#include "platform/graphics/screen_context.h"
#include "platform/graphics/surface_access.h"
#if BENCH_SDL2
#include <SDL.h>
#endif

namespace fenlight::platform {
namespace {

constexpr int32_t kWidth = 1024;
constexpr int32_t kHeight = 768;

// A context with a 32-bit bitmap, kept for the whole run.
HDC MakeContext() {
    const HDC context = CreateCompatibleDC(0);
    SelectObject(context, CreateCompatibleBitmap(ScreenContext(), kWidth, kHeight));
    return context;
}

// A walk over the picture that no compiler foresees as one row.
struct Walk {
    int32_t x = 0, y = 0;
    void Step() {
        x = (x + 7) & 1023;
        y = (y + 5) & 511;
    }
};

void PixelReadThroughHandle(benchmark::State &state) {
    const HDC context = MakeContext();
    Walk walk;
    for (auto _ : state) {
        benchmark::DoNotOptimize(GetPixel(context, walk.x, walk.y));
        walk.Step();
    }
}

void PixelReadUnderOneLock(benchmark::State &state) {
    const HDC context = MakeContext();
    const SurfaceAccess access(context);
    Walk walk;
    for (auto _ : state) {
        benchmark::DoNotOptimize(access.GetPixel(walk.x, walk.y));
        walk.Step();
    }
}

void PixelReadFromArray(benchmark::State &state) {
    std::vector<uint32_t> pixels(kWidth * kHeight);
    Walk walk;
    for (auto _ : state) {
        benchmark::DoNotOptimize(pixels[static_cast<size_t>(walk.y * kWidth + walk.x)]);
        walk.Step();
    }
}

void PixelWriteThroughHandle(benchmark::State &state) {
    const HDC context = MakeContext();
    Walk walk;
    for (auto _ : state) {
        benchmark::DoNotOptimize(SetPixel(context, walk.x, walk.y, 0x123456));
        walk.Step();
    }
}

void PixelWriteUnderOneLock(benchmark::State &state) {
    const HDC context = MakeContext();
    SurfaceAccess access(context);
    Walk walk;
    for (auto _ : state) {
        access.SetPixel(walk.x, walk.y, 0x123456);
        benchmark::ClobberMemory();
        walk.Step();
    }
}

void PixelWriteToArray(benchmark::State &state) {
    std::vector<uint32_t> pixels(kWidth * kHeight);
    Walk walk;
    for (auto _ : state) {
        pixels[static_cast<size_t>(walk.y * kWidth + walk.x)] = 0x563412;
        benchmark::ClobberMemory();
        walk.Step();
    }
}

void SpriteBlitThroughHandles(benchmark::State &state) {
    const auto size = static_cast<int32_t>(state.range(0));
    const HDC target = MakeContext();
    const HDC source = MakeContext();
    Walk walk;
    for (auto _ : state) {
        BitBlt(target, walk.x & 511, walk.y & 255, size, size, source, 64, 32, SRCCOPY);
        walk.Step();
    }
}

#if BENCH_SDL2
void SpriteBlitBySdl(benchmark::State &state) {
    const auto size = static_cast<int>(state.range(0));
    SDL_Surface *target = SDL_CreateRGBSurfaceWithFormat(0, kWidth, kHeight, 32, SDL_PIXELFORMAT_RGB888);
    SDL_Surface *source = SDL_CreateRGBSurfaceWithFormat(0, kWidth, kHeight, 32, SDL_PIXELFORMAT_RGB888);
    const SDL_Rect from{64, 32, size, size};
    Walk walk;
    for (auto _ : state) {
        SDL_Rect to{walk.x & 511, walk.y & 255, size, size};
        SDL_BlitSurface(source, &from, target, &to);
        walk.Step();
    }
    SDL_FreeSurface(target);
    SDL_FreeSurface(source);
}
#endif

void LineThroughHandle(benchmark::State &state) {
    const HDC context = MakeContext();
    Walk walk;
    for (auto _ : state) {
        MoveToEx(context, walk.x, walk.y, nullptr);
        LineTo(context, walk.x + 90, walk.y + 40);
        walk.Step();
    }
    state.SetItemsProcessed(state.iterations() * 90);
}

BENCHMARK(PixelReadThroughHandle)->Name("PixelRead/handle");
BENCHMARK(PixelReadUnderOneLock)->Name("PixelRead/one_lock");
BENCHMARK(PixelReadFromArray)->Name("PixelRead/array");
BENCHMARK(PixelWriteThroughHandle)->Name("PixelWrite/handle");
BENCHMARK(PixelWriteUnderOneLock)->Name("PixelWrite/one_lock");
BENCHMARK(PixelWriteToArray)->Name("PixelWrite/array");
BENCHMARK(SpriteBlitThroughHandles)->Name("SpriteBlit/handles")->Arg(32)->Arg(256);
#if BENCH_SDL2
BENCHMARK(SpriteBlitBySdl)->Name("SpriteBlit/sdl2")->Arg(32)->Arg(256);
#endif
BENCHMARK(LineThroughHandle)->Name("Line/handle");

}  // namespace
}  // namespace fenlight::platform
