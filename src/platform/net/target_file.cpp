// SPDX-License-Identifier: Zlib
#include "platform/net/target_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <utility>

#include "fenlight/platform/system.h"
#include "platform/system/failure_point.h"
#include "platform/system/system_error.h"

namespace fenlight::platform {
namespace {

std::string FullPath(const char *fileName) {
    std::error_code error;
    std::filesystem::path path = std::filesystem::canonical(fileName, error);
    // From the root, so that the program may change its directory meanwhile.
    if (error) path = std::filesystem::absolute(fileName, error);
    return error ? std::string() : path.string();
}

// A name that no file of this process has had; one that a process before it left behind is passed over.
std::string NextNameIn(const std::string &folder) {
    static std::atomic<unsigned> lastNumber{0};
    const unsigned number = lastNumber.fetch_add(1, std::memory_order_relaxed) + 1;
    return folder + ".fenlight-" + std::to_string(getpid()) + '-' + std::to_string(number);
}

}  // namespace

TargetFile::~TargetFile() {
    if (descriptor_ >= 0) close(descriptor_);
    if (!written_.empty()) unlink(written_.c_str());
}

DWORD TargetFile::Open(const char *fileName) {
    if (OperationFails(Operation::File)) return ERROR_ACCESS_DENIED;
    target_ = FullPath(fileName);
    const DWORD error = JudgeTarget();
    return error != ERROR_SUCCESS ? error : MakeBeside();
}

// Renaming needs no right to the file that it replaces, and would replace a device as well.
DWORD TargetFile::JudgeTarget() {
    struct stat about {};
    if (target_.empty() || target_.back() == '/') return ERROR_PATH_NOT_FOUND;
    if (stat(target_.c_str(), &about) != 0) {
        return errno == ENOENT ? ERROR_SUCCESS : ErrorFromErrno(errno, target_.c_str());
    }
    if (!S_ISREG(about.st_mode)) return ERROR_ACCESS_DENIED;
    if (faccessat(AT_FDCWD, target_.c_str(), W_OK, AT_EACCESS) != 0) return ErrorFromErrno(errno, nullptr);
    keptMode_ = about.st_mode & 0777;
    return ERROR_SUCCESS;
}

template <class Make>
DWORD TargetFile::NameBeside(Make make) {
    constexpr int kTries = 1000;
    for (int i = 0; i < kTries; ++i) {
        std::string name = NextNameIn(Folder());
        if (make(name.c_str())) {
            written_ = std::move(name);
            return ERROR_SUCCESS;
        }
        if (errno != EEXIST) return ErrorFromErrno(errno, name.c_str());
    }
    return ErrorFromErrno(EEXIST, nullptr);
}

// Where the file system cannot do it, or the way to a name later is missing, the file gets its name now.
bool TargetFile::MakeNameless() {
    descriptor_ = open(Folder().c_str(), O_WRONLY | O_TMPFILE | O_CLOEXEC, 0666);
    if (descriptor_ >= 0 && access(OpenFilePath().c_str(), F_OK) != 0) close(std::exchange(descriptor_, -1));
    return descriptor_ >= 0;
}

DWORD TargetFile::MakeBeside() {
    const auto makeNamed = [this](const char *name) {
        descriptor_ = open(name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        return descriptor_ >= 0;
    };
    const DWORD error = MakeNameless() ? ERROR_SUCCESS : NameBeside(makeNamed);
    if (error == ERROR_SUCCESS && keptMode_ != 0) (void)fchmod(descriptor_, keptMode_);
    return error;
}

// Nothing that exists can be replaced by linking: the name comes first, the target's place then.
DWORD TargetFile::GiveName() {
    if (!written_.empty()) return ERROR_SUCCESS;
    const std::string file = OpenFilePath();
    return NameBeside([&file](const char *name) {
        return linkat(AT_FDCWD, file.c_str(), AT_FDCWD, name, AT_SYMLINK_FOLLOW) == 0;
    });
}

DWORD TargetFile::Write(const char *bytes, size_t count) noexcept {
    if (OperationFails(Operation::File)) return ErrorFromErrno(ENOSPC, nullptr);
    while (count > 0) {
        const ssize_t moved = write(descriptor_, bytes, count);
        if (moved < 0 && errno == EINTR) continue;
        if (moved < 0) return ErrorFromErrno(errno, nullptr);
        bytes += moved;
        count -= static_cast<size_t>(moved);
    }
    return ERROR_SUCCESS;
}

DWORD TargetFile::Keep() {
    if (OperationFails(Operation::File)) return ERROR_ACCESS_DENIED;
    if (const DWORD error = GiveName(); error != ERROR_SUCCESS) return error;
    // Some file systems tell only here that the disk is full.
    if (close(std::exchange(descriptor_, -1)) != 0 && errno != EINTR) return ErrorFromErrno(errno, nullptr);
    if (std::rename(written_.c_str(), target_.c_str()) != 0) return ErrorFromErrno(errno, target_.c_str());
    written_.clear();
    return ERROR_SUCCESS;
}

}  // namespace fenlight::platform
