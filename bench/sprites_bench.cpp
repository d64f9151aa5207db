// SPDX-License-Identifier: Zlib
// The sprite frame: every sprite drawn into the back buffer, shown on the screen, and taken out of the back
// buffer again. 1024 x 768 pixels, sprites of 32 x 32 with a little over half of their pixels keyed out, all
// of them moving. The rate counts drawn sprite pixels.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdlib>
#include <random>
#include <vector>

#include "fenlight/platform/graphics.h"
#include "fenlight/platform/windows.h"
#include "fenlight/sprite_movement.h"
#include "fenlight/sprite_worlds.h"
#include "sprites/sprite_list.h"
#include "sprites/sprite_thread.h"
#include "sprites/stages.h"

#if BENCH_SDL2
#include <SDL.h>
#endif

namespace fenlight {
namespace {

constexpr int kWidth = 1024, kHeight = 768, kSize = 32, kFrames = 8;
constexpr int kWorldWidth = 1600, kWorldHeight = 1200;
constexpr uint32_t kKey = 0xFF00FF;

// The pictures: round shapes, so that runs of keyed and of shown pixels are as long as in real ones.
uint32_t StripPixel(int x, int y) {
    const int dx = 2 * (x % kSize) - kSize + 1, dy = 2 * y - kSize + 1;
    const bool isShown = dx * dx + dy * dy < 620;
    return isShown ? static_cast<uint32_t>(x * 2654435 + y * 40503) & 0xFFFFFE : kKey;
}

uint32_t BackgroundPixel(int x, int y) { return static_cast<uint32_t>(x * 64 + y * 8192) & 0xFFFFFF; }

struct Mover {
    int x, y, stepX, stepY, previousX, previousY, frame, right, bottom;

    void Step() {
        previousX = x;
        previousY = y;
        if (x + stepX < 0 || x + stepX > right) stepX = -stepX;
        if (y + stepY < 0 || y + stepY > bottom) stepY = -stepY;
        x += stepX;
        y += stepY;
    }
};

// To and fro between the edges of a picture.
std::vector<Mover> MakeMovers(int64_t count, int width = kWidth, int height = kHeight) {
    std::mt19937 random(4);
    const auto below = [&](int end) { return static_cast<int>(random() % static_cast<unsigned>(end)); };
    const int right = width - kSize, bottom = height - kSize;
    std::vector<Mover> movers;
    for (int64_t i = 0; i < count; ++i) {
        const int x = below(right), y = below(bottom);
        movers.push_back({x, y, 1 + below(3), 1 + below(3), x, y, below(kFrames), right, bottom});
    }
    return movers;
}

void CountPixels(benchmark::State &state) {
    state.SetItemsProcessed(state.iterations() * state.range(0) * kSize * kSize);
}

class Surface {
  public:
    template <class Pixel>
    Surface(int width, int height, Pixel pixel) : context_(CreateCompatibleDC(0)) {
        bitmap_ = CreateCompatibleBitmap(GetDC(0), width, height);
        SelectObject(context_, bitmap_);
        for (int y = 0; y < height; ++y)
            for (int x = 0; x < width; ++x) {
                const uint32_t colour = pixel(x, y);
                SetPixel(context_, x, y, (colour & 0xFF) << 16 | (colour & 0xFF00) | colour >> 16);
            }
    }
    Surface(const Surface &) = delete;
    Surface &operator=(const Surface &) = delete;
    ~Surface() {
        DeleteDC(context_);
        DeleteObject(bitmap_);
    }
    operator HDC() const { return context_; }

  private:
    HDC context_;
    HBITMAP bitmap_;
};

void Fenlight(benchmark::State &state) {
    const Surface image(kSize * kFrames, kSize, StripPixel), screen(kWidth, kHeight, BackgroundPixel),
        back(kWidth, kHeight, BackgroundPixel), clean(kWidth, kHeight, BackgroundPixel);
    auto movers = MakeMovers(state.range(0));
    std::vector<SpriteRecord *> records;
    for (const Mover &mover : movers) {
        records.push_back(MakeRecord({image, screen, back, clean, 0, 0, kSize, kSize, kFrames,
                                      mover.frame + 1, 0, mover.x, mover.y, 0, 0}));
        if (records.size() > 1) records[records.size() - 2]->Next = HandleOf(records.back());
    }
    for (auto _ : state) {
        for (size_t i = 0; i < movers.size(); ++i) {
            movers[i].Step();
            records[i]->X = movers[i].x;
            records[i]->Y = movers[i].y;
            DrawStage(*records[i]);
        }
        PresentStage(*records[0]);
        RestoreStage(*records[0]);
    }
    CountPixels(state);
    const Mover &top = movers.back();
    if (GetPixel(screen, top.x + 16, top.y + 16) != GetPixel(image, top.frame * kSize + 16, 16))
        state.SkipWithError("the screen does not show the sprites");
    FreeRecords(records[0]);
    ReleaseFrameBuffers();
}
BENCHMARK(Fenlight)->Arg(100)->Arg(1000)->Arg(5000)->Unit(benchmark::kMicrosecond);

// Movers as sprites of the list, without the thread: frames are run by hand. The records come from the heap
// in one order and are linked in another, as in a game that has run for a while.
class List {
  public:
    List(const std::vector<Mover> &movers, HDC image, HDC screen, HDC back, HDC clean) {
        for (const Mover &mover : movers)
            records_.push_back(MakeRecord({image, screen, back, clean, 0, 0, kSize, kSize, kFrames,
                                           mover.frame + 1, 4, mover.x, mover.y, mover.stepX, mover.stepY}));
        std::shuffle(records_.begin(), records_.end(), std::mt19937(1));
        StartList(*records_.front());
        for (size_t i = 1; i < records_.size(); ++i)
            if (!LinkRecord(*records_[i])) std::abort();
        for (size_t i = 0; i < records_.size(); ++i) SendOff(*records_[i], movers[0].right, movers[0].bottom);
    }
    List(const List &) = delete;
    List &operator=(const List &) = delete;
    ~List() {
        FreeRecords(SpriteList.exchange(nullptr));
        ReleaseFrameBuffers();
    }
    const std::vector<SpriteRecord *> &Records() const { return records_; }

  private:
    // In all diagonal directions.
    static void SendOff(SpriteRecord &record, int32_t right, int32_t bottom) {
        SpriteMovingRect(HandleOf(&record), 0, 0, right, bottom);
        MoveSprite(HandleOf(&record), record.X % 2 == 0 ? right : 0, record.Y % 2 == 0 ? bottom : 0);
    }

    std::vector<SpriteRecord *> records_;
};

// Whole frames of sprites that nobody sees. The rate counts sprites.
void FixedSprites(benchmark::State &state) {
    const List list(MakeMovers(state.range(0)), 0, 0, 0, 0);
    for (SpriteRecord *record : list.Records()) record->FixMode = 1;
    for (auto _ : state) RunFrame();
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(FixedSprites)->Arg(1000)->Arg(10000)->Unit(benchmark::kMicrosecond);

// A world larger than the screen: whole frames, and the drawing, presenting and restoring in them alone. The
// difference is what moving and animating costs.
void World(benchmark::State &state, bool isView, bool isWhole) {
    const Surface image(kSize * kFrames, kSize, StripPixel), back(kWorldWidth, kWorldHeight, BackgroundPixel),
        clean(kWorldWidth, kWorldHeight, BackgroundPixel),
        screen(isView ? 640 : kWorldWidth, isView ? 480 : kWorldHeight, BackgroundPixel);
    InitSpriteBackground(isView, 640, 480, 300, 200, 0, 0);
    auto movers = MakeMovers(state.range(0), kWorldWidth, kWorldHeight);
    const List list(movers, image, screen, back, clean);
    RunFrame();
    for (auto _ : state) {
        if (isWhole) {
            RunFrame();
            continue;
        }
        for (size_t i = 0; i < movers.size(); ++i) {
            SpriteRecord &record = *list.Records()[i];
            movers[i].Step();
            record.X = movers[i].x;
            record.Y = movers[i].y;
            DrawStage(record);
        }
        PresentStage(*SpriteList.load());
        RestoreStage(*SpriteList.load());
    }
    CountPixels(state);
    InitSpriteBackground(0, 0, 0, 0, 0, 0, 0);
}
BENCHMARK_CAPTURE(World, rectangles, false, true)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(World, rectanglesDrawnOnly, false, false)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(World, view, true, true)->Arg(1000)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(World, viewDrawnOnly, true, false)->Arg(1000)->Unit(benchmark::kMicrosecond);

#if BENCH_SDL2

template <class Pixel>
SDL_Surface *MakeSurface(int width, int height, Pixel pixel) {
    SDL_Surface *surface = SDL_CreateRGBSurfaceWithFormat(0, width, height, 32, SDL_PIXELFORMAT_XRGB8888);
    for (int y = 0; y < height; ++y) {
        auto *row =
            reinterpret_cast<uint32_t *>(static_cast<uint8_t *>(surface->pixels) + y * surface->pitch);
        for (int x = 0; x < width; ++x) row[x] = pixel(x, y);
    }
    return surface;
}

struct SdlScene {
    SDL_Surface *image = MakeSurface(kSize * kFrames, kSize, StripPixel);
    SDL_Surface *screen = MakeSurface(kWidth, kHeight, BackgroundPixel);
    SDL_Surface *back = MakeSurface(kWidth, kHeight, BackgroundPixel);
    SDL_Surface *clean = MakeSurface(kWidth, kHeight, BackgroundPixel);

    SdlScene() { SDL_SetColorKey(image, SDL_TRUE, kKey); }
    SdlScene(const SdlScene &) = delete;
    SdlScene &operator=(const SdlScene &) = delete;
    ~SdlScene() {
        for (SDL_Surface *surface : {image, screen, back, clean}) SDL_FreeSurface(surface);
    }

    void Draw(std::vector<Mover> &movers) const {
        for (Mover &mover : movers) {
            mover.Step();
            SDL_Rect frame{mover.frame * kSize, 0, kSize, kSize}, place{mover.x, mover.y, kSize, kSize};
            SDL_BlitSurface(image, &frame, back, &place);
        }
    }
};

void CopyPlace(SDL_Surface *source, SDL_Surface *target, int x, int y) {
    SDL_Rect from{x, y, kSize, kSize}, to = from;
    SDL_BlitSurface(source, &from, target, &to);
}

void SdlByRectangles(benchmark::State &state, bool hasRuns) {
    const SdlScene scene;
    if (hasRuns) SDL_SetSurfaceRLE(scene.image, 1);
    auto movers = MakeMovers(state.range(0));
    for (auto _ : state) {
        scene.Draw(movers);
        for (const Mover &mover : movers) {
            CopyPlace(scene.back, scene.screen, mover.previousX, mover.previousY);
            CopyPlace(scene.back, scene.screen, mover.x, mover.y);
        }
        for (const Mover &mover : movers) CopyPlace(scene.clean, scene.back, mover.x, mover.y);
    }
    CountPixels(state);
}
BENCHMARK_CAPTURE(SdlByRectangles, key, false)->Arg(100)->Arg(1000)->Arg(5000)->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(SdlByRectangles, runs, true)->Arg(100)->Arg(1000)->Arg(5000)->Unit(benchmark::kMicrosecond);

void SdlByWholeScreen(benchmark::State &state, bool hasRuns) {
    const SdlScene scene;
    if (hasRuns) SDL_SetSurfaceRLE(scene.image, 1);
    auto movers = MakeMovers(state.range(0));
    for (auto _ : state) {
        scene.Draw(movers);
        SDL_BlitSurface(scene.back, nullptr, scene.screen, nullptr);
        SDL_BlitSurface(scene.clean, nullptr, scene.back, nullptr);
    }
    CountPixels(state);
}
BENCHMARK_CAPTURE(SdlByWholeScreen, key, false)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(5000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK_CAPTURE(SdlByWholeScreen, runs, true)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(5000)
    ->Unit(benchmark::kMicrosecond);

#endif

}  // namespace
}  // namespace fenlight
