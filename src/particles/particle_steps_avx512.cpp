// SPDX-License-Identifier: Zlib
// Sixteen records at a time: their words are transposed, so that a vector holds one word of all sixteen.
//
// Callers may read records meanwhile. The processor writes each aligned word of a vector whole, which the
// thread sanitizer cannot know.
#if defined(__x86_64__)
#include <immintrin.h>

#include "particles/particle_steps.h"

namespace fenlight {
namespace {

#define FENLIGHT_WHOLE_WORDS [[gnu::no_sanitize("thread")]]
#define FENLIGHT_INLINE [[gnu::always_inline]] inline

// Four words of sixteen records; each quarter holds those of four records.
struct FourWords {
    __m512i a, b, c, d;
};

// Its own opposite.
FENLIGHT_INLINE FourWords Transpose(const FourWords &in) {
    const __m512i low0 = _mm512_unpacklo_epi32(in.a, in.b), high0 = _mm512_unpackhi_epi32(in.a, in.b);
    const __m512i low1 = _mm512_unpacklo_epi32(in.c, in.d), high1 = _mm512_unpackhi_epi32(in.c, in.d);
    return {_mm512_unpacklo_epi64(low0, low1), _mm512_unpackhi_epi64(low0, low1),
            _mm512_unpacklo_epi64(high0, high1), _mm512_unpackhi_epi64(high0, high1)};
}

// Half 0 of a record is its first four words, half 1 its last four.
template <class Record>
__m128i *HalfOf(Record *records, size_t number, size_t half) {
    static_assert(sizeof(Record) == 32);
    return reinterpret_cast<__m128i *>(records + number) + half;
}

template <class Record>
FENLIGHT_WHOLE_WORDS FENLIGHT_INLINE FourWords LoadWords(Record *records, size_t half) {
    const auto quarters = [&](size_t i) {
        __m512i row = _mm512_castsi128_si512(_mm_loadu_si128(HalfOf(records, i, half)));
        row = _mm512_inserti32x4(row, _mm_loadu_si128(HalfOf(records, i + 4, half)), 1);
        row = _mm512_inserti32x4(row, _mm_loadu_si128(HalfOf(records, i + 8, half)), 2);
        return _mm512_inserti32x4(row, _mm_loadu_si128(HalfOf(records, i + 12, half)), 3);
    };
    return Transpose({quarters(0), quarters(1), quarters(2), quarters(3)});
}

template <class Record>
FENLIGHT_WHOLE_WORDS FENLIGHT_INLINE void StoreWords(Record *records, size_t half, const FourWords &words) {
    const FourWords rows = Transpose(words);
    size_t number = 0;
    for (const __m512i row : {rows.a, rows.b, rows.c, rows.d}) {
        _mm_storeu_si128(HalfOf(records, number, half), _mm512_castsi512_si128(row));
        _mm_storeu_si128(HalfOf(records, number + 4, half), _mm512_extracti32x4_epi32(row, 1));
        _mm_storeu_si128(HalfOf(records, number + 8, half), _mm512_extracti32x4_epi32(row, 2));
        _mm_storeu_si128(HalfOf(records, number + 12, half), _mm512_extracti32x4_epi32(row, 3));
        ++number;
    }
}

__m512i Sum(__m512i a, __m512i b) { return _mm512_add_epi32(a, b); }
__m512i SumWhere(__mmask16 condition, __m512i a, __m512i b) {
    return _mm512_mask_add_epi32(a, condition, a, b);
}
__m512i All(int32_t value) { return _mm512_set1_epi32(value); }
__m512i All(uint32_t value) { return All(static_cast<int32_t>(value)); }
// `yes` where the condition holds.
__m512i Choose(__mmask16 condition, __m512i yes, __m512i no) {
    return _mm512_mask_mov_epi32(no, condition, yes);
}
// The words for which the condition holds, moved together.
__m512i Together(__mmask16 condition, __m512i words) { return _mm512_maskz_compress_epi32(condition, words); }
size_t CountOf(__mmask16 condition) { return static_cast<size_t>(_mm_popcnt_u32(condition)); }

void Write(void *words, __m512i vector) { _mm512_storeu_si512(words, vector); }

class Offsets {
  public:
    explicit Offsets(const SurfaceShape &shape)
        : pitch_(All(shape.pitch)), width_(All(shape.width)), height_(All(shape.height)) {}

    __m512i At(__m512i x, __m512i y) const {
        const __mmask16 isOnSurface =
            _mm512_mask_cmplt_epu32_mask(_mm512_cmplt_epu32_mask(x, width_), y, height_);
        const __m512i offset = Sum(_mm512_mullo_epi32(y, pitch_), Sum(Sum(x, x), Sum(x, x)));
        return Choose(isOnSurface, offset, All(kNoOffset));
    }

  private:
    __m512i pitch_, width_, height_;
};

__m512i WordOfAge(__m512i age) {
    const __m512i young = All(0x808080), grown = All(0xC0C0C0), old = All(0xFFFFFF);
    return Choose(_mm512_cmplt_epu32_mask(age, All(64)), young,
                  Choose(_mm512_cmplt_epu32_mask(age, All(128)), grown, old));
}

class Room {
  public:
    explicit Room(const StarRoom &room)
        : left_(All(room.left)), top_(All(room.top)), right_(All(room.right)), bottom_(All(room.bottom)) {}

    __mmask16 Contains(__m512i x, __m512i y) const {
        __mmask16 isInside = _mm512_cmpgt_epi32_mask(x, left_);
        isInside = _mm512_mask_cmpgt_epi32_mask(isInside, right_, x);
        isInside = _mm512_mask_cmpgt_epi32_mask(isInside, y, top_);
        return _mm512_mask_cmpgt_epi32_mask(isInside, bottom_, y);
    }

  private:
    __m512i left_, top_, right_, bottom_;
};

FENLIGHT_WHOLE_WORDS void MoveStars(StarRecord *stars, size_t count, const StarRoom &starRoom,
                                    const SurfaceShape &shape, PixelJobs<PixelOffset> &jobs,
                                    NumberList &gone) noexcept {
    const Offsets offsets(shape);
    const Room room(starRoom);
    const __m512i parked = All(kParkedAt), one = All(1), longestAge = All(kLongestStarAge);
    for (size_t i = 0; i < count; i += 16) {
        const auto [x, y, prevX, prevY] = LoadWords(stars + i, 0);
        const auto [age, vx, vy, spare] = LoadWords(stars + i, 1);
        Write(jobs.erased + i, offsets.At(prevX, prevY));
        Write(jobs.drawn + i, offsets.At(x, y));
        Write(jobs.colours + i, WordOfAge(age));
        const __m512i nextX = Sum(x, vx), nextY = Sum(y, vy);
        const __mmask16 isParked =
            _mm512_mask_cmpeq_epi32_mask(_mm512_cmpeq_epi32_mask(nextX, parked), nextY, parked);
        const auto isAlive = static_cast<__mmask16>(room.Contains(nextX, nextY) | isParked);
        const __m512i nextAge = SumWhere(isAlive, age, one);
        StoreWords(stars + i, 0, {nextX, nextY, x, y});
        StoreWords(stars + i, 1, {nextAge, vx, vy, spare});
        uint32_t left = _mm512_mask_cmpgt_epi32_mask(isAlive, longestAge, nextAge) ^ 0xFFFFu;
        for (; left != 0; left = _blsr_u32(left)) gone.Add(i + _tzcnt_u32(left));
    }
    jobs.count += count;
}

__m512i Faded(__m512i colour) {
    const __m512i low = All(0x7F7F7F);
    const __m512i high = _mm512_or_si512(colour, Sum(_mm512_and_si512(colour, low), low));
    return _mm512_sub_epi32(colour, _mm512_srli_epi32(_mm512_and_si512(high, All(0x808080)), 7));
}

// The bytes of a colour as a pixel has them, the fourth being 0.
__m512i WordOfColour(__m512i colour) {
    return _mm512_shuffle_epi8(colour, _mm512_broadcast_i32x4(_mm_setr_epi8(2, 1, 0, -1, 6, 5, 4, -1, 10, 9,
                                                                            8, -1, 14, 13, 12, -1)));
}

__m512i NextColour(const ParticleRules &rules, __m512i colour, __mmask16 isShown, size_t shownBefore) {
    switch (rules.colourMode) {
        case kFading:
            return Faded(colour);
        case kSteady:
            return All(rules.colour);
        case kRandom:
            return _mm512_maskz_expand_epi32(isShown, _mm512_loadu_si512(rules.randomColours + shownBefore));
        default:
            return colour;
    }
}

FENLIGHT_WHOLE_WORDS size_t MoveParticles(PixelParticle *particles, size_t count, const ParticleRules &rules,
                                          const SurfaceShape &shape, PixelJobs<PixelOffset> &jobs) noexcept {
    const Offsets offsets(shape);
    const __m512i lifeFrames = All(rules.lifeFrames), one = All(1);
    const __m512i gravityX = All(rules.gravityX), gravityY = All(rules.gravityY);
    size_t shownCount = 0;
    for (size_t i = 0; i < count; i += 16) {
        const auto [x, y, prevX, prevY] = LoadWords(particles + i, 0);
        const auto [life, vx, vy, colour] = LoadWords(particles + i, 1);
        const __mmask16 isAlive = _mm512_test_epi32_mask(life, life);
        const __mmask16 isShown = _mm512_mask_cmple_epi32_mask(isAlive, life, lifeFrames);
        const __mmask16 isLast = _mm512_cmpeq_epi32_mask(life, one);
        const auto worked = static_cast<__mmask16>(isShown | isLast);
        const __m512i drawn = Choose(isShown, offsets.At(x, y), All(kNoOffset));
        Write(jobs.erased + jobs.count, Together(worked, offsets.At(prevX, prevY)));
        Write(jobs.drawn + jobs.count, Together(worked, drawn));
        Write(jobs.colours + jobs.count, Together(worked, WordOfColour(colour)));
        for (uint32_t last = _pext_u32(isLast, worked); last != 0; last = _blsr_u32(last))
            jobs.last.Add(jobs.count + _tzcnt_u32(last));
        jobs.count += CountOf(worked);
        const __m512i nextColour = NextColour(rules, colour, isShown, shownCount);
        StoreWords(particles + i, 0,
                   {SumWhere(isShown, x, vx), SumWhere(isShown, y, vy), Choose(isShown, x, prevX),
                    Choose(isShown, y, prevY)});
        StoreWords(particles + i, 1,
                   {SumWhere(isAlive, life, All(-1)), SumWhere(isShown, vx, gravityX),
                    SumWhere(isShown, vy, gravityY), Choose(isShown, nextColour, colour)});
        shownCount += CountOf(isShown);
    }
    return shownCount;
}

}  // namespace

const ParticleKernels kAvx512ParticleKernels{MoveStars, MoveParticles};

}  // namespace fenlight
#endif
