// SPDX-License-Identifier: Zlib
// A sprite in no list, for stages that are run by hand.
#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <limits>
#include <map>
#include <thread>

#include "fenlight/sprite_movement.h"
#include "sprites/sprite_record.h"
#include "sprites/waypoint_table.h"

namespace fenlight {

constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();
constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();

using Point = std::array<int32_t, 2>;
using Words = std::map<int32_t, intptr_t>;  // by documented position, all that aren't 0

struct LooseSprite : SpriteRecord {
    LooseSprite() { RectLeft = RectTop = RectRight = RectBottom = -1; }
    LooseSprite(Point from, Point to, Point speed) : LooseSprite() {
        SetSpritePos(Handle(), from[0], from[1], to[0], to[1]);
        SetSpriteSpeed(Handle(), speed[0], speed[1]);
    }
    ~LooseSprite() { FreeWaypointTable(*this); }
    uintptr_t Handle() { return HandleOf(this); }
    Point Position() const { return {X, Y}; }
    Point Target() const { return {TargetX, TargetY}; }
};

inline Words WordsOf(const SpriteRecord &record) {
    Words words;
    for (int32_t position = 0; position < 1024; position += 4)
        if (const intptr_t value = ReadWord(record, position); value != 0) words[position] = value;
    return words;
}

// Runs `call` with 0, 1, ... on a caller's thread beside `stage` on this one, each at least so many times: on
// a busy machine either may have to wait for its turn. How often `stage` was true.
template <class Call, class Stage>
int32_t CountBeside(int32_t rounds, Call call, Stage stage) {
    std::atomic<bool> isDone{false};
    std::atomic<int32_t> stages{0};
    std::thread caller([&] {
        for (int32_t round = 0; round < rounds || stages < rounds; round += round < kHighest ? 1 : 0)
            call(round);
        isDone = true;
    });
    int32_t count = 0;
    for (; !isDone; stages.fetch_add(1, std::memory_order_relaxed)) count += stage() ? 1 : 0;
    caller.join();
    return count;
}

}  // namespace fenlight
