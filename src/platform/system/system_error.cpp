// SPDX-License-Identifier: Zlib
#include "platform/system/system_error.h"

#include <sys/stat.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <cstring>

#include "fenlight/platform/system.h"

namespace fenlight::platform {
namespace {

constexpr uint32_t kGeneralFailure = 31;

struct Pair {
    int fromSystem;
    uint32_t published;
};

constexpr Pair kPairs[] = {
    {EACCES, ERROR_ACCESS_DENIED},
    {EPERM, ERROR_ACCESS_DENIED},
    {EISDIR, ERROR_ACCESS_DENIED},
    {ENOTDIR, ERROR_PATH_NOT_FOUND},
    {ELOOP, ERROR_PATH_NOT_FOUND},
    {EBADF, ERROR_INVALID_HANDLE},
    {ENOMEM, ERROR_NOT_ENOUGH_MEMORY},
    {EINVAL, ERROR_INVALID_PARAMETER},
    {EMFILE, 4},  // too many open files
    {ENFILE, 4},
    {EROFS, 19},    // write protected
    {ETXTBSY, 32},  // sharing violation
    {EEXIST, 80},   // file exists
    {ENOSPC, 112},  // disk full
    {EDQUOT, 112},
    {EFBIG, 223},         // file too large
    {ENAMETOOLONG, 206},  // name too long
};

bool HasDirectory(const char *path) {
    const char *slash = std::strrchr(path, '/');
    if (slash == nullptr || slash == path) return true;
    std::array<char, PATH_MAX> directory;
    const auto length = static_cast<size_t>(slash - path);
    if (length >= directory.size()) return false;
    std::memcpy(directory.data(), path, length);
    directory[length] = '\0';
    struct stat about {};
    return stat(directory.data(), &about) == 0 && S_ISDIR(about.st_mode);
}

}  // namespace

uint32_t ErrorFromErrno(int error, const char *path) noexcept {
    if (error == ENOENT) {
        return path == nullptr || HasDirectory(path) ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
    }
    const auto *pair = std::ranges::find(kPairs, error, &Pair::fromSystem);
    return pair == std::end(kPairs) ? kGeneralFailure : pair->published;
}

}  // namespace fenlight::platform
