// SPDX-License-Identifier: Zlib
#include "particles/star_field.h"

#include <cstring>

#include "particle_scene.h"
#include "particles/star_thread.h"

namespace fenlight::test {
namespace {

// The definition once more, star by star and pixel by pixel.
struct PlainField {
    StarArguments a;
    std::vector<StarRecord> stars;
    int32_t gone = 0;

    COLORREF Behind(const StarRecord &star) const {
        return a.backgroundDC != 0 ? GetPixel(a.backgroundDC, star.prevX, star.prevY) : 0;
    }
    void Erase(const StarRecord &star) const { SetPixel(a.destDC, star.prevX, star.prevY, Behind(star)); }
    void EraseAll() const {
        for (const StarRecord &star : stars) Erase(star);
    }
    void Launch(StarRecord &star) const {
        const auto draw = [](uint32_t limit) { return static_cast<int32_t>(RandomDraw(limit)); };
        for (;;) {
            star.age = draw(96);
            const int32_t across = draw(10) - 5, down = draw(10) - 5;
            star.vx = across + StarSettings.biasX;
            star.vy = down + StarSettings.biasY;
            star.x = a.left + (a.right - a.left) / 2 + across * 32 + StarSettings.originX;
            star.y = a.top + (a.bottom - a.top) / 2 + down * 32 + StarSettings.originY;
            if (star.vx == 0) {
                const bool isRefused = draw(2) != 0;
                if (isRefused || star.vy == 0) continue;
            }
            if (star.vy == 0 && draw(2) != 0) continue;
            star.x += draw(48) - 24;
            star.y += draw(48) - 24;
            return;
        }
    }
    void Run(StarRecord &star) {
        Erase(star);
        const bool isHidden = a.backgroundDC != 0 && (a.flags & 1) != 0 && Behind(star) != 0;
        const COLORREF colour = star.age < 64 ? 0x808080 : star.age <= 127 ? 0xC0C0C0 : 0xFFFFFF;
        if (!isHidden) SetPixel(a.destDC, star.x, star.y, colour);
        star.prevX = star.x;
        star.x += star.vx;
        star.prevY = star.y;
        star.y += star.vy;
        const bool isParked = star.x == -111 && star.y == -111;
        const bool isInside = a.left < star.x && star.x < a.right && a.top < star.y && star.y < a.bottom;
        if ((isInside || isParked) && ++star.age < 256) return;
        ++gone;
        if (StarSettings.stopMode != 3) Launch(star);
    }
    void RunFrame() {
        gone = 0;
        for (StarRecord &star : stars) Run(star);
    }
};

std::vector<StarRecord> Records(int32_t count) { return {CurrentStars(), CurrentStars() + count}; }

// Stars in the middle of their lives, old ones, some beside the rectangle and off the context, some parked.
void Scatter(std::vector<StarRecord> &stars, std::mt19937 &random) {
    const auto between = [&random](int32_t low, int32_t high) {
        return low + static_cast<int32_t>(random() % static_cast<uint32_t>(high - low));
    };
    for (StarRecord &star : stars) {
        star.age = between(0, 256);
        if (between(0, 5) == 0) continue;
        star = {between(-20, 120), between(-20, 100), between(-20, 120), between(-20, 100),
                star.age,          between(-5, 5),    between(-5, 5),    0};
    }
}

// Frames of the library beside frames of the definition, with the same draws.
void CompareFields(int bits, int behind, int32_t flags, const RECT &room) {
    const ContextPair actual(bits, behind), expected(bits, behind);
    StarArguments arguments{
        actual.dest, actual.backgroundDC, room.left, room.top, room.right, room.bottom, 300, 0, flags};
    ASSERT_TRUE(MakeStarField(arguments));
    PlainField plain{arguments, Records(300)};
    plain.a.destDC = expected.dest;
    plain.a.backgroundDC =
        behind == kSame || behind > 0 || behind == kSmaller ? expected.backgroundDC : actual.backgroundDC;
    std::mt19937 random(static_cast<uint32_t>(100 * bits + behind + flags));
    Scatter(plain.stars, random);
    std::copy(plain.stars.begin(), plain.stars.end(), CurrentStars());
    SetStarOptions(0, 0, 0, 0, 0);
    for (int frame = 0; frame < 40; ++frame) {
        if (frame == 10) SetStarOptions(-7, 20, 3, -1, 0);
        if (frame == 30) NoStars(3);
        const auto seed = static_cast<uint32_t>(random() | 1);
        RandomSeed(seed);
        plain.RunFrame();
        RandomSeed(seed);
        RunStarFrame();
        const auto stars = Records(300);
        ASSERT_EQ(std::memcmp(stars.data(), plain.stars.data(), 300 * sizeof(StarRecord)), 0) << frame;
        ASSERT_EQ(StarFieldGoesOn(kRunOut), plain.gone != 300);
        ASSERT_TRUE(SamePicture("stars", actual.dest.Get(), expected.dest.Get())) << frame;
    }
    plain.EraseAll();
    LeaveStarField(kStopErased);
    EXPECT_TRUE(SamePicture("stars-erased", actual.dest.Get(), expected.dest.Get()));
}

TEST(StarField, DrawsAndMovesAsDefinedInAllFormats) {
    ForAllContexts([](int bits, int behind) {
        for (const int32_t flags : {6, -1}) CompareFields(bits, behind, flags, {5, 5, 85, 66});
    });
    // Narrower than the spread of the launches, beyond the context, and nearly as wide as numbers go.
    for (const RECT &room : {RECT{40, 30, 43, 33}, RECT{-300, -200, 500, 400}, RECT{7, 7, 8, 60},
                             RECT{-1000000000, -5, 1000000000, 80}})
        WithEachLevel([&room] { CompareFields(32, 32, 1, room); });
}

TEST(StarField, ParksItsStarsAtAgesApart) {
    RandomSeed(77);
    ASSERT_TRUE(MakeStarField({0, 0, 0, 0, 400, 300, 1000, 0, 0}));
    RandomSeed(77);
    for (const StarRecord &star : Records(1000)) {
        EXPECT_EQ(star.x + star.y + star.prevX + star.prevY, 4 * -111);
        ASSERT_EQ(star.age, static_cast<int32_t>(RandomDraw(250)));
    }
    LeaveStarField(kStopAsDrawn);
}

TEST(StarField, EndsByItsStopMode) {
    const Picture noise = Noise(200, 150, 3);
    Canvas dest(200, 150), background(200, 150);
    background.Put(noise);
    for (const int32_t mode : {kStopAsDrawn, kStopErased, kRunOut, 4, -1, 111}) {
        dest.Put(noise);
        ASSERT_TRUE(MakeStarField({dest, background, 10, 10, 190, 140, 500, 0, 0}));
        for (int frame = 0; frame < 150; ++frame) RunStarFrame();
        NoStars(mode);
        int frames = 0;
        do {
            RunStarFrame();
            ++frames;
        } while (StarFieldGoesOn(mode));
        EXPECT_LE(frames, 256) << mode;
        EXPECT_EQ(frames > 1, mode == kRunOut) << mode;
        // In mode 3 the late ones fly on outside.
        const auto stars = Records(500);
        const bool isAnyFar =
            std::any_of(stars.begin(), stars.end(), [](const auto &s) { return s.x > 400; });
        EXPECT_EQ(isAnyFar, mode == kRunOut);
        const Picture last = dest.Get();
        LeaveStarField(mode);
        EXPECT_EQ(StatusStars(), 1);
        EXPECT_EQ(CurrentStars(), nullptr);
        ASSERT_TRUE(SamePicture("stars-end", dest.Get(), mode == kStopAsDrawn ? last : noise)) << mode;
        ASSERT_TRUE(mode == kRunOut || last.pixels != noise.pixels);
    }
    EXPECT_TRUE(StarFieldGoesOn(0));
}

TEST(StarField, PausesUntilTheFrameHasItsLength) {
    SteppedClock clock;
    const struct {
        uint32_t start, work;
        int32_t delay;
        size_t naps;
    } frames[] = {{1000, 0, 20, 20}, {1000, 19, 20, 1},       {1000, 20, 20, 0},     {1000, 0, 0, 0},
                  {1000, 5, -1, 0},  {1000, 0, INT32_MIN, 0}, {0xFFFFFFFA, 3, 12, 9}};
    for (const auto &frame : frames) {
        clock.sleeps.clear();
        clock.now = frame.start + frame.work;
        OptionStars(0, 0, 0, 0, frame.delay);
        PaceStarFrame(frame.start);
        EXPECT_EQ(clock.sleeps, std::vector<uint32_t>(frame.naps, 1)) << frame.delay;
    }
}

TEST(StarField, RefusesWhatHoldsNoStars) {
    const StarArguments good{0, 0, 0, 0, 2, 2, 1, 0, 0};
    for (const auto &[member, value] : std::initializer_list<std::pair<int32_t StarArguments::*, int32_t>>{
             {&StarArguments::count, 0},
             {&StarArguments::count, -1},
             {&StarArguments::count, INT32_MIN},
             {&StarArguments::count, 134217728},
             {&StarArguments::count, INT32_MAX},
             {&StarArguments::right, 0},
             {&StarArguments::right, INT32_MIN},
             {&StarArguments::bottom, 0},
             {&StarArguments::top, INT32_MAX}}) {
        StarArguments arguments = good;
        arguments.*member = value;
        EXPECT_EQ(StartStars(arguments), nullptr) << value;
        EXPECT_EQ(CurrentStars(), nullptr);
    }
}

}  // namespace
}  // namespace fenlight::test
