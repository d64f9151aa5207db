// SPDX-License-Identifier: Zlib
// A map of 40 x 30 tiles of 16 x 16 pixels, painted on 640 x 480, beside the same number of SDL2's blits; and
// what one painted image costs beyond the transfer it stands on. Rates count painted pixels.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "fenlight/painting.h"
#include "fenlight/platform/graphics.h"
#include "fenlight/platform/windows.h"
#include "fenlight/tiles.h"

#if BENCH_SDL2
#include <SDL.h>
#endif

namespace {

constexpr int kColumns = 40, kRows = 30, kTile = 16, kWidth = kColumns * kTile, kHeight = kRows * kTile;
constexpr int kTiles = 32;
constexpr uint32_t kKey = 0xFF00FF;

// A diamond in each tile; somewhat over half of the pixels are keyed out.
uint32_t StripPixel(int x, int y) {
    const int dx = std::abs(2 * (x % kTile) - kTile + 1), dy = std::abs(2 * y - kTile + 1);
    return dx + dy < kTile ? static_cast<uint32_t>(x * 2654435 + y * 40503) & 0xFFFFFE : kKey;
}

std::vector<uint8_t> RandomMap() {
    std::mt19937 random(8);
    std::vector<uint8_t> map(kColumns * kRows);
    for (uint8_t &tile : map) tile = static_cast<uint8_t>(random() % kTiles);
    return map;
}

void CountPixels(benchmark::State &state) {
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * kWidth * kHeight);
}

class Surface {
  public:
    Surface(int width, int height) : context(CreateCompatibleDC(0)) {
        bitmap_ = CreateCompatibleBitmap(GetDC(0), width, height);
        SelectObject(context, bitmap_);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) SetPixel(context, x, y, StripPixel(x, y));
    }
    Surface(const Surface &) = delete;
    Surface &operator=(const Surface &) = delete;
    ~Surface() {
        DeleteDC(context);
        DeleteObject(bitmap_);
    }

    const HDC context;

  private:
    HBITMAP bitmap_;
};

void Tiles(benchmark::State &state, int32_t mode, int32_t shift) {
    const Surface strip(kTiles * kTile, kTile), screen(kWidth, kHeight);
    const std::vector<uint8_t> map = RandomMap();
    for (auto _ : state) {
        SetTiles(strip.context, 0, kColumns, kRows, kTile, kTile, map.data(), kColumns, 0, 0, screen.context,
                 shift, shift, mode, nullptr);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}

void EachTile(benchmark::State &state, int32_t mode) {
    const Surface strip(kTiles * kTile, kTile), screen(kWidth, kHeight);
    const std::vector<uint8_t> map = RandomMap();
    for (auto _ : state) {
        for (int i = 0; i < kColumns * kRows; ++i)
            PaintImage(screen.context, i % kColumns * kTile, i / kColumns * kTile, kTile, kTile,
                       strip.context, map[static_cast<size_t>(i)] * kTile, 0, mode);
        benchmark::ClobberMemory();
    }
    CountPixels(state);
}

BENCHMARK_CAPTURE(Tiles, ours, 0, 0)->Name("opaque/ours");
BENCHMARK_CAPTURE(Tiles, shifted, 0, -5)->Name("opaque/shifted");
BENCHMARK_CAPTURE(EachTile, each, 0)->Name("opaque/each");
BENCHMARK_CAPTURE(Tiles, ours, -1, 0)->Name("key/ours");
BENCHMARK_CAPTURE(Tiles, shifted, -1, -5)->Name("key/shifted");
BENCHMARK_CAPTURE(EachTile, each, -1)->Name("key/each");

void PaintOne(benchmark::State &state, bool isPainted) {
    const auto size = static_cast<int32_t>(state.range(0));
    const Surface image(512, 512), screen(512, 512);
    const COLORREF key = GetPixel(image.context, size - 1, 0);
    for (auto _ : state) {
        if (isPainted)
            PaintImage(screen.context, 0, 0, size, size, image.context, 0, 0, -1);
        else
            TransparentBlt(screen.context, 0, 0, size, size, image.context, 0, 0, size, size, key);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(static_cast<int64_t>(state.iterations()) * size * size);
}
BENCHMARK_CAPTURE(PaintOne, painted, true)->Name("paint/ours")->Arg(32)->Arg(256);
BENCHMARK_CAPTURE(PaintOne, transfer, false)->Name("paint/transfer")->Arg(32)->Arg(256);

#if BENCH_SDL2
enum class Form { Opaque, Key, RunLength };

SDL_Surface *MakeSurface(int width, int height) {
    SDL_Surface *surface = SDL_CreateRGBSurfaceWithFormat(0, width, height, 32, SDL_PIXELFORMAT_XRGB8888);
    for (int y = 0; y < height; ++y) {
        auto *row =
            reinterpret_cast<uint32_t *>(static_cast<uint8_t *>(surface->pixels) + y * surface->pitch);
        for (int x = 0; x < width; ++x) row[x] = StripPixel(x, y);
    }
    return surface;
}

void Sdl(benchmark::State &state, Form form) {
    SDL_Surface *strip = MakeSurface(kTiles * kTile, kTile), *screen = MakeSurface(kWidth, kHeight);
    if (form != Form::Opaque) SDL_SetColorKey(strip, SDL_TRUE, kKey);
    if (form == Form::RunLength) SDL_SetSurfaceRLE(strip, 1);
    const std::vector<uint8_t> map = RandomMap();
    for (auto _ : state) {
        for (int i = 0; i < kColumns * kRows; ++i) {
            const SDL_Rect from{map[static_cast<size_t>(i)] * kTile, 0, kTile, kTile};
            SDL_Rect to{i % kColumns * kTile, i / kColumns * kTile, kTile, kTile};
            SDL_BlitSurface(strip, &from, screen, &to);
        }
        benchmark::ClobberMemory();
    }
    CountPixels(state);
    SDL_FreeSurface(strip);
    SDL_FreeSurface(screen);
}
BENCHMARK_CAPTURE(Sdl, opaque, Form::Opaque)->Name("opaque/sdl2");
BENCHMARK_CAPTURE(Sdl, key, Form::Key)->Name("key/sdl2");
BENCHMARK_CAPTURE(Sdl, rle, Form::RunLength)->Name("key/sdl2_run_length");
#endif

}  // namespace
