// SPDX-License-Identifier: Zlib
// The loops over records for the versions that have vectors: words are transposed, so that a vector holds one
// word of several records. The file that includes this one defines before, for its width,
//
//   Vector, Mask                     kLanes words of 32 bits, and which of them
//   Read, Write
//   Low32, High32, Low64, High64     unpacking, each 128 bits for themselves
//   JoinFirst(a, b), JoinLast        of halves of records in turn, 128 bits each: the words in all first and
//                                    in all last halves, in the order of the records
//   PartFirst(first, last), PartLast the way back to a and to b
//   All, Sum, SumWhere, Product, ShiftLeft
//   BytesDown(a, b)                  each byte of a less that of b, or 0
//   IsEqual, IsGreater, IsBelow      of signed numbers, the last of unsigned ones
//   And, Or, Not, BitsOf             of masks; Choose(mask, yes, no)
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
constexpr uint32_t kLaneNumbers[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
constexpr uint32_t kAllLanes = (1u << kLanes) - 1;

// Each 128 bits hold one word of four records.
struct FourWords {
    Vector a, b, c, d;
};

// Its own opposite.
[[gnu::always_inline]] inline FourWords Transpose(const FourWords &in) {
    const Vector low0 = Low32(in.a, in.b), high0 = High32(in.a, in.b);
    const Vector low1 = Low32(in.c, in.d), high1 = High32(in.c, in.d);
    return {Low64(low0, low1), High64(low0, low1), Low64(high0, high1), High64(high0, high1)};
}

// The words of as many records as there are lanes.
struct EightWords {
    FourWords first, last;
};

template <class Record>
[[gnu::no_sanitize("thread"), gnu::always_inline]] inline EightWords LoadWords(const Record *records) {
    static_assert(sizeof(Record) * kLanes == 8 * sizeof(Vector));
    const auto *const rows = reinterpret_cast<const Vector *>(records);
    const FourWords a = Transpose({Read(rows), Read(rows + 1), Read(rows + 2), Read(rows + 3)});
    const FourWords b = Transpose({Read(rows + 4), Read(rows + 5), Read(rows + 6), Read(rows + 7)});
    return {{JoinFirst(a.a, b.a), JoinFirst(a.b, b.b), JoinFirst(a.c, b.c), JoinFirst(a.d, b.d)},
            {JoinLast(a.a, b.a), JoinLast(a.b, b.b), JoinLast(a.c, b.c), JoinLast(a.d, b.d)}};
}

template <class Record>
[[gnu::no_sanitize("thread"), gnu::always_inline]] inline void StoreWords(Record *records,
                                                                          const FourWords &first,
                                                                          const FourWords &last) {
    auto *const rows = reinterpret_cast<Vector *>(records);
    const FourWords a = Transpose({PartFirst(first.a, last.a), PartFirst(first.b, last.b),
                                   PartFirst(first.c, last.c), PartFirst(first.d, last.d)});
    const FourWords b = Transpose({PartLast(first.a, last.a), PartLast(first.b, last.b),
                                   PartLast(first.c, last.c), PartLast(first.d, last.d)});
    Write(rows, a.a);
    Write(rows + 1, a.b);
    Write(rows + 2, a.c);
    Write(rows + 3, a.d);
    Write(rows + 4, b.a);
    Write(rows + 5, b.b);
    Write(rows + 6, b.c);
    Write(rows + 7, b.d);
}

// The numbers of the bits, counted from `first` on; without a branch, for nobody knows which bits there are.
[[gnu::always_inline]] inline void AddNumbers(size_t first, uint32_t bits, NumberList &list) {
    const Together together(bits);
    Write(list.numbers + list.count, together(Sum(Read(kLaneNumbers), All(static_cast<uint32_t>(first)))));
    list.count += static_cast<size_t>(_mm_popcnt_u32(bits));
}

class Offsets {
  public:
    explicit Offsets(const SurfaceShape &shape)
        : pitch_(All(shape.pitch)), width_(All(shape.width)), height_(All(shape.height)) {}

    Vector At(Vector x, Vector y) const {
        const Mask isOnSurface = And(IsBelow(x, width_), IsBelow(y, height_));
        return Choose(isOnSurface, Sum(Product(y, pitch_), ShiftLeft(x, 2)), All(kNoOffset));
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
        const auto [place, course] = LoadWords(stars + i);
        const auto [x, y, prevX, prevY] = place;
        const auto [age, vx, vy, spare] = course;
        Write(jobs.erased + i, offsets.At(prevX, prevY));
        Write(jobs.drawn + i, offsets.At(x, y));
        Write(jobs.colours + i, WordOfAge(age));
        const Vector nextX = Sum(x, vx), nextY = Sum(y, vy);
        const Mask isParked = And(IsEqual(nextX, parked), IsEqual(nextY, parked));
        const Mask isAlive = Or(IsInside(room, nextX, nextY), isParked);
        const Vector nextAge = SumWhere(isAlive, age, one);
        StoreWords(stars + i, {nextX, nextY, x, y}, {nextAge, vx, vy, spare});
        AddNumbers(i, BitsOf(And(isAlive, IsGreater(longestAge, nextAge))) ^ kAllLanes, gone);
    }
    jobs.count += count;
}

// The bytes of a colour as a pixel has them, the fourth being 0.
Vector WordOfColour(Vector colour) {
    return OrderBytes(colour, _mm_setr_epi8(2, 1, 0, -1, 6, 5, 4, -1, 10, 9, 8, -1, 14, 13, 12, -1));
}

Vector NextColour(const ParticleRules &rules, Vector colour, uint32_t shown, size_t shownBefore) {
    switch (rules.colourMode) {
        case kFading:
            return BytesDown(colour, All(0x010101));
        case kSteady:
            return All(rules.colour);
        case kRandom:
            return Apart(rules.randomColours + shownBefore, shown);
        default:
            return colour;
    }
}

[[gnu::always_inline]] inline void AddJobs(Vector erased, Vector drawn, Vector words,
                                           PixelJobs<PixelOffset> &jobs) {
    Write(jobs.erased + jobs.count, erased);
    Write(jobs.drawn + jobs.count, drawn);
    Write(jobs.colours + jobs.count, words);
}

[[gnu::no_sanitize("thread")]] size_t MoveParticles(PixelParticle *particles, size_t count,
                                                    const ParticleRules &rules, const SurfaceShape &shape,
                                                    PixelJobs<PixelOffset> &jobs) noexcept {
    const Offsets offsets(shape);
    const Vector lifeFrames = All(rules.lifeFrames), one = All(1), nowhere = All(kNoOffset);
    const Vector gravityX = All(rules.gravityX), gravityY = All(rules.gravityY);
    size_t shownCount = 0;
    for (size_t i = 0; i < count; i += kLanes) {
        const auto [place, course] = LoadWords(particles + i);
        const auto [x, y, prevX, prevY] = place;
        const auto [life, vx, vy, colour] = course;
        const Mask isAlive = Not(IsEqual(life, All(0)));
        const Mask isShown = And(isAlive, Not(IsGreater(life, lifeFrames)));
        const uint32_t shown = BitsOf(isShown), lasts = BitsOf(IsEqual(life, one)), worked = shown | lasts;
        const Vector erased = offsets.At(prevX, prevY);
        const Vector drawn = Choose(isShown, offsets.At(x, y), nowhere), words = WordOfColour(colour);
        if (worked == kAllLanes) {
            AddJobs(erased, drawn, words, jobs);
        } else {
            const Together together(worked);
            AddJobs(together(erased), together(drawn), together(words), jobs);
        }
        AddNumbers(jobs.count, _pext_u32(lasts, worked), jobs.last);
        jobs.count += static_cast<size_t>(_mm_popcnt_u32(worked));
        const Vector nextColour = NextColour(rules, colour, shown, shownCount);
        StoreWords(particles + i,
                   {SumWhere(isShown, x, vx), SumWhere(isShown, y, vy), Choose(isShown, x, prevX),
                    Choose(isShown, y, prevY)},
                   {SumWhere(isAlive, life, All(-1)), SumWhere(isShown, vx, gravityX),
                    SumWhere(isShown, vy, gravityY), Choose(isShown, nextColour, colour)});
        shownCount += static_cast<size_t>(_mm_popcnt_u32(shown));
    }
    return shownCount;
}

}  // namespace
}  // namespace fenlight
