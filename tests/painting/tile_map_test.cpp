// SPDX-License-Identifier: Zlib
#include "painting/tile_map.h"

#include <climits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "fenlight/painting.h"
#include "platform/graphics/canvas.h"
#include "platform/graphics/surface_access.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"
#include "support/each_level.h"

namespace fenlight::test {
namespace {

using Bytes = std::vector<uint8_t>;

// The definition: a walk over the list for each cell, and one painted image for each that is found.
void PaintTileByTile(const TileArguments &a) {
    for (int32_t row = 0; row < a.rows; ++row) {
        for (int32_t column = 0; column < a.columns; ++column) {
            const int32_t tile = a.map[(a.startRow + row) * a.mapWidth + a.startColumn + column];
            const uint16_t *entry = a.tileList;
            while (entry != nullptr && *entry != tile && *entry != 1111) ++entry;
            if (entry != nullptr && *entry == 1111) continue;
            PaintImage(a.destDC, a.destX + column * a.tileWidth, a.destY + row * a.tileHeight, a.tileWidth,
                       a.tileHeight, a.tileDC, tile * a.tileWidth, a.tileY, a.mode);
        }
    }
}

// All bytes of a surface, the unused ones of 32 bits among them.
Bytes BytesOf(HDC context) {
    const platform::SurfaceAccess access(context);
    const platform::PixelView &view = access.View();
    const size_t rowBytes = static_cast<size_t>(view.width * platform::BitsPerPixel(view.format) / 8);
    Bytes bytes;
    for (int32_t y = 0; y < view.height; ++y) bytes.insert(bytes.end(), view.Row(y), view.Row(y) + rowBytes);
    return bytes;
}

// Few values, so that the key colour is met often.
void FillAtRandom(HDC context, std::mt19937 &random) {
    platform::SurfaceAccess access(context);
    const platform::PixelView &view = access.View();
    const int bytes = view.width * platform::BitsPerPixel(view.format) / 8;
    for (int32_t y = 0; y < view.height; ++y)
        for (int i = 0; i < bytes; ++i)
            view.Row(y)[i] = random() % 4 != 0 ? 7 : static_cast<uint8_t>(random() % 3);
}

// Widths are multiples of 8, so that every format ends on a byte.
HBITMAP MakeBitmap(UINT bits, int32_t width, int32_t height) {
    if (bits == 32) return CreateCompatibleBitmap(platform::ScreenContext(), width, height);
    return CreateBitmap(width, height, 1, bits, nullptr);
}

class Scene {
  public:
    Scene(UINT stripBits, UINT targetBits, std::mt19937 &random)
        : strip(MakeBitmap(stripBits, 296, 40)),
          target(MakeBitmap(targetBits, 200, 160)),
          before_(MakeBitmap(targetBits, 200, 160)),
          random_(random) {
        FillAtRandom(strip.context, random);
        FillAtRandom(before_.context, random);
    }

    // Other maps and places each time. Some tiles lie partly or wholly beyond the strip's end.
    TileArguments MakeArguments(int32_t mode) {
        constexpr int32_t kSizes[] = {8, 16, 32, 1, 64, 70};
        TileArguments a{};
        a.tileDC = strip.context;
        a.destDC = target.context;
        a.tileWidth = random_() % 2 != 0 ? kSizes[random_() % 6] : Number(1, 40);
        a.tileHeight = random_() % 2 != 0 ? kSizes[random_() % 3] : Number(1, 30);
        a.tileY = Number(-1, 41 - std::min(a.tileHeight, 40));
        a.columns = Number(1, 30);
        a.rows = Number(1, 30);
        a.startColumn = Number(0, 5);
        a.startRow = Number(0, 5);
        a.mapWidth = a.startColumn + a.columns + Number(0, 4);
        map_.resize(static_cast<size_t>(a.mapWidth * (a.startRow + a.rows)));
        for (uint8_t &tile : map_)
            tile = static_cast<uint8_t>(random_() % 50 == 0 ? random_() : random_() % 12);
        list_.assign({3, 900, 0, 7, 5, 255, 1, 8, 9, 1111});
        list_[1] = static_cast<uint16_t>(Number(0, 2000));
        a.map = map_.data();
        a.tileList = random_() % 3 == 0 ? list_.data() : nullptr;
        a.destX = Number(-90, 40);
        a.destY = Number(-90, 40);
        a.mode = mode;
        return a;
    }

    // What paint(arguments) makes of the same ground.
    template <class PaintMap>
    Bytes Paint(const TileArguments &a, PaintMap paint) {
        BitBlt(target.context, 0, 0, 200, 160, before_.context, 0, 0, SRCCOPY);
        paint(a);
        return BytesOf(target.context);
    }

    const Canvas strip, target;

  private:
    int32_t Number(int32_t low, int32_t end) {
        return low + static_cast<int32_t>(random_() % static_cast<uint32_t>(end - low));
    }

    const Canvas before_;
    std::mt19937 &random_;
    std::vector<uint8_t> map_;
    std::vector<uint16_t> list_;
};

std::string Describe(const TileArguments &a) {
    std::string text;
    for (const int32_t number :
         {a.mode, a.tileWidth, a.tileHeight, a.tileY, a.columns, a.rows, a.destX, a.destY})
        text += std::to_string(number) + ", ";
    return text + (a.tileList != nullptr ? "list" : "all");
}

class TileMap : public EachLevel {};
INSTANTIATE_TEST_SUITE_P(Levels, TileMap, kEachLevel);

TEST_P(TileMap, IsPaintedAsItsTilesOneByOne) {
    std::mt19937 random(4);
    for (const auto &[from, to, rounds] : std::vector<std::tuple<UINT, UINT, int>>{
             {32, 32, 120}, {24, 32, 40}, {8, 32, 40}, {4, 32, 10}, {1, 32, 20}, {32, 24, 10}, {24, 8, 10}}) {
        Scene scene(from, to, random);
        for (int round = 0; round < rounds && !HasFailure(); ++round) {
            constexpr int32_t kModes[] = {-1, 0, -1, SRCCOPY, -1, 3, static_cast<int32_t>(PATPAINT), 4};
            TileArguments a = scene.MakeArguments(kModes[round % 8]);
            if (from == to && round % 3 == 0) a.tileDC = a.destDC;  // over its own strip
            const Bytes expected = scene.Paint(a, PaintTileByTile);
            EXPECT_TRUE(scene.Paint(a, [](const TileArguments &b) { SetTiles5(&b); }) == expected)
                << from << " to " << to << " bits, " << Describe(a);
        }
    }
}

// Without the memory for a quicker way the pictures are the same, and nothing is left behind in either.
TEST_P(TileMap, NeedsNoMemory) {
    using namespace platform;
    std::mt19937 random(6);
    Scene scene(24, 32, random);
    for (const Operation operation : {Operation::Bitmap, Operation::Context, Operation::Memory}) {
        const std::vector<uint8_t> map(256, 3);
        const TileArguments a{scene.strip.context,  0,   16,  16, 16,     16, map.data(), 16, 0, 0,
                              scene.target.context, -20, -20, -1, nullptr};
        const Bytes expected = scene.Paint(a, PaintTileByTile);
        const int handles = CountHandles(HandleKind::Context) + CountHandles(HandleKind::Bitmap);
        FailFrom(operation, 1);
        EXPECT_TRUE(scene.Paint(a, PaintTiles) == expected);
        ForgetFailures();
        const uint32_t changes = SurfaceChanges(a.destDC);
        EXPECT_TRUE(scene.Paint(a, PaintTiles) == expected);
        EXPECT_GE(SurfaceChanges(a.destDC) - changes, 2u);  // the ground and the map: windows show it
        EXPECT_EQ(CountHandles(HandleKind::Context) + CountHandles(HandleKind::Bitmap), handles);
    }
}

// Tiles of one pixel, whose colours are their numbers. Map and list hold what must be
// read and not a byte more.
TEST(SetTiles, ReadsTheMapRowByRowAndTheListToItsEnd) {
    const Canvas strip(256, 1);
    for (int x = 0; x < 256; ++x) SetPixel(strip.context, x, 0, static_cast<COLORREF>(x));
    std::vector<uint8_t> map(25);
    for (size_t i = 0; i < map.size(); ++i) map[i] = static_cast<uint8_t>(i);
    map[14] = 255;
    const std::vector<uint16_t> some{5, 24, 255, 1111}, none{1111}, without{13, 23, 24, 255};
    const auto paint = [&](int32_t columns, int32_t rows, int32_t startColumn, int32_t startRow, int32_t x,
                           int32_t y, const uint16_t *list) {
        const Canvas target(3, 3);
        SetTiles(strip.context, 0, columns, rows, 1, 1, map.data(), 10, startColumn, startRow, target.context,
                 x, y, 0, list);
        std::string shown;
        for (int i = 0; i < 9; ++i) shown += std::to_string(GetPixel(target.context, i % 3, i / 3)) + " ";
        return shown;
    };
    const std::string nothing = "0 0 0 0 0 0 0 0 0 ";
    EXPECT_EQ(paint(2, 2, 3, 1, 0, 0, nullptr), "13 255 0 23 24 0 0 0 0 ");
    EXPECT_EQ(paint(2, 2, 3, 1, 1, 1, some.data()), "0 0 0 0 0 255 0 0 24 ");
    EXPECT_EQ(paint(2, 2, 3, 1, 0, 0, none.data()), nothing);
    EXPECT_EQ(paint(2, 2, 3, 1, 0, 0, without.data()), "13 255 0 23 24 0 0 0 0 ");
    EXPECT_EQ(paint(INT_MAX, INT_MAX, 5 - INT_MAX, 0, 4 - INT_MAX, 2, nullptr), "0 0 0 0 0 0 1 2 3 ");
    EXPECT_EQ(paint(2, 2, 3, 1, INT_MIN, INT_MAX, nullptr), nothing);
    EXPECT_EQ(paint(0, 2, 3, 1, 0, 0, nullptr), nothing);
    EXPECT_EQ(paint(2, -1, 3, 1, 0, 0, nullptr), nothing);
}

TEST(SetTiles, PaintsNothingWithoutAMapATileOrAContext) {
    const Canvas strip(8, 8), target(8, 8);
    const uint8_t map[] = {0};
    const TileArguments good{strip.context, 0, 1, 1, 8, 8, map, 1, 0, 0, target.context, 0, 0, 14, nullptr};
    std::vector<TileArguments> calls(5, good);
    calls[0].map = nullptr;
    calls[1].tileWidth = 0;
    calls[2].tileHeight = -8;
    calls[3].destDC = 0;
    calls[4].mode = -1;
    calls[4].tileDC = 0;
    for (const TileArguments &call : calls) SetTiles5(&call);
    SetTiles5(nullptr);
    EXPECT_TRUE(SamePicture("nothing", PictureOf(target.context, 8, 8), Picture(8, 8)));
    // White needs no source, however far beyond it a tile of that width would begin.
    const uint8_t last[] = {255};
    SetTiles(0, 0, 1, 1, INT_MAX, 8, last, 1, 0, 0, target.context, 0, 0, 14, nullptr);
    EXPECT_TRUE(SamePicture("white", PictureOf(target.context, 8, 8), Picture(8, 8, 0xFFFFFF)));
}

// Each locks what the other paints on: in the wrong order they would wait for each other for ever.
TEST(SetTiles, MayPaintBothWaysFromTwoThreads) {
    const Canvas one(128, 128), other(128, 128);
    PaintImage(one.context, 0, 0, 128, 128, 0, 0, 0, 14);
    const std::vector<uint8_t> map(256, 0);
    const auto paint = [&](HDC from, HDC to) {
        for (int round = 0; round < 200; ++round)
            SetTiles(from, 0, 16, 16, 8, 8, map.data(), 16, 0, 0, to, 0, 0, 0, nullptr);
    };
    std::thread back([&] { paint(other.context, one.context); });
    paint(one.context, other.context);
    back.join();
    for (const uint32_t pixel : PictureOf(one.context, 128, 128).pixels)
        ASSERT_TRUE(pixel == 0 || pixel == 0xFFFFFF) << pixel;
}

}  // namespace
}  // namespace fenlight::test
