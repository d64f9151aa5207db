// SPDX-License-Identifier: Zlib
#include "particles/star_field.h"

#include <algorithm>
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

// A table, for ages are too mixed for a branch to be foretold.
COLORREF ColourOfAge(int32_t age) {
    static constexpr COLORREF kColours[] = {0x808080, 0xC0C0C0, 0xFFFFFF};
    return kColours[std::min(static_cast<uint32_t>(age) / 64, 2u)];
}

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

bool IsInside(const StarArguments &field, int32_t x, int32_t y) {
    return field.left < x && x < field.right && field.top < y && y < field.bottom;
}

// False: the star has left the rectangle or has lived long enough.
bool Move(StarRecord &star, const StarArguments &field) {
    const int32_t x = star.x, y = star.y;
    const int32_t nextX = WrappedSum(x, star.vx), nextY = WrappedSum(y, star.vy);
    StoreWord(star.prevX, x);
    StoreWord(star.x, nextX);
    StoreWord(star.prevY, y);
    StoreWord(star.y, nextY);
    const bool isParked = nextX == kNowhere && nextY == kNowhere;
    if (!IsInside(field, nextX, nextY) && !isParked) return false;
    const int32_t age = WrappedSum(star.age, 1);
    StoreWord(star.age, age);
    return age < kLongestAge;
}

void RunStars(std::span<StarRecord> stars, StrokeBatch &batch) {
    const StarArguments field = settings;
    for (size_t i = 0; i < stars.size(); ++i) {
        StarRecord &star = stars[i];
        FetchAhead(star);
        batch.Put(i, star.prevX, star.prevY, star.x, star.y, ColourOfAge(star.age));
        if (Move(star, field)) continue;
        ++goneCount;
        if (Option(StarSettings.stopMode) != kRunOut) Launch(star);
    }
    batch.Draw(stars.size());
}

void EraseEach(std::span<StarRecord> stars, StrokeBatch &batch) {
    for (size_t i = 0; i < stars.size(); ++i)
        batch.Put(i, stars[i].prevX, stars[i].prevY, kNowhere, kNowhere, 0);
    batch.Draw(stars.size());
}

// In array order, a batch at a time.
void ForAllStars(void (*work)(std::span<StarRecord> stars, StrokeBatch &batch)) {
    StrokeBatch batch(Surfaces());
    for (std::span<StarRecord> rest = AllStars(); !rest.empty();) {
        const size_t count = std::min(rest.size(), StrokeBatch::kCapacity);
        work(rest.first(count), batch);
        rest = rest.subspan(count);
    }
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
    ForAllStars(RunStars);
}

bool StarFieldGoesOn(int32_t stopMode) noexcept {
    return stopMode == kKeepRunning || (stopMode == kRunOut && goneCount != settings.count);
}

void EraseStars() noexcept { ForAllStars(EraseEach); }

}  // namespace fenlight
