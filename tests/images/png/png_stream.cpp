// SPDX-License-Identifier: Zlib
#include "png_stream.h"

#include <zlib.h>

#include <memory>

#include "fenlight/platform/graphics.h"
#include "platform/graphics/bitmap.h"

namespace fenlight::test {

const std::vector<PngKind> kPngKinds = {
    {LCT_GREY, 1, 1, 1},        {LCT_GREY, 2, 1, 4},    {LCT_GREY, 4, 1, 4},    {LCT_GREY, 8, 1, 8},
    {LCT_GREY, 16, 1, 8},       {LCT_RGB, 8, 3, 24},    {LCT_RGB, 16, 3, 24},   {LCT_PALETTE, 1, 1, 1},
    {LCT_PALETTE, 2, 1, 4},     {LCT_PALETTE, 4, 1, 4}, {LCT_PALETTE, 8, 1, 8}, {LCT_GREY_ALPHA, 8, 2, 8},
    {LCT_GREY_ALPHA, 16, 2, 8}, {LCT_RGBA, 8, 4, 32},   {LCT_RGBA, 16, 4, 32}};

RandomPicture::RandomPicture(const PngKind &pictureKind, unsigned pictureWidth, unsigned pictureHeight,
                             std::mt19937 &random)
    : kind(pictureKind), width(pictureWidth), height(pictureHeight) {
    const uint32_t mask = (1u << kind.depth) - 1;
    samples.resize(size_t{width} * height * kind.samples);
    // Extremes are frequent: the predictors' comparisons are decided there.
    for (uint16_t &sample : samples) {
        const uint32_t number = static_cast<uint32_t>(random());
        sample = static_cast<uint16_t>((number >> 16 & 7) == 0 ? (number >> 20 & 1) * mask : number & mask);
    }
    if (kind.type != LCT_PALETTE) return;
    for (unsigned i = 0; i < 3u << kind.depth; ++i) palette.push_back(static_cast<uint8_t>(random()));
}

Bytes RandomFilters(unsigned height, std::mt19937 &random) {
    Bytes filters;
    while (filters.size() < height)
        filters.insert(filters.end(), 1 + random() % 7, static_cast<uint8_t>(random() % 5));
    return filters;
}

Bytes RandomPicture::Encode(bool isInterlaced, const Bytes &rowFilters) const {
    Bytes packed((samples.size() * kind.depth + 7) / 8);
    for (size_t bit = 0; bit < samples.size() * kind.depth; ++bit) {
        const uint32_t sample = samples[bit / kind.depth];
        const uint32_t value = sample >> (kind.depth - 1 - bit % kind.depth) & 1;
        packed[bit / 8] = static_cast<uint8_t>(packed[bit / 8] | value << (7 - bit % 8));
    }
    lodepng::State state;
    state.info_raw.colortype = state.info_png.color.colortype = kind.type;
    state.info_raw.bitdepth = state.info_png.color.bitdepth = kind.depth;
    state.info_png.interlace_method = isInterlaced ? 1 : 0;
    state.encoder.auto_convert = 0;
    state.encoder.filter_palette_zero = 0;
    state.encoder.filter_strategy = LFS_PREDEFINED;
    state.encoder.predefined_filters = rowFilters.data();
    for (size_t i = 0; i < palette.size(); i += 3) {
        lodepng_palette_add(&state.info_png.color, palette[i], palette[i + 1], palette[i + 2], 255);
        lodepng_palette_add(&state.info_raw, palette[i], palette[i + 1], palette[i + 2], 255);
    }
    Bytes stream;
    EXPECT_EQ(lodepng::encode(stream, packed, width, height, state), 0u);
    return stream;
}

uint32_t RandomPicture::Value(unsigned x, unsigned y) const {
    const uint16_t *const pixel = &samples[(size_t{y} * width + x) * kind.samples];
    const auto high = [&](int i) -> uint32_t { return kind.depth == 16 ? pixel[i] >> 8 : pixel[i]; };
    if (kind.samples < 3) return high(0);
    const uint32_t alpha = kind.samples == 4 ? high(3) : 0;
    return alpha << 24 | high(0) << 16 | high(1) << 8 | high(2);
}

uint32_t RandomPicture::PaletteColour(uint32_t index) const {
    if (kind.type == LCT_PALETTE)
        return static_cast<uint32_t>(palette[index * 3] << 16 | palette[index * 3 + 1] << 8 |
                                     palette[index * 3 + 2]);
    const uint32_t levels[] = {255, 85, 17, 1};  // one step of 1, 2, 4 and 8 bits
    const uint32_t level = kind.depth == 1   ? levels[0]
                           : kind.depth == 2 ? levels[1]
                                             : levels[kind.depth == 4 ? 2 : 3];
    return index * level * 0x010101;
}

Bytes Join(const std::vector<Bytes> &parts) {
    Bytes all;
    for (const Bytes &part : parts) all.insert(all.end(), part.begin(), part.end());
    return all;
}

static Bytes BigEndian(size_t value) {
    return {static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
            static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
}

Bytes Signature() { return {0x89, 'P', 'N', 'G', 13, 10, 26, 10}; }

Bytes Chunk(const std::string &type, const Bytes &payload) {
    return Join({BigEndian(payload.size()), Bytes(type.begin(), type.end()), payload, {1, 2, 3, 4}});
}

Bytes Header(uint32_t width, uint32_t height, uint8_t depth, uint8_t type, uint8_t interlace) {
    return Chunk("IHDR", Join({BigEndian(width), BigEndian(height), {depth, type, 0, 0, interlace}}));
}

Bytes Deflate(const Bytes &raw, int level, int strategy) {
    z_stream stream{};
    deflateInit2(&stream, level, Z_DEFLATED, 15, 8, strategy);
    Bytes packed(deflateBound(&stream, static_cast<uLong>(raw.size())));
    stream.next_in = const_cast<uint8_t *>(raw.data());
    stream.avail_in = static_cast<uInt>(raw.size());
    stream.next_out = packed.data();
    stream.avail_out = static_cast<uInt>(packed.size());
    EXPECT_EQ(deflate(&stream, Z_FINISH), Z_STREAM_END);
    packed.resize(stream.total_out);
    deflateEnd(&stream);
    return packed;
}

uint32_t ReadValue(const uint8_t *row, int bitCount, int x) {
    switch (bitCount) {
        case 1:
            return row[x / 8] >> (7 - x % 8) & 1u;
        case 4:
            return row[x / 2] >> (x % 2 == 0 ? 4 : 0) & 15u;
        case 8:
            return row[x];
        case 24:
            return static_cast<uint32_t>(row[x * 3] | row[x * 3 + 1] << 8 | row[x * 3 + 2] << 16);
        default:
            return static_cast<uint32_t>(row[x * 4] | row[x * 4 + 1] << 8 | row[x * 4 + 2] << 16) |
                   static_cast<uint32_t>(row[x * 4 + 3]) << 24;
    }
}

void TakeBitmap(HBITMAP bitmap, LoadResult &result) {
    {
        const platform::LockedBitmap locked(bitmap);
        ASSERT_TRUE(locked);
        const platform::PixelView &view = locked.View();
        result.bitCount = platform::BitsPerPixel(view.format);
        result.values = result.alphas = Picture(view.width, view.height);
        for (int y = 0; y < view.height; ++y) {
            for (int x = 0; x < view.width; ++x) {
                const uint32_t value = ReadValue(view.Row(y), result.bitCount, x);
                result.values.At(x, y) = value & 0xFFFFFF;
                result.alphas.At(x, y) = value >> 24;
            }
        }
        if (view.palette != nullptr) result.palette.assign(view.palette, view.palette + 256);
    }
    EXPECT_NE(DeleteObject(bitmap), 0);
}

LoadResult LoadPngBy(const std::function<int32_t(PngContext *)> &load) {
    PngContext context;
    PngLoaderInit(&context);
    LoadResult result;
    HBITMAP bitmap = 0;
    const auto step = [&](bool isDone) {
        result.stepsDone += isDone;
        EXPECT_TRUE(!isDone || context.lastError == 0) << "a step that succeeds leaves no code";
        return isDone;
    };
    if (step(load(&context) != 0) && step(PngLoaderDecode(&context) != 0))
        step((bitmap = PngLoaderCreateBitmap(&context)) != 0);
    result.error = context.lastError;
    PngLoaderCleanup(&context);
    if (bitmap != 0) TakeBitmap(bitmap, result);
    return result;
}

LoadResult LoadPng(const Bytes &stream) {
    // A block of its own, so that the address sanitizer sees each byte read beyond it.
    const std::unique_ptr<uint8_t[]> copy(new uint8_t[stream.size()]);
    std::copy(stream.begin(), stream.end(), copy.get());
    return LoadPngBy([&](PngContext *context) {
        return PngLoaderLoadMemory(context, copy.get(), static_cast<uint32_t>(stream.size()));
    });
}

Picture Shown(const LoadResult &result) {
    Picture shown = result.values;
    if (result.bitCount <= 8) {
        for (uint32_t &pixel : shown.pixels) pixel = result.palette[pixel];
    }
    return shown;
}

}  // namespace fenlight::test
