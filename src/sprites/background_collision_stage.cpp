// SPDX-License-Identifier: Zlib
// Sprites against a mask of the world: twelve probes along the edges of the frame, and what a hit leads to.
#include <bit>
#include <mutex>

#include "fenlight/sprite_collision.h"
#include "platform/graphics/surface_access.h"
#include "sound/sound_voice.h"
#include "sprites/animation.h"
#include "sprites/sprite_list.h"
#include "sprites/stages.h"

namespace fenlight {

namespace {

// Values of BackCollideMode. Those from kModeBounce to kModeBounceLeft turn round at a hit, all but the first
// of them also set a heading in each frame.
constexpr int32_t kModeOff = 0;
constexpr int32_t kModeStop = 1;
constexpr int32_t kModeBounce = 2;
constexpr int32_t kModeBounceUp = 3;
constexpr int32_t kModeBounceRight = 4;
constexpr int32_t kModeBounceDown = 5;
constexpr int32_t kModeBounceLeft = 6;
constexpr int32_t kModeExplode = 7;
constexpr int32_t kModeExploding = 1111;

// In kModeExplode the four bounds are the SourceX, SourceY, Width and Height of the explosion.
struct BackCollision {
    uintptr_t mask;
    int32_t mode, left, top, right, bottom, frameCount, frame, frameDelay;
    uintptr_t sound;
};

// Keeps the ten words together: the bounds of a bouncing sprite would make a wild picture of an explosion.
// Innermost, held for these words only.
std::mutex collisionLock;

void StoreCollision(SpriteRecord &record, const BackCollision &collision) noexcept {
    const std::scoped_lock hold(collisionLock);
    record.BackCollideDC = collision.mask;
    record.BackLeft = collision.left;
    record.BackTop = collision.top;
    record.BackRight = collision.right;
    record.BackBottom = collision.bottom;
    record.BackFrameCount = collision.frameCount;
    record.BackFrame = collision.frame;
    record.BackFrameDelay = collision.frameDelay;
    record.BackCollideSound = collision.sound;
    record.BackCollideMode = collision.mode;
}

BackCollision LoadCollision(const SpriteRecord &record) noexcept {
    const std::scoped_lock hold(collisionLock);
    return {record.BackCollideDC,  record.BackCollideMode, record.BackLeft,       record.BackTop,
            record.BackRight,      record.BackBottom,      record.BackFrameCount, record.BackFrame,
            record.BackFrameDelay, record.BackCollideSound};
}

// False: the caller has set another mode meanwhile, which is to stay.
bool ReplaceMode(SpriteRecord &record, int32_t expected, int32_t mode) noexcept {
    const std::scoped_lock hold(collisionLock);
    return record.BackCollideMode.Replace(expected, mode);
}

enum class Edge : uint8_t { Top, Right, Left, Bottom };

// Where along the frame, in quarters of its size, and how many pixels further.
struct Probe {
    Edge edge;
    int8_t quartersX, quartersY, nudgeX, nudgeY;
};

// In the order in which they are tried.
constexpr Probe kProbes[] = {
    {Edge::Top, 1, 0, 0, 1},     {Edge::Top, 2, 0, 0, 0},     {Edge::Top, 3, 0, 0, 1},
    {Edge::Right, 4, 1, -2, 0},  {Edge::Right, 4, 2, -1, 0},  {Edge::Right, 4, 3, -2, 0},
    {Edge::Left, 0, 1, 0, -1},   {Edge::Left, 0, 2, 0, 0},    {Edge::Left, 0, 3, 0, -1},
    {Edge::Bottom, 1, 4, 0, -2}, {Edge::Bottom, 2, 4, 0, -1}, {Edge::Bottom, 3, 4, 0, -2}};

// Halves are no two quarters: each division drops its own remainder.
constexpr int32_t PartOf(int32_t size, int32_t quarters) noexcept {
    if (quarters == 4) return size;
    return quarters == 2 ? size / 2 : quarters * (size / 4);
}

// A bit for each probe that hits black. All are read at once, so that the mask is locked once and no longer
// when the reaction sets in.
uint32_t FindHits(const SpriteRecord &record, HDC mask) noexcept {
    const int32_t x = record.NextX, y = record.NextY, width = record.Width, height = record.Height;
    const platform::SurfaceAccess pixels(mask);
    if (!pixels) return 0;
    uint32_t hits = 0, bit = 1;
    for (const Probe &probe : kProbes) {
        const int32_t probeX = WrapAdd(x, WrapAdd(PartOf(width, probe.quartersX), probe.nudgeX));
        const int32_t probeY = WrapAdd(y, WrapAdd(PartOf(height, probe.quartersY), probe.nudgeY));
        if (pixels.GetPixel(probeX, probeY) == 0) hits |= bit;
        bit <<= 1;
    }
    return hits;
}

void ForceHeading(SpriteRecord &record, const BackCollision &collision) noexcept {
    switch (collision.mode) {
        case kModeBounceUp:
            record.TargetY = collision.top;
            break;
        case kModeBounceRight:
            record.TargetX = collision.right;
            break;
        case kModeBounceDown:
            record.TargetY = collision.bottom;
            break;
        case kModeBounceLeft:
            record.TargetX = collision.left;
            break;
        default:
            break;
    }
}

void TurnRound(SpriteRecord &record, const BackCollision &collision, Edge edge) noexcept {
    switch (edge) {
        case Edge::Top:
            record.TargetY = collision.bottom;
            break;
        case Edge::Right:
            record.TargetX = collision.left;
            break;
        case Edge::Left:
            record.TargetX = collision.right;
            break;
        case Edge::Bottom:
            record.TargetY = collision.top;
            break;
    }
}

void Stop(SpriteRecord &record) noexcept {
    record.TargetX = record.X;
    record.TargetY = record.Y;
}

void EndExplosion(SpriteRecord &record) noexcept {
    if (record.Frame == record.FrameCount && ReplaceMode(record, kModeExploding, kModeOff))
        EraseSprite(record);
}

void Explode(SpriteRecord &record, const BackCollision &collision) noexcept {
    if (!ReplaceMode(record, kModeExplode, kModeExploding)) return;
    SetStripX(record, collision.left);
    SetStripY(record, collision.top);
    record.Width = collision.right;
    record.Height = collision.bottom;
    record.FrameCount = collision.frameCount;
    record.Frame = collision.frame;
    record.FrameDelay = collision.frameDelay;
    record.FrameTimer = 0;
    record.SpeedX = 0;
    record.SpeedY = 0;
    record.AnimOnce = 1;
    EndExplosion(record);
}

// True: the hit is the last one of this frame.
bool React(SpriteRecord &record, const BackCollision &collision, Edge edge) noexcept {
    if (collision.mode <= kModeExplode) StartNextVoice(collision.sound);
    switch (collision.mode) {
        case kModeStop:
            Stop(record);
            return true;
        case kModeExplode:
            Explode(record, collision);
            return true;
        case kModeExploding:
            EndExplosion(record);
            return true;
        default:
            if (collision.mode >= kModeBounce && collision.mode <= kModeBounceLeft)
                TurnRound(record, collision, edge);
            return false;
    }
}

}  // namespace

void BackgroundCollisionStage(SpriteRecord &record) noexcept {
    const BackCollision collision = LoadCollision(record);
    if (collision.mode == kModeOff) return;
    ForceHeading(record, collision);
    for (uint32_t hits = FindHits(record, collision.mask); hits != 0; hits &= hits - 1)
        if (React(record, collision, kProbes[std::countr_zero(hits)].edge)) return;
}

}  // namespace fenlight

using namespace fenlight;

int32_t SetBackAutoCollision(uintptr_t sprite, uintptr_t maskDC, int32_t mode, int32_t left, int32_t top,
                             int32_t right, int32_t bottom, int32_t frameCount, int32_t frame,
                             int32_t frameDelay, uintptr_t sound) noexcept {
    if (sprite != 0)
        StoreCollision(*RecordOf(sprite),
                       {maskDC, mode, left, top, right, bottom, frameCount, frame, frameDelay, sound});
    return 0;
}
