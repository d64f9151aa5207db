// SPDX-License-Identifier: Zlib
// Packing and opening of text, program code, sprite pixels and sound, beside zlib, LZ4 and a plain byte-wise
// depacker of the same stream. FENLIGHT_PACK_SAMPLES names a folder whose files are taken instead. The label
// and the counters tell ratios: packed bytes of 1000 original ones.
#include <benchmark/benchmark.h>
#include <lodepng.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "fenlight/compression.h"
#include "packing/compressor.h"
#include "packing/depacker.h"
#include "packing/stream_format.h"
#if BENCH_LZ4
#include <lz4.h>
#include <lz4hc.h>
#endif

namespace {

namespace files = std::filesystem;
using Bytes = std::vector<uint8_t>;

struct Sample {
    std::string name;
    Bytes original;
    Bytes stream;  // packed, without a header
    Bytes deflated;
    Bytes lz4;
};

void Append(Bytes &bytes, const files::path &path) {
    std::ifstream file(path, std::ios::binary);
    bytes.insert(bytes.end(), std::istreambuf_iterator<char>(file), {});
}

std::vector<files::path> SortedFiles(const files::path &folder) {
    std::vector<files::path> paths;
    std::error_code error;
    for (const auto &entry : files::directory_iterator(folder, error)) {
        if (entry.is_regular_file() && !entry.is_symlink()) paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

Bytes ReadText() {
    Bytes text;
    for (const files::path &path : SortedFiles("/usr/share/common-licenses")) Append(text, path);
    return text;
}

Bytes ReadProgram() {
    Bytes program;
    Append(program, "/bin/bash");
    return program;
}

Bytes ReadSprites() {
    Bytes sprites;
    for (const files::path &path : SortedFiles("assets")) {
        Bytes pixels;
        unsigned width = 0, height = 0;
        if (path.extension() == ".png" && lodepng::decode(pixels, width, height, path.string(), LCT_RGB) == 0)
            sprites.insert(sprites.end(), pixels.begin(), pixels.end());
    }
    return sprites;
}

// A tune of decaying tones, 16 bits a sample, with the noise of a modest recording.
Bytes MakeSound() {
    std::mt19937 random(3);
    std::normal_distribution<double> noise(0, 1.2);
    const double pitches[] = {220, 277, 330, 440, 554};
    Bytes sound;
    for (int i = 0; i < 300000; ++i) {
        const double seconds = i / 22050.0;
        const double phase = 2 * 3.14159265358979 * seconds * pitches[static_cast<int>(seconds / 0.3) % 5];
        const double level =
            std::exp(-6 * std::fmod(seconds, 0.3)) * (std::sin(phase) + 0.4 * std::sin(2 * phase));
        const auto value = static_cast<int16_t>(std::lround(level * 300 + noise(random)) * 16);
        sound.push_back(static_cast<uint8_t>(value));
        sound.push_back(static_cast<uint8_t>(value >> 8));
    }
    return sound;
}

Bytes PackStream(const Bytes &original) {
    auto area = std::make_unique<fenlight::WorkArea>();
    Bytes stream(original.size() + original.size() / 8 + 64);
    stream.resize(
        fenlight::Compress(original.data(), stream.data(), static_cast<uint32_t>(original.size()), *area));
    return stream;
}

Sample MakeSample(std::string name, Bytes original) {
    Sample sample{std::move(name), std::move(original), {}, {}, {}};
    sample.stream = PackStream(sample.original);
    uLongf deflated = compressBound(sample.original.size());
    sample.deflated.resize(deflated);
    compress2(sample.deflated.data(), &deflated, sample.original.data(), sample.original.size(), 6);
    sample.deflated.resize(deflated);
#if BENCH_LZ4
    sample.lz4.resize(sample.original.size() * 2 + 100);
    sample.lz4.resize(static_cast<size_t>(LZ4_compress_HC(
        reinterpret_cast<const char *>(sample.original.data()), reinterpret_cast<char *>(sample.lz4.data()),
        static_cast<int>(sample.original.size()), static_cast<int>(sample.lz4.size()), 9)));
#endif
    return sample;
}

std::vector<Sample> MakeSamples() {
    std::vector<Sample> samples;
    if (const char *const folder = std::getenv("FENLIGHT_PACK_SAMPLES")) {
        for (const files::path &path : SortedFiles(folder)) {
            Bytes original;
            Append(original, path);
            if (original.size() >= 2) samples.push_back(MakeSample(path.filename(), std::move(original)));
        }
        return samples;
    }
    const std::pair<const char *, Bytes> own[] = {
        {"text", ReadText()}, {"program", ReadProgram()}, {"sprites", ReadSprites()}, {"sound", MakeSound()}};
    for (const auto &[name, original] : own) {
        if (original.size() >= 2) samples.push_back(MakeSample(name, original));
    }
    return samples;
}

void Report(benchmark::State &state, const Sample &sample, size_t packedBytes) {
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(sample.original.size()));
    state.counters["per1000"] =
        1000.0 * static_cast<double>(packedBytes) / static_cast<double>(sample.original.size());
}

void BenchPack(benchmark::State &state, const Sample &sample) {
    Bytes container(sample.original.size() + sample.original.size() / 8 + 88);
    for (auto _ : state)
        benchmark::DoNotOptimize(Pack(sample.original.data(), container.data(),
                                      static_cast<int32_t>(sample.original.size()), nullptr));
    Report(state, sample, sample.stream.size() + 24);
}

void BenchDeflate(benchmark::State &state, const Sample &sample) {
    Bytes packed(compressBound(sample.original.size()));
    for (auto _ : state) {
        uLongf size = packed.size();
        compress2(packed.data(), &size, sample.original.data(), sample.original.size(), 6);
    }
    Report(state, sample, sample.deflated.size());
}

void BenchDepack(benchmark::State &state, const Sample &sample, fenlight::VectorLevel level) {
    Bytes original(sample.original.size());
    fenlight::ForceVectorLevel(level);
    for (auto _ : state) benchmark::DoNotOptimize(fenlight::Depack(sample.stream, original));
    fenlight::ReleaseVectorLevel();
    if (original != sample.original) state.SkipWithError("opened wrongly");
    Report(state, sample, sample.stream.size());
}

void BenchOpenContainer(benchmark::State &state, const Sample &sample) {
    Bytes container(sample.original.size() + sample.original.size() / 8 + 88);
    Pack(sample.original.data(), container.data(), static_cast<int32_t>(sample.original.size()), nullptr);
    Bytes original(sample.original.size());
    for (auto _ : state) benchmark::DoNotOptimize(DePack(container.data(), original.data(), nullptr));
    Report(state, sample, sample.stream.size() + 24);
}

// What the format asks for and no more: a bit, a byte at a time, and no checks.
struct PlainDepacker {
    const uint8_t *read;
    uint32_t tag = 0;
    uint32_t left = 0;

    uint32_t Bit() {
        if (left == 0) {
            tag = *read++;
            left = 8;
        }
        --left;
        tag <<= 1;
        return tag >> 8 & 1;
    }
    uint32_t Gamma() {
        uint32_t value = 1;
        do value = value * 2 + Bit();
        while (Bit() != 0);
        return value;
    }
    static uint8_t *Copy(uint8_t *write, uint32_t offset, uint32_t length) {
        for (; length > 0; --length, ++write) *write = *(write - offset);
        return write;
    }

    size_t Run(uint8_t *const begin) {
        uint8_t *write = begin;
        *write++ = *read++;
        uint32_t highBase = 2;
        uint32_t offset = 0;
        for (;;) {
            if (Bit() == 0) {
                *write++ = *read++;
                highBase = 2;
            } else if (Bit() == 0) {
                const uint32_t high = Gamma() - highBase;
                if (high != 0) offset = (high - 1) * 256 + *read++;
                const uint32_t length = Gamma();
                write = Copy(write, offset, length + (high != 0 ? fenlight::LengthCorrection(offset) : 0));
                highBase = 1;
            } else if (Bit() == 0) {
                const uint32_t byte = *read++;
                if (byte < 2) return static_cast<size_t>(write - begin);
                offset = byte >> 1;
                write = Copy(write, offset, 2 + (byte & 1));
                highBase = 1;
            } else {
                uint32_t distance = 0;
                for (int i = 0; i < 4; ++i) distance = distance * 2 + Bit();
                *write = distance == 0 ? 0 : *(write - distance);
                ++write;
                highBase = 2;
            }
        }
    }
};

void BenchPlainDepack(benchmark::State &state, const Sample &sample) {
    Bytes original(sample.original.size());
    for (auto _ : state) benchmark::DoNotOptimize(PlainDepacker{sample.stream.data()}.Run(original.data()));
    if (original != sample.original) state.SkipWithError("opened wrongly");
    Report(state, sample, sample.stream.size());
}

void BenchInflate(benchmark::State &state, const Sample &sample) {
    Bytes original(sample.original.size());
    for (auto _ : state) {
        uLongf size = original.size();
        uncompress(original.data(), &size, sample.deflated.data(), sample.deflated.size());
    }
    Report(state, sample, sample.deflated.size());
}

#if BENCH_LZ4
void BenchPackLz4(benchmark::State &state, const Sample &sample) {
    Bytes packed(sample.original.size() * 2 + 100);
    for (auto _ : state)
        benchmark::DoNotOptimize(LZ4_compress_HC(
            reinterpret_cast<const char *>(sample.original.data()), reinterpret_cast<char *>(packed.data()),
            static_cast<int>(sample.original.size()), static_cast<int>(packed.size()), 9));
    Report(state, sample, sample.lz4.size());
}

void BenchOpenLz4(benchmark::State &state, const Sample &sample) {
    Bytes original(sample.original.size());
    for (auto _ : state)
        benchmark::DoNotOptimize(LZ4_decompress_safe(
            reinterpret_cast<const char *>(sample.lz4.data()), reinterpret_cast<char *>(original.data()),
            static_cast<int>(sample.lz4.size()), static_cast<int>(original.size())));
    Report(state, sample, sample.lz4.size());
}
#endif

const bool registered = [] {
    static const std::vector<Sample> samples = MakeSamples();
    using fenlight::VectorLevel;
    for (const Sample &sample : samples) {
        const auto add = [&](const char *what, auto bench) {
            benchmark::RegisterBenchmark((std::string(what) + "/" + sample.name).c_str(),
                                         [&sample, bench](benchmark::State &state) { bench(state, sample); });
        };
        add("Pack", BenchPack);
        add("zlib -6", BenchDeflate);
        add("Depack",
            [](benchmark::State &state, const Sample &s) { BenchDepack(state, s, VectorLevel::Avx512); });
        add("Depack plain instructions",
            [](benchmark::State &state, const Sample &s) { BenchDepack(state, s, VectorLevel::Plain); });
        add("DePack with checksums", BenchOpenContainer);
        add("byte-wise depacker", BenchPlainDepack);
        add("inflate", BenchInflate);
#if BENCH_LZ4
        add("LZ4 -9", BenchPackLz4);
        add("LZ4 open", BenchOpenLz4);
#endif
    }
    return true;
}();

}  // namespace
