// SPDX-License-Identifier: Zlib
// Saving an image beside what bounds it: a BMP beside writing the same bytes that are ready in memory, a JPEG
// beside libjpeg fed with rows that are ready in memory. Files go to the folder for temporary files,
// replacing one another.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

// Needs cstdio's FILE before it.
#include <jpeglib.h>

#include "fenlight/images.h"
#include "fenlight/platform/graphics.h"
#include "fenlight/platform/windows.h"

namespace fenlight {
namespace {

constexpr int32_t kQuality = 8;

std::string FileName(const char *end) {
    return (std::filesystem::temp_directory_path() / "fenlight_saving_bench").string() + end;
}

// Waves of colour with a little noise, as a photo has it.
COLORREF PhotoColour(int32_t x, int32_t y) {
    const auto wave = [](int32_t a, double length) { return 110 + 90 * std::sin(a / length); };
    const auto noise = static_cast<double>((x * 7919 + y * 104729) % 23);
    const auto red = static_cast<uint32_t>(wave(x + y, 90) + noise);
    const auto green = static_cast<uint32_t>(wave(x - 2 * y, 140) + noise);
    return red | green << 8 | static_cast<uint32_t>(wave(y, 60) + noise) << 16;
}

uintptr_t PhotoImage(const benchmark::State &state) {
    const auto width = static_cast<int32_t>(state.range(0)), height = static_cast<int32_t>(state.range(1));
    const uintptr_t image = CreateImage(GetDC(0), width, height);
    for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; ++x) SetPixel(image, x, y, PhotoColour(x, y));
    }
    return image;
}

template <typename Work>
void Measure(benchmark::State &state, const Work &work) {
    for (auto _ : state) work();
    state.SetItemsProcessed(state.iterations() * state.range(0) * state.range(1));
}

void Save(benchmark::State &state, int32_t format, const char *end) {
    const uintptr_t image = PhotoImage(state);
    const std::string fileName = FileName(end);
    Measure(state, [&] { SaveImage(image, fileName.c_str(), format, kQuality); });
    FreeImage(image);
    std::filesystem::remove(fileName);
}
void Bmp(benchmark::State &state) { Save(state, 0, ".bmp"); }
void Jpeg(benchmark::State &state) { Save(state, 1, ".jpg"); }

void WriteBytes(const std::string &fileName, const void *bytes, size_t size) {
    const int file = open(fileName.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (write(file, bytes, size) != static_cast<ssize_t>(size)) std::abort();
    close(file);
}

void BmpPlainWrite(benchmark::State &state) {
    const std::vector<uint8_t> bytes(static_cast<size_t>(54 + 3 * state.range(0) * state.range(1)), 100);
    const std::string fileName = FileName(".bmp");
    Measure(state, [&] { WriteBytes(fileName, bytes.data(), bytes.size()); });
    std::filesystem::remove(fileName);
}

void JpegLibjpeg(benchmark::State &state) {
    const auto width = static_cast<int32_t>(state.range(0)), height = static_cast<int32_t>(state.range(1));
    std::vector<uint8_t> rows;
    for (int32_t i = 0; i < width * height; ++i) {
        const COLORREF colour = PhotoColour(i % width, i / width);
        for (const int shift : {0, 8, 16}) rows.push_back(static_cast<uint8_t>(colour >> shift));
    }
    const std::string fileName = FileName(".jpg");
    Measure(state, [&] {
        jpeg_compress_struct codec;
        jpeg_error_mgr errors;
        codec.err = jpeg_std_error(&errors);
        jpeg_create_compress(&codec);
        std::FILE *file = std::fopen(fileName.c_str(), "wb");
        jpeg_stdio_dest(&codec, file);
        codec.image_width = static_cast<JDIMENSION>(width);
        codec.image_height = static_cast<JDIMENSION>(height);
        codec.input_components = 3;
        codec.in_color_space = JCS_RGB;
        jpeg_set_defaults(&codec);
        jpeg_set_quality(&codec, kQuality * 10, FALSE);
        jpeg_start_compress(&codec, TRUE);
        while (codec.next_scanline < codec.image_height) {
            JSAMPROW row = rows.data() + size_t{3} * codec.image_width * codec.next_scanline;
            jpeg_write_scanlines(&codec, &row, 1);
        }
        jpeg_finish_compress(&codec);
        jpeg_destroy_compress(&codec);
        std::fclose(file);
    });
    std::filesystem::remove(fileName);
}

void Sizes(benchmark::internal::Benchmark *bench) {
    bench->Args({256, 256})->Args({1920, 1080})->Unit(benchmark::kMicrosecond);
}

BENCHMARK(Bmp)->Apply(Sizes);
BENCHMARK(BmpPlainWrite)->Apply(Sizes);
BENCHMARK(Jpeg)->Apply(Sizes);
BENCHMARK(JpegLibjpeg)->Apply(Sizes);

}  // namespace
}  // namespace fenlight
