// SPDX-License-Identifier: Zlib
// Damaged and forged streams, refusals of the platform, steps out of order.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "fenlight/platform/graphics.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"
#include "png_stream.h"

namespace fenlight {
namespace {

using platform::CountHandles;
using platform::HandleKind;
using platform::Operation;
using test::Bytes;
using test::LoadPng;
using test::LoadResult;

class PngHostile : public testing::Test {
  protected:
    void TearDown() override {
        platform::ForgetFailures();
        EXPECT_EQ(CountHandles(HandleKind::Bitmap), bitmaps_);
        EXPECT_EQ(CountHandles(HandleKind::File), files_);
        EXPECT_EQ(CountHandles(HandleKind::Context), contexts_);
    }

  private:
    // The screen's context may come to life with the first load.
    const LoadResult first_ = LoadPng({});
    const int bitmaps_ = CountHandles(HandleKind::Bitmap), files_ = CountHandles(HandleKind::File),
              contexts_ = (LoadPng(Smallest()), CountHandles(HandleKind::Context));

  protected:
    static Bytes Smallest() {
        return test::Join({test::Signature(), test::Header(1, 1, 8, 0),
                           test::Chunk("IDAT", test::Deflate({0, 77})), test::Chunk("IEND", {})});
    }
};

std::vector<Bytes> SmallStreams() {
    std::mt19937 random(22);
    std::vector<Bytes> streams;
    for (size_t i = 0; i < test::kPngKinds.size(); ++i) {
        const test::RandomPicture picture(test::kPngKinds[i], 7, 5, random);
        streams.push_back(picture.Encode(i % 2 == 0, test::RandomFilters(5, random)));
    }
    return streams;
}

// Every failure but a bad filter byte leaves its code.
void ExpectCodeOrPicture(const LoadResult &result, const std::string &name) {
    ASSERT_EQ(result.error != 0, result.stepsDone < 2) << name;
}

TEST_F(PngHostile, CutOffStreamsLoadExactlyWhenTheDataChunkIsComplete) {
    for (const Bytes &stream : SmallStreams()) {
        const LoadResult whole = LoadPng(stream);
        for (size_t size = 0; size < stream.size(); ++size) {
            const LoadResult cut = LoadPng({stream.begin(), stream.begin() + static_cast<ptrdiff_t>(size)});
            // Only IEND, of 12 bytes, may be missing.
            EXPECT_EQ(cut.stepsDone == 3, size >= stream.size() - 12) << size;
            if (cut.stepsDone < 3) continue;
            EXPECT_EQ(cut.values.pixels, whole.values.pixels);
        }
    }
}

// What LodePNG, with its checksums off, shows of the stream. False where it refuses.
bool DecodeByLodePng(const Bytes &stream, test::Picture &picture) {
    lodepng::State state;
    lodepng_decompress_settings_init(&state.decoder.zlibsettings);
    state.decoder.zlibsettings.ignore_adler32 = 1;
    state.decoder.ignore_crc = 1;
    state.decoder.read_text_chunks = 0;
    Bytes pixels;
    unsigned width = 0, height = 0;
    if (lodepng_inspect(&width, &height, &state, stream.data(), stream.size()) != 0) return false;
    if (uint64_t{width} * height > 1000000 || lodepng::decode(pixels, width, height, state, stream) != 0)
        return false;
    picture = test::Picture(static_cast<int>(width), static_cast<int>(height));
    for (size_t i = 0; i < picture.pixels.size(); ++i)
        picture.pixels[i] =
            static_cast<uint32_t>(pixels[i * 4] << 16 | pixels[i * 4 + 1] << 8 | pixels[i * 4 + 2]);
    return true;
}

void Mutate(Bytes &stream, std::mt19937 &random) {
    for (uint32_t count = 1 + random() % 4; count > 0 && !stream.empty(); --count) {
        const size_t place = random() % stream.size();
        const auto position = stream.begin() + static_cast<ptrdiff_t>(place);
        switch (random() % 5) {
            case 0:
                stream.erase(position);
                break;
            case 1:
                stream.insert(position, static_cast<uint8_t>(random()));
                break;
            case 2:
                stream[place] = random() % 2 == 0 ? 0 : 255;
                break;
            default:
                *position = static_cast<uint8_t>(*position ^ 1u << random() % 8);
        }
    }
}

// Where both decode a damaged stream, they agree on what it shows.
TEST_F(PngHostile, FlippedAndMutatedStreamsGiveACodeOrThePictureThatLodePngSees) {
    std::mt19937 random(23);
    const std::vector<Bytes> streams = SmallStreams();
    std::vector<Bytes> damaged;
    for (const Bytes &stream : streams) {
        for (size_t i = 0; i < stream.size() * 2; ++i) {
            damaged.push_back(stream);
            damaged.back()[i / 2] ^= static_cast<uint8_t>(i % 2 == 0 ? 0xFF : 1u << random() % 8);
        }
    }
    for (int i = 0; i < 20000; ++i) {
        damaged.push_back(streams[random() % streams.size()]);
        Mutate(damaged.back(), random);
    }
    int compared = 0;
    for (size_t i = 0; i < damaged.size(); ++i) {
        const std::string name = "damaged " + std::to_string(i);
        const LoadResult result = LoadPng(damaged[i]);
        ExpectCodeOrPicture(result, name);
        test::Picture expected;
        if (result.stepsDone < 3 || !DecodeByLodePng(damaged[i], expected)) continue;
        ++compared;
        ASSERT_TRUE(test::SamePicture(name, test::Shown(result), expected));
    }
    EXPECT_GT(compared, 2000);
}

TEST_F(PngHostile, ForgedSizesAreRefusedBeforeAnythingIsAllocated) {
    const uint32_t sizes[] = {1,          3,          0x4000,     0x10000,   0x10000001,
                              0x40000000, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};
    for (const auto &[depth, type] : {std::pair<uint8_t, uint8_t>{1, 0}, {8, 2}, {16, 6}}) {
        for (const uint8_t interlace : {uint8_t{0}, uint8_t{1}}) {
            for (const uint32_t width : sizes) {
                for (const uint32_t height : sizes) {
                    if (uint64_t{width} * height < 0x40000) continue;  // the stream could fill it
                    platform::FailFrom(Operation::Memory, 1000);
                    const LoadResult result = LoadPng(
                        test::Join({test::Signature(), test::Header(width, height, depth, type, interlace),
                                    test::Chunk("IDAT", test::Deflate({0, 0}, 0))}));
                    EXPECT_EQ(result.error,
                              uint64_t{width} * height > 1u << 28 ? PngErrorFormat : PngErrorData);
                    EXPECT_EQ(platform::CountOperations(Operation::Memory), 0) << width << " x " << height;
                }
            }
        }
    }
}

std::string WriteFile(const std::string &name, const Bytes &bytes) {
    std::filesystem::create_directories(FENLIGHT_TEST_OUTPUT);
    const std::string path = std::string(FENLIGHT_TEST_OUTPUT) + "/" + name;
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char *>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return path;
}

LoadResult LoadPngFile(const std::string &path) {
    return test::LoadPngBy([&](PngContext *context) { return PngLoaderLoadFile(context, path.c_str()); });
}

TEST_F(PngHostile, FilesLoadOrGiveTheirCode) {
    EXPECT_EQ(LoadPngFile(WriteFile("small.png", Smallest())).values.pixels, std::vector<uint32_t>{77});
    EXPECT_EQ(LoadPngFile(WriteFile("empty.png", {})).error, PngErrorData);
    EXPECT_EQ(LoadPngFile(WriteFile("text.png", Bytes(100, 'a'))).error, PngErrorData);
    EXPECT_EQ(LoadPngFile(FENLIGHT_TEST_OUTPUT "/no such file.png").error, PngErrorFile);
    EXPECT_EQ(LoadPngFile(FENLIGHT_TEST_OUTPUT).error, PngErrorFile);
}

// Memory may be short inside the platform, too: for the section or for the file.
bool IsCodeFor(Operation operation, uint32_t error) {
    if (operation == Operation::Memory)
        return error == PngErrorMemory || error == PngErrorBitmap || error == PngErrorFile;
    return error == (operation == Operation::File ? PngErrorFile : PngErrorBitmap);
}

TEST_F(PngHostile, EachRefusalOfThePlatformGivesItsCodeAndLeavesNothingBehind) {
    const Bytes stream = Smallest();
    // Data in two chunks makes the inflater ask for its window, too.
    const Bytes packed = test::Deflate({0, 77, 0, 78});
    const Bytes split = test::Join({test::Signature(), test::Header(1, 2, 8, 0),
                                    test::Chunk("IDAT", {packed.begin(), packed.begin() + 4}),
                                    test::Chunk("IDAT", {packed.begin() + 4, packed.end()})});
    for (const Bytes &bytes : {stream, split}) {
        const std::string path = WriteFile("refused.png", bytes);
        for (const Operation operation :
             {Operation::Memory, Operation::File, Operation::Bitmap, Operation::Context}) {
            for (int number = 1;; ++number) {
                platform::ForgetFailures();
                platform::FailOnce(operation, number);
                const LoadResult result = LoadPngFile(path);
                const uint32_t error = result.error;
                EXPECT_EQ(result.stepsDone == 3, error == 0);
                if (platform::CountOperations(operation) < number) {
                    EXPECT_EQ(error, 0u);
                    break;
                }
                EXPECT_TRUE(IsCodeFor(operation, error))
                    << static_cast<int>(operation) << ", " << number << ": " << error;
            }
        }
    }
}

TEST_F(PngHostile, StepsOutOfOrderAreRefusedAndChangeNothing) {
    const Bytes stream = Smallest();
    const auto size = static_cast<uint32_t>(stream.size());
    PngContext context;
    PngLoaderInit(&context);
    const auto expectRefused = [&](int64_t result, uint32_t code, uint32_t state) {
        EXPECT_EQ(result, 0);
        EXPECT_EQ(context.lastError, code);
        EXPECT_EQ(context.state, state);
    };
    expectRefused(PngLoaderDecode(&context), PngErrorState, 0);
    expectRefused(static_cast<int64_t>(PngLoaderCreateBitmap(&context)), PngErrorState, 0);
    EXPECT_EQ(PngLoaderLoadMemory(&context, stream.data(), size), 1);
    expectRefused(PngLoaderLoadMemory(&context, stream.data(), size), PngErrorBusy, 1);
    expectRefused(PngLoaderLoadFile(&context, "any"), PngErrorBusy, 1);
    expectRefused(static_cast<int64_t>(PngLoaderCreateBitmap(&context)), PngErrorState, 1);
    EXPECT_EQ(PngLoaderDecode(&context), 1);
    expectRefused(PngLoaderDecode(&context), PngErrorState, 2);
    expectRefused(PngLoaderLoadMemory(&context, stream.data(), size), PngErrorBusy, 2);
    for (int i = 0; i < 2; ++i) {  // a decoded context gives any number of bitmaps
        LoadResult result;
        test::TakeBitmap(PngLoaderCreateBitmap(&context), result);
        EXPECT_EQ(result.values.pixels, std::vector<uint32_t>{77});
    }
    PngLoaderCleanup(&context);
    EXPECT_EQ(context.state | context.sourceKind | context.width, 0u);
    EXPECT_EQ(PngLoaderLoadMemory(&context, nullptr, 100), 0);
    EXPECT_EQ(context.lastError, PngErrorData);
    PngLoaderCleanup(&context);
}

}  // namespace
}  // namespace fenlight
