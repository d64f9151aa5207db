// SPDX-License-Identifier: Zlib
#include "fenlight/internet.h"

#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "internet/probe.h"
#include "platform/net/local_server.h"
#include "platform/system/failure_point.h"
#include "platform/system/user_directory.h"

namespace fenlight {
namespace {

std::string Content(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

TEST(Internet, TheProbeAsksAnewEachTimeAndItsFileStays) {
    using platform::LocalServer;
    std::atomic<int> asked{0};
    std::atomic<const char *> status{"200 OK"};
    const LocalServer server([&](int connection, const std::string &) {
        LocalServer::Send(connection, LocalServer::Page(std::to_string(++asked), status));
    });
    const std::string url = server.Url("/index.html");
    const std::string file = platform::UserTempDirectory() + "fenlight_itest";
    SetProbeAddress(url.c_str());
    EXPECT_EQ(IsInternet(), 1);
    EXPECT_EQ(Content(file), "1");
    status = "503 Service Unavailable";
    EXPECT_EQ(IsInternet(), 0);
    EXPECT_EQ(Content(file), "1");
    status = "200 OK";
    EXPECT_EQ(IsInternet(), 1);
    EXPECT_EQ(Content(file), "3");

    platform::FailFrom(platform::Operation::File, 1);  // no directory for temporary files
    EXPECT_EQ(IsInternet(), 0);
    platform::ForgetFailures();
    EXPECT_EQ(asked, 3);
    EXPECT_EQ(DownloadHttpFile(url.c_str(), file.c_str()), 0);
    EXPECT_EQ(Content(file), "4");
    SetProbeAddress(nullptr);
}

TEST(Internet, WithoutAServerNothingIsThere) {
    const platform::LocalServer refusing(nullptr);
    const std::string url = refusing.Url("/index.html");
    SetProbeAddress(url.c_str());
    EXPECT_EQ(IsInternet(), 0);
    EXPECT_LT(DownloadHttpFile(url.c_str(), "never"), 0);
    EXPECT_FALSE(std::filesystem::exists("never"));
    SetProbeAddress(nullptr);
}

}  // namespace
}  // namespace fenlight
