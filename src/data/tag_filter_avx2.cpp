// SPDX-License-Identifier: Zlib
// 64 bytes of source become a word of 64 bits that tells which of them stay, without a branch for any byte.
// What stays is gathered on the stack, where stores may reach too far, and goes to the destination in long
// pieces: the output can be shorter than anything that was read so far suggests, and not a byte behind it may
// be touched.
#if defined(__x86_64__)
#include <immintrin.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "data/tag_step.h"
#include "data/text_block_avx2.h"

namespace fenlight {
namespace {

constexpr int64_t kBlock = 64;
constexpr int64_t kGroup = 8;
// Where one stray delimiter was that asks for going byte by byte, there may be more.
constexpr int64_t kSlowPiece = 4 * kBlock;

// Entry m: where to take the bytes from whose bits are set in m, in order.
constexpr auto kGroupIndices = [] {
    std::array<std::array<uint8_t, kGroup>, 256> entries{};
    for (size_t mask = 0; mask < entries.size(); ++mask) {
        size_t count = 0;
        for (uint8_t bit = 0; bit < kGroup; ++bit)
            if ((mask >> bit & 1) != 0) entries[mask][count++] = bit;
    }
    return entries;
}();

class GatheredOutput {
  public:
    explicit GatheredOutput(uint8_t *destination) : destination_(destination) {}

    // Byte by byte; gives the state behind the last.
    bool Filter(const uint8_t *source, int64_t length, const TagRule &rule, bool isInTag) {
        TagBytes bytes{gathered_.data(), gathered_.data() + count_, passedOn_};
        isInTag = FilterByteByByte(source, length, rule, isInTag, bytes);
        count_ = bytes.end - bytes.start;
        passedOn_ = bytes.before;
        return isInTag;
    }
    // The bytes of a block whose bits are set.
    void WriteSome(const uint8_t *block, uint64_t stays) {
        uint8_t *end = gathered_.data() + count_;
        for (int64_t i = 0; i < kBlock; i += kGroup, stays >>= kGroup) {
            const auto group = static_cast<uint8_t>(stays);
            const __m128i bytes = _mm_loadl_epi64(reinterpret_cast<const __m128i *>(block + i));
            const __m128i indices =
                _mm_loadl_epi64(reinterpret_cast<const __m128i *>(kGroupIndices[group].data()));
            _mm_storel_epi64(reinterpret_cast<__m128i *>(end), _mm_shuffle_epi8(bytes, indices));
            end += std::popcount(group);
        }
        count_ = end - gathered_.data();
    }
    // To be called after each piece: keeps room for the next, in which each byte may be written twice.
    void PassOnIfFull() {
        if (count_ >= kPiece) PassOn();
    }
    int64_t Finish() {
        PassOn();
        return passedOn_;
    }

  private:
    static constexpr int64_t kPiece = 4096;

    void PassOn() {
        std::memcpy(destination_ + passedOn_, gathered_.data(), static_cast<size_t>(count_));
        passedOn_ += count_;
        count_ = 0;
    }

    uint8_t *destination_;
    int64_t passedOn_ = 0;
    int64_t count_ = 0;
    std::array<uint8_t, kPiece + 2 * kSlowPiece + kGroup> gathered_;
};

// The states of all bytes of a block at once. From each bit behind an opening delimiter the addition carries
// through all ones, which are the bytes that don't close, and stops at the first zero.
class TagStates {
  public:
    bool isInTag = false;

    // Bit n: byte n is read with the state on.
    uint64_t Advance(uint64_t opens, uint64_t closes) {
        const uint64_t starts = opens << 1 | uint64_t{isInTag};
        const uint64_t stays = ~closes;
        uint64_t sum = 0;
        const bool carries = __builtin_add_overflow(starts & stays, stays, &sum);
        isInTag = carries || (opens >> 63) != 0;
        return (sum ^ stays) | starts;
    }
};

int64_t FilterTagsInBlocks(const uint8_t *source, int64_t length, uint8_t *destination,
                           const TagRule &rule) noexcept {
    const TextBlock open = TextBlock::Fill(rule.open);
    const TextBlock close = TextBlock::Fill(rule.close);
    // Masks in place of branches: what the rule does not ask for is 0.
    const auto maskIf = [](bool isOn) { return isOn ? ~uint64_t{0} : uint64_t{0}; };
    const uint64_t tagged = maskIf(rule.HasTags());
    const uint64_t outside = maskIf(!rule.keepsInside);
    const uint64_t kept = maskIf(rule.keepsDelimiters);
    const uint64_t strayMatters = maskIf(rule.keepsInside != rule.keepsDelimiters);

    GatheredOutput output(destination);
    TagStates states;
    int64_t i = 0;
    for (; i + kBlock <= length; output.PassOnIfFull()) {
        const TextBlock block = TextBlock::Load(source + i);
        const uint64_t opens = block.Matches(open);
        const uint64_t closes = block.Matches(close) & tagged;
        const bool wasInTag = states.isInTag;
        const uint64_t inside = states.Advance(opens & tagged, closes);
        if ((closes & ~inside & strayMatters) != 0) {
            const int64_t piece = std::min(kSlowPiece, length - i);
            states.isInTag = output.Filter(source + i, piece, rule, wasInTag);
            i += piece;
            continue;
        }
        const uint64_t delimiters = opens | (closes & inside);
        output.WriteSome(source + i, ((inside ^ outside) & ~delimiters) | (delimiters & kept));
        i += kBlock;
    }
    output.Filter(source + i, length - i, rule, states.isInTag);
    return output.Finish();
}

}  // namespace

const TagKernels kAvx2Tags{FilterTagsInBlocks};

}  // namespace fenlight
#endif
