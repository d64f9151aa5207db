// SPDX-License-Identifier: Zlib
// PNG streams in memory to a bitmap, the whole sequence of steps, against libpng with its checksums off, and
// zlib's share of it. Pictures are made here, from a fixed seed: a photo-like one with adaptive filters, a
// sheet of sprites with alpha, a dithered palette picture.
#include <benchmark/benchmark.h>
#include <lodepng.h>
#include <zlib.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "fenlight/platform/graphics.h"
#include "images/png/png_decoder.h"
#include "images/png/png_format.h"
#if BENCH_LIBPNG
#include <png.h>
#endif

namespace {

using Bytes = std::vector<uint8_t>;

struct Sample {
    const char *name;
    unsigned width, height;
    Bytes stream;
    Bytes deflated;  // without the zlib header
    size_t rawSize;
};

uint8_t ToByte(double value) { return static_cast<uint8_t>(std::clamp(value, 0.0, 255.0)); }

// Waves of several lengths, soft edges and a little sensor noise.
double PhotoLevel(double x, double y, int channel) {
    const double phase = channel * 0.7;
    const double waves =
        60 * std::sin(x / 97 + phase) * std::cos(y / 71) + 30 * std::sin((x + 2 * y) / 23 + phase);
    const double edge = std::tanh((std::hypot(x - 500, y - 380) - 260) / 6) * 35;
    return 128 + waves + edge;
}

Bytes MakePhoto(unsigned width, unsigned height) {
    std::mt19937 random(7);
    std::normal_distribution<double> noise(0, 1.3);
    Bytes pixels;
    pixels.reserve(size_t{width} * height * 3);
    for (unsigned y = 0; y < height; ++y) {
        for (unsigned x = 0; x < width; ++x) {
            const double grain = noise(random);
            for (int channel = 0; channel < 3; ++channel)
                pixels.push_back(ToByte(PhotoLevel(x, y, channel) + grain + 0.3 * noise(random)));
        }
    }
    return pixels;
}

// Shaded balls on a transparent ground, a little grain on them.
Bytes MakeSheet(unsigned width, unsigned height) {
    std::mt19937 random(11);
    std::normal_distribution<double> noise(0, 1.0);
    Bytes pixels(size_t{width} * height * 4, 0);
    for (unsigned y = 0; y < height; ++y) {
        for (unsigned x = 0; x < width; ++x) {
            const double dx = static_cast<double>(x % 63) - 31, dy = static_cast<double>(y % 63) - 31;
            const double distance = std::hypot(dx, dy);
            if (distance > 29) continue;
            uint8_t *const pixel = &pixels[(size_t{y} * width + x) * 4];
            const double light = 210 - 3 * std::hypot(dx + 9, dy + 9) + noise(random);
            for (unsigned channel = 0; channel < 3; ++channel)
                pixel[channel] = ToByte(light * (0.4 + 0.2 * ((x / 63 + channel) % 4)));
            pixel[3] = ToByte((29 - distance) * 64);
        }
    }
    return pixels;
}

// The photo's first channel in 64 steps with an ordered dither.
Bytes MakeDithered(unsigned width, unsigned height) {
    static constexpr int kThresholds[4][4] = {{0, 8, 2, 10}, {12, 4, 14, 6}, {3, 11, 1, 9}, {15, 7, 13, 5}};
    Bytes pixels;
    pixels.reserve(size_t{width} * height);
    for (unsigned y = 0; y < height; ++y) {
        for (unsigned x = 0; x < width; ++x)
            pixels.push_back(ToByte(PhotoLevel(x, y, 0) / 4 + kThresholds[y % 4][x % 4] / 16.0));
    }
    return pixels;
}

Bytes Encode(const Bytes &pixels, unsigned width, unsigned height, LodePNGColorType type) {
    lodepng::State state;
    state.info_raw.colortype = type;
    state.info_png.color.colortype = type;
    state.encoder.auto_convert = 0;
    state.encoder.filter_strategy = LFS_MINSUM;
    for (unsigned i = 0; type == LCT_PALETTE && i < 256; ++i) {
        const auto level = static_cast<uint8_t>(i * 4);
        lodepng_palette_add(&state.info_png.color, level, level, level, 255);
        lodepng_palette_add(&state.info_raw, level, level, level, 255);
    }
    Bytes stream;
    if (lodepng::encode(stream, pixels, width, height, state) != 0) std::abort();
    return stream;
}

Sample MakeSample(const char *name, unsigned width, unsigned height, LodePNGColorType type,
                  const Bytes &pixels) {
    Sample sample{name, width, height, Encode(pixels, width, height, type), {}, 0};
    for (const uint8_t *chunk = &sample.stream[8]; !lodepng_chunk_type_equals(chunk, "IEND");
         chunk = lodepng_chunk_next_const(chunk, sample.stream.data() + sample.stream.size())) {
        const uint8_t *const payload = lodepng_chunk_data_const(chunk);
        if (lodepng_chunk_type_equals(chunk, "IDAT"))
            sample.deflated.insert(sample.deflated.end(), payload, payload + lodepng_chunk_length(chunk));
    }
    sample.deflated.erase(sample.deflated.begin(), sample.deflated.begin() + 2);
    sample.rawSize = pixels.size() + height;
    return sample;
}

const std::vector<Sample> &Samples() {
    static const std::vector<Sample> samples = {
        MakeSample("photo24", 1024, 768, LCT_RGB, MakePhoto(1024, 768)),
        MakeSample("sheet32", 1691, 189, LCT_RGBA, MakeSheet(1691, 189)),
        MakeSample("palette8", 1024, 768, LCT_PALETTE, MakeDithered(1024, 768))};
    return samples;
}

void CountPixels(benchmark::State &state, const Sample &sample) {
    state.SetItemsProcessed(state.iterations() * sample.width * sample.height);
    state.SetLabel(std::to_string(sample.stream.size() / 1024) + " KB");
}

void DecodeOurs(benchmark::State &state, const Sample &sample) {
    for (auto _ : state) {
        fenlight::PngContext context;
        fenlight::PngLoaderInit(&context);
        fenlight::PngLoaderLoadMemory(&context, sample.stream.data(),
                                      static_cast<uint32_t>(sample.stream.size()));
        fenlight::PngLoaderDecode(&context);
        const HBITMAP bitmap = fenlight::PngLoaderCreateBitmap(&context);
        fenlight::PngLoaderCleanup(&context);
        if (DeleteObject(bitmap) == 0) state.SkipWithError("no bitmap");
    }
    CountPixels(state, sample);
}

// What no decoder over zlib can go below.
void InflateAlone(benchmark::State &state, const Sample &sample) {
    for (auto _ : state) {
        const std::unique_ptr<uint8_t[]> raw(new uint8_t[sample.rawSize]);
        z_stream stream{};
        inflateInit2(&stream, -MAX_WBITS);
        stream.next_in = const_cast<uint8_t *>(sample.deflated.data());
        stream.avail_in = static_cast<uInt>(sample.deflated.size());
        stream.next_out = raw.get();
        stream.avail_out = static_cast<uInt>(sample.rawSize);
        if (inflate(&stream, Z_FINISH) != Z_STREAM_END) state.SkipWithError("bad stream");
        inflateEnd(&stream);
    }
    CountPixels(state, sample);
}

#if BENCH_LIBPNG
void ReadBytes(png_structp png, png_bytep target, size_t size) {
    auto &position = *static_cast<const uint8_t **>(png_get_io_ptr(png));
    std::memcpy(target, position, size);
    position += size;
}

// To rows of a bitmap of the same layout: blue first, multiples of 4 bytes.
void DecodeLibpng(benchmark::State &state, const Sample &sample) {
    for (auto _ : state) {
        png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
        png_infop info = png_create_info_struct(png);
        const uint8_t *position = sample.stream.data();
        png_set_read_fn(png, &position, ReadBytes);
        png_set_crc_action(png, PNG_CRC_QUIET_USE, PNG_CRC_QUIET_USE);
        png_set_option(png, PNG_IGNORE_ADLER32, PNG_OPTION_ON);
        png_read_info(png, info);
        png_set_bgr(png);
        png_read_update_info(png, info);
        const size_t pitch = (png_get_rowbytes(png, info) + 3) / 4 * 4;
        const std::unique_ptr<uint8_t, decltype(&std::free)> bits(
            static_cast<uint8_t *>(std::calloc(sample.height, pitch)), std::free);
        std::vector<png_bytep> rows;
        for (unsigned y = 0; y < sample.height; ++y) rows.push_back(bits.get() + y * pitch);
        png_read_image(png, rows.data());
        png_destroy_read_struct(&png, &info, nullptr);
        benchmark::DoNotOptimize(bits.get());
    }
    CountPixels(state, sample);
}
#endif

const bool kRegistered = [] {
    const auto add = [](const std::string &name, auto function, const Sample &sample) {
        benchmark::RegisterBenchmark((name + "/" + sample.name).c_str(), function, sample)
            ->Unit(benchmark::kMicrosecond);
    };
    for (const Sample &sample : Samples()) {
        add("PngDecode", DecodeOurs, sample);
#if BENCH_LIBPNG
        add("PngDecode_libpng", DecodeLibpng, sample);
#endif
        add("PngDecode_inflateAlone", InflateAlone, sample);
    }
    return true;
}();

}  // namespace
