// SPDX-License-Identifier: Zlib
// Downloads from a server of our own on this machine, well-behaved and not.
#include "platform/net/download.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "platform/net/download_result.h"
#include "platform/net/local_server.h"
#include "platform/net/target_file.h"
#include "platform/system/failure_point.h"

namespace fenlight::platform {
namespace {

constexpr HRESULT kDenied = static_cast<HRESULT>(0x80070005), kNoPath = static_cast<HRESULT>(0x80070003);

std::string MakeBody() {
    std::string body(300'000, '\0');
    std::mt19937 random(9);
    for (char &byte : body) byte = static_cast<char>(random());
    return body;
}
const std::string kBody = MakeBody();

std::string RedirectTo(const std::string &place) {
    return "HTTP/1.1 302 Found\r\nLocation: " + place +
           "\r\nContent-Length: 5\r\nConnection: close\r\n\r\nmoved";
}

// In four seconds, longer than a test that asks for it bears silence.
void SendSlowly(int connection) {
    const size_t piece = kBody.size() / 16;
    LocalServer::Send(connection, "HTTP/1.1 200 OK\r\nContent-Length: 300000\r\n\r\n");
    for (size_t at = 0; at < kBody.size(); at += piece) {
        std::this_thread::sleep_for(std::chrono::milliseconds(250));
        LocalServer::Send(connection, kBody.substr(at, piece));
    }
}

class DownloadTest : public testing::Test {
  protected:
    DownloadTest() {
        std::filesystem::remove_all(base_);
        std::filesystem::create_directories(base_ + "/folder");
    }

    void Answer(int connection, const std::string &request) {
        const std::string path = request.substr(4, request.find(' ', 4) - 4);
        const auto send = [=](const std::string &text) { LocalServer::Send(connection, text); };
        if (path == "/page" || path == "/two%20words") return send(LocalServer::Page(kBody));
        if (path == "/empty") return send(LocalServer::Page(""));
        if (path == "/chunked") {
            return send(
                "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3\r\nabc\r\n2\r\nde\r\n0\r\n\r\n");
        }
        if (path == "/request") return send(LocalServer::Page(request));
        if (path == "/listed") return send(LocalServer::Page(std::to_string(CountFiles())));
        if (path == "/counted") return send(LocalServer::Page(std::to_string(++counted_)));
        if (path == "/moved") return send(RedirectTo("/page"));
        if (path == "/loop") return send(RedirectTo("/loop"));
        if (path == "/to-file") return send(RedirectTo("file://" + base_ + "/secret"));
        if (path == "/to-nonsense") return send(RedirectTo("http://[nonsense"));
        if (path == "/nowhere") return send("HTTP/1.1 302 Found\r\nContent-Length: 5\r\n\r\nmoved");
        if (path == "/locked") return send(LocalServer::Page("who are you", "401 Unauthorized"));
        if (path == "/broken") return send(LocalServer::Page("broken", "500 Internal Server Error"));
        if (path == "/cut") return send("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nfour");
        if (path == "/cut-chunk") {
            return send("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n9\r\nfour");
        }
        if (path == "/garbage") return send(kBody.substr(0, 1000));
        if (path == "/silent") return LocalServer::AwaitEnd(connection);
        if (path == "/stalls") {
            send("HTTP/1.1 200 OK\r\nContent-Length: 9\r\n\r\nfour");
            return LocalServer::AwaitEnd(connection);
        }
        if (path == "/slow") return SendSlowly(connection);
        send(LocalServer::Page("no such page", "404 Not Found"));
    }

    std::string In(const char *name) const { return base_ + "/" + name; }
    HRESULT Fetch(const std::string &url, const std::string &target,
                  const Patience &patience = {5, 3}) const {
        return DownloadToFile(url.c_str(), target.c_str(), patience);
    }
    std::string Content(const char *name) const {
        std::ifstream file(In(name), std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }
    ptrdiff_t CountFiles() const {
        const std::filesystem::directory_iterator files(base_);
        return std::distance(begin(files), end(files));
    }

    const std::string base_ = std::string(FENLIGHT_TEST_OUTPUT) + "/downloads";
    int counted_ = 0;
    LocalServer server_{[this](int connection, const std::string &request) { Answer(connection, request); }};
};

TEST_F(DownloadTest, PagesArriveWholeAndAsTheyAreNow) {
    for (const char *path : {"/page", "/moved", "/two words", "/slow", "/page#part"}) {
        ASSERT_EQ(Fetch(server_.Url(path), In("target")), 0) << path;
        ASSERT_TRUE(Content("target") == kBody) << path;
    }
    const struct {
        const char *path, *content;
    } cases[] = {{"/empty", ""}, {"/chunked", "abcde"}, {"/counted", "1"}, {"/counted", "2"}};
    for (const auto &c : cases) {
        ASSERT_EQ(Fetch(server_.Url(c.path), In("target")), 0) << c.path;
        EXPECT_EQ(Content("target"), c.content);
    }
    ASSERT_EQ(Fetch(server_.Url("/request"), In("target")), 0);
    EXPECT_NE(Content("target").find("\r\nCache-Control: no-cache\r\n"), std::string::npos);
    EXPECT_EQ(CountFiles(), 2);
}

TEST_F(DownloadTest, FailuresSayWhyAndLeaveWhatStoodThere) {
    std::ofstream(In("secret")) << "secret";
    const LocalServer refusing(nullptr);
    const struct {
        std::string url;
        HRESULT result;
    } cases[] = {{server_.Url("/missing"), kPageNotFound},
                 {server_.Url("/locked"), kLoginRequired},
                 {server_.Url("/broken"), kDownloadFailed},
                 {server_.Url("/loop"), kRedirectFailed},
                 {server_.Url("/to-file"), kRedirectFailed},
                 {server_.Url("/to-nonsense"), kRedirectFailed},
                 {server_.Url("/nowhere"), kRedirectFailed},
                 {server_.Url("/cut"), kDownloadFailed},
                 {server_.Url("/cut-chunk"), kDownloadFailed},
                 {server_.Url("/garbage"), kUnknownProtocol},
                 {server_.Url("/silent"), kTimedOut},
                 {server_.Url("/stalls"), kTimedOut},
                 {refusing.Url("/page"), kCannotConnect},
                 {"file://" + In("secret"), kUnknownProtocol},
                 {"gophers://host/", kUnknownProtocol},
                 {"ftp://127.0.0.1/page", kUnknownProtocol},
                 {"127.0.0.1/page", kInvalidAddress},
                 {"http://", kInvalidAddress},
                 {"http://127.0.0.1:70000/", kInvalidAddress},
                 {"http://127.0.0.1/\r\nHost: other", kInvalidAddress},
                 {"", kInvalidAddress}};
    for (const auto &c : cases) {
        std::ofstream(In("standing")) << "stands";
        EXPECT_EQ(Fetch(c.url, In("standing"), {5, 1}), c.result) << c.url;
        EXPECT_EQ(Content("standing"), "stands") << c.url;
        std::filesystem::remove(In("standing"));
        if (c.result == kTimedOut) continue;
        EXPECT_EQ(Fetch(c.url, In("absent"), {5, 1}), c.result) << c.url;
        EXPECT_EQ(CountFiles(), 2) << c.url;
    }
    EXPECT_EQ(DownloadToFile(nullptr, In("absent").c_str()), kInvalidAddress);
    EXPECT_EQ(DownloadToFile(server_.Url("/page").c_str(), nullptr), static_cast<HRESULT>(0x80070057));
}

TEST_F(DownloadTest, TargetsAreReplacedWithCareOrRefused) {
    const std::string url = server_.Url("/page");
    ASSERT_EQ(mkfifo(In("pipe").c_str(), 0600), 0);
    for (const auto &[target, result] : std::vector<std::pair<std::string, HRESULT>>{
             {In("folder"), kDenied}, {In("pipe"), kDenied}, {In("missing/file"), kNoPath}, {"", kNoPath}}) {
        EXPECT_EQ(Fetch(url, target), result) << target;
    }
    EXPECT_TRUE(std::filesystem::is_fifo(In("pipe")));

    std::ofstream(In("folder/real")) << "old";
    chmod(In("folder/real").c_str(), 0640);
    std::filesystem::create_symlink("folder/real", In("link"));
    EXPECT_EQ(Fetch(url, In("link")), 0);
    EXPECT_TRUE(std::filesystem::is_symlink(In("link")));
    EXPECT_TRUE(Content("folder/real") == kBody);
    struct stat about {};
    EXPECT_EQ(stat(In("folder/real").c_str(), &about), 0);
    EXPECT_EQ(about.st_mode & 0777, 0640U);
}

TEST_F(DownloadTest, AFileThatGrowsHasNoNameWhereThatCanBe) {
    const int nameless = open(base_.c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, 0600);
    if (nameless >= 0) {
        close(nameless);
        EXPECT_EQ(Fetch(server_.Url("/listed"), In("target")), 0);
        EXPECT_EQ(Content("target"), "1") << "only the folder";
        std::filesystem::remove(In("target"));
    }
    for (const bool isKept : {false, true}) {
        TargetFile file("/no files are listed here/");
        EXPECT_EQ(file.Open(In("target").c_str()) + file.Write("abc", 3), 0u);
        EXPECT_EQ(CountFiles(), 2) << "it has a name of its own";
        EXPECT_FALSE(std::filesystem::exists(In("target")));
        if (isKept) {
            EXPECT_EQ(file.Keep(), 0u);
        }
    }
    EXPECT_EQ(Content("target"), "abc");
    EXPECT_EQ(CountFiles(), 2);
    struct stat about {};
    const mode_t mask = umask(0);
    umask(mask);
    EXPECT_EQ(stat(In("target").c_str(), &about), 0);
    EXPECT_EQ(about.st_mode & 0777, 0666U & ~mask);
}

TEST_F(DownloadTest, EveryOperationThatCanFailLeavesNothingBehind) {
    for (const Operation operation : {Operation::Download, Operation::Memory, Operation::File}) {
        HRESULT result = -1;
        int failures = 0;
        for (; result != 0 && failures < 1000; ++failures) {
            FailOnce(operation, failures + 1);
            result = Fetch(server_.Url("/page"), In("target"));
            EXPECT_EQ(std::filesystem::exists(In("target")), result == 0);
            EXPECT_EQ(CountFiles(), result == 0 ? 2 : 1);
        }
        ForgetFailures();
        // Files are opened, written in pieces and renamed.
        EXPECT_GE(failures, operation == Operation::File ? 4 : 2);
        std::filesystem::remove(In("target"));
    }
}

TEST_F(DownloadTest, ManyThreadsDownloadAtOnce) {
    std::vector<HRESULT> results(8, -1);
    std::vector<std::thread> threads;
    for (size_t i = 0; i < results.size(); ++i) {
        threads.emplace_back([&, i] { results[i] = Fetch(server_.Url("/page"), In("target")); });
    }
    for (std::thread &thread : threads) thread.join();
    EXPECT_EQ(results, std::vector<HRESULT>(8, 0));
    EXPECT_TRUE(Content("target") == kBody);
    EXPECT_EQ(CountFiles(), 2);
}

}  // namespace
}  // namespace fenlight::platform
