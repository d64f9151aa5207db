// SPDX-License-Identifier: Zlib
#include "sprites/animation.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "fenlight/sprite_animation.h"
#include "sprites/loose_sprite.h"
#include "sprites/stages.h"

namespace fenlight {
namespace {

void ShowStrip(LooseSprite &sprite, int32_t frameCount, int32_t startFrame, int32_t delay) {
    SetSpriteAnim(sprite.Handle(), 0, 0, 32, 32, frameCount, startFrame, delay);
}

TEST(AnimStage, ShowsEachFrameForTheDelay) {
    const struct {
        int32_t frameCount, startFrame, delay, mode;
        std::function<int32_t(int32_t)> frameIn;  // the frame drawn in pass 0, 1, ...
        int32_t firstReadyPass = kHighest;        // the single run has ended after it
    } cases[] = {
        {4, 1, 3, 0, [](int32_t p) { return p / 3 % 4 + 1; }},
        {4, 3, 2, 0, [](int32_t p) { return (p / 2 + 2) % 4 + 1; }},
        {5, 1, 1, 0, [](int32_t p) { return p % 5 + 1; }},
        // Frame 4 is set at the end of pass 8 and first drawn in pass 9.
        {4, 1, 3, 5, [](int32_t p) { return std::min(p / 3 + 1, 4); }, 8},
        {1, 1, 2, 0, [](int32_t) { return 1; }},
        {1, 1, 2, 1, [](int32_t) { return 1; }, 0},
        {4, 2, 0, 0, [](int32_t) { return 2; }},
        {4, 2, -1, 1, [](int32_t) { return 2; }},
        {4, 5, 2, 1, [](int32_t p) { return p / 2 + 5; }},  // beyond the strip
    };
    for (const auto &c : cases) {
        LooseSprite sprite;
        ShowStrip(sprite, c.frameCount, c.startFrame, c.delay);
        SetSpriteAnimMode(sprite.Handle(), c.mode);
        for (int32_t pass = 0; pass < 40; ++pass) {
            ASSERT_EQ(sprite.Frame, c.frameIn(pass)) << "row " << &c - cases << " pass " << pass;
            AnimStage(sprite);
            ASSERT_EQ(GetSpriteAnimModeStatus(sprite.Handle()), pass >= c.firstReadyPass)
                << "row " << &c - cases << " pass " << pass;
        }
    }
}

}  // namespace
}  // namespace fenlight
