// SPDX-License-Identifier: Zlib
#include "particles/star_field.h"

#include <span>

#include "fenlight/platform/system.h"
#include "frame/random.h"
#include "particles/record_words.h"
#include "particles/stroke_batch.h"

namespace fenlight {

static_assert(sizeof(StarRecord) == 32);

constinit StarOptions StarSettings;

namespace {

constexpr int32_t kLongestAge = 256;

// Written while no frame runs.
constinit StarArguments settings;
constinit StarRecord *records = nullptr;
// Of who runs the frames: stars that were gone in the last one.
constinit int32_t goneCount = 0;

std::span<StarRecord> AllStars() { return {records, static_cast<size_t>(settings.count)}; }

// The bytes have to fit into 32 bits, as they always had to.
size_t BlockBytes(int32_t count) {
    const int64_t bytes = int64_t{count} * int64_t{sizeof(StarRecord)} + 8;
    return bytes <= int64_t{UINT32_MAX} ? static_cast<size_t>(bytes) : 0;
}

bool IsField(const StarArguments &arguments) {
    return arguments.count >= 1 && BlockBytes(arguments.count) != 0 && arguments.left < arguments.right &&
           arguments.top < arguments.bottom;
}

void SetFirstOptions(int32_t frameDelay) {
    StarSettings.stopMode.store(kKeepRunning, std::memory_order_relaxed);
    SetStarOptions(0, 0, 0, 0, frameDelay);
}

// Ages apart, so that the stars leave one by one.
void Park(StarRecord &star) {
    star.x = star.y = star.prevX = star.prevY = kNowhere;
    star.age = static_cast<int32_t>(RandomDraw(250));
}

StrokeSurfaces Surfaces() {
    const bool hasBackground = settings.backgroundDC != 0;
    return {settings.destDC, settings.backgroundDC, !hasBackground,
            hasBackground && (settings.flags & 1) != 0};
}

COLORREF ColourOfAge(int32_t age) { return age < 64 ? 0x808080 : age < 128 ? 0xC0C0C0 : 0xFFFFFF; }

int32_t Middle(int32_t low, int32_t high) {
    const uint32_t half = (static_cast<uint32_t>(high) - static_cast<uint32_t>(low)) >> 1;
    return WrappedSum(low, static_cast<int32_t>(half));
}

int32_t DrawAround(uint32_t limit) {
    return static_cast<int32_t>(RandomDraw(limit)) - static_cast<int32_t>(limit / 2);
}

int32_t Option(const std::atomic<int32_t> &option) { return option.load(std::memory_order_relaxed); }

struct Course {
    int32_t position, speed;
};

Course DrawCourse(int32_t middle, int32_t bias, int32_t origin) {
    const int32_t speed = DrawAround(10);
    return {WrappedSum(middle, WrappedSum(speed * 32, origin)), WrappedSum(speed, bias)};
}

// Half of the stars that move on one axis only are drawn anew, and all that would stand still.
bool TryLaunch(StarRecord &star) {
    StoreWord(star.age, static_cast<int32_t>(RandomDraw(96)));
    const Course across = DrawCourse(Middle(settings.left, settings.right), Option(StarSettings.biasX),
                                     Option(StarSettings.originX));
    const Course down = DrawCourse(Middle(settings.top, settings.bottom), Option(StarSettings.biasY),
                                   Option(StarSettings.originY));
    if (across.speed == 0 && (RandomDraw(2) != 0 || down.speed == 0)) return false;
    if (down.speed == 0 && RandomDraw(2) != 0) return false;
    StoreWord(star.x, WrappedSum(across.position, DrawAround(48)));
    StoreWord(star.y, WrappedSum(down.position, DrawAround(48)));
    StoreWord(star.vx, across.speed);
    StoreWord(star.vy, down.speed);
    return true;
}

// Its former pixel stays noted and is erased in the next frame.
void Launch(StarRecord &star) {
    while (!TryLaunch(star)) {
    }
}

bool IsInside(int32_t x, int32_t y) {
    return settings.left < x && x < settings.right && settings.top < y && y < settings.bottom;
}

// False: the star has left the rectangle or has lived long enough.
bool Move(StarRecord &star, const Stroke &stroke) {
    const int32_t x = WrappedSum(stroke.newX, LoadWord(star.vx));
    const int32_t y = WrappedSum(stroke.newY, LoadWord(star.vy));
    StoreWord(star.prevX, stroke.newX);
    StoreWord(star.x, x);
    StoreWord(star.prevY, stroke.newY);
    StoreWord(star.y, y);
    const bool isParked = x == kNowhere && y == kNowhere;
    if (!isParked && !IsInside(x, y)) return false;
    const int32_t age = WrappedSum(LoadWord(star.age), 1);
    StoreWord(star.age, age);
    return age < kLongestAge;
}

}  // namespace

StarRecord *CurrentStars() noexcept { return records; }

bool MakeStarField(const StarArguments &arguments) noexcept {
    if (records != nullptr || !IsField(arguments)) return false;
    records = static_cast<StarRecord *>(GlobalAlloc(GPTR, BlockBytes(arguments.count)));
    if (records == nullptr) return false;
    settings = arguments;
    SetFirstOptions(arguments.frameDelay);
    for (StarRecord &star : AllStars()) Park(star);
    return true;
}

void SetStarOptions(int32_t originX, int32_t originY, int32_t biasX, int32_t biasY,
                    int32_t frameDelay) noexcept {
    StarSettings.originX.store(originX, std::memory_order_relaxed);
    StarSettings.originY.store(originY, std::memory_order_relaxed);
    StarSettings.biasX.store(biasX, std::memory_order_relaxed);
    StarSettings.biasY.store(biasY, std::memory_order_relaxed);
    StarSettings.frameDelay.store(frameDelay, std::memory_order_relaxed);
}

void FreeStarField() noexcept {
    GlobalFree(records);
    records = nullptr;
}

void RunStarFrame() noexcept {
    goneCount = 0;
    StrokeBatch batch(Surfaces());
    for (StarRecord &star : AllStars()) {
        const Stroke stroke{LoadWord(star.prevX), LoadWord(star.prevY), LoadWord(star.x), LoadWord(star.y),
                            ColourOfAge(LoadWord(star.age))};
        batch.Add(stroke);
        if (Move(star, stroke)) continue;
        ++goneCount;
        if (Option(StarSettings.stopMode) != kRunOut) Launch(star);
    }
}

bool StarFieldGoesOn(int32_t stopMode) noexcept {
    return stopMode == kKeepRunning || (stopMode == kRunOut && goneCount != settings.count);
}

void EraseStars() noexcept {
    StrokeSurfaces surfaces = Surfaces();
    surfaces.showsOnBlackOnly = false;
    StrokeBatch batch(surfaces);
    for (const StarRecord &star : AllStars())
        batch.Add({LoadWord(star.prevX), LoadWord(star.prevY), kNowhere, kNowhere, 0});
}

}  // namespace fenlight
