// SPDX-License-Identifier: Zlib
#include "data/replace.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "data/byte_search.h"
#include "data/text_overlap.h"
#include "fenlight/text.h"

namespace fenlight {
namespace {

constexpr size_t kBatch = 128;
// Most runs of a text are no longer than this, and copying it whole costs less than a loop whose end cannot
// be foretold.
constexpr int64_t kRunChunk = 128;
constexpr int64_t kReplacementChunk = 32;

// Where a careless copy may read and write.
struct Bounds {
    const uint8_t *sourceEnd;
    const uint8_t *outputEnd;
};

// Copies in whole chunks where both sides have room for one more than needed.
template <int64_t chunk>
void CopyRun(uint8_t *destination, const uint8_t *source, int64_t count, const Bounds &bounds) {
    if (count + chunk > bounds.sourceEnd - source || count + chunk > bounds.outputEnd - destination) {
        std::memcpy(destination, source, static_cast<size_t>(count));
        return;
    }
    for (int64_t i = 0; i < count; i += chunk) std::memcpy(destination + i, source + i, chunk);
}

// Writes the output run by run: the text before a match, the replacement, and so on.
class RunWriter {
  public:
    RunWriter(TextSpan source, uint8_t *destination, TextSpan search, TextSpan replacement)
        : source_(source), search_(search), end_(destination), replacement_(replacement) {
        if (replacement.size() > padded_.size()) return;
        std::copy(replacement.begin(), replacement.end(), padded_.begin());
        replacementBytes_ = padded_;
    }

    // What the matches of one batch will have written is known before it is written, so that all but its last
    // runs may be copied with stores that reach too far.
    void WriteMatches(std::span<const int64_t> matches) {
        if (matches.empty()) return;
        const auto count = static_cast<int64_t>(matches.size());
        const int64_t copied = matches.back() - from_ - (count - 1) * Length(search_);
        const uint8_t *const outputEnd = end_ + copied + count * Length(replacement_);
        for (const int64_t match : matches) {
            WriteUpTo(match, outputEnd);
            from_ += Length(search_);
            CopyRun<kReplacementChunk>(end_, replacementBytes_.data(), Length(replacement_),
                                       {replacementBytes_.data() + replacementBytes_.size(), outputEnd});
            end_ += Length(replacement_);
        }
    }

    uint8_t *WriteRest() {
        WriteUpTo(Length(source_), end_);
        return end_;
    }

  private:
    static int64_t Length(TextSpan text) { return static_cast<int64_t>(text.size()); }

    void WriteUpTo(int64_t position, const uint8_t *outputEnd) {
        const int64_t count = position - from_;
        CopyRun<kRunChunk>(end_, source_.data() + from_, count, {source_.data() + source_.size(), outputEnd});
        from_ = position;
        end_ += count;
    }

    TextSpan source_;
    TextSpan search_;
    int64_t from_ = 0;
    uint8_t *end_;
    TextSpan replacement_;
    std::array<uint8_t, 2 * kReplacementChunk> padded_{};
    TextSpan replacementBytes_ = replacement_;
};

uint8_t *ReplaceInBatches(TextSpan source, uint8_t *destination, TextSpan search, TextSpan replacement) {
    SeparateMatches matches(source.data(), static_cast<int64_t>(source.size()), search.data(),
                            static_cast<int64_t>(search.size()));
    RunWriter writer(source, destination, search, replacement);
    std::array<int64_t, kBatch> positions;
    size_t found = 0;
    do {
        found = matches.Next(positions);
        writer.WriteMatches(std::span(positions).first(found));
    } while (found == kBatch);
    return writer.WriteRest();
}

// The matches are looked for while the destination, and with it the source, is being written.
uint8_t *ReplaceByteByByte(TextSpan source, uint8_t *destination, TextSpan search, TextSpan replacement) {
    for (size_t i = 0; i < source.size();) {
        const TextSpan rest = source.subspan(i);
        if (rest.size() >= search.size() && std::equal(search.begin(), search.end(), rest.begin())) {
            for (const uint8_t byte : replacement) *destination++ = byte;
            i += search.size();
        } else {
            *destination++ = source[i++];
        }
    }
    return destination;
}

bool IsReadWhileWritten(TextSpan text, const uint8_t *destination, int64_t bytes) {
    return DoOverlap(text.data(), static_cast<int64_t>(text.size()), destination, bytes);
}

TextSpan SpanOf(const void *bytes, int32_t count) {
    return {static_cast<const uint8_t *>(bytes), static_cast<size_t>(std::max(count, 0))};
}

}  // namespace

int64_t ReplaceMatches(TextSpan source, uint8_t *destination, TextSpan search,
                       TextSpan replacement) noexcept {
    if (source.empty() || search.empty()) return 0;
    const auto growths = source.size() / search.size();
    const auto most = static_cast<int64_t>(source.size() + growths * replacement.size());
    const bool overlaps = IsReadWhileWritten(source, destination, most) ||
                          IsReadWhileWritten(search, destination, most) ||
                          IsReadWhileWritten(replacement, destination, most);
    const auto replace = overlaps ? ReplaceByteByByte : ReplaceInBatches;
    return replace(source, destination, search, replacement) - destination;
}

}  // namespace fenlight

using namespace fenlight;

int32_t Replace(const void *source, int32_t sourceLength, void *destination, const void *search,
                int32_t searchLength, const void *replacement, int32_t replacementLength) noexcept {
    return static_cast<int32_t>(
        ReplaceMatches(SpanOf(source, sourceLength), static_cast<uint8_t *>(destination),
                       SpanOf(search, searchLength), SpanOf(replacement, replacementLength)));
}

int32_t CountStrings(const void *memory, int32_t offset, int32_t length, const void *pattern,
                     int32_t patternLength) noexcept {
    if (length <= 0 || patternLength <= 0) return 0;
    return static_cast<int32_t>(CountPattern(static_cast<const uint8_t *>(memory) + offset, length,
                                             static_cast<const uint8_t *>(pattern), patternLength));
}
