// SPDX-License-Identifier: Zlib
#include "output_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include "failure.h"

namespace fenpack {
namespace {

constexpr std::array kEndingSignals{SIGINT, SIGTERM, SIGHUP};

// What a signal removes. The path is there before it is said to be.
std::array<char, 4096> temporaryToRemove;
volatile std::sig_atomic_t hasTemporary = 0;

void RemoveAndEnd(int signal) {
    if (hasTemporary != 0) unlink(temporaryToRemove.data());
    std::signal(signal, SIG_DFL);
    std::raise(signal);
}

void RemoveOnSignal(const std::string &path) {
    if (path.size() >= temporaryToRemove.size()) return;
    std::memcpy(temporaryToRemove.data(), path.c_str(), path.size() + 1);
    std::atomic_signal_fence(std::memory_order_release);
    hasTemporary = 1;
    for (const int signal : kEndingSignals) {
        if (std::signal(signal, RemoveAndEnd) == SIG_IGN) std::signal(signal, SIG_IGN);
    }
}

bool Exists(const std::string &path) {
    struct stat about;
    return lstat(path.c_str(), &about) == 0;
}

Failure AlreadyThere(const std::string &path) {
    return Failure(path + ": already there (--force replaces it)");
}

}  // namespace

OutputFile::OutputFile(const std::string &path, mode_t mode, bool mayReplace)
    : path_(path), temporary_(path + ".XXXXXX"), mayReplace_(mayReplace) {
    if (!mayReplace_ && Exists(path_)) throw AlreadyThere(path_);
    file_ = mkostemp(temporary_.data(), O_CLOEXEC);
    if (file_ < 0) throw SystemFailure(path_);
    RemoveOnSignal(temporary_);
    fchmod(file_, mode);
}

OutputFile::~OutputFile() {
    if (file_ >= 0) {
        close(file_);
        unlink(temporary_.c_str());
    }
    hasTemporary = 0;
}

void OutputFile::Write(std::span<const uint8_t> bytes) {
    while (!bytes.empty()) {
        const ssize_t written = write(file_, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written < 0) throw SystemFailure(path_);
        bytes = bytes.subspan(static_cast<size_t>(written));
    }
}

// Not every file system can refuse to replace in the same step; there the look before must do.
void OutputFile::Publish() {
    const char *const from = temporary_.c_str();
    const char *const to = path_.c_str();
    if (!mayReplace_) {
        if (renameat2(AT_FDCWD, from, AT_FDCWD, to, RENAME_NOREPLACE) == 0) return;
        if (errno == EEXIST || Exists(path_)) throw AlreadyThere(path_);
        if (errno != EINVAL && errno != ENOSYS) throw SystemFailure(path_);
    }
    if (std::rename(from, to) != 0) throw SystemFailure(path_);
}

void OutputFile::Finish() {
    if (fsync(file_) != 0 && errno != EINVAL) throw SystemFailure(path_);
    Publish();
    close(file_);
    file_ = -1;
}

}  // namespace fenpack
