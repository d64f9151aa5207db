// SPDX-License-Identifier: Zlib
#include "platform/system/full_path.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>

#include "fenlight/platform/system.h"
#include "platform/system/failure_point.h"

namespace fenlight::platform {
namespace {

constexpr DWORD kInvalidName = 123;

std::string CurrentDirectory() {
    const std::unique_ptr<char, decltype(&std::free)> path(getcwd(nullptr, 0), &std::free);
    // The system marks a directory outside the program's root by a path that does not begin at it.
    return path == nullptr || path.get()[0] != '/' ? std::string() : std::string(path.get());
}

bool CanTakeBackLastStep(const std::string &path) {
    if (path.ends_with("/..")) return false;
    struct stat about {};
    return lstat(path.c_str(), &about) != 0 || !S_ISLNK(about.st_mode);
}

void AddStep(std::string &path, std::string_view step) {
    if (step.empty() || step == ".") return;
    if (step == ".." && path.empty()) return;  // the root is its own parent
    if (step == ".." && CanTakeBackLastStep(path)) {
        path.resize(path.rfind('/'));
        return;
    }
    path += '/';
    path += step;
}

void AddSteps(std::string &path, std::string_view steps) {
    while (!steps.empty()) {
        const size_t end = steps.find('/');
        AddStep(path, steps.substr(0, end));
        if (end == std::string_view::npos) return;
        steps.remove_prefix(end + 1);
    }
}

}  // namespace

std::string FullPathOf(const char *path) {
    const std::string_view given(path);
    std::string result;
    if (!given.starts_with('/')) {
        const std::string start = CurrentDirectory();
        if (start.empty()) return {};
        AddSteps(result, start);
    }
    AddSteps(result, given);
    if (result.empty() || given.ends_with('/')) result += '/';
    return result;
}

}  // namespace fenlight::platform

DWORD GetFullPathNameA(const char *fileName, DWORD size, char *buffer, char **filePart) noexcept {
    using namespace fenlight::platform;
    if (filePart != nullptr) *filePart = nullptr;
    if (fileName == nullptr || fileName[0] == '\0') {
        SetLastError(kInvalidName);
        return 0;
    }
    try {
        const std::string path = OperationFails(Operation::File) ? std::string() : FullPathOf(fileName);
        if (path.empty() || path.size() >= UINT32_MAX) {
            SetLastError(ERROR_PATH_NOT_FOUND);
            return 0;
        }
        const auto length = static_cast<DWORD>(path.size());
        if (buffer == nullptr || size <= length) return length + 1;
        std::memcpy(buffer, path.c_str(), length + 1);
        if (filePart != nullptr && !path.ends_with('/')) *filePart = std::strrchr(buffer, '/') + 1;
        return length;
    } catch (const std::bad_alloc &) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return 0;
    }
}
