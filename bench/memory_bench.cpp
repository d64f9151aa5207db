// SPDX-License-Identifier: Zlib
// Blocks of memory: ours, the peer that does the same work, and the plain loop, on a block in the second
// level cache and on one beyond all caches. The rate counts bytes of the block (of one of two).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "data/byte_search.h"
#include "fenlight/memory.h"

namespace fenlight {
namespace {

using Bytes = std::vector<uint8_t>;
using Work = std::function<int64_t(Bytes &, Bytes &)>;

// Words as English has them: frequent short ones, letters by their frequency.
Bytes MakeText(size_t size) {
    std::mt19937 random(7);
    const std::string letters =
        "eeeeeeeeeeeettttttttaaaaaaaooooooiiiiiinnnnnnssssssrrrrrhhhhhdddllluuccmmffwwyypvbgkxqz";
    std::vector<std::string> words{"the", "of", "and", "to", "in", "that", "it", "was", "he", "with", "then"};
    while (words.size() < 800) {
        std::string word;
        for (size_t i = 2 + random() % 9; i > 0; --i) word += letters[random() % letters.size()];
        words.push_back(word);
    }
    Bytes text;
    while (text.size() < size) {
        const bool isShort = random() % 4 == 0;
        const std::string &word = words[random() % (isShort ? 11 : words.size())];
        text.insert(text.end(), word.begin(), word.end());
        text.push_back(random() % 12 == 0 ? '\n' : ' ');
    }
    text.resize(size);
    return text;
}

Bytes MakeNoise(size_t size) {
    std::mt19937_64 random(11);
    Bytes noise(size);
    for (auto &byte : noise) byte = static_cast<uint8_t>(random());
    return noise;
}

Bytes MakeRun(size_t size) { return Bytes(size, 'a'); }

template <typename Element>
Element *As(Bytes &bytes) {
    return reinterpret_cast<Element *>(bytes.data());
}

int32_t Size(const Bytes &bytes) { return static_cast<int32_t>(bytes.size()); }

const void *MemMem(const uint8_t *from, const uint8_t *end, const std::string &pattern) {
    return memmem(from, static_cast<size_t>(end - from), pattern.data(), pattern.size());
}

int64_t CountByMemMem(const Bytes &text, const std::string &pattern) {
    int64_t count = 0;
    const uint8_t *at = text.data(), *const end = at + text.size();
    while (const void *found = MemMem(at, end, pattern)) {
        ++count;
        at = static_cast<const uint8_t *>(found) + 1;
    }
    return count;
}

void Register(const std::string &name, Bytes (*make)(size_t), const Work &work) {
    for (const size_t size : {size_t{64} << 10, size_t{16} << 20}) {
        const std::string title = name + (size < 100000 ? "/64k" : "/16M");
        benchmark::RegisterBenchmark(title.c_str(), [=](benchmark::State &state) {
            Bytes first = make(size), second = first;
            second.resize(2 * size);
            for (auto _ : state) benchmark::DoNotOptimize(work(first, second));
            state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * size));
        });
    }
}

void RegisterCounts() {
    Register("CountBytes/ours", MakeText,
             [](Bytes &a, Bytes &) { return CountBytes(a.data(), 0, Size(a), 'e'); });
    Register("CountBytes/peer", MakeText,
             [](Bytes &a, Bytes &) { return std::count(a.begin(), a.end(), 'e'); });
    Register("CountWords/ours", MakeText,
             [](Bytes &a, Bytes &) { return CountWords(a.data(), 0, Size(a) / 2, 0x6568); });
    Register("CountWords/peer", MakeText, [](Bytes &a, Bytes &) {
        return std::count(As<uint16_t>(a), As<uint16_t>(a) + a.size() / 2, uint16_t{0x6568});
    });
    Register("CountLongs/ours", MakeText,
             [](Bytes &a, Bytes &) { return CountLongs(a.data(), 0, Size(a) / 4, 0x20656874); });
    Register("CountLongs/peer", MakeText, [](Bytes &a, Bytes &) {
        return std::count(As<uint32_t>(a), As<uint32_t>(a) + a.size() / 4, 0x20656874U);
    });
    Register("CountFirstBytes/ours", MakeRun,
             [](Bytes &a, Bytes &) { return CountFirstBytes(a.data(), 0, Size(a), 'a'); });
    Register("CountFirstBytes/plain", MakeRun, [](Bytes &a, Bytes &) {
        return std::find_if(a.begin(), a.end(), [](uint8_t b) { return b != 'a'; }) - a.begin();
    });
    for (const int tolerance : {0, 2}) {
        const std::string name = "CompareBytes" + std::to_string(tolerance);
        Register(name + "/ours", MakeText,
                 [=](Bytes &a, Bytes &b) { return CompareBytes(a.data(), b.data(), Size(a), tolerance); });
        Register(name + "/plain", MakeText, [=](Bytes &a, Bytes &b) {
            int32_t count = 0;
            if (tolerance == 0) {
                for (size_t i = 0; i < a.size(); ++i) count += a[i] != b[i];
            } else {
                for (size_t i = 0; i < a.size(); ++i) count += std::abs(a[i] - b[i]) > tolerance;
            }
            return count;
        });
    }
}

void RegisterCopies() {
    Register("CopyMemory/ours", MakeNoise,
             [](Bytes &a, Bytes &b) { return CopyMemory(a.data(), 0, b.data(), 0, Size(a)); });
    Register("CopyMemory/peer", MakeNoise, [](Bytes &a, Bytes &b) {
        std::memcpy(b.data(), a.data(), a.size());
        return 0;
    });
    for (const int32_t period : {1, 7, 1000}) {
        const std::string name = "CopyMemory overlap " + std::to_string(period);
        Register(name + "/ours", MakeNoise, [=](Bytes &a, Bytes &) {
            return CopyMemory(a.data(), 0, a.data(), period, Size(a) - period);
        });
        Register(name + "/plain", MakeNoise, [=](Bytes &a, Bytes &) {
            const auto distance = static_cast<size_t>(period);
            for (size_t i = distance; i < a.size(); ++i) a[i] = a[i - distance];
            return 0;
        });
    }
    Register("ClearWith/ours", MakeNoise,
             [](Bytes &a, Bytes &) { return ClearWith(a.data(), 0, 5, Size(a)); });
    Register("ClearWith/peer", MakeNoise, [](Bytes &a, Bytes &) {
        std::memset(a.data(), 5, a.size());
        return 0;
    });
    Register("ChangeBytesToWords/ours", MakeNoise,
             [](Bytes &a, Bytes &b) { return ChangeBytesToWords(a.data(), 0, b.data(), 0, Size(a)); });
    Register("ChangeBytesToWords/plain", MakeNoise, [](Bytes &a, Bytes &b) {
        std::copy(a.begin(), a.end(), As<uint16_t>(b));
        return 0;
    });
    Register("ChangeWordsToLongs/ours", MakeNoise,
             [](Bytes &a, Bytes &b) { return ChangeWordsToLongs(a.data(), 0, b.data(), 0, Size(a) / 2); });
    Register("ChangeWordsToLongs/plain", MakeNoise, [](Bytes &a, Bytes &b) {
        std::copy(As<uint16_t>(a), As<uint16_t>(a) + a.size() / 2, As<uint32_t>(b));
        return 0;
    });
    Register("ChangeLongSequence/ours", MakeNoise,
             [](Bytes &a, Bytes &) { return ChangeLongSequence(a.data(), Size(a)); });
    Register("ChangeLongSequence/peer", MakeNoise, [](Bytes &a, Bytes &) {
        std::reverse(As<uint32_t>(a), As<uint32_t>(a) + a.size() / 4);
        return 0;
    });
}

struct Steps {
    int32_t gap, factor, divisor;
};

// The loop as told, for any gap.
template <typename Element>
[[gnu::noinline]] void ComputePlainly(uint8_t *memory, int32_t length, const Steps &steps) {
    const auto step = static_cast<int32_t>(sizeof(Element)) + steps.gap;
    for (int32_t at = 0; at < length; at += step) {
        Element value;
        std::memcpy(&value, memory + at, sizeof value);
        if (steps.factor != 0) value = static_cast<Element>(value * static_cast<uint32_t>(steps.factor));
        if (steps.divisor != 0) value = static_cast<Element>(value / static_cast<uint32_t>(steps.divisor));
        value = static_cast<Element>(value + 7);
        std::memcpy(memory + at, &value, sizeof value);
    }
}

template <typename Element>
void RegisterCompute(const std::string &name, int32_t factor, int32_t divisor) {
    Register(name + "/ours", MakeNoise, [=](Bytes &a, Bytes &) {
        Compute(a.data(), Size(a), sizeof(Element), 7, 0, factor, divisor, 0);
        return 0;
    });
    Register(name + "/plain", MakeNoise, [=](Bytes &a, Bytes &) {
        ComputePlainly<Element>(a.data(), Size(a), {0, factor, divisor});
        return 0;
    });
}

void RegisterSearch(const std::string &name, Bytes (*make)(size_t), const std::string &pattern) {
    Register("FindBytes " + name + "/ours", make, [=](Bytes &a, Bytes &) {
        return FindBytes(a.data(), 0, Size(a), pattern.data(), static_cast<int32_t>(pattern.size()));
    });
    Register("FindBytes " + name + "/peer", make, [=](Bytes &a, Bytes &) {
        return reinterpret_cast<intptr_t>(MemMem(a.data(), a.data() + a.size(), pattern));
    });
}

void RegisterCount(const std::string &name, Bytes (*make)(size_t), const std::string &pattern) {
    Register("CountPattern " + name + "/ours", make, [=](Bytes &a, Bytes &) {
        return CountPattern(a.data(), Size(a), reinterpret_cast<const uint8_t *>(pattern.data()),
                            static_cast<int64_t>(pattern.size()));
    });
    Register("CountPattern " + name + "/peer", make,
             [=](Bytes &a, Bytes &) { return CountByMemMem(a, pattern); });
}

void RegisterSearches() {
    RegisterSearch("one byte", MakeText, "#");
    RegisterSearch("word", MakeText, "xylophone");
    RegisterSearch("frequent letters", MakeText, "eteat");
    RegisterSearch("two", MakeText, "zz");
    const Bytes text = MakeText(5000);
    for (const size_t length : {16, 64, 100, 128, 200, 1000}) {
        std::string pattern(text.begin() + 100, text.begin() + 100 + static_cast<ptrdiff_t>(length));
        pattern[length / 2] = '#';
        RegisterSearch("text " + std::to_string(length), MakeText, pattern);
        pattern[length / 2] = pattern[length / 2 + 1] = 'e';
        RegisterSearch("hard text " + std::to_string(length), MakeText, pattern);
    }
    for (const size_t length : {2, 4, 8, 16, 24, 32, 44, 64, 100, 128, 300, 1000}) {
        const std::string run(length - 1, 'a');
        const std::string suffix = std::to_string(length);
        RegisterSearch("run aab " + suffix, MakeRun, run + 'b');
        RegisterSearch("run baa " + suffix, MakeRun, 'b' + run);
        RegisterSearch("run aba " + suffix, MakeRun,
                       run.substr(length / 2) + 'b' + run.substr(0, length / 2));
        const Bytes noise = MakeNoise(length);
        RegisterSearch("run in noise " + suffix, MakeNoise, run + 'a');
        RegisterSearch("run in text " + suffix, MakeText, std::string(length, 'e'));
        RegisterSearch("noise " + suffix, MakeNoise, std::string(noise.rbegin(), noise.rend()));
    }
    RegisterCount("the", MakeText, "the");
    RegisterCount("that", MakeText, "that");
    RegisterCount("e", MakeText, "e");
    RegisterCount("and then", MakeText, "and then");
    for (const size_t length : {2, 5, 100}) {
        RegisterCount("run " + std::to_string(length), MakeRun, std::string(length, 'a'));
    }
}

}  // namespace
}  // namespace fenlight

int main(int argc, char **argv) {
    using namespace fenlight;
    RegisterCounts();
    RegisterCopies();
    RegisterCompute<uint8_t>("Compute bytes *3 +7", 3, 0);
    RegisterCompute<uint8_t>("Compute bytes *3 /5 +7", 3, 5);
    RegisterCompute<uint16_t>("Compute words *3 +7", 3, 0);
    RegisterCompute<uint16_t>("Compute words *3 /5 +7", 3, 5);
    RegisterCompute<uint32_t>("Compute longs *3 +7", 3, 0);
    RegisterCompute<uint32_t>("Compute longs *3 /5 +7", 3, 5);
    RegisterSearches();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
