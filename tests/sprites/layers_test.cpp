// SPDX-License-Identifier: Zlib
// The order of the list, marks, bulk deletion and fix mode; frames are stepped without the thread.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "fenlight/sprite_layers.h"
#include "fenlight/sprite_movement.h"
#include "fenlight/sprite_thread.h"
#include "fenlight/sprite_worlds.h"
#include "sprites/frame_order.h"
#include "sprites/layer_requests.h"
#include "sprites/loose_sprite.h"
#include "sprites/sprite_scene.h"
#include "sprites/stages.h"

namespace fenlight::test {
namespace {

using Handles = std::vector<uintptr_t>;

// From back to front as the caller is told, and as the running frame draws them.
Handles ListOrder() {
    Handles order;
    for (SpriteRecord *record = SpriteList; record != nullptr; record = NextOf(*record)) {
        order.push_back(HandleOf(record));
        EXPECT_EQ(GetSpriteLayer(order.back()), static_cast<int32_t>(order.size()));
    }
    return order;
}

Handles DrawnOrder() {
    Handles order;
    const auto note = [&](SpriteRecord &record) { order.push_back(HandleOf(&record)); };
    WalkFrameOrder(
        *SpriteList.load(), [](SpriteRecord const &) {}, note);
    return order;
}

Handles AddSprites(Scene &scene, int count) {
    for (int i = 0; i < count; ++i) scene.Add(5 * (i % 16), 3 * (i % 16));
    return ListOrder();
}

// A call is its kind (layer, top, bottom, swap), its sprite and a layer or the other sprite; 0 is handle 0
// and ? in no list. No order: nothing changes and the call fails.
TEST(Layers, FollowTracesWorkedOutByHand) {
    const struct {
        const char *call, *order;
    } traces[] = {
        {"LB4", "ACDBE"}, {"LD2", "ABDCE"}, {"LE1", "AEBCD"}, {"BE ", "AEBCD"}, {"TB ", "ACDEB"},
        {"TE ", "ABCDE"}, {"LC3", "ABCDE"}, {"LC2", "ABCDE"}, {"LB1", "ABCDE"}, {"LC5", "ABDEC"},
        {"LC0", "ABCDE"}, {"LC6", "ABCDE"}, {"LC-", "ABCDE"}, {"LA4", "ABCDE"}, {"TA ", "ABCDE"},
        {"L03", "ABCDE"}, {"L?3", "ABCDE"}, {"SBD", "ADCBE"}, {"SDB", "ADCBE"}, {"SBE", "AECDB"},
        {"SCD", "ABDCE"}, {"SDC", "ABDCE"}, {"SED", "ABCED"}, {"SCC", "ABCDE"}, {"SAB", nullptr},
        {"SBA", nullptr}, {"SAA", nullptr}, {"SB?", nullptr}, {"S0B", nullptr}, {"S00", nullptr},
    };
    for (const auto &[call, order] : traces) {
        SCOPED_TRACE(call);
        Scene scene;
        LooseSprite stranger;
        const Handles sprites = AddSprites(scene, 5);
        const auto handle = [&](char name) {
            if (name == '0') return uintptr_t{0};
            return name == '?' ? stranger.Handle() : sprites[static_cast<size_t>(name - 'A')];
        };
        const uintptr_t sprite = handle(call[1]);
        const int32_t result = call[0] == 'S'   ? SwapSpriteLayers(sprite, handle(call[2]))
                               : call[0] == 'T' ? BringSpriteToTop(sprite)
                               : call[0] == 'B'
                                   ? BringSpriteToBottom(sprite)
                                   : SetSpriteLayer(sprite, call[2] == '-' ? kLowest : call[2] - '0');
        EXPECT_EQ(result, order == nullptr ? -1 : 0);
        Handles expected;
        for (const char *name = order == nullptr ? "ABCDE" : order; *name != 0; ++name)
            expected.push_back(handle(*name));
        EXPECT_EQ(ListOrder(), call[0] == 'S' ? expected : sprites) << "requests wait for a frame";
        RunFrame();
        EXPECT_EQ(ListOrder(), expected);
        EXPECT_EQ(DrawnOrder(), expected);
        for (const LayerRequest &pair : LayerRequests) EXPECT_EQ(pair.sprite, 0u) << "used up";
    }
}

// The list as a vector; the first element never moves.
struct ListModel {
    Handles order;

    void Request(uintptr_t sprite, int32_t layer) {
        const auto place = std::find(order.begin(), order.end(), sprite);
        if (place == order.begin() || place == order.end()) return;
        if (layer < 1 || layer > static_cast<int32_t>(order.size())) return;
        const uintptr_t below = order[static_cast<size_t>(layer) - 1];
        if (below == sprite) return;
        order.erase(place);
        order.insert(std::find(order.begin(), order.end(), below) + 1, sprite);
    }
    bool Swap(uintptr_t a, uintptr_t b) {
        if (a == order[0] || b == order[0]) return false;
        std::iter_swap(std::find(order.begin(), order.end(), a), std::find(order.begin(), order.end(), b));
        return true;
    }
    // As CleanUp, with all of them finished: all but the first, the second and the last.
    void CleanUp(const Handles &finished) {
        for (size_t i = order.size() - 1; i-- > 2;)
            if (std::find(finished.begin(), finished.end(), order[i]) != finished.end())
                order.erase(order.begin() + static_cast<ptrdiff_t>(i));
    }
};

TEST(Layers, MatchAModelOverRandomRequests) {
    Scene scene;
    ListModel model{AddSprites(scene, 6)};
    std::mt19937 random(11);
    const auto below = [&](size_t end) { return static_cast<size_t>(random() % end); };
    for (int round = 0; round < 400; ++round) {
        SCOPED_TRACE(round);
        const auto any = [&] { return model.order[below(model.order.size())]; };
        std::vector<std::pair<uintptr_t, int32_t>> requests;
        for (size_t i = 0, count = round % 50 == 0 ? 70 : below(5); i < count; ++i) {
            const std::pair request{any(), static_cast<int32_t>(below(model.order.size() + 3)) - 1};
            EXPECT_EQ(SetSpriteLayer(request.first, request.second), i < 62 ? 0 : -1) << i;
            if (i < 62) requests.push_back(request);
        }
        for (size_t i = below(4); i > 0; --i) {
            const uintptr_t a = any(), b = any();
            EXPECT_EQ(SwapSpriteLayers(a, b), model.Swap(a, b) ? 0 : -1);
        }
        if (model.order.size() < 30 && below(2) == 0) model.order.push_back(HandleOf(&scene.Add(40, 30)));
        Handles finished;
        if (round % 20 == 19) {
            for (const uintptr_t sprite : model.order)
                if (below(3) == 0) finished.push_back(sprite), RecordOf(sprite)->State = kStateFinished;
            CleanUp(0);
        }
        for (const auto &[sprite, layer] : requests) model.Request(sprite, layer);
        if (!finished.empty()) model.CleanUp(finished);
        RunFrame();
        ASSERT_EQ(ListOrder(), model.order);
        ASSERT_EQ(DrawnOrder(), model.order);
        for (const uintptr_t sprite : model.order) RecordOf(sprite)->State = kStateAlive;
    }
}

// Runs `call` in the brake before the pass with that number, so in the middle of a frame.
struct MidFrameClock : SteppedClock {
    void Sleep(uint32_t) noexcept override {
        if (pass++ == callAt) call();
    }
    int pass = 0, callAt = 0;
    std::function<void()> call = [] {};
};

// Whatever is swapped or added while a frame walks, each sprite has one pass, leaves nothing in the back
// buffer, and the screen shows it once.
TEST(Layers, ChangeNothingInAFrameThatRuns) {
    constexpr int kSprites = 5;
    for (int callAt = 0; callAt < kSprites; ++callAt)
        for (const auto &[a, b] :
             std::array<std::pair<size_t, size_t>, 6>{{{1, 2}, {2, 1}, {1, 4}, {4, 1}, {2, 3}, {4, 3}}}) {
            SCOPED_TRACE(std::to_string(callAt) + ": " + std::to_string(a) + ", " + std::to_string(b));
            MidFrameClock clock;
            Scene scene;
            Handles expected = AddSprites(scene, kSprites);
            SpriteThreadBrake(1);
            clock.callAt = callAt;
            clock.call = [&, a = a, b = b] {
                EXPECT_EQ(SwapSpriteLayers(expected[a], expected[b]), 0);
                scene.Add(60, 40);
            };
            RunFrame();
            std::swap(expected[a], expected[b]);
            const Handles order = ListOrder();
            expected.push_back(order.back());
            EXPECT_EQ(order, expected);
            for (const uintptr_t sprite : order) EXPECT_EQ(RecordOf(sprite)->FrameTimer, 1) << "one pass";
            EXPECT_TRUE(SamePicture("layers-back", scene.back.Get(), scene.background));
            RunFrame();
            EXPECT_EQ(DrawnOrder(), expected);
            Picture painted = scene.background;
            for (const uintptr_t sprite : expected)
                scene.Paint(painted, RecordOf(sprite)->X, RecordOf(sprite)->Y);
            EXPECT_TRUE(SamePicture("layers-screen", scene.screen.Get(), painted));
        }
}

// Races get many rounds where the machine has time for both threads, and end soon where it has not.
template <class Round>
void Race(Round round) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(400);
    for (int32_t i = 1; i < 50 || std::chrono::steady_clock::now() < end; ++i) round(i);
}

// One caller fills, the other fills and empties: every pair comes through, once and whole.
TEST(LayerRequests, ComeThroughFromTwoCallersAtOnce) {
    Numbers filled[2], taken[2];
    const auto fill = [&](size_t caller) {
        const auto number = static_cast<int32_t>(filled[caller].size());
        if (!FillLayerRequest(32 * static_cast<uintptr_t>(number + 1) + 16 * caller, number)) return false;
        return filled[caller].push_back(number), true;
    };
    const auto empty = [&] {
        for (LayerRequest &pair : LayerRequests)
            if (const LayerChange change = TakeLayerRequest(pair); change.sprite != 0) {
                EXPECT_EQ(change.sprite / 32, static_cast<uintptr_t>(change.layer + 1));
                taken[change.sprite / 16 % 2].push_back(change.layer);
            }
    };
    std::atomic<bool> isOver{false};
    std::thread other([&] {
        while (!isOver)
            if (!fill(0)) std::this_thread::yield();
    });
    Race([&](int32_t) { fill(1), empty(); });
    isOver = true;
    other.join();
    empty();
    for (const size_t caller : {0u, 1u}) {
        std::sort(taken[caller].begin(), taken[caller].end());
        EXPECT_TRUE(taken[caller] == filled[caller])
            << taken[caller].size() << " of " << filled[caller].size();
    }
}

TEST(Layers, AnswerAnEmptyListAndHandleZeroAsDocumented) {
    LooseSprite stranger;
    EXPECT_EQ(GetSpriteLayer(stranger.Handle()), -1);
    EXPECT_EQ(SwapSpriteLayers(stranger.Handle(), stranger.Handle()), -1);
    for (const auto erase : {DeleteSpritesMark, DeleteAllXSprites, DeleteAllYSprites}) EXPECT_EQ(erase(0), 0);
    EXPECT_EQ(DeleteSpritesIfAnimReady(), 0);
    for (const int32_t result :
         {MarkSprite(0, 1), GetSpriteMark(0), SetSpriteFixMode(0, 1), GetSpriteFixMode(0),
          BringSpriteToTop(0), BringSpriteToBottom(0), SetSpriteLayer(0, 2)})
        EXPECT_EQ(result, 0);
    Scene scene;
    AddSprites(scene, 2);
    EXPECT_EQ(GetSpriteLayer(0), -1);
    EXPECT_EQ(GetSpriteLayer(stranger.Handle()), -1);
}

// Twelve sprites of which each call chooses some; those deleted before are neither chosen nor counted.
TEST(BulkDeletion, TakesTheLivingSpritesThatMeetTheCondition) {
    const struct {
        std::function<int32_t()> call;
        Numbers chosen;
    } cases[] = {
        {[] { return DeleteSpritesMark(0); }, {1, 3, 5, 7, 9}},
        {[] { return DeleteSpritesMark(-7); }, {0, 2, 4, 6, 8, 10}},
        {[] { return DeleteSpritesMark(1); }, {}},
        {[] { return DeleteAllXSprites(20); }, {2, 5, 8}},
        {[] { return DeleteAllXSprites(21); }, {}},
        {[] { return DeleteAllYSprites(-3); }, {0, 1, 2, 3, 4, 5}},
        {[] { return DeleteSpritesIfAnimReady(); }, {3, 7}},
    };
    for (const auto &bulk : cases) {
        Scene scene;
        const Handles sprites = AddSprites(scene, 12);
        for (int32_t i = 0; i < 12; ++i) {
            SpriteRecord &record = *RecordOf(sprites[static_cast<size_t>(i)]);
            if (i % 2 == 0) MarkSprite(HandleOf(&record), -7);
            EXPECT_EQ(GetSpriteMark(HandleOf(&record)), i % 2 == 0 ? -7 : 0);
            record.X = 10 * (i % 3);
            record.Y = i < 6 ? -3 : 3;
            // The last frame: a single run is over, a cycle goes on.
            record.Frame = i % 4 == 3 || i == 2 ? Scene::kFrames : 1;
            record.AnimOnce = i != 2;
            record.FixMode = 5;
        }
        RecordOf(sprites[11])->State = kStateErasedAgain;
        EXPECT_EQ(bulk.call(), static_cast<int32_t>(bulk.chosen.size()));
        Numbers deleted;
        for (size_t i = 0; i < 11; ++i) {
            if (ExistSprite(sprites[i]) == -1) deleted.push_back(static_cast<int32_t>(i));
            EXPECT_EQ(GetSpriteFixMode(sprites[i]), ExistSprite(sprites[i]) == 0 ? 5 : 0) << "to be erased";
        }
        EXPECT_EQ(deleted, bulk.chosen);
        EXPECT_EQ(RecordOf(sprites[11])->State, kStateErasedAgain);
        EXPECT_EQ(bulk.call(), 0) << "once";
    }
}

// Of two calls in a row the later one takes effect, wherever a pass gets between them.
TEST(FixMode, IsThatOfTheLastCallBesideARunningThread) {
    LooseSprite sprite;
    std::atomic<bool> isOver{false};
    std::thread frames([&] {
        while (!isOver) FixStage(sprite);
    });
    bool isServed = true;
    Race([&](int32_t mode) {
        SetSpriteFixMode(sprite.Handle(), -mode);
        SetSpriteFixMode(sprite.Handle(), mode);
        isServed = isServed && WaitUntil([&] { return sprite.FixMode == mode; });
    });
    isOver = true;
    frames.join();
    EXPECT_TRUE(isServed);
}

TEST(VisualTableFix, FixesSpritesWhoseCornerLiesOutsideTheRectangle) {
    // A rectangle from (10, -20) to (30, 5), right and bottom excluded.
    const struct {
        Point corner;
        int32_t mode;
    } sprites[] = {{{10, -20}, 0}, {{29, 4}, 0}, {{30, 5}, 1},   {{30, 4}, 1},      {{29, 5}, 1},
                   {{9, 0}, 1},    {{10, 0}, 0}, {{20, -21}, 1}, {{kLowest, 0}, 1}, {{20, kHighest}, 1}};
    constexpr size_t kCount = std::size(sprites);
    constexpr auto kHandleBytes = static_cast<int32_t>(sizeof(uintptr_t));
    for (const int32_t bytes : {kLowest, -1, 0, kHandleBytes, 2 * kHandleBytes - 1, 2 * kHandleBytes,
                                4 * kHandleBytes + 3, static_cast<int32_t>(kCount + 1) * kHandleBytes}) {
        SCOPED_TRACE(bytes);
        std::array<LooseSprite, kCount> records;
        std::array<uintptr_t, kCount + 1> table{};  // its first handle is 0
        for (size_t i = 0; i < kCount; ++i) {
            SetSpritePos(table[i + 1] = records[i].Handle(), sprites[i].corner[0], sprites[i].corner[1], 0,
                         0);
            records[i].FixMode = 7;
        }
        EXPECT_EQ(VisualTableFix(table.data(), bytes, 10, -20, 30, 5), 0);
        for (size_t i = 0; i < kCount; ++i) {
            const bool isInTable = static_cast<int32_t>(i + 2) * kHandleBytes <= bytes;
            EXPECT_EQ(GetSpriteFixMode(table[i + 1]), 7) << "until the next pass";
            FixStage(records[i]);
            EXPECT_EQ(GetSpriteFixMode(table[i + 1]), isInTable ? sprites[i].mode : 7) << i;
        }
    }
    EXPECT_EQ(VisualTableFix(nullptr, 80, 10, -20, 30, 5), 0);
}

}  // namespace
}  // namespace fenlight::test
