// SPDX-License-Identifier: Zlib
// The loops over records for the versions that have vectors: words are transposed, so that a vector holds one
// word of several records. The file that includes this one defines before, for its width,
//
//   Vector, Mask                     kLanes words of 32 bits, and which of them
//   LoadHalves(half), StoreHalves    from every fourth record on: half a record to each quarter of 128 bits
//   Low32, High32, Low64, High64     unpacking, each 128 bits for themselves
//   All, Sum, SumWhere, Difference, Product, ShiftRight, Write
//   IsEqual, IsGreater, IsBelow      of signed numbers, the last of unsigned ones
//   And, Or, Not, Choose, BitsOf     of masks, And and Or of vectors too; Choose(mask, yes, no)
//   OrderBytes(words, order)         each 128 bits for themselves
//   Together(bits)(words)            the words that have a bit, moved together
//   Apart(words, bits)               the first words in memory, moved to where a bit is
//
// Callers may read records meanwhile. The processor writes each aligned word of a vector whole, which the
// thread sanitizer cannot know.
#pragma once

#include "particles/particle_steps.h"

namespace fenlight {
namespace {

static_assert(kRecordsAtOnce % kLanes == 0);
constexpr uint32_t kAllLanes = (1u << kLanes) - 1;

// Each quarter of 128 bits holds the words of four records.
struct FourWords {
    Vector a, b, c, d;
};

// Its own opposite.
[[gnu::always_inline]] inline FourWords Transpose(const FourWords &in) {
    const Vector low0 = Low32(in.a, in.b), high0 = High32(in.a, in.b);
    const Vector low1 = Low32(in.c, in.d), high1 = High32(in.c, in.d);
    return {Low64(low0, low1), High64(low0, low1), Low64(high0, high1), High64(high0, high1)};
}

// Half 0 of a record is its first four words, half 1 its last four.
template <class Record>
__m128i *HalfOf(Record *records, size_t half) {
    static_assert(sizeof(Record) == 2 * sizeof(__m128i));
    return reinterpret_cast<__m128i *>(records) + half;
}

template <class Record>
[[gnu::no_sanitize("thread"), gnu::always_inline]] inline FourWords LoadWords(Record *records, size_t half) {
    const __m128i *first = HalfOf(records, half);
    return Transpose(
        {LoadHalves(first), LoadHalves(first + 2), LoadHalves(first + 4), LoadHalves(first + 6)});
}

template <class Record>
[[gnu::no_sanitize("thread"), gnu::always_inline]] inline void StoreWords(Record *records, size_t half,
                                                                          const FourWords &words) {
    const FourWords rows = Transpose(words);
    __m128i *first = HalfOf(records, half);
    StoreHalves(first, rows.a);
    StoreHalves(first + 2, rows.b);
    StoreHalves(first + 4, rows.c);
    StoreHalves(first + 6, rows.d);
}

class Offsets {
  public:
    explicit Offsets(const SurfaceShape &shape)
        : pitch_(All(shape.pitch)), width_(All(shape.width)), height_(All(shape.height)) {}

    Vector At(Vector x, Vector y) const {
        const Mask isOnSurface = And(IsBelow(x, width_), IsBelow(y, height_));
        const Vector twice = Sum(x, x);
        return Choose(isOnSurface, Sum(Product(y, pitch_), Sum(twice, twice)), All(kNoOffset));
    }

  private:
    Vector pitch_, width_, height_;
};

Vector WordOfAge(Vector age) {
    const Vector grown = Choose(IsBelow(age, All(128)), All(0xC0C0C0), All(0xFFFFFF));
    return Choose(IsBelow(age, All(64)), All(0x808080), grown);
}

Mask IsInside(const StarRoom &room, Vector x, Vector y) {
    return And(And(IsGreater(x, All(room.left)), IsGreater(All(room.right), x)),
               And(IsGreater(y, All(room.top)), IsGreater(All(room.bottom), y)));
}

[[gnu::no_sanitize("thread")]] void MoveStars(StarRecord *stars, size_t count, const StarRoom &room,
                                              const SurfaceShape &shape, PixelJobs<PixelOffset> &jobs,
                                              NumberList &gone) noexcept {
    const Offsets offsets(shape);
    const Vector parked = All(kParkedAt), one = All(1), longestAge = All(kLongestStarAge);
    for (size_t i = 0; i < count; i += kLanes) {
        const auto [x, y, prevX, prevY] = LoadWords(stars + i, 0);
        const auto [age, vx, vy, spare] = LoadWords(stars + i, 1);
        Write(jobs.erased + i, offsets.At(prevX, prevY));
        Write(jobs.drawn + i, offsets.At(x, y));
        Write(jobs.colours + i, WordOfAge(age));
        const Vector nextX = Sum(x, vx), nextY = Sum(y, vy);
        const Mask isParked = And(IsEqual(nextX, parked), IsEqual(nextY, parked));
        const Mask isAlive = Or(IsInside(room, nextX, nextY), isParked);
        const Vector nextAge = SumWhere(isAlive, age, one);
        StoreWords(stars + i, 0, {nextX, nextY, x, y});
        StoreWords(stars + i, 1, {nextAge, vx, vy, spare});
        uint32_t left = BitsOf(And(isAlive, IsGreater(longestAge, nextAge))) ^ kAllLanes;
        for (; left != 0; left = _blsr_u32(left)) gone.Add(i + _tzcnt_u32(left));
    }
    jobs.count += count;
}

// Each of the three bytes that is not 0 goes down by 1.
Vector Faded(Vector colour) {
    const Vector low = All(0x7F7F7F);
    const Vector high = And(Or(colour, Sum(And(colour, low), low)), All(0x808080));
    return Difference(colour, ShiftRight(high, 7));
}

// The bytes of a colour as a pixel has them, the fourth being 0.
Vector WordOfColour(Vector colour) {
    return OrderBytes(colour, _mm_setr_epi8(2, 1, 0, -1, 6, 5, 4, -1, 10, 9, 8, -1, 14, 13, 12, -1));
}

Vector NextColour(const ParticleRules &rules, Vector colour, uint32_t shown, size_t shownBefore) {
    switch (rules.colourMode) {
        case kFading:
            return Faded(colour);
        case kSteady:
            return All(rules.colour);
        case kRandom:
            return Apart(rules.randomColours + shownBefore, shown);
        default:
            return colour;
    }
}

[[gnu::no_sanitize("thread")]] size_t MoveParticles(PixelParticle *particles, size_t count,
                                                    const ParticleRules &rules, const SurfaceShape &shape,
                                                    PixelJobs<PixelOffset> &jobs) noexcept {
    const Offsets offsets(shape);
    const Vector lifeFrames = All(rules.lifeFrames), one = All(1), nowhere = All(kNoOffset);
    const Vector gravityX = All(rules.gravityX), gravityY = All(rules.gravityY);
    size_t shownCount = 0;
    for (size_t i = 0; i < count; i += kLanes) {
        const auto [x, y, prevX, prevY] = LoadWords(particles + i, 0);
        const auto [life, vx, vy, colour] = LoadWords(particles + i, 1);
        const Mask isAlive = Not(IsEqual(life, All(0)));
        const Mask isShown = And(isAlive, Not(IsGreater(life, lifeFrames)));
        const uint32_t shown = BitsOf(isShown), lasts = BitsOf(IsEqual(life, one)), worked = shown | lasts;
        const Together together(worked);
        Write(jobs.erased + jobs.count, together(offsets.At(prevX, prevY)));
        Write(jobs.drawn + jobs.count, together(Choose(isShown, offsets.At(x, y), nowhere)));
        Write(jobs.colours + jobs.count, together(WordOfColour(colour)));
        for (uint32_t last = _pext_u32(lasts, worked); last != 0; last = _blsr_u32(last))
            jobs.last.Add(jobs.count + _tzcnt_u32(last));
        jobs.count += static_cast<size_t>(_mm_popcnt_u32(worked));
        const Vector nextColour = NextColour(rules, colour, shown, shownCount);
        StoreWords(particles + i, 0,
                   {SumWhere(isShown, x, vx), SumWhere(isShown, y, vy), Choose(isShown, x, prevX),
                    Choose(isShown, y, prevY)});
        StoreWords(particles + i, 1,
                   {SumWhere(isAlive, life, All(-1)), SumWhere(isShown, vx, gravityX),
                    SumWhere(isShown, vy, gravityY), Choose(isShown, nextColour, colour)});
        shownCount += static_cast<size_t>(_mm_popcnt_u32(shown));
    }
    return shownCount;
}

}  // namespace
}  // namespace fenlight
