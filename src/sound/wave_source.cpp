// SPDX-License-Identifier: Zlib
#include "sound/wave_source.h"

#include <algorithm>
#include <cstring>

#include "fenlight/platform/system.h"

namespace fenlight {

bool MemorySource::ReadInside(uint64_t offset, void *target, uint32_t size) noexcept {
    std::memcpy(target, bytes_ + offset, size);
    return true;
}

FileSource::FileSource(const char *fileName) noexcept
    : file_(CreateFileA(fileName, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                        FILE_ATTRIBUTE_NORMAL, 0)) {
    if (file_ == INVALID_HANDLE_VALUE) return;
    DWORD high = 0;
    const DWORD low = GetFileSize(file_, &high);
    if (low != INVALID_FILE_SIZE || GetLastError() == ERROR_SUCCESS) size_ = uint64_t{high} << 32 | low;
}

FileSource::~FileSource() {
    if (file_ != INVALID_HANDLE_VALUE) CloseHandle(file_);
}

bool FileSource::ReadFromFile(uint64_t offset, void *target, uint32_t size) noexcept {
    auto high = static_cast<LONG>(offset >> 32);
    const auto low = static_cast<LONG>(static_cast<uint32_t>(offset));
    if (SetFilePointer(file_, low, &high, FILE_BEGIN) == INVALID_SET_FILE_POINTER &&
        GetLastError() != ERROR_SUCCESS)
        return false;
    DWORD count = 0;
    return ReadFile(file_, target, size, &count, nullptr) != 0 && count == size;
}

bool FileSource::ReadInside(uint64_t offset, void *target, uint32_t size) noexcept {
    if (size > sizeof window_) return ReadFromFile(offset, target, size);
    if (offset < windowOffset_ || offset + size > windowOffset_ + windowSize_) {
        windowOffset_ = offset;
        windowSize_ = static_cast<uint32_t>(std::min<uint64_t>(sizeof window_, size_ - offset));
        if (!ReadFromFile(offset, window_, windowSize_)) {
            windowSize_ = 0;
            return false;
        }
    }
    std::memcpy(target, window_ + (offset - windowOffset_), size);
    return true;
}

}  // namespace fenlight
