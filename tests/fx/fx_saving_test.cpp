// SPDX-License-Identifier: Zlib
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fx/fx_picture.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"

namespace fenlight::test {
namespace {

using platform::Operation;
using Bytes = std::vector<uint8_t>;

const std::string kFile = std::string(FENLIGHT_TEST_OUTPUT) + "/fx_saving.bmp";

Bytes ReadBytes(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

class FXSaving : public ::testing::Test {
  protected:
    void SetUp() override {
        std::filesystem::create_directories(FENLIGHT_TEST_OUTPUT);
        std::filesystem::remove(kFile);
    }
    void TearDown() override {
        EXPECT_EQ(platform::CountHandles(platform::HandleKind::File), 0);
        FreeAllImages();
        std::filesystem::remove(kFile);
    }
};

TEST_F(FXSaving, FilesHoldTheRowsOfTheBufferBehindTheHeaders) {
    const uintptr_t image = NoisyImage(4, 4);
    const OwnedFX fx(FXFromHandle(InitFX(image)));
    const auto handle = reinterpret_cast<uintptr_t>(fx.get());
    EXPECT_EQ(SaveFX(handle, kFile.c_str(), 0), 102);
    const Bytes file = ReadBytes(kFile);
    Bytes expected{'B', 'M', 102, 0, 0, 0, 0, 0, 0, 0, 54, 0, 0, 0, 40,
                   0,   0,   0,   4, 0, 0, 0, 4, 0, 0, 0,  1, 0, 24};
    expected.resize(54);
    expected.insert(expected.end(), fx->Pixels, fx->Pixels + 48);
    EXPECT_EQ(file, expected);

    Bytes memory(104, 0xA5);
    for (const int32_t mode : {1, -1}) EXPECT_EQ(SaveToMemoryFX(handle, memory.data(), mode), 0);
    EXPECT_EQ(memory, Bytes(104, 0xA5));
    EXPECT_EQ(SaveToMemoryFX(handle, memory.data() + 1, 0), 102);
    expected.insert(expected.begin(), 0xA5);
    expected.push_back(0xA5);
    EXPECT_EQ(memory, expected);

    std::fill_n(fx->Pixels, 48, uint8_t{0});
    EXPECT_EQ(SaveFX(handle, kFile.c_str(), 1), 0);
    EXPECT_EQ(ReadBytes(kFile), file);
}

TEST_F(FXSaving, FailuresGiveTheirResultsAndLeaveNothingOpen) {
    const OwnedFX fx(FXFromHandle(CreateExtFX(4, 4)));
    const auto handle = reinterpret_cast<uintptr_t>(fx.get());
    const std::string missing = kFile + ".none/file.bmp";
    for (const char *path :
         {missing.c_str(), FENLIGHT_TEST_OUTPUT, "/", "", static_cast<const char *>(nullptr)})
        EXPECT_EQ(SaveFX(handle, path, 0), 0) << (path != nullptr ? path : "null");
    if (access("/dev/full", W_OK) == 0) {
        EXPECT_EQ(SaveFX(handle, "/dev/full", 0), 54);
    }
    EXPECT_EQ(SaveFX(0, kFile.c_str(), 0), 0);
    uint8_t byte = 9;
    EXPECT_EQ(SaveToMemoryFX(0, &byte, 0), 0);
    EXPECT_EQ(SaveToMemoryFX(handle, nullptr, 0), 0);
    EXPECT_EQ(byte, 9);
    EXPECT_FALSE(std::filesystem::exists(kFile));
    // Opening, the headers, the rows.
    const std::pair<int32_t, size_t> outcomes[] = {{0, 0}, {54, 0}, {54, 54}, {102, 102}};
    for (int number = 1; const auto &[result, bytes] : outcomes) {
        platform::FailOnce(Operation::File, number);
        EXPECT_EQ(SaveFX(handle, kFile.c_str(), 0), result) << number;
        EXPECT_EQ(ReadBytes(kFile).size(), bytes) << number;
        ++number;
    }
    platform::ForgetFailures();
}

}  // namespace
}  // namespace fenlight::test
