// SPDX-License-Identifier: Zlib
#include "support/picture_check.h"

#include <cstdio>
#include <filesystem>

namespace fenlight::test {
namespace {

constexpr uint32_t kColourBits = 0xFFFFFF;

Picture Difference(const Picture &actual, const Picture &expected) {
    Picture difference(actual.width, actual.height);
    for (size_t i = 0; i < actual.pixels.size(); ++i) {
        const bool same = ((actual.pixels[i] ^ expected.pixels[i]) & kColourBits) == 0;
        difference.pixels[i] = same ? (expected.pixels[i] & 0xFCFCFC) >> 2 : 0xFF00FF;
    }
    return difference;
}

std::string Describe(const Picture &actual, const Picture &expected) {
    size_t count = 0;
    size_t first = 0;
    for (size_t i = actual.pixels.size(); i-- > 0;) {
        if (((actual.pixels[i] ^ expected.pixels[i]) & kColourBits) != 0) {
            ++count;
            first = i;
        }
    }
    if (count == 0) return {};
    char text[160];
    const auto width = static_cast<size_t>(actual.width);
    std::snprintf(text, sizeof text, "%zu pixels differ, first at (%zu, %zu): actual %06X, expected %06X",
                  count, first % width, first / width, actual.pixels[first] & kColourBits,
                  expected.pixels[first] & kColourBits);
    return text;
}

}  // namespace

bool WritePpm(const std::string &path, const Picture &picture) {
    std::FILE *file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) return false;
    std::fprintf(file, "P6\n%d %d\n255\n", picture.width, picture.height);
    for (const uint32_t pixel : picture.pixels) {
        const uint8_t bytes[3] = {static_cast<uint8_t>(pixel >> 16), static_cast<uint8_t>(pixel >> 8),
                                  static_cast<uint8_t>(pixel)};
        std::fwrite(bytes, 1, sizeof bytes, file);
    }
    return std::fclose(file) == 0;
}

::testing::AssertionResult SamePicture(const std::string &name, const Picture &actual,
                                       const Picture &expected) {
    if (actual.width != expected.width || actual.height != expected.height) {
        return ::testing::AssertionFailure()
               << name << ": actual size " << actual.width << " x " << actual.height << ", expected "
               << expected.width << " x " << expected.height;
    }
    const std::string difference = Describe(actual, expected);
    if (difference.empty()) return ::testing::AssertionSuccess();
    const std::filesystem::path folder = FENLIGHT_TEST_OUTPUT;
    std::error_code ignored;
    std::filesystem::create_directories(folder, ignored);
    WritePpm(folder / (name + "-actual.ppm"), actual);
    WritePpm(folder / (name + "-expected.ppm"), expected);
    WritePpm(folder / (name + "-difference.ppm"), Difference(actual, expected));
    return ::testing::AssertionFailure() << name << ": " << difference << "; pictures in " << folder.string();
}

}  // namespace fenlight::test
