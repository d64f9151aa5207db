// SPDX-License-Identifier: Zlib
#include <filesystem>
#include <random>

#include "platform/pictures/com_runtime.h"
#include "platform/pictures/picture_drawing.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"

namespace fenlight::test {
namespace {

using namespace fenlight::platform;

std::u16string Widen(const std::string &text) {
    const int32_t count = MultiByteToWideChar(0, 0, text.c_str(), -1, nullptr, 0);
    std::u16string wide(static_cast<size_t>(count), u'#');
    EXPECT_EQ(MultiByteToWideChar(0, 0, text.c_str(), -1, wide.data(), count), count);
    EXPECT_EQ(wide.back(), 0);
    wide.pop_back();
    return wide;
}

TEST(WideText, KeepsUtf8AndCarriesEveryOtherByte) {
    EXPECT_EQ(Widen("a/\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80"), u"a/\u00E9\u20AC\U0001F600");
    const std::pair<const char *, std::u16string> broken[] = {
        {"caf\xE9.bmp", {u'c', u'a', u'f', 0xDCE9, u'.', u'b', u'm', u'p'}},
        {"\xC0\xAF", {0xDCC0, 0xDCAF}},                          // over-long
        {"\xED\xA0\x80", {0xDCED, 0xDCA0, 0xDC80}},              // half a pair
        {"\xF4\x90\x80\x80", {0xDCF4, 0xDC90, 0xDC80, 0xDC80}},  // above U+10FFFF
        {"\xE2\x82", {0xDCE2, 0xDC82}},                          // cut off
    };
    for (const auto &[text, wide] : broken) EXPECT_EQ(Widen(text), wide) << text;

    std::mt19937 random(7);
    constexpr char kLikely[] = "ab/\x80\xBF\xC3\xA9\xE2\xED\xA0\xF0\x9F\xF4\x90";
    for (int round = 0; round < 20000; ++round) {
        std::string path;
        for (auto i = random() % 12; i > 0; --i) path += kLikely[random() % (sizeof kLikely - 1)];
        EXPECT_EQ(std::string(NarrowPath(Widen(path).c_str()).get()), path) << "round " << round;
    }
}

TEST(WideText, RefusesWhatItCannotDo) {
    char16_t wide[4] = {u'#', u'#', u'#', u'#'};
    EXPECT_EQ(MultiByteToWideChar(0, 0, "abc", -1, wide, 3), 0);
    EXPECT_EQ(wide[3], u'#');
    EXPECT_EQ(MultiByteToWideChar(0, 0, "abc", 2, wide, 3), 2);  // without a zero
    EXPECT_EQ(MultiByteToWideChar(1252, 0, "abc", -1, wide, 4), 0);
    EXPECT_EQ(MultiByteToWideChar(0, 0, nullptr, -1, wide, 4), 0);
    EXPECT_EQ(MultiByteToWideChar(0, 0, "abc", 0, wide, 4), 0);
    EXPECT_EQ(MultiByteToWideChar(0, 0, "abc", -1, nullptr, 4), 0);
}

TEST(MemoryStream, HandsOutItsBytesAndFreesItsBlockOnce) {
    void *block = CoTaskMemAlloc(5);
    std::memcpy(block, "abcde", 5);
    IStream *stream = nullptr;
    ASSERT_EQ(CreateStreamOnHGlobal(block, 5, true, &stream), S_OK);
    char text[8] = {};
    uint32_t count = 0;
    EXPECT_EQ(stream->Read(text, 3, &count), S_OK);
    EXPECT_EQ(stream->AddRef(), 2u);
    EXPECT_EQ(stream->Release(), 1u);
    EXPECT_EQ(stream->Read(text + 3, 4, &count), S_FALSE);
    EXPECT_EQ(count, 2u);
    EXPECT_STREQ(text, "abcde");
    EXPECT_EQ(CountTaskBlocks(), 1);
    EXPECT_EQ(stream->Release(), 0u);
    EXPECT_EQ(CountTaskBlocks(), 0);
    EXPECT_EQ(CountPictureObjects(), 0);
}

TEST(PictureFiles, LoadByPathWhateverItsBytes) {
    const std::filesystem::path folder = std::filesystem::path(FENLIGHT_TEST_OUTPUT) / "pictures_test";
    std::filesystem::create_directories(folder);
    const std::string path = folder.string() + "/caf\xE9 \xE2\x82\xAC.bmp";
    const Bytes bmp = MakeBmp(9, 6);
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char *>(bmp.data()), ptrdiff_t(bmp.size()));
    std::ofstream(folder.string() + "/empty.bmp");

    const auto load = [](const std::string &name, IPicture **picture) {
        return OleLoadPicturePath(Widen(name).c_str(), nullptr, 0, 0, IID_IPicture, picture);
    };
    IPicture *picture = nullptr;
    ASSERT_EQ(load(path, &picture), S_OK);
    EXPECT_TRUE(SamePicture("path", Draw(picture, 9, 6), BmpPicture(9, 6, 24)));
    EXPECT_EQ(picture->Release(), 0u);
    for (const std::string &bad :
         {folder.string(), folder.string() + "/none", folder.string() + "/empty.bmp"}) {
        EXPECT_LT(load(bad, &picture), 0) << bad;
        EXPECT_EQ(picture, nullptr) << bad;
    }
    FailOnce(Operation::File, 1);
    EXPECT_LT(load(path, &picture), 0);
    ForgetFailures();
    EXPECT_EQ(CountHandles(HandleKind::File), 0);
}

TEST(PictureRender, ScalesCutsAndMirrors) {
    const PictureReference picture = LoadFromStream(MakeBmp(8, 6));
    const Picture whole = BmpPicture(8, 6, 24);
    int32_t width = 0;
    int32_t height = 0;
    picture->get_Width(&width);
    picture->get_Height(&height);

    Picture doubled(16, 12);
    for (int y = 0; y < 12; ++y) {
        for (int x = 0; x < 16; ++x) doubled.At(x, y) = whole.At(x / 2, y / 2);
    }
    EXPECT_TRUE(SamePicture("doubled", Draw(picture.get(), 16, 12), doubled));

    // The lower right quarter, upside down, at (1, 2).
    const GreyCanvas canvas(8, 6);
    EXPECT_EQ(picture->Render(canvas.context, 1, 2, 4, 3, width / 2, 0, width / 2, height / 2, nullptr),
              S_OK);
    Picture quarter(8, 6, GreyCanvas::kGrey);
    for (int y = 0; y < 3; ++y) {
        for (int x = 0; x < 4; ++x) quarter.At(1 + x, 2 + y) = whole.At(4 + x, 5 - y);
    }
    EXPECT_TRUE(SamePicture("quarter", canvas.Shown(), quarter));

    for (const auto &[cx, cxSrc] : {std::pair{0, width}, std::pair{8, 0}}) {
        EXPECT_EQ(picture->Render(canvas.context, 0, 0, cx, 6, 0, height, cxSrc, -height, nullptr),
                  CTL_E_INVALIDPROPERTYVALUE);
    }
    for (const int size : {8, 16}) {
        EXPECT_LT(picture->Render(0x1235, 0, 0, size, 6, 0, height, width, -height, nullptr), 0) << size;
    }
}

TEST(PictureFailures, NothingIsLeftBehindWhicheverOperationFails) {
    EXPECT_EQ(CountGraphicsHandles(), (LiveHandles{0, 0}));
    const Bytes bmp = MakeBmp(300, 100);  // larger than the first portion of the stream
    bool isLoaded = false;
    for (int number = 1; !isLoaded; ++number) {
        ASSERT_LT(number, 20);
        FailOnce(Operation::Memory, number);
        const PictureReference picture = LoadFromStream(bmp);
        isLoaded = CountOperations(Operation::Memory) < number;
        EXPECT_EQ(picture != nullptr, isLoaded) << "operation " << number;
    }
    ForgetFailures();
    const PictureReference picture = LoadFromStream(bmp);
    for (const Operation operation : {Operation::Bitmap, Operation::Context}) {
        const GreyCanvas canvas(8, 6);
        FailOnce(operation, 1);
        EXPECT_EQ(picture->Render(canvas.context, 0, 0, 8, 6, 0, 2646, 7938, -2646, nullptr), E_OUTOFMEMORY);
        ForgetFailures();
        EXPECT_TRUE(SamePicture("untouched", canvas.Shown(), Picture(8, 6, GreyCanvas::kGrey)));
        EXPECT_EQ(CountGraphicsHandles(), (LiveHandles{1, 1}));
    }
    EXPECT_EQ(CountTaskBlocks(), 0);
    EXPECT_EQ(CountPictureObjects(), 1);
}

}  // namespace
}  // namespace fenlight::test
