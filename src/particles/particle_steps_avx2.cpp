// SPDX-License-Identifier: Zlib
// Eight records at a time: their words are transposed, so that a vector holds one word of all eight.
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

// Four words of eight records; those of records 0 to 3 in the low half, of 4 to 7 in the high one.
struct FourWords {
    __m256i a, b, c, d;
};

// Its own opposite.
FENLIGHT_INLINE FourWords Transpose(const FourWords &in) {
    const __m256i low0 = _mm256_unpacklo_epi32(in.a, in.b), high0 = _mm256_unpackhi_epi32(in.a, in.b);
    const __m256i low1 = _mm256_unpacklo_epi32(in.c, in.d), high1 = _mm256_unpackhi_epi32(in.c, in.d);
    return {_mm256_unpacklo_epi64(low0, low1), _mm256_unpackhi_epi64(low0, low1),
            _mm256_unpacklo_epi64(high0, high1), _mm256_unpackhi_epi64(high0, high1)};
}

// Half 0 of a record is its first four words, half 1 its last four.
template <class Record>
__m128i *HalfOf(Record *records, size_t number, size_t half) {
    static_assert(sizeof(Record) == 32);
    return reinterpret_cast<__m128i *>(records + number) + half;
}

template <class Record>
FENLIGHT_WHOLE_WORDS FENLIGHT_INLINE FourWords LoadWords(Record *records, size_t half) {
    const auto pair = [&](size_t i) {
        return _mm256_inserti128_si256(_mm256_castsi128_si256(_mm_loadu_si128(HalfOf(records, i, half))),
                                       _mm_loadu_si128(HalfOf(records, i + 4, half)), 1);
    };
    return Transpose({pair(0), pair(1), pair(2), pair(3)});
}

template <class Record>
FENLIGHT_WHOLE_WORDS FENLIGHT_INLINE void StoreWords(Record *records, size_t half, const FourWords &words) {
    const FourWords rows = Transpose(words);
    size_t number = 0;
    for (const __m256i row : {rows.a, rows.b, rows.c, rows.d}) {
        _mm_storeu_si128(HalfOf(records, number, half), _mm256_castsi256_si128(row));
        _mm_storeu_si128(HalfOf(records, number + 4, half), _mm256_extracti128_si256(row, 1));
        ++number;
    }
}

__m256i Both(__m256i a, __m256i b) { return _mm256_and_si256(a, b); }
__m256i Either(__m256i a, __m256i b) { return _mm256_or_si256(a, b); }
__m256i Sum(__m256i a, __m256i b) { return _mm256_add_epi32(a, b); }
__m256i IsGreater(__m256i a, __m256i b) { return _mm256_cmpgt_epi32(a, b); }
__m256i IsEqual(__m256i a, __m256i b) { return _mm256_cmpeq_epi32(a, b); }
__m256i All(int32_t value) { return _mm256_set1_epi32(value); }
__m256i All(uint32_t value) { return All(static_cast<int32_t>(value)); }
// `yes` where the condition holds.
__m256i Choose(__m256i condition, __m256i yes, __m256i no) { return _mm256_blendv_epi8(no, yes, condition); }
// A bit for each of the eight.
uint32_t BitsOf(__m256i condition) {
    return static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(condition)));
}

void Write(void *words, __m256i vector) { _mm256_storeu_si256(static_cast<__m256i *>(words), vector); }

class Offsets {
  public:
    explicit Offsets(const SurfaceShape &shape)
        : pitch_(All(shape.pitch)), width_(Biased(All(shape.width))), height_(Biased(All(shape.height))) {}

    __m256i At(__m256i x, __m256i y) const {
        const __m256i isOnSurface = Both(IsGreater(width_, Biased(x)), IsGreater(height_, Biased(y)));
        const __m256i offset = Sum(_mm256_mullo_epi32(y, pitch_), _mm256_slli_epi32(x, 2));
        return Choose(isOnSurface, offset, All(kNoOffset));
    }

  private:
    // Unsigned numbers as signed ones of the same order.
    static __m256i Biased(__m256i number) { return _mm256_xor_si256(number, All(INT32_MIN)); }

    __m256i pitch_, width_, height_;
};

__m256i WordOfAge(__m256i age) {
    const __m256i words =
        _mm256_setr_epi32(0x808080, 0xC0C0C0, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF, 0xFFFFFF);
    return _mm256_permutevar8x32_epi32(words, _mm256_min_epu32(_mm256_srli_epi32(age, 6), All(2)));
}

__m256i IsInside(const StarRoom &room, __m256i x, __m256i y) {
    return Both(Both(IsGreater(x, All(room.left)), IsGreater(All(room.right), x)),
                Both(IsGreater(y, All(room.top)), IsGreater(All(room.bottom), y)));
}

FENLIGHT_WHOLE_WORDS void MoveStars(StarRecord *stars, size_t count, const StarRoom &room,
                                    const SurfaceShape &shape, PixelJobs<PixelOffset> &jobs,
                                    NumberList &gone) noexcept {
    const Offsets offsets(shape);
    for (size_t i = 0; i < count; i += 8) {
        const auto [x, y, prevX, prevY] = LoadWords(stars + i, 0);
        const auto [age, vx, vy, spare] = LoadWords(stars + i, 1);
        Write(jobs.erased + i, offsets.At(prevX, prevY));
        Write(jobs.drawn + i, offsets.At(x, y));
        Write(jobs.colours + i, WordOfAge(age));
        const __m256i nextX = Sum(x, vx), nextY = Sum(y, vy);
        const __m256i isParked = Both(IsEqual(nextX, All(kParkedAt)), IsEqual(nextY, All(kParkedAt)));
        const __m256i isAlive = Either(IsInside(room, nextX, nextY), isParked);
        const __m256i nextAge = _mm256_sub_epi32(age, isAlive);
        StoreWords(stars + i, 0, {nextX, nextY, x, y});
        StoreWords(stars + i, 1, {nextAge, vx, vy, spare});
        uint32_t left = BitsOf(Both(isAlive, IsGreater(All(kLongestStarAge), nextAge))) ^ 0xFF;
        for (; left != 0; left = _blsr_u32(left)) gone.Add(i + _tzcnt_u32(left));
    }
    jobs.count += count;
}

constexpr uint64_t kNumbers = 0x0706050403020100;

uint64_t SpreadBits(uint32_t bits) { return _pdep_u64(bits, 0x0101010101010101) * 0xFF; }

__m256i Permute(__m256i words, uint64_t order) {
    return _mm256_permutevar8x32_epi32(
        words, _mm256_cvtepu8_epi32(_mm_cvtsi64_si128(static_cast<long long>(order))));
}
// The words that have a bit, moved together; the first ones, moved apart to where a bit is.
uint64_t TogetherOrder(uint32_t bits) { return _pext_u64(kNumbers, SpreadBits(bits)); }
uint64_t ApartOrder(uint32_t bits) { return _pdep_u64(kNumbers, SpreadBits(bits)); }

__m256i Faded(__m256i colour) {
    const __m256i low = All(0x7F7F7F);
    const __m256i high = Both(Either(colour, Sum(Both(colour, low), low)), All(0x808080));
    return _mm256_sub_epi32(colour, _mm256_srli_epi32(high, 7));
}

// The bytes of a colour as a pixel has them, the fourth being 0.
__m256i WordOfColour(__m256i colour) {
    const __m256i order = _mm256_setr_epi8(2, 1, 0, -1, 6, 5, 4, -1, 10, 9, 8, -1, 14, 13, 12, -1, 2, 1, 0,
                                           -1, 6, 5, 4, -1, 10, 9, 8, -1, 14, 13, 12, -1);
    return _mm256_shuffle_epi8(colour, order);
}

__m256i NextColour(const ParticleRules &rules, __m256i colour, uint32_t shown, size_t shownBefore) {
    switch (rules.colourMode) {
        case kFading:
            return Faded(colour);
        case kSteady:
            return All(rules.colour);
        case kRandom:
            return Permute(
                _mm256_loadu_si256(reinterpret_cast<const __m256i *>(rules.randomColours + shownBefore)),
                ApartOrder(shown));
        default:
            return colour;
    }
}

FENLIGHT_WHOLE_WORDS size_t MoveParticles(PixelParticle *particles, size_t count, const ParticleRules &rules,
                                          const SurfaceShape &shape, PixelJobs<PixelOffset> &jobs) noexcept {
    const Offsets offsets(shape);
    const __m256i none = _mm256_setzero_si256(), lifeFrames = All(rules.lifeFrames);
    const __m256i gravityX = All(rules.gravityX), gravityY = All(rules.gravityY);
    size_t shownCount = 0;
    for (size_t i = 0; i < count; i += 8) {
        const auto [x, y, prevX, prevY] = LoadWords(particles + i, 0);
        const auto [life, vx, vy, colour] = LoadWords(particles + i, 1);
        const __m256i isDead = IsEqual(life, none);
        const __m256i isShown = _mm256_andnot_si256(Either(isDead, IsGreater(life, lifeFrames)), All(-1));
        const __m256i isLast = IsEqual(life, All(1));
        const uint32_t shown = BitsOf(isShown), worked = shown | BitsOf(isLast);
        if (worked != 0) {
            const uint64_t order = TogetherOrder(worked);
            const __m256i drawn = Choose(isShown, offsets.At(x, y), All(kNoOffset));
            Write(jobs.erased + jobs.count, Permute(offsets.At(prevX, prevY), order));
            Write(jobs.drawn + jobs.count, Permute(drawn, order));
            Write(jobs.colours + jobs.count, Permute(WordOfColour(colour), order));
            for (uint32_t last = _pext_u32(BitsOf(isLast), worked); last != 0; last = _blsr_u32(last))
                jobs.last.Add(jobs.count + _tzcnt_u32(last));
            jobs.count += static_cast<size_t>(_mm_popcnt_u32(worked));
        }
        const __m256i nextColour = NextColour(rules, colour, shown, shownCount);
        StoreWords(particles + i, 0,
                   {Sum(x, Both(vx, isShown)), Sum(y, Both(vy, isShown)), Choose(isShown, x, prevX),
                    Choose(isShown, y, prevY)});
        StoreWords(particles + i, 1,
                   {Sum(life, _mm256_andnot_si256(isDead, All(-1))), Sum(vx, Both(gravityX, isShown)),
                    Sum(vy, Both(gravityY, isShown)), Choose(isShown, nextColour, colour)});
        shownCount += static_cast<size_t>(_mm_popcnt_u32(shown));
    }
    return shownCount;
}

}  // namespace

const ParticleKernels kAvx2ParticleKernels{MoveStars, MoveParticles};

}  // namespace fenlight
#endif
