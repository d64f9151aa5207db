// SPDX-License-Identifier: Zlib
// Files, full paths and the temporary directory.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "fenlight/platform/system.h"
#include "platform/system/failure_point.h"
#include "platform/system/handle_table.h"

namespace fenlight::platform {
namespace {

constexpr DWORD kTruncateExisting = 5;

HANDLE Open(const std::string &path, DWORD access, DWORD disposition) {
    return CreateFileA(path.c_str(), access, FILE_SHARE_READ, nullptr, disposition, FILE_ATTRIBUTE_NORMAL, 0);
}

class FileTest : public testing::Test {
  protected:
    FileTest() {
        std::filesystem::remove_all(base_);
        std::filesystem::create_directories(base_ + "/folder");
    }
    std::string In(const char *name) const { return base_ + "/" + name; }
    std::string Make(const char *name, const std::string &bytes) const {
        std::ofstream(In(name), std::ios::binary) << bytes;
        return In(name);
    }
    static std::string Content(const std::string &path) {
        std::ifstream file(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const std::string base_ = std::string(FENLIGHT_TEST_OUTPUT) + "/files";
    const int filesBefore_ = CountHandles(HandleKind::File);
};

TEST_F(FileTest, DispositionsOpenAndMakeAsPublished) {
    const struct {
        DWORD disposition;
        bool exists;
        DWORD error;
        const char *content;  // afterwards; nullptr: no file
    } cases[] = {{CREATE_NEW, false, 0, ""},
                 {CREATE_NEW, true, 80, "old"},
                 {CREATE_ALWAYS, false, 0, ""},
                 {CREATE_ALWAYS, true, 183, ""},
                 {OPEN_EXISTING, false, 2, nullptr},
                 {OPEN_EXISTING, true, 0, "old"},
                 {OPEN_ALWAYS, false, 0, ""},
                 {OPEN_ALWAYS, true, 183, "old"},
                 {kTruncateExisting, false, 2, nullptr},
                 {kTruncateExisting, true, 0, ""},
                 {0, true, 87, "old"},
                 {6, false, 87, nullptr}};
    for (const auto &c : cases) {
        SCOPED_TRACE(testing::Message() << c.disposition << (c.exists ? " existing" : " missing"));
        const std::string path = In("disposed");
        std::filesystem::remove(path);
        if (c.exists) Make("disposed", "old");
        const HANDLE file = Open(path, GENERIC_WRITE, c.disposition);
        EXPECT_EQ(GetLastError(), c.error);
        const bool isOpen = c.error == 0 || c.error == 183;
        EXPECT_EQ(file != INVALID_HANDLE_VALUE, isOpen);
        EXPECT_EQ(CloseHandle(file) != 0, isOpen);
        EXPECT_EQ(std::filesystem::exists(path), c.content != nullptr);
        EXPECT_EQ(Content(path), c.content == nullptr ? "" : c.content);
    }
    EXPECT_EQ(CountHandles(HandleKind::File), filesBefore_);
}

TEST_F(FileTest, RefusalsTellWhy) {
    const std::string file = Make("plain", "bytes");
    const struct {
        std::string path;
        DWORD access, error;
    } cases[] = {{In("missing"), GENERIC_READ, 2},
                 {In("missing/file"), GENERIC_READ, 3},
                 {file + "/below", GENERIC_READ, 3},
                 {In("folder"), GENERIC_READ, 5},
                 {In("folder"), GENERIC_WRITE, 5},
                 {In("folder"), 0, 5},
                 {"", GENERIC_READ, 3},
                 {In(std::string(300, 'n').c_str()), GENERIC_READ, 206}};
    for (const auto &c : cases) {
        EXPECT_EQ(Open(c.path, c.access, OPEN_EXISTING), INVALID_HANDLE_VALUE) << c.path;
        EXPECT_EQ(GetLastError(), c.error) << c.path;
    }
    EXPECT_EQ(CreateFileA(nullptr, GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, 0), INVALID_HANDLE_VALUE);
    FailOnce(Operation::File, 1);
    EXPECT_EQ(Open(file, GENERIC_READ, OPEN_EXISTING), INVALID_HANDLE_VALUE);
    ForgetFailures();
    EXPECT_FALSE(DeleteFileA(In("missing").c_str()));
    EXPECT_EQ(GetLastError(), ERROR_FILE_NOT_FOUND);
    EXPECT_FALSE(DeleteFileA(In("folder").c_str()));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_FALSE(DeleteFileA(nullptr));
    EXPECT_TRUE(DeleteFileA(file.c_str()));
    EXPECT_FALSE(std::filesystem::exists(file));
    EXPECT_EQ(CountHandles(HandleKind::File), filesBefore_);
}

TEST_F(FileTest, WhatWasWrittenComesBackFromEveryPosition) {
    const std::string path = In("round trip");
    std::string bytes(100'000, '\0');
    std::mt19937 random(5);
    for (char &byte : bytes) byte = static_cast<char>(random());
    DWORD count = 0, high = 7;
    const HANDLE file = Open(path, GENERIC_READ | GENERIC_WRITE, CREATE_ALWAYS);
    ASSERT_TRUE(WriteFile(file, bytes.data(), 60'000, &count, nullptr));
    EXPECT_EQ(count, 60'000u);
    ASSERT_TRUE(WriteFile(file, bytes.data() + 60'000, 40'000, nullptr, nullptr));
    EXPECT_EQ(GetFileSize(file, &high), 100'000u);
    EXPECT_EQ(high, 0u);
    std::string read(200'000, '?');
    for (const LONG start : {0, 1, 99'999, 100'000, 150'000}) {
        EXPECT_EQ(SetFilePointer(file, start, nullptr, FILE_BEGIN), static_cast<DWORD>(start));
        ASSERT_TRUE(ReadFile(file, read.data(), 200'000, &count, nullptr));
        const std::string expected = start < 100'000 ? bytes.substr(static_cast<size_t>(start)) : "";
        EXPECT_TRUE(std::string_view(read).substr(0, count) == expected) << start << ": " << count;
    }
    EXPECT_TRUE(CloseHandle(file));
    EXPECT_TRUE(Content(path) == bytes);
}

TEST_F(FileTest, PositionsMoveAsPublishedAndStayWhereAMoveFails) {
    const HANDLE file = Open(Make("positions", "0123456789"), GENERIC_READ, OPEN_EXISTING);
    const auto move = [file](LONG distance, LONG high, DWORD method) {
        SetLastError(1);
        const DWORD low = SetFilePointer(file, distance, &high, method);
        return low == INVALID_SET_FILE_POINTER && GetLastError() != 0
                   ? -static_cast<int64_t>(GetLastError())
                   : static_cast<int64_t>(static_cast<uint64_t>(high) << 32 | low);
    };
    EXPECT_EQ(move(4, 0, FILE_BEGIN), 4);
    EXPECT_EQ(move(-1, -1, FILE_CURRENT), 3);
    EXPECT_EQ(move(-4, -1, FILE_CURRENT), -131);
    EXPECT_EQ(move(0, 0, FILE_CURRENT), 3);
    EXPECT_EQ(move(2, 0, 3), -87);
    EXPECT_EQ(move(-1, 0x7FFFFFFF, FILE_END), -87) << "beyond what 64 bits hold";
    EXPECT_EQ(move(-2, -1, FILE_END), 8);
    EXPECT_EQ(move(-1, 0, FILE_BEGIN), 0xFFFFFFFF);
    EXPECT_EQ(SetFilePointer(file, 1, nullptr, FILE_CURRENT), INVALID_SET_FILE_POINTER)
        << "needs a high part";
    EXPECT_EQ(GetLastError(), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(move(0, 0, FILE_CURRENT), 0xFFFFFFFF);
    CloseHandle(file);
}

TEST_F(FileTest, TransfersRefuseWhatTheHandleOrTheArgumentsForbid) {
    const std::string path = Make("guarded", "0123456789");
    const HANDLE reader = Open(path, GENERIC_READ, OPEN_EXISTING);
    const HANDLE writer = Open(path, GENERIC_WRITE, OPEN_EXISTING);
    const HANDLE looker = Open(path, 0, OPEN_EXISTING);
    char buffer[4] = "abc";
    DWORD count = 9;
    const auto reads = [&](HANDLE file, void *to, void *overlapped) {
        return ReadFile(file, to, 3, &count, overlapped) ? 0 : GetLastError();
    };
    EXPECT_EQ(reads(writer, buffer, nullptr), ERROR_ACCESS_DENIED);
    EXPECT_EQ(reads(looker, buffer, nullptr), ERROR_ACCESS_DENIED);
    EXPECT_EQ(reads(reader, nullptr, nullptr), ERROR_INVALID_PARAMETER);
    EXPECT_EQ(reads(reader, buffer, buffer), ERROR_INVALID_PARAMETER);
    FailOnce(Operation::File, 1);
    EXPECT_EQ(reads(reader, buffer, nullptr), 31u);
    ForgetFailures();
    EXPECT_EQ(count, 0u);
    EXPECT_STREQ(buffer, "abc");
    EXPECT_FALSE(WriteFile(reader, "xyz", 3, &count, nullptr));
    EXPECT_EQ(GetLastError(), ERROR_ACCESS_DENIED);
    EXPECT_EQ(Content(path), "0123456789");
    EXPECT_EQ(GetFileSize(looker, nullptr), 10u);
    for (const HANDLE file : {reader, writer, looker}) EXPECT_TRUE(CloseHandle(file));
}

TEST_F(FileTest, APipeWithoutAWriterHoldsNobodyAndGivesWhatItHas) {
    ASSERT_EQ(mkfifo(In("pipe").c_str(), 0600), 0);
    const HANDLE reader = Open(In("pipe"), GENERIC_READ, OPEN_EXISTING);
    ASSERT_NE(reader, INVALID_HANDLE_VALUE);
    char buffer[100];
    DWORD count = 9;
    EXPECT_TRUE(ReadFile(reader, buffer, sizeof buffer, &count, nullptr));
    EXPECT_EQ(count, 0u);
    const HANDLE writer = Open(In("pipe"), GENERIC_WRITE, OPEN_EXISTING);
    EXPECT_TRUE(WriteFile(writer, "drops", 5, nullptr, nullptr));
    EXPECT_TRUE(ReadFile(reader, buffer, sizeof buffer, &count, nullptr)) << "would wait if it asked twice";
    EXPECT_EQ(std::string(buffer, count), "drops");
    EXPECT_EQ(GetFileSize(reader, nullptr), INVALID_FILE_SIZE);
    CloseHandle(reader);
    CloseHandle(writer);
}

// The judge is the system: both names must lead to the same file, and the one found must be free of detours.
TEST_F(FileTest, FullPathsNameTheSameFileWithoutDetours) {
    Make("folder/target", "x");
    std::filesystem::create_directories(In("far/away"));
    std::filesystem::create_directory_symlink(In("far/away"), In("folder/link"));
    Make("far/sibling", "y");
    const std::string old = std::filesystem::current_path();
    std::filesystem::current_path(In("folder"));
    char buffer[1024];
    char *part = nullptr;
    for (const std::string &path :
         {std::string("target"), std::string("./target"), std::string("../folder//target"),
          std::string("link/../../folder/./target"), std::string("link/../sibling"),
          In("folder/../folder/target"), "/.." + In("folder/target")}) {
        const DWORD length = GetFullPathNameA(path.c_str(), sizeof buffer, buffer, &part);
        struct stat found {
        }, expected{};
        ASSERT_EQ(length, std::strlen(buffer)) << path;
        ASSERT_EQ(stat(path.c_str(), &expected), 0) << path;
        ASSERT_EQ(stat(buffer, &found), 0) << path << " -> " << buffer;
        EXPECT_EQ(found.st_ino, expected.st_ino) << path << " -> " << buffer;
        EXPECT_EQ(buffer[0], '/');
        EXPECT_EQ(std::string(buffer).find("/./"), std::string::npos) << buffer;
        EXPECT_EQ(std::string(buffer).find("//"), std::string::npos) << buffer;
        EXPECT_EQ(std::string(part), std::filesystem::path(path).filename()) << path;
    }
    std::filesystem::current_path(old);
}

TEST_F(FileTest, FullPathsReportTheRoomTheyNeed) {
    const std::pair<const char *, const char *> cases[] = {
        {"/", "/"}, {"/a/../../b/", "/b/"}, {"//x/./y", "/x/y"}, {"/..", "/"}, {"/a/b/..", "/a"}};
    for (const auto &[path, expected] : cases) {
        char buffer[16] = "unchanged";
        char *part = buffer;
        const auto length = static_cast<DWORD>(std::strlen(expected));
        EXPECT_EQ(GetFullPathNameA(path, length, buffer, &part), length + 1) << path;
        EXPECT_STREQ(buffer, "unchanged");
        EXPECT_EQ(GetFullPathNameA(path, 0, nullptr, nullptr), length + 1) << path;
        EXPECT_EQ(GetFullPathNameA(path, length + 1, buffer, &part), length) << path;
        EXPECT_STREQ(buffer, expected);
        EXPECT_EQ(part == nullptr, expected[length - 1] == '/') << path;
    }
    EXPECT_EQ(GetFullPathNameA("", 10, nullptr, nullptr), 0u);
    EXPECT_EQ(GetFullPathNameA(nullptr, 10, nullptr, nullptr), 0u);
    FailOnce(Operation::File, 1);
    EXPECT_EQ(GetFullPathNameA("/a", 0, nullptr, nullptr), 0u);
    EXPECT_EQ(GetLastError(), ERROR_PATH_NOT_FOUND);
    ForgetFailures();
}

TEST_F(FileTest, TheTemporaryDirectoryIsTheUsersOwnOrNone) {
    const char *old = getenv("TMPDIR");
    const std::string oldText = old == nullptr ? "" : old;
    setenv("TMPDIR", base_.c_str(), 1);
    char buffer[1024] = "unchanged";
    const DWORD needed = GetTempPathA(0, nullptr);
    EXPECT_EQ(GetTempPathA(needed - 1, buffer), needed);
    EXPECT_STREQ(buffer, "unchanged");
    ASSERT_EQ(GetTempPathA(needed, buffer), needed - 1);
    const std::string path = buffer;
    EXPECT_EQ(path.size(), needed - 1);
    EXPECT_EQ(path.rfind(base_ + "/", 0), 0u) << path;
    EXPECT_TRUE(path.ends_with('/'));
    struct stat about {};
    chmod(path.c_str(), 0777);
    EXPECT_EQ(GetTempPathA(sizeof buffer, buffer), needed - 1);
    ASSERT_EQ(stat(buffer, &about), 0);
    EXPECT_EQ(about.st_mode & 07777, 0700u) << "closed again";
    std::filesystem::remove(path.substr(0, path.size() - 1));
    std::filesystem::create_directory_symlink(In("folder"), path.substr(0, path.size() - 1));
    EXPECT_NE(GetTempPathA(sizeof buffer, buffer), 0u);
    EXPECT_NE(std::string(buffer), path) << "a link is not trusted";
    FailOnce(Operation::File, 1);
    EXPECT_EQ(GetTempPathA(sizeof buffer, buffer), 0u);
    ForgetFailures();
    if (old == nullptr) {
        unsetenv("TMPDIR");
    } else {
        setenv("TMPDIR", oldText.c_str(), 1);
    }
}

}  // namespace
}  // namespace fenlight::platform
