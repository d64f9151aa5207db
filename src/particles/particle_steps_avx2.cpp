// SPDX-License-Identifier: Zlib
// Eight records at a time.
#if defined(__x86_64__)
#include <immintrin.h>

#include "particles/particle_steps.h"

namespace fenlight {
namespace {

using Vector = __m256i;
using Mask = __m256i;
constexpr size_t kLanes = 8;

// Unknown to the thread sanitizer, as are the loops that use them.
[[gnu::no_sanitize("thread"), gnu::always_inline]] inline Vector Read(const void *words) {
    return _mm256_loadu_si256(static_cast<const Vector *>(words));
}
[[gnu::no_sanitize("thread"), gnu::always_inline]] inline void Write(void *words, Vector vector) {
    _mm256_storeu_si256(static_cast<Vector *>(words), vector);
}

Vector Low32(Vector a, Vector b) { return _mm256_unpacklo_epi32(a, b); }
Vector High32(Vector a, Vector b) { return _mm256_unpackhi_epi32(a, b); }
Vector Low64(Vector a, Vector b) { return _mm256_unpacklo_epi64(a, b); }
Vector High64(Vector a, Vector b) { return _mm256_unpackhi_epi64(a, b); }

Vector JoinFirst(Vector a, Vector b) { return _mm256_permute2x128_si256(a, b, 0x20); }
Vector JoinLast(Vector a, Vector b) { return _mm256_permute2x128_si256(a, b, 0x31); }
Vector PartFirst(Vector first, Vector last) { return JoinFirst(first, last); }
Vector PartLast(Vector first, Vector last) { return JoinLast(first, last); }

Vector All(int32_t value) { return _mm256_set1_epi32(value); }
Vector All(uint32_t value) { return All(static_cast<int32_t>(value)); }
Vector And(Vector a, Vector b) { return _mm256_and_si256(a, b); }
Vector Or(Vector a, Vector b) { return _mm256_or_si256(a, b); }
Mask Not(Mask mask) { return _mm256_xor_si256(mask, All(-1)); }
Vector Sum(Vector a, Vector b) { return _mm256_add_epi32(a, b); }
Vector SumWhere(Mask condition, Vector a, Vector b) { return Sum(a, And(b, condition)); }
Vector BytesDown(Vector a, Vector b) { return _mm256_subs_epu8(a, b); }
Vector Product(Vector a, Vector b) { return _mm256_mullo_epi32(a, b); }
Vector ShiftLeft(Vector words, int bits) { return _mm256_slli_epi32(words, bits); }

Mask IsEqual(Vector a, Vector b) { return _mm256_cmpeq_epi32(a, b); }
Mask IsGreater(Vector a, Vector b) { return _mm256_cmpgt_epi32(a, b); }
// With the highest bit turned round, unsigned numbers have the order of signed ones.
Mask IsBelow(Vector a, Vector b) {
    const Vector highest = All(INT32_MIN);
    return IsGreater(_mm256_xor_si256(b, highest), _mm256_xor_si256(a, highest));
}
Vector Choose(Mask condition, Vector yes, Vector no) { return _mm256_blendv_epi8(no, yes, condition); }
uint32_t BitsOf(Mask condition) {
    return static_cast<uint32_t>(_mm256_movemask_ps(_mm256_castsi256_ps(condition)));
}

Vector OrderBytes(Vector words, __m128i order) {
    return _mm256_shuffle_epi8(words, _mm256_broadcastsi128_si256(order));
}

// Numbers of words, a byte each.
constexpr uint64_t kNumbers = 0x0706050403020100;

uint64_t SpreadBits(uint32_t bits) { return _pdep_u64(bits, 0x0101010101010101) * 0xFF; }
Vector Permute(Vector words, uint64_t numbers) {
    return _mm256_permutevar8x32_epi32(
        words, _mm256_cvtepu8_epi32(_mm_cvtsi64_si128(static_cast<long long>(numbers))));
}

class Together {
  public:
    explicit Together(uint32_t bits) : numbers_(_pext_u64(kNumbers, SpreadBits(bits))) {}
    Vector operator()(Vector words) const { return Permute(words, numbers_); }

  private:
    uint64_t numbers_;
};

Vector Apart(const uint32_t *words, uint32_t bits) {
    return Permute(_mm256_loadu_si256(reinterpret_cast<const Vector *>(words)),
                   _pdep_u64(kNumbers, SpreadBits(bits)));
}

}  // namespace
}  // namespace fenlight

#include "particles/particle_loops.h"

namespace fenlight {

const ParticleKernels kAvx2ParticleKernels{MoveStars, MoveParticles};

}  // namespace fenlight
#endif
