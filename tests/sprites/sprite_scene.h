// SPDX-License-Identifier: Zlib
// What the sprite tests stand on: contexts whose pixels can be read, a list that is stepped without a thread,
// and clocks that need no time.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <random>
#include <thread>
#include <vector>

#include "fenlight/platform/graphics.h"
#include "fenlight/sprite_list.h"
#include "platform/system/clock.h"
#include "sprites/sprite_list.h"
#include "sprites/sprite_thread.h"
#include "support/picture_check.h"

namespace fenlight::test {

using Numbers = std::vector<int32_t>;

// A memory context with a 32-bit bitmap.
class Canvas {
  public:
    Canvas(int width, int height) : width_(width), height_(height), context_(CreateCompatibleDC(0)) {
        BITMAPINFO info{};
        info.bmiHeader = {sizeof(BITMAPINFOHEADER), width, -height, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
        bitmap_ = CreateDIBSection(context_, &info, DIB_RGB_COLORS, reinterpret_cast<void **>(&bits_), 0, 0);
        former_ = SelectObject(context_, bitmap_);
    }
    Canvas(const Canvas &) = delete;
    Canvas &operator=(const Canvas &) = delete;
    ~Canvas() {
        SelectObject(context_, former_);
        DeleteObject(bitmap_);
        DeleteDC(context_);
    }

    operator HDC() const { return context_; }
    void Put(const Picture &picture) { std::copy(picture.pixels.begin(), picture.pixels.end(), bits_); }
    Picture Get() const {
        Picture picture(width_, height_);
        std::copy(bits_, bits_ + picture.pixels.size(), picture.pixels.begin());
        return picture;
    }

  private:
    int width_, height_;
    HDC context_;
    HBITMAP bitmap_;
    HGDIOBJ former_;
    uint32_t *bits_ = nullptr;
};

// Any 24-bit colours.
inline Picture Noise(int width, int height, uint32_t seed) {
    std::mt19937 random(seed);
    Picture picture(width, height);
    for (uint32_t &pixel : picture.pixels) pixel = random() & 0xFFFFFF;
    return picture;
}

// Frames of 12 x 10 side by side, each with a key colour of its own in its top right corner and in about half
// of its pixels.
inline Picture Strip(int frames) {
    std::mt19937 random(7);
    Picture picture = Noise(12 * frames, 10, 8);
    for (int x = 0; x < picture.width; ++x)
        for (int y = 0; y < picture.height; ++y)
            if (random() % 2 == 0 || (y == 0 && x % 12 == 11))
                picture.At(x, y) = 0x00102030u * static_cast<uint32_t>(x / 12 + 1);
    return picture;
}

// Three contexts with one background, a strip of pictures, and a list without a thread. Empties the list when
// it ends.
struct Scene {
    static constexpr int kWidth = 96, kHeight = 64, kFrames = 4;

    Picture background = Noise(kWidth, kHeight, 1), strip = Strip(kFrames);
    Canvas image{12 * kFrames, 10}, screen{kWidth, kHeight}, back{kWidth, kHeight}, clean{kWidth, kHeight};

    Scene() {
        image.Put(strip);
        for (Canvas *canvas : {&screen, &back, &clean}) canvas->Put(background);
    }
    ~Scene() { FreeRecords(SpriteList.exchange(nullptr)); }

    // A sprite that stands still.
    SpriteArguments Sprite(int32_t x, int32_t y, int32_t frame = 1) const {
        return {image, screen, back, clean, 0, 0, 12, 10, kFrames, frame, 0, x, y, 0, 0};
    }
    static SpriteRecord &Add(const SpriteArguments &arguments) {
        if (SpriteList.load() != nullptr) return *RecordOf(InitSprite5(&arguments));
        StartList(*MakeRecord(arguments));
        return *SpriteList.load();
    }
    SpriteRecord &Add(int32_t x, int32_t y, int32_t frame = 1) { return Add(Sprite(x, y, frame)); }
    // The same as a caller makes it, with the thread.
    uintptr_t Start(int32_t x, int32_t y) const {
        const SpriteArguments arguments = Sprite(x, y);
        return InitSprite5(&arguments);
    }
    static void Step(int frames) {
        while (frames-- > 0) RunFrame();
    }

    // Pixel by pixel what a sprite leaves on a picture.
    void Paint(Picture &target, int x, int y, int frame = 1) const {
        const int left = 12 * (frame - 1);
        const uint32_t key = strip.At(left + 11, 0);
        for (int row = 0; row < 10; ++row)
            for (int column = 0; column < 12; ++column) {
                const uint32_t pixel = strip.At(left + column, row);
                const bool isInside =
                    x + column >= 0 && x + column < kWidth && y + row >= 0 && y + row < kHeight;
                if (isInside && pixel != key) target.At(x + column, y + row) = pixel;
            }
    }
};

// Stands still but for sleeps, which it records. For frames without the thread.
class SteppedClock : public platform::Clock {
  public:
    SteppedClock() { platform::ReplaceClock(this); }
    ~SteppedClock() override { platform::ReplaceClock(nullptr); }
    uint32_t TickCount() noexcept override { return now; }
    void Sleep(uint32_t milliseconds) noexcept override {
        now += milliseconds;
        sleeps.push_back(milliseconds);
    }

    uint32_t now = 1000;
    std::vector<uint32_t> sleeps;
};

// Every look at it is a frame's length later, so the thread runs as fast as it can; or it stands still, and
// no frame gets through its pause. It outlives the test, because a thread that has given up its list looks
// once more at its very end.
struct HurryingClock : platform::Clock {
    uint32_t TickCount() noexcept override { return (isStill ? looks.load() : ++looks) * kFrameMillis; }
    void Sleep(uint32_t) noexcept override { std::this_thread::yield(); }

    std::atomic<uint32_t> looks{0};
    std::atomic<bool> isStill{false};
};

// Puts it in place.
class HurriedClock {
  public:
    HurriedClock() { platform::ReplaceClock(&clock_); }
    HurriedClock(const HurriedClock &) = delete;
    HurriedClock &operator=(const HurriedClock &) = delete;
    ~HurriedClock() { platform::ReplaceClock(nullptr); }
    uint32_t Looks() const { return clock_.looks - looksBefore_; }
    void StandStill(bool isStill) const { clock_.isStill = isStill; }

  private:
    static inline HurryingClock clock_;
    const uint32_t looksBefore_ = clock_.looks;
};

// Time enough for a thread that wrongly runs to show it: many turns, but few where each takes long.
inline void GiveTurns() {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(50);
    for (int i = 0; i < 500 && (i < 10 || std::chrono::steady_clock::now() < deadline); ++i)
        std::this_thread::yield();
}

// Waits for something that another thread brings about; false after half a minute.
inline bool WaitUntil(const std::function<bool()> &isTrue) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!isTrue()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        std::this_thread::yield();
    }
    return true;
}

}  // namespace fenlight::test
