// SPDX-License-Identifier: Zlib
#include "platform/system/lock_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdint>
#include <string>

#include "platform/system/user_directory.h"

namespace fenlight::platform {
namespace {

constexpr size_t kLongestFileName = 200;  // file systems allow 255

// Letters and digits stay, any other byte becomes %XX: different names never meet, and none can leave the
// directory. A name too long for that is told apart by a hash of the whole.
std::string FileNameOf(std::string_view name) {
    constexpr char kHex[] = "0123456789ABCDEF";
    std::string result = "fenlight-semaphore-";
    uint64_t hash = 14695981039346656037u;  // FNV-1a
    for (const char letter : name) {
        const auto byte = static_cast<unsigned char>(letter);
        hash = (hash ^ byte) * 1099511628211u;
        if (byte < 0x80 && std::isalnum(byte) != 0) {
            result += letter;
        } else {
            result.append({'%', kHex[byte >> 4], kHex[byte & 15]});
        }
    }
    if (result.size() <= kLongestFileName) return result;
    result.resize(kLongestFileName - 17);
    result += '-';
    for (int shift = 60; shift >= 0; shift -= 4) result += kHex[(hash >> shift) & 15];
    return result;
}

enum class Answer { Locked, Taken, Interrupted };

// A file system that cannot lock must not stop the program, so any other failure counts as locked.
Answer Ask(int descriptor, int command) {
    struct flock whole {};
    whole.l_type = F_WRLCK;
    whole.l_whence = SEEK_SET;
    if (fcntl(descriptor, command, &whole) == 0) return Answer::Locked;
    if (errno == EINTR) return Answer::Interrupted;
    // The system looks for rings of waiting processes and takes all threads of a process for one; what it
    // takes for a deadlock may dissolve.
    return errno == EAGAIN || errno == EACCES || errno == EDEADLK ? Answer::Taken : Answer::Locked;
}

void SleepMilliseconds(long milliseconds) {
    const timespec length{0, milliseconds * 1'000'000};
    nanosleep(&length, nullptr);
}

}  // namespace

void LockFile::Open(std::string_view name) {
    const std::string directory = UserRuntimeDirectory();
    if (directory.empty()) return;
    const std::string path = directory + FileNameOf(name);
    const int descriptor =
        open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY, 0600);
    if (descriptor < 0) return;
    struct stat about {};
    if (fstat(descriptor, &about) == 0 && S_ISREG(about.st_mode) && about.st_uid == geteuid()) {
        descriptor_ = descriptor;
    } else {
        close(descriptor);
    }
}

bool LockFile::TryLock() noexcept { return !IsOpen() || Ask(descriptor_, F_SETLK) == Answer::Locked; }

bool LockFile::Lock(const Deadline &deadline) noexcept {
    constexpr long kLongestPause = 5;
    for (long pause = 1; !TryLock(); pause = std::min(pause * 2, kLongestPause)) {
        if (deadline.HasPassed()) return false;
        if (deadline.IsEndless() && Ask(descriptor_, F_SETLKW) == Answer::Locked) return true;
        SleepMilliseconds(pause);
    }
    return true;
}

void LockFile::Unlock() noexcept {
    if (!IsOpen()) return;
    struct flock whole {};
    whole.l_type = F_UNLCK;
    whole.l_whence = SEEK_SET;
    (void)fcntl(descriptor_, F_SETLK, &whole);
}

}  // namespace fenlight::platform
