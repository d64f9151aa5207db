// SPDX-License-Identifier: Zlib
#include "processes.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

extern char **environ;

namespace fenlight::test {
namespace {

constexpr int kStartDeadlineMs = 30'000;

// The exit code as the shell has it. The output goes through a file and not through a pipe: SDL's message box
// forks, and its child would hold a pipe open that was being made at that moment.
int RunCommand(const std::string &command, std::string &output) {
    std::filesystem::create_directories(FENLIGHT_TEST_OUTPUT);
    const std::string path = std::string(FENLIGHT_TEST_OUTPUT "/window-output-") + std::to_string(getpid());
    const int status = std::system(("{ " + command + "; } >" + path).c_str());
    std::ifstream file(path, std::ios::binary);
    output.assign(std::istreambuf_iterator<char>(file), {});
    std::filesystem::remove(path);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string ReadLine(int file) {
    std::string line;
    pollfd ready{file, POLLIN, 0};
    char c = 0;
    while (poll(&ready, 1, kStartDeadlineMs) > 0 && read(file, &c, 1) == 1 && c != '\n') line += c;
    return line;
}

uint32_t BigEndian(const std::string &bytes, size_t word) {
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i) value = value << 8 | static_cast<uint8_t>(bytes[word * 4 + i]);
    return value;
}

// An XWD file with 24 colour bits in little-endian 32-bit pixels, as Xvfb has them.
Picture ParseXwd(const std::string &bytes) {
    if (bytes.size() < 100) return {};
    const uint32_t width = BigEndian(bytes, 4);
    const uint32_t height = BigEndian(bytes, 5);
    const uint32_t rowBytes = BigEndian(bytes, 12);
    const size_t start = BigEndian(bytes, 0) + size_t{12} * BigEndian(bytes, 19);
    const bool isKnown = BigEndian(bytes, 7) == 0 && BigEndian(bytes, 11) == 32;
    if (!isKnown || bytes.size() != start + size_t{rowBytes} * height) return {};
    Picture picture(static_cast<int>(width), static_cast<int>(height));
    for (uint32_t y = 0; y < height; ++y) {
        std::copy_n(bytes.data() + start + size_t{rowBytes} * y, size_t{width} * 4,
                    reinterpret_cast<char *>(&picture.At(0, static_cast<int>(y))));
    }
    return picture;
}

}  // namespace

bool IsRunBySelf() { return std::getenv("FENLIGHT_RUN_BY_SELF") != nullptr; }

int RunSelf(const std::string &filter, const std::vector<std::string> &variables) {
    std::string command = "FENLIGHT_RUN_BY_SELF=1 ";
    for (const std::string &variable : variables) command += variable + ' ';
    command += std::filesystem::read_symlink("/proc/self/exe").string();
    command += " --gtest_also_run_disabled_tests --gtest_output= --gtest_filter='" + filter + "' 2>&1";
    std::string output;
    const int status = RunCommand(command, output);
    if (status != 0) std::printf("%s\n%s\n", command.c_str(), output.c_str());
    return status;
}

std::string OutputOf(const std::string &command) {
    std::string output;
    return RunCommand(command + " 2>/dev/null", output) == 0 ? output : std::string();
}

bool IsInstalled(const std::string &program) { return !OutputOf("command -v " + program).empty(); }

XServer::XServer() {
    int ends[2];
    if (pipe(ends) != 0) return;
    fcntl(ends[0], F_SETFD, FD_CLOEXEC);
    const std::string numberFile = std::to_string(ends[1]);
    const char *arguments[] = {"Xvfb",      "-displayfd", numberFile.c_str(), "-screen", "0", "800x600x24",
                               "-nolisten", "tcp",        "-terminate",       nullptr};
    if (posix_spawnp(&process_, "Xvfb", nullptr, nullptr, const_cast<char **>(arguments), environ) != 0)
        process_ = -1;
    close(ends[1]);
    if (process_ > 0) {
        if (const std::string number = ReadLine(ends[0]); !number.empty()) display_ = ":" + number;
    }
    close(ends[0]);
}

XServer::~XServer() {
    if (process_ <= 0) return;
    kill(process_, SIGTERM);
    waitpid(process_, nullptr, 0);
}

Picture WindowOnScreen(const std::string &name) {
    return ParseXwd(OutputOf("xwd -silent -name '" + name + "'"));
}

}  // namespace fenlight::test
