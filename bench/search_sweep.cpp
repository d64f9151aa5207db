// SPDX-License-Identifier: Zlib
// Looks for inputs on which the search for bytes falls behind the C library's memmem: texts, kinds of
// patterns and lengths in all combinations. Prints the worst ratios (memmem's time by ours) of each text and
// kind, the median for words of a text, and how many cases are more than a tenth slower than memmem. 12 ns
// for the call are left out of that. An argument lets it print every case below that ratio.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "data/byte_search.h"

namespace fenlight {
namespace {

using Random = std::mt19937;

std::string MakeEnglish(Random &random, size_t size) {
    const std::string letters =
        "eeeeeeeeeeeeettttttttaaaaaaaooooooiiiiiinnnnnnssssssrrrrrhhhhhdddllluuccmmffwwyypvbgkxqz";
    std::vector<std::string> words{"the", "of", "and", "to", "in", "that", "it", "was", "he", "with", "then"};
    while (words.size() < 800) {
        std::string word;
        for (size_t i = 2 + random() % 9; i > 0; --i) word += letters[random() % letters.size()];
        words.push_back(word);
    }
    std::string text;
    while (text.size() < size) {
        text += words[random() % (random() % 4 == 0 ? 11 : words.size())];
        text += random() % 12 == 0 ? '\n' : ' ';
    }
    return text.substr(0, size);
}

std::string MakeNoise(Random &random, size_t size, unsigned letters) {
    std::string noise(size, '\0');
    for (char &byte : noise) byte = static_cast<char>(random() % letters);
    return noise;
}

// Numbers below 65536 as 32-bit words: half the bytes are zero.
std::string MakeBinary(Random &random, size_t size) {
    std::string text(size, '\0');
    for (size_t i = 0; i < size; ++i) {
        if (i % 4 < 2) text[i] = static_cast<char>(random() % (i % 4 == 0 ? 256 : 16));
    }
    return text;
}

std::string Repeat(const std::string &piece, size_t size) {
    std::string text;
    while (text.size() < size) text += piece;
    return text.substr(0, size);
}

struct Text {
    const char *name;
    std::string bytes;
};

std::vector<Text> MakeTexts(size_t size) {
    Random random(3);
    std::vector<Text> texts{
        {"english", MakeEnglish(random, size)},      {"noise", MakeNoise(random, size, 256)},
        {"two letters", MakeNoise(random, size, 2)}, {"binary", MakeBinary(random, size)},
        {"zeros", std::string(size, '\0')},          {"run of e", std::string(size, 'e')},
        {"period 7", Repeat("abcdefg", size)},       {"period 60", Repeat(MakeEnglish(random, 60), size)}};
    std::string runs;
    while (runs.size() < size) runs += std::string(1 + random() % 90, 'e') + 'f';
    texts.push_back({"runs", runs.substr(0, size)});
    return texts;
}

struct Kind {
    const char *name;
    std::function<std::string(Random &, const std::string &text, size_t length)> make;
};

// A piece of the text, with some bytes exchanged so that it is absent but nearly there.
std::string Piece(Random &random, const std::string &text, size_t length, size_t at, bool isPresent) {
    std::string piece = text.substr(at, length);
    if (!isPresent) piece[random() % length] = '#';
    return piece;
}

const std::vector<Kind> kKinds{
    {"piece, near the end",
     [](Random &random, const std::string &text, size_t length) {
         return Piece(random, text, length, text.size() - length - random() % 8, true);
     }},
    {"piece, near the start",
     [](Random &random, const std::string &text, size_t length) {
         return Piece(random, text, length, random() % std::min<size_t>(300, text.size() - length), true);
     }},
    {"piece, one byte changed",
     [](Random &random, const std::string &text, size_t length) {
         return Piece(random, text, length, random() % (text.size() - length), false);
     }},
    {"piece, two bytes swapped",
     [](Random &random, const std::string &text, size_t length) {
         std::string piece = Piece(random, text, length, random() % (text.size() - length), true);
         if (length > 1) std::swap(piece[length / 2], piece[length / 3]);
         return piece;
     }},
    {"run of e", [](Random &, const std::string &, size_t length) { return std::string(length, 'e'); }},
    {"run of zeros", [](Random &, const std::string &, size_t length) { return std::string(length, '\0'); }},
    {"run with another end",
     [](Random &, const std::string &, size_t length) { return std::string(length - 1, 'e') + 'f'; }},
    {"run with another start",
     [](Random &, const std::string &, size_t length) { return 'f' + std::string(length - 1, 'e'); }},
    {"period 2", [](Random &, const std::string &, size_t length) { return Repeat("et", length); }},
    {"period 7", [](Random &, const std::string &, size_t length) { return Repeat("abcdefg", length); }},
    {"noise",
     [](Random &random, const std::string &, size_t length) { return MakeNoise(random, length, 256); }},
    {"two letters",
     [](Random &random, const std::string &, size_t length) { return MakeNoise(random, length, 2); }},
    {"other words",
     [](Random &random, const std::string &, size_t length) { return MakeEnglish(random, length); }},
};

const void *ByMemMem(const std::string &text, const std::string &pattern) {
    return memmem(text.data(), text.size(), pattern.data(), pattern.size());
}

// The same places where a match may start. That those behind the last ones may be read is not known to ours.
const void *ByOurs(const std::string &text, const std::string &pattern) {
    const auto *first = reinterpret_cast<const uint8_t *>(text.data());
    const auto length = static_cast<int64_t>(pattern.size());
    const int64_t at = FindPattern(first, static_cast<int64_t>(text.size()) - length + 1,
                                   reinterpret_cast<const uint8_t *>(pattern.data()), length);
    return at < 0 ? nullptr : first + at;
}

using Search = const void *(*)(const std::string &, const std::string &);

// Nanoseconds of one search.
double Time(Search search, const std::string &text, const std::string &pattern, int rounds) {
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < rounds; ++i) {
        const void *found = search(text, pattern);
        asm volatile("" : : "r"(found) : "memory");
    }
    return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count() /
           rounds;
}

struct Times {
    double ours = std::numeric_limits<double>::max();
    double theirs = std::numeric_limits<double>::max();
    // A difference of a few nanoseconds is that of the calls, not of the searches.
    double Ratio() const { return theirs < ours ? theirs / std::max(ours - 12, theirs) : theirs / ours; }
};

constexpr double kSlow = 0.9;

// The best of several turns, in which both take turns. Where ours looks slow, more of them, because a
// disturbance never makes it fast, and many more before a case is called slow.
Times Measure(const std::string &text, const std::string &pattern) {
    constexpr int kFew = 4, kMore = 40, kMost = 240;
    Times best;
    const double one = Time(ByMemMem, text, pattern, 1);
    const int rounds = std::clamp(static_cast<int>(10'000 / one), 1, 500);
    const auto isWorthATurn = [&](int turn) {
        if (turn < kFew) return true;
        return turn < (best.Ratio() < kSlow ? kMost : kMore) && best.Ratio() < 1;
    };
    for (int turn = 0; isWorthATurn(turn); ++turn) {
        best.ours = std::min(best.ours, Time(ByOurs, text, pattern, rounds));
        best.theirs = std::min(best.theirs, Time(ByMemMem, text, pattern, rounds));
    }
    return best;
}

struct Case {
    double ratio;
    size_t length;
};

struct Sweep {
    double shown = 0;
    double worst = std::numeric_limits<double>::max();
    std::vector<double> words;
    int cases = 0, slow = 0, verySlow = 0;
    double logarithms = 0;

    void Count(const Times &times) {
        ++cases;
        logarithms += std::log(times.theirs / times.ours);
        if (times.Ratio() >= kSlow) return;
        ++slow;
        if (times.ours - times.theirs > 100) ++verySlow;
    }
};

void SweepLengths(const Text &text, const Kind &kind, Sweep &sweep) {
    Case worst{std::numeric_limits<double>::max(), 0};
    for (size_t length = 1; length <= 300 && 2 * length < text.bytes.size(); length += 1 + length / 12) {
        Random random(static_cast<uint32_t>(length));
        const std::string pattern = kind.make(random, text.bytes, length);
        if (ByOurs(text.bytes, pattern) != ByMemMem(text.bytes, pattern)) std::abort();
        const Times times = Measure(text.bytes, pattern);
        sweep.Count(times);
        if (times.Ratio() < worst.ratio) worst = {times.Ratio(), length};
        if (times.Ratio() < sweep.shown) {
            std::printf("    %5.2f  length %3zu  %8.0f ns, memmem %8.0f\n", times.Ratio(), length, times.ours,
                        times.theirs);
        }
        const bool isWord = text.name == std::string("english") && length >= 4 && length <= 16;
        if (isWord && (&kind == &kKinds[2] || &kind == &kKinds.back())) sweep.words.push_back(times.Ratio());
    }
    sweep.worst = std::min(sweep.worst, worst.ratio);
    std::printf("%8zu %-12s %-26s worst %5.2f at length %zu\n", text.bytes.size(), text.name, kind.name,
                worst.ratio, worst.length);
}

}  // namespace
}  // namespace fenlight

int main(int argc, char **argv) {
    using namespace fenlight;
    for (const size_t size : {size_t{100}, size_t{1000}, size_t{8000}, size_t{64} << 10, size_t{2} << 20}) {
        Sweep sweep;
        if (argc > 1) sweep.shown = std::atof(argv[1]);
        for (const Text &text : MakeTexts(size)) {
            for (const Kind &kind : kKinds) SweepLengths(text, kind, sweep);
        }
        std::ranges::sort(sweep.words);
        std::printf("%8zu bytes: worst %.2f, median for words of 4 to 16 in english %.2f\n", size,
                    sweep.worst, sweep.words[sweep.words.size() / 2]);
        std::printf("%8zu bytes: %d cases, %.2f in the geometric mean, %d below %.1f, %d of them by 100 ns\n",
                    size, sweep.cases, std::exp(sweep.logarithms / sweep.cases), sweep.slow, kSlow,
                    sweep.verySlow);
    }
}
