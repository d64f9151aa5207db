// SPDX-License-Identifier: Zlib
// Text routines, cipher and checksum over 64 kB and 16 MB, beside the plain loops and what the C library
// gives. The text is made of words, with `the` about every 100 bytes, a tab at the start of each line and a
// tag every 70 bytes or so; the dense one has a special byte in every four.
#include <benchmark/benchmark.h>

#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "data/tag_filter.h"
#include "fenlight/files.h"
#include "fenlight/text.h"

namespace fenlight {
namespace {

constexpr int64_t kSmall = 64 << 10, kLarge = 16 << 20;
constexpr int32_t kTabWidth = 4;
constexpr std::string_view kSearch = "the", kReplacement = "that", kKey = "thirteenbytes";

enum class TextKind { Plain, Tabbed, Tagged, DenseTabs, DenseTags };

std::string MakeText(int64_t bytes, TextKind kind) {
    constexpr std::string_view kWords[] = {"sprite ", "of ",  "lantern ", "moves ",  "and ",   "in ",
                                           "frame ",  "to ",  "a ",       "under ",  "water ", "that ",
                                           "thin ",   "had ", "with ",    "picture "};
    std::mt19937 random(11);
    const auto oneIn = [&](uint32_t range) { return random() % range == 0; };
    std::string text;
    const auto length = static_cast<size_t>(bytes);
    while (text.size() < length) {
        if (kind == TextKind::DenseTabs) {
            text += oneIn(4) ? '\t' : 'x';
        } else if (kind == TextKind::DenseTags) {
            text += oneIn(4) ? "<>"[random() % 2] : 'x';
        } else {
            text += oneIn(17) ? "the " : kWords[random() % std::size(kWords)];
            if (kind == TextKind::Tabbed && oneIn(8)) text += "\n\t";
            if (kind == TextKind::Tagged && oneIn(12)) text += oneIn(2) ? "<b>" : "</span>";
        }
    }
    text.resize(length);
    return text;
}

struct Memory {
    Memory(int64_t bytes, TextKind kind)
        : text(MakeText(bytes, kind)), output(static_cast<size_t>(bytes) * kTabWidth + 1) {}

    const std::string text;
    std::vector<uint8_t> output;

    int32_t Length() const { return static_cast<int32_t>(text.size()); }
    const uint8_t *Bytes() const { return reinterpret_cast<const uint8_t *>(text.data()); }
};

template <TextKind kind, auto routine>
void Run(benchmark::State &state) {
    Memory memory(state.range(0), kind);
    for (auto _ : state) {
        benchmark::DoNotOptimize(routine(memory));
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

const char *FindSearch(const char *from, const char *end) {
    return static_cast<const char *>(
        memmem(from, static_cast<size_t>(end - from), kSearch.data(), kSearch.size()));
}

int64_t CountWithMemmem(Memory &memory) {
    const char *const end = memory.text.data() + memory.text.size();
    int64_t count = 0;
    for (const char *at = memory.text.data(); (at = FindSearch(at, end)) != nullptr; ++at) ++count;
    return count;
}

int64_t ReplaceWithMemmem(Memory &memory) {
    const char *from = memory.text.data(), *const end = from + memory.text.size();
    uint8_t *out = memory.output.data();
    const auto copy = [&](const char *bytes, int64_t count) {
        std::memcpy(out, bytes, static_cast<size_t>(count));
        out += count;
    };
    while (const char *match = FindSearch(from, end)) {
        copy(from, match - from);
        copy(kReplacement.data(), static_cast<int64_t>(kReplacement.size()));
        from = match + kSearch.size();
    }
    copy(from, end - from);
    return out - memory.output.data();
}

int64_t ExpandInALoop(Memory &memory) {
    uint8_t *out = memory.output.data();
    for (const char byte : memory.text) {
        if (byte == '\t') {
            for (int k = 0; k < kTabWidth; ++k) *out++ = ' ';
        } else {
            *out++ = static_cast<uint8_t>(byte);
        }
    }
    return out - memory.output.data();
}

int64_t DeleteTagsInALoop(Memory &memory) {
    uint8_t *out = memory.output.data();
    bool isInTag = false;
    for (const char byte : memory.text) {
        if (byte == '<') isInTag = true;
        if (!isInTag) *out++ = static_cast<uint8_t>(byte);
        if (byte == '>') isInTag = false;
    }
    *out = 0;
    return out - memory.output.data();
}

int64_t CryptInALoop(Memory &memory) {
    auto keyLength = static_cast<int32_t>(kKey.size());
    benchmark::DoNotOptimize(keyLength);  // no caller's key length is known to the compiler
    for (int32_t i = 0; i < memory.Length(); ++i)
        memory.output[static_cast<size_t>(i)] ^=
            static_cast<uint8_t>(kKey[static_cast<size_t>(i % keyLength)]);
    return 0;
}

int64_t SumInALoop(Memory &memory) {
    uint32_t sum = 0;
    for (const char byte : memory.text) sum += static_cast<uint8_t>(byte);
    return sum;
}

int64_t OurCount(Memory &memory) {
    return CountStrings(memory.Bytes(), 0, memory.Length() - 2, kSearch.data(), 3);
}

template <int32_t replacementLength>
int64_t OurReplace(Memory &memory) {
    return Replace(memory.Bytes(), memory.Length(), memory.output.data(), kSearch.data(), 3,
                   kReplacement.data(), replacementLength);
}

int64_t OurTabs(Memory &memory) {
    return ReplaceTabs(memory.Bytes(), memory.output.data(), memory.Length(), kTabWidth);
}

int64_t OurTags(Memory &memory) {
    return DeleteTags(memory.Bytes(), memory.Length(), memory.output.data(), '<', '>', 0);
}

int64_t OurStrayTags(Memory &memory) {
    return DeleteTags(memory.Bytes(), memory.Length(), memory.output.data(), '<', '>', 2);
}

int64_t StrayTagsPlain(Memory &memory) {
    return kPlainTags.filterTags(memory.Bytes(), memory.Length(), memory.output.data(),
                                 {'<', '>', false, true});
}

int64_t OurCrypt(Memory &memory) {
    Crypt(memory.output.data(), memory.Length(), kKey.data(), static_cast<int32_t>(kKey.size()));
    return 0;
}

int64_t OurSum(Memory &memory) { return GenerateChecksum(memory.Bytes(), memory.Length(), 0); }

BENCHMARK(Run<TextKind::Plain, OurCount>)->Name("count_ours")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::Plain, CountWithMemmem>)->Name("count_memmem")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::Plain, OurReplace<4>>)->Name("replace_ours")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::Plain, OurReplace<1>>)->Name("replace_shrinking_ours")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::Plain, ReplaceWithMemmem>)->Name("replace_memmem")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::Tabbed, OurTabs>)->Name("tabs_ours")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::Tabbed, ExpandInALoop>)->Name("tabs_loop")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::DenseTabs, OurTabs>)->Name("dense_tabs_ours")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::DenseTabs, ExpandInALoop>)->Name("dense_tabs_loop")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::Tagged, OurTags>)->Name("tags_ours")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::Tagged, DeleteTagsInALoop>)->Name("tags_loop")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::DenseTags, OurTags>)->Name("dense_tags_ours")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::DenseTags, StrayTagsPlain>)->Name("dense_stray_tags_plain")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::DenseTags, OurStrayTags>)->Name("dense_stray_tags_ours")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::DenseTags, DeleteTagsInALoop>)->Name("dense_tags_loop")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::Plain, OurCrypt>)->Name("crypt_ours")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::Plain, CryptInALoop>)->Name("crypt_loop")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::Plain, OurSum>)->Name("checksum_ours")->Arg(kSmall)->Arg(kLarge);
BENCHMARK(Run<TextKind::Plain, SumInALoop>)->Name("checksum_loop")->Arg(kSmall)->Arg(kLarge);

}  // namespace
}  // namespace fenlight
