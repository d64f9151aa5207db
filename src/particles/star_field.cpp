// SPDX-License-Identifier: Zlib
#include "particles/star_field.h"

#include <algorithm>
#include <span>
#include <type_traits>

#include "fenlight/platform/system.h"
#include "frame/random.h"
#include "particles/particle_pixels.h"
#include "particles/record_words.h"

namespace fenlight {

static_assert(sizeof(StarRecord) == 32);

constinit StarOptions StarSettings;

namespace {

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
    star.x = star.y = star.prevX = star.prevY = kParkedAt;
    star.age = static_cast<int32_t>(RandomDraw(250));
}

ParticleSurfaces Surfaces() { return {settings.destDC, settings.backgroundDC, settings.backgroundDC == 0}; }

// A table, for ages are too mixed for a branch to be foretold.
COLORREF ColourOfAge(int32_t age) {
    static constexpr COLORREF kColours[] = {0x808080, 0xC0C0C0, 0xFFFFFF};
    return kColours[std::min(static_cast<uint32_t>(age) / 64, 2u)];
}

int32_t Middle(int32_t low, int32_t high) {
    const uint32_t half = (static_cast<uint32_t>(high) - static_cast<uint32_t>(low)) >> 1;
    return WrappedSum(low, static_cast<int32_t>(half));
}

int32_t DrawAround(RandomTurn &random, uint32_t limit) {
    return static_cast<int32_t>(random.Draw(limit)) - static_cast<int32_t>(limit / 2);
}

int32_t Option(const std::atomic<int32_t> &option) { return option.load(std::memory_order_relaxed); }

struct Course {
    int32_t position, speed;
};

Course DrawCourse(RandomTurn &random, int32_t middle, int32_t bias, int32_t origin) {
    const int32_t speed = DrawAround(random, 10);
    return {WrappedSum(middle, WrappedSum(speed * 32, origin)), WrappedSum(speed, bias)};
}

// Half of the stars that move on one axis only are drawn anew, and all that would stand still.
bool TryLaunch(StarRecord &star, RandomTurn &random) {
    StoreWord(star.age, static_cast<int32_t>(random.Draw(96)));
    const Course across = DrawCourse(random, Middle(settings.left, settings.right),
                                     Option(StarSettings.biasX), Option(StarSettings.originX));
    const Course down = DrawCourse(random, Middle(settings.top, settings.bottom), Option(StarSettings.biasY),
                                   Option(StarSettings.originY));
    if (across.speed == 0 && (random.Draw(2) != 0 || down.speed == 0)) return false;
    if (down.speed == 0 && random.Draw(2) != 0) return false;
    StoreWord(star.x, WrappedSum(across.position, DrawAround(random, 48)));
    StoreWord(star.y, WrappedSum(down.position, DrawAround(random, 48)));
    StoreWord(star.vx, across.speed);
    StoreWord(star.vy, down.speed);
    return true;
}

// Its former pixel stays noted and is erased in the next frame.
void Launch(StarRecord &star, RandomTurn &random) {
    while (!TryLaunch(star, random)) {
    }
}

bool IsInside(const StarRoom &room, int32_t x, int32_t y) {
    return room.left < x && x < room.right && room.top < y && y < room.bottom;
}

// False: the star has left the rectangle or has lived long enough.
bool Move(StarRecord &star, const StarRoom &room) {
    const int32_t x = star.x, y = star.y;
    const int32_t nextX = WrappedSum(x, star.vx), nextY = WrappedSum(y, star.vy);
    CopyPair(star.prevX, star.x);
    StoreWord(star.x, nextX);
    StoreWord(star.y, nextY);
    const bool isParked = nextX == kParkedAt && nextY == kParkedAt;
    if (!IsInside(room, nextX, nextY) && !isParked) return false;
    const int32_t age = WrappedSum(star.age, 1);
    StoreWord(star.age, age);
    return age < kLongestStarAge;
}

// What vectors take of the stars; returns how many that is.
size_t MoveInVectors(std::span<StarRecord> stars, const StarRoom &room, const SurfaceShape &shape,
                     PixelJobs<PixelOffset> &jobs, NumberList &gone) {
    const auto moveStars = ChooseParticleKernels().moveStars;
    if (moveStars == nullptr) return 0;
    const size_t count = stars.size() / kRecordsAtOnce * kRecordsAtOnce;
    moveStars(stars.data(), count, room, shape, jobs, gone);
    return count;
}

template <class Pixels>
void MoveStars(std::span<StarRecord> stars, const Pixels &pixels, PixelJobs<typename Pixels::Place> &jobs,
               NumberList &gone) {
    const StarRoom room{settings.left, settings.top, settings.right, settings.bottom};
    size_t i = 0;
    if constexpr (std::is_same_v<Pixels, WordPixels>)
        i = MoveInVectors(stars, room, pixels.Shape(), jobs, gone);
    for (; i < stars.size(); ++i) {
        StarRecord &star = stars[i];
        jobs.Add(pixels.PlaceOf(star.prevX, star.prevY), pixels.PlaceOf(star.x, star.y),
                 Pixels::JobColour(ColourOfAge(star.age)));
        if (!Move(star, room)) gone.Add(i);
    }
}

// Moved first and drawn then: the jobs know where the stars were.
template <class Pixels>
void RunStars(std::span<StarRecord> stars, const Pixels &pixels, PixelJobs<typename Pixels::Place> &jobs) {
    NumberList gone;
    MoveStars(stars, pixels, jobs, gone);
    goneCount += static_cast<int32_t>(gone.count);
    if (gone.count == 0 || Option(StarSettings.stopMode) == kRunOut) return;
    RandomTurn random;
    for (const uint32_t number : std::span(gone.numbers, gone.count)) Launch(stars[number], random);
}

template <class Pixels>
void EraseEach(std::span<StarRecord> stars, const Pixels &pixels, PixelJobs<typename Pixels::Place> &jobs) {
    for (const StarRecord &star : stars)
        jobs.Add(pixels.PlaceOf(star.prevX, star.prevY), pixels.PlaceOf(kParkedAt, kParkedAt), 0);
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
    const auto runStars = [](auto stars, const auto &pixels, auto &jobs) { RunStars(stars, pixels, jobs); };
    if ((settings.flags & 1) != 0)
        WorkOnPixels<true>(Surfaces(), AllStars(), runStars);
    else
        WorkOnPixels(Surfaces(), AllStars(), runStars);
}

bool StarFieldGoesOn(int32_t stopMode) noexcept {
    return stopMode == kKeepRunning || (stopMode == kRunOut && goneCount != settings.count);
}

void EraseStars() noexcept {
    WorkOnPixels(Surfaces(), AllStars(),
                 [](auto stars, const auto &pixels, auto &jobs) { EraseEach(stars, pixels, jobs); });
}

}  // namespace fenlight
