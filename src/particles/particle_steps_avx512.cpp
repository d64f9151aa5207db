// SPDX-License-Identifier: Zlib
// Sixteen records at a time.
#if defined(__x86_64__)
#include <immintrin.h>

#include "particles/particle_steps.h"

namespace fenlight {
namespace {

using Vector = __m512i;
using Mask = __mmask16;
constexpr size_t kLanes = 16;

// Unknown to the thread sanitizer, as are the loops that use them.
[[gnu::no_sanitize("thread"), gnu::always_inline]] inline Vector Read(const void *words) {
    return _mm512_loadu_si512(words);
}
[[gnu::no_sanitize("thread"), gnu::always_inline]] inline void Write(void *words, Vector vector) {
    _mm512_storeu_si512(words, vector);
}

Vector Low32(Vector a, Vector b) { return _mm512_unpacklo_epi32(a, b); }
Vector High32(Vector a, Vector b) { return _mm512_unpackhi_epi32(a, b); }
Vector Low64(Vector a, Vector b) { return _mm512_unpacklo_epi64(a, b); }
Vector High64(Vector a, Vector b) { return _mm512_unpackhi_epi64(a, b); }

// Four rows of two records, transposed, hold a word of records 0, 2, 4, 6, one of their last halves, and the
// same of records 1, 3, 5, 7.
Vector Permute(Vector a, Vector b, __m512i order) { return _mm512_permutex2var_epi32(a, order, b); }
Vector JoinFirst(Vector a, Vector b) {
    return Permute(a, b, _mm512_setr_epi32(0, 8, 1, 9, 2, 10, 3, 11, 16, 24, 17, 25, 18, 26, 19, 27));
}
Vector JoinLast(Vector a, Vector b) {
    return Permute(a, b, _mm512_setr_epi32(4, 12, 5, 13, 6, 14, 7, 15, 20, 28, 21, 29, 22, 30, 23, 31));
}
Vector PartFirst(Vector first, Vector last) {
    return Permute(first, last, _mm512_setr_epi32(0, 2, 4, 6, 16, 18, 20, 22, 1, 3, 5, 7, 17, 19, 21, 23));
}
Vector PartLast(Vector first, Vector last) {
    return Permute(first, last,
                   _mm512_setr_epi32(8, 10, 12, 14, 24, 26, 28, 30, 9, 11, 13, 15, 25, 27, 29, 31));
}

Vector All(int32_t value) { return _mm512_set1_epi32(value); }
Vector All(uint32_t value) { return All(static_cast<int32_t>(value)); }
Mask And(Mask a, Mask b) { return static_cast<Mask>(a & b); }
Mask Or(Mask a, Mask b) { return static_cast<Mask>(a | b); }
Mask Not(Mask mask) { return static_cast<Mask>(~mask); }
Vector Sum(Vector a, Vector b) { return _mm512_add_epi32(a, b); }
Vector SumWhere(Mask condition, Vector a, Vector b) { return _mm512_mask_add_epi32(a, condition, a, b); }
Vector BytesDown(Vector a, Vector b) { return _mm512_subs_epu8(a, b); }
Vector Product(Vector a, Vector b) { return _mm512_mullo_epi32(a, b); }
Vector ShiftLeft(Vector words, int bits) {
    return _mm512_maskz_slli_epi32(0xFFFF, words, static_cast<unsigned>(bits));
}

Mask IsEqual(Vector a, Vector b) { return _mm512_cmpeq_epi32_mask(a, b); }
Mask IsGreater(Vector a, Vector b) { return _mm512_cmpgt_epi32_mask(a, b); }
Mask IsBelow(Vector a, Vector b) { return _mm512_cmplt_epu32_mask(a, b); }
Vector Choose(Mask condition, Vector yes, Vector no) { return _mm512_mask_mov_epi32(no, condition, yes); }
uint32_t BitsOf(Mask condition) { return condition; }

Vector OrderBytes(Vector words, __m128i order) {
    return _mm512_shuffle_epi8(words, _mm512_broadcast_i32x4(order));
}

class Together {
  public:
    explicit Together(uint32_t bits) : bits_(static_cast<Mask>(bits)) {}
    Vector operator()(Vector words) const { return _mm512_maskz_compress_epi32(bits_, words); }

  private:
    Mask bits_;
};

Vector Apart(const uint32_t *words, uint32_t bits) {
    return _mm512_maskz_expand_epi32(static_cast<Mask>(bits), _mm512_loadu_si512(words));
}

}  // namespace
}  // namespace fenlight

#include "particles/particle_loops.h"

namespace fenlight {

const ParticleKernels kAvx512ParticleKernels{MoveStars, MoveParticles};

}  // namespace fenlight
#endif
