// SPDX-License-Identifier: Zlib
// Collision from the pixels of two sprites, 64 x 64 against 48 x 48 overlapping by half of the smaller one,
// and all meeting pairs of a list of sprites.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <random>
#include <vector>

#include "fenlight/platform/graphics.h"
#include "fenlight/platform/windows.h"
#include "fenlight/sprite_collision.h"
#include "sprites/collision.h"
#include "sprites/frame_order.h"
#include "sprites/sprite_list.h"

namespace fenlight {
namespace {

constexpr uint32_t kKey = 0xFF00FF;
constexpr int kLarge = 64, kSmall = 48, kOverlap = kSmall / 2;

struct Picture {
    int size;
    std::vector<uint32_t> pixels;
    HDC context = CreateCompatibleDC(0);
    HBITMAP bitmap;

    template <class IsShown>
    Picture(int edge, IsShown isShown) : size(edge), pixels(static_cast<size_t>(edge * edge), kKey) {
        bitmap = CreateCompatibleBitmap(GetDC(0), size, size);
        SelectObject(context, bitmap);
        for (int y = 0; y < size; ++y)
            for (int x = 0; x < size; ++x) {
                uint32_t &pixel = pixels[static_cast<size_t>(y * size + x)];
                if (isShown(x, y)) pixel = static_cast<uint32_t>(x * 5 + y * 512);
                SetPixel(context, x, y, (pixel & 0xFF) << 16 | (pixel & 0xFF00) | pixel >> 16);
            }
    }
    Picture(const Picture &) = delete;
    Picture &operator=(const Picture &) = delete;
    ~Picture() {
        DeleteDC(context);
        DeleteObject(bitmap);
    }
};

// The right half of the large one is empty but for its last pixel in the overlap, which meets or doesn't.
struct Pair {
    Picture large{kLarge, [](int x, int y) { return x < kLarge - kOverlap || (x == kLarge - 1 && y == 55); }};
    Picture small;
    SpriteRecord a, b;

    explicit Pair(bool isHit)
        : small(kSmall, [isHit](int x, int y) { return y > 0 && (isHit || x != kOverlap - 1 || y != 47); }) {
        a.ImageDC = large.context;
        b.ImageDC = small.context;
        a.Frame = b.Frame = 1;
        a.Width = a.Height = kLarge;
        b.Width = b.Height = kSmall;
        b.X = kLarge - kOverlap;
        b.Y = 8;
    }
};

void CollisionFenlight(benchmark::State &state) {
    Pair pair(state.range(0) != 0);
    for (auto _ : state)
        if (Collision(HandleOf(&pair.a), HandleOf(&pair.b), 1, 1) != state.range(0))
            state.SkipWithError("wrong result");
}
BENCHMARK(CollisionFenlight)->Arg(0)->Arg(1);

void CollisionPlainLoop(benchmark::State &state) {
    Pair pair(state.range(0) != 0);
    for (auto _ : state) {
        benchmark::ClobberMemory();
        int64_t isHit = 0;
        for (int y = 0; y < kSmall && isHit == 0; ++y)
            for (int x = 0; x < kOverlap && isHit == 0; ++x) {
                const int own = (y + 8) * kLarge + kLarge - kOverlap + x;
                isHit = pair.large.pixels[static_cast<size_t>(own)] != kKey &&
                        pair.small.pixels[static_cast<size_t>(y * kSmall + x)] != kKey;
            }
        if (isHit != state.range(0)) state.SkipWithError("wrong result");
    }
}
BENCHMARK(CollisionPlainLoop)->Arg(0)->Arg(1);

// A bit for each pixel, a word for each row.
std::array<uint64_t, kLarge> MaskOf(const Picture &picture) {
    std::array<uint64_t, kLarge> mask{};
    for (int y = 0; y < picture.size; ++y)
        for (int x = 0; x < picture.size; ++x)
            mask[static_cast<size_t>(y)] |=
                uint64_t{picture.pixels[static_cast<size_t>(y * picture.size + x)] != kKey} << x;
    return mask;
}

void CollisionMasksMadePerCall(benchmark::State &state) {
    Pair pair(state.range(0) != 0);
    for (auto _ : state) {
        benchmark::ClobberMemory();
        const auto large = MaskOf(pair.large), small = MaskOf(pair.small);
        uint64_t common = 0;
        for (size_t y = 0; y < kSmall; ++y) common |= large[y + 8] >> (kLarge - kOverlap) & small[y];
        if ((common != 0) != (state.range(0) != 0)) state.SkipWithError("wrong result");
    }
}
BENCHMARK(CollisionMasksMadePerCall)->Arg(0)->Arg(1);

// `count` sprites of 32 x 32 over a world that grows with them, or all in one heap. The records come from the
// heap in one order and are linked in another, as in a game that has run for a while.
class List {
  public:
    List(int64_t count, bool isHeap) : pairs_(static_cast<size_t>(isHeap ? count * count : 64 * count)) {
        for (int64_t i = 0; i < count; ++i)
            records_.push_back(MakeRecord({0, 0, 0, 0, 0, 0, 32, 32, 1, 1, 0, 0, 0, 0, 0}));
        std::mt19937 random(3);
        std::shuffle(records_.begin(), records_.end(), random);
        StartList(*records_[0]);
        for (size_t i = 1; i < records_.size(); ++i) {
            records_[i - 1]->Next = HandleOf(records_[i]);
            AppendToFrameOrder(*records_[i]);
        }
        const uint32_t edge = isHeap ? 16 : count > 1000 ? 6400 : 2048;
        for (auto &place : places_)
            for (int64_t i = 0; i < 2 * count; ++i) place.push_back(static_cast<int32_t>(random() % edge));
        boxes_.resize(records_.size());
        MoveRecords();
        MoveBoxes();
    }
    List(const List &) = delete;
    List &operator=(const List &) = delete;
    ~List() { FreeRecords(SpriteList.exchange(nullptr)); }

    // Each search meets the sprites where no search has met them lately: a processor learns by heart what it
    // does a thousand times.
    void MoveRecords() {
        const auto &place = places_[turn_++ % places_.size()];
        for (size_t i = 0; i < records_.size(); ++i) {
            records_[i]->X = place[2 * i];
            records_[i]->Y = place[2 * i + 1];
        }
    }
    void MoveBoxes() {
        const auto &place = places_[turn_++ % places_.size()];
        for (size_t i = 0; i < records_.size(); ++i)
            boxes_[i] = {place[2 * i], place[2 * i + 1], place[2 * i] + 32, place[2 * i + 1] + 32};
    }

    size_t FindByEachWithEach() {
        size_t count = 0;
        for (size_t i = 0; i < boxes_.size(); ++i)
            for (size_t j = i + 1; j < boxes_.size(); ++j) {
                const SpriteBox &a = boxes_[i], &b = boxes_[j];
                if (a.left <= b.right && a.right >= b.left && a.top <= b.bottom && a.bottom >= b.top)
                    Write(count++, i, j);
            }
        return count;
    }
    // By the left edge, then the pairs back into the list's order.
    size_t FindBySortedSweep() {
        order_.resize(boxes_.size());
        for (size_t i = 0; i < order_.size(); ++i) order_[i] = static_cast<uint32_t>(i);
        std::sort(order_.begin(), order_.end(),
                  [this](uint32_t i, uint32_t j) { return boxes_[i].left < boxes_[j].left; });
        found_.clear();
        for (size_t i = 0; i < order_.size(); ++i) {
            const SpriteBox &a = boxes_[order_[i]];
            for (size_t j = i + 1; j < order_.size() && boxes_[order_[j]].left <= a.right; ++j) {
                const SpriteBox &b = boxes_[order_[j]];
                const auto [first, second] = std::minmax(order_[i], order_[j]);
                if (a.top <= b.bottom && a.bottom >= b.top) found_.push_back(uint64_t{first} << 32 | second);
            }
        }
        std::sort(found_.begin(), found_.end());
        for (size_t k = 0; k < found_.size(); ++k)
            Write(k, static_cast<size_t>(found_[k] >> 32), static_cast<uint32_t>(found_[k]));
        return found_.size();
    }
    uintptr_t *Pairs() { return pairs_.data(); }

  private:
    void Write(size_t place, size_t i, size_t j) {
        pairs_[2 * place] = HandleOf(records_[i]);
        pairs_[2 * place + 1] = HandleOf(records_[j]);
    }

    std::vector<SpriteRecord *> records_;
    std::array<std::vector<int32_t>, 64> places_;
    size_t turn_ = 0;
    std::vector<SpriteBox> boxes_;
    std::vector<uintptr_t> pairs_;
    std::vector<uint32_t> order_;
    std::vector<uint64_t> found_;
};

template <class Find>
void RunPairs(benchmark::State &state, void (List::*move)(), Find find) {
    List list(state.range(0), state.range(1) != 0);
    size_t pairs = 0, searches = 0;
    for (auto _ : state) {
        (list.*move)();
        benchmark::ClobberMemory();
        pairs += find(list);
        ++searches;
    }
    state.counters["pairs"] = static_cast<double>(pairs) / static_cast<double>(searches);
}

void PairsFenlight(benchmark::State &state) {
    const auto find = [](List &list) { return static_cast<size_t>(CollideUnknown(list.Pairs())); };
    RunPairs(state, &List::MoveRecords, find);
}
void PairsSortedSweep(benchmark::State &state) {
    RunPairs(state, &List::MoveBoxes, [](List &list) { return list.FindBySortedSweep(); });
}
void PairsEachWithEach(benchmark::State &state) {
    RunPairs(state, &List::MoveBoxes, [](List &list) { return list.FindByEachWithEach(); });
}
void Sizes(benchmark::internal::Benchmark *bench) {
    bench->ArgNames({"sprites", "heap"})->Args({500, 0})->Args({5000, 0})->Args({500, 1});
    bench->Unit(benchmark::kMicrosecond);
}
BENCHMARK(PairsFenlight)->Apply(Sizes);
BENCHMARK(PairsSortedSweep)->Apply(Sizes);
BENCHMARK(PairsEachWithEach)->Apply(Sizes);

}  // namespace
}  // namespace fenlight
