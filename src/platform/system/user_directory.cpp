// SPDX-License-Identifier: Zlib
#include "platform/system/user_directory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <new>

#include "fenlight/platform/system.h"
#include "platform/system/failure_point.h"

namespace fenlight::platform {
namespace {

std::string AbsolutePathIn(const char *variable) {
    const char *path = std::getenv(variable);
    return path != nullptr && path[0] == '/' ? std::string(path) : std::string();
}

// Judges the directory through one descriptor, so that it cannot be exchanged between check and change.
bool IsClosedToOthers(const std::string &path) {
    const int directory = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
    if (directory < 0) return false;
    struct stat about {};
    const bool isOwn = fstat(directory, &about) == 0 && about.st_uid == geteuid();
    const bool isClosed = isOwn && ((about.st_mode & 0777) == 0700 || fchmod(directory, 0700) == 0);
    close(directory);
    return isClosed;
}

std::string OwnDirectoryIn(const std::string &parent) {
    if (parent.empty()) return {};
    std::string path = parent + "/fenlight-" + std::to_string(geteuid());
    (void)mkdir(path.c_str(), 0700);
    return IsClosedToOthers(path) ? path + '/' : std::string();
}

bool IsWritableByOwnerOnly(const std::string &path) {
    struct stat about {};
    return stat(path.c_str(), &about) == 0 && S_ISDIR(about.st_mode) && about.st_uid == geteuid() &&
           (about.st_mode & 0022) == 0;
}

}  // namespace

std::string UserTempDirectory() {
    for (const std::string &parent :
         {AbsolutePathIn("TMPDIR"), std::string("/tmp"), AbsolutePathIn("XDG_RUNTIME_DIR")}) {
        std::string directory = OwnDirectoryIn(parent);
        if (!directory.empty()) return directory;
    }
    return {};
}

std::string UserRuntimeDirectory() {
    const std::string session = AbsolutePathIn("XDG_RUNTIME_DIR");
    if (!session.empty() && IsWritableByOwnerOnly(session)) return session + '/';
    return UserTempDirectory();
}

}  // namespace fenlight::platform

DWORD GetTempPathA(DWORD size, char *buffer) noexcept {
    using namespace fenlight::platform;
    try {
        const std::string path = OperationFails(Operation::File) ? std::string() : UserTempDirectory();
        if (path.empty()) {
            SetLastError(ERROR_ACCESS_DENIED);
            return 0;
        }
        const auto length = static_cast<DWORD>(path.size());
        if (buffer == nullptr || size <= length) return length + 1;
        std::memcpy(buffer, path.c_str(), length + 1);
        return length;
    } catch (const std::bad_alloc &) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return 0;
    }
}
