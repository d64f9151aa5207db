// SPDX-License-Identifier: Zlib
#include "fenlight/files.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "platform/system/failure_point.h"

namespace fenlight {
namespace {

namespace fs = std::filesystem;

class Files : public testing::Test {
  protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "files_test_XXXXXX").string();
        folder_ = mkdtemp(pattern.data());
        openBefore_ = OpenDescriptors();
    }
    void TearDown() override {
        platform::ForgetFailures();
        EXPECT_EQ(OpenDescriptors(), openBefore_) << "a file stayed open";
        fs::remove_all(folder_);
    }

    static int64_t OpenDescriptors() {
        return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator{});
    }
    std::string PathOf(const char *name) const { return (folder_ / name).string(); }
    void Make(const char *name, std::string_view content) const { std::ofstream(folder_ / name) << content; }
    std::string Content(const char *name) const {
        std::ifstream file(folder_ / name);
        return {std::istreambuf_iterator<char>(file), {}};
    }

  private:
    fs::path folder_;
    int64_t openBefore_ = 0;
};

// Size, position in the file, result and what lies in the memory then, read to offset 2.
TEST_F(Files, ReadsWhatIsThereAndTellsHowMuch) {
    Make("six", "abcdef");
    const struct {
        int32_t size, position, result;
        const char *memory;
    } cases[] = {{3, 0, 3, "..abc..."}, {6, 0, 6, "..abcdef"},  {100, 4, 2, "..ef...."},
                 {6, 5, 1, "..f....."}, {3, 6, 0, "........"},  {3, 99, 0, "........"},
                 {0, 0, 0, "........"}, {-1, 0, 0, "........"}, {3, -2, 0, "........"},
                 {2, 1, 2, "..bc...."}};
    for (const auto &[size, position, result, expected] : cases) {
        std::string memory(8, '.');
        EXPECT_EQ(ReadFilePieceFast(PathOf("six").c_str(), memory.data(), 2, size, position), result);
        EXPECT_EQ(memory, expected) << size << " from " << position;
        if (position != 0) continue;
        memory.assign(8, '.');
        EXPECT_EQ(ReadFileFast(PathOf("six").c_str(), memory.data(), 2, size), result);
        EXPECT_EQ(memory, expected) << size;
    }
    EXPECT_EQ(ReadFileFast(PathOf("six").c_str(), nullptr, 2, 3), 0);
}

TEST_F(Files, WritesReplaceTheFile) {
    const char bytes[] = "0123456789";
    const std::string path = PathOf("written");
    EXPECT_EQ(WriteFileFast(path.c_str(), bytes, 1, 6), 6);
    EXPECT_EQ(Content("written"), "123456");
    EXPECT_EQ(WriteFileFast(path.c_str(), bytes, 8, 2), 2);
    EXPECT_EQ(Content("written"), "89");
    EXPECT_EQ(WriteFileFast(path.c_str(), bytes, 0, -1), 0);
    EXPECT_EQ(Content("written"), "89") << "a size below 0 leaves the file alone";
    EXPECT_EQ(WriteFileFast(path.c_str(), bytes, 0, 0), 0);
    EXPECT_TRUE(fs::exists(path) && fs::is_empty(path));
    EXPECT_EQ(WriteFileFast("/dev/full", bytes, 0, 10), 0);
}

TEST_F(Files, GiveMinusOneForWhatCannotBeOpened) {
    fs::create_directory(PathOf("folder"));
    for (const char *name : {"missing", "missing/file", "folder"}) {
        char memory[] = "same";
        const bool isNew = std::string_view(name) == "missing";
        EXPECT_EQ(ReadFileFast(PathOf(name).c_str(), memory, 0, 4), -1) << name;
        EXPECT_EQ(ReadFilePieceFast(PathOf(name).c_str(), memory, 0, 4, 1), -1) << name;
        EXPECT_EQ(WriteFileFast(PathOf(name).c_str(), memory, 0, 4), isNew ? 4 : -1) << name;
        EXPECT_STREQ(memory, "same");
    }
    EXPECT_EQ(ReadFileFast(nullptr, nullptr, 0, 1), -1);
    EXPECT_EQ(WriteFileFast("", "x", 0, 1), -1);
}

// Each operation of a call fails in turn: the first is the opening, the second the transfer.
TEST_F(Files, TellHowMuchWasMovedWhenTheSystemRefuses) {
    Make("six", "abcdef");
    const std::string path = PathOf("six");
    char memory[] = "same";
    const std::pair<int, int32_t> cases[] = {{1, -1}, {2, 0}};
    for (const auto &[failing, result] : cases) {
        platform::FailFrom(platform::Operation::File, failing);
        EXPECT_EQ(ReadFileFast(path.c_str(), memory, 0, 4), result);
        platform::FailFrom(platform::Operation::File, failing);
        EXPECT_EQ(ReadFilePieceFast(path.c_str(), memory, 0, 4, 1), result);
        EXPECT_STREQ(memory, "same");
        platform::FailFrom(platform::Operation::File, failing);
        EXPECT_EQ(WriteFileFast(path.c_str(), memory, 0, 4), result);
        EXPECT_EQ(Content("six"), failing == 1 ? "abcdef" : "");
    }
}

TEST(Examine, LetsOnlyCharactersOfNumbersPass) {
    std::string passing;
    for (int character = 1; character < 256; ++character)
        if (const char text[] = {static_cast<char>(character), 0}; Examine(text) == 0) passing += text;
    EXPECT_EQ(passing, " ,-.0123456789\xA0");
    for (const char *text : {"", "12,5", "1-2,,3", " -7.5 "}) EXPECT_EQ(Examine(text), 0) << text;
    for (const char *text : {"12a", "a12", "1 2\t3", "+1"}) EXPECT_EQ(Examine(text), 1) << text;
    EXPECT_EQ(Examine(nullptr), 1);
}

}  // namespace
}  // namespace fenlight
