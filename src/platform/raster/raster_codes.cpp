// SPDX-License-Identifier: Zlib
#include "platform/raster/raster_codes.h"

#include <array>

namespace fenlight::platform {
namespace {

// Any table by choosing between its two halves three times: first by the target's bits, then by the source's,
// then by the pattern's.
template <typename Word>
class AnyTable {
  public:
    explicit AnyTable(uint8_t table) {
        for (unsigned i = 0; i < 4; ++i) {
            low_[i] = Spread(table, 2 * i);
            change_[i] = static_cast<Word>(low_[i] ^ Spread(table, 2 * i + 1));
        }
    }

    Word operator()(Word pattern, Word source, Word target) const {
        const Word off = Choose(source, Half(0, target), Half(1, target));
        const Word on = Choose(source, Half(2, target), Half(3, target));
        return Choose(pattern, off, on);
    }

  private:
    static Word Spread(uint8_t table, unsigned bit) {
        return (table >> bit & 1) != 0 ? static_cast<Word>(~Word{0}) : Word{0};
    }
    static Word Choose(Word by, Word off, Word on) { return static_cast<Word>(off ^ (by & (off ^ on))); }
    Word Half(size_t i, Word target) const { return static_cast<Word>(low_[i] ^ (target & change_[i])); }

    std::array<Word, 4> low_;
    std::array<Word, 4> change_;
};

// Calls run(operation) with the loop body of the table: the named operations without a choice per bit.
template <typename Word, typename Run>
void WithOperation(uint8_t table, Run run) {
    using W = Word;
    const auto cast = [](auto word) { return static_cast<W>(word); };
    switch (table) {
        case TruthTable(SRCCOPY):
            return run([=](W, W s, W) { return s; });
        case TruthTable(NOTSRCCOPY):
            return run([=](W, W s, W) { return cast(~s); });
        case TruthTable(DSTINVERT):
            return run([=](W, W, W d) { return cast(~d); });
        case TruthTable(SRCAND):
            return run([=](W, W s, W d) { return cast(s & d); });
        case TruthTable(SRCPAINT):
            return run([=](W, W s, W d) { return cast(s | d); });
        case TruthTable(SRCINVERT):
            return run([=](W, W s, W d) { return cast(s ^ d); });
        case TruthTable(SRCERASE):
            return run([=](W, W s, W d) { return cast(s & ~d); });
        case TruthTable(NOTSRCERASE):
            return run([=](W, W s, W d) { return cast(~(s | d)); });
        case TruthTable(MERGEPAINT):
            return run([=](W, W s, W d) { return cast(~s | d); });
        case TruthTable(MERGECOPY):
            return run([=](W p, W s, W) { return cast(p & s); });
        case TruthTable(PATPAINT):
            return run([=](W p, W s, W d) { return cast(p | ~s | d); });
        case TruthTable(PATINVERT):
            return run([=](W p, W, W d) { return cast(p ^ d); });
        default:
            return run(AnyTable<W>(table));
    }
}

}  // namespace

uint32_t CombineWord(uint8_t table, uint32_t pattern, uint32_t source, uint32_t target) noexcept {
    return AnyTable<uint32_t>(table)(pattern, source, target);
}

void CombineValues(uint8_t table, uint32_t pattern, const uint32_t *source, uint32_t *target,
                   int32_t count) noexcept {
    WithOperation<uint32_t>(table, [=](auto operation) {
        for (int32_t i = 0; i < count; ++i) target[i] = operation(pattern, source[i], target[i]);
    });
}

void CombineBytes(uint8_t table, const uint8_t *source, uint8_t *target, size_t count) noexcept {
    WithOperation<uint8_t>(table, [=](auto operation) {
        for (size_t i = 0; i < count; ++i) target[i] = operation(0, source[i], target[i]);
    });
}

}  // namespace fenlight::platform
