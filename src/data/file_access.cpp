// SPDX-License-Identifier: Zlib
#include "data/file_access.h"

#include "fenlight/files.h"
#include "fenlight/platform/system.h"

namespace fenlight {
namespace {

HANDLE OpenToRead(const char *fileName) {
    return CreateFileA(fileName, GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, 0);
}

// The count is what was moved, also where the rest failed.
int32_t ReadAndClose(HANDLE file, void *target, int32_t size) {
    DWORD count = 0;
    ReadFile(file, target, static_cast<DWORD>(size), &count, nullptr);
    CloseHandle(file);
    return static_cast<int32_t>(count);
}

// Without memory the platform refuses the transfer; an offset must not make an address of it.
template <typename Byte>
Byte *At(Byte *memory, int32_t offset) {
    return memory == nullptr ? nullptr : memory + offset;
}

}  // namespace

int32_t ReadWholeFile(const char *fileName, void *target, int32_t size) noexcept {
    if (size < 0) return 0;
    const HANDLE file = OpenToRead(fileName);
    return file == INVALID_HANDLE_VALUE ? kCannotOpen : ReadAndClose(file, target, size);
}

int32_t ReadFilePiece(const char *fileName, void *target, int32_t size, int32_t filePosition) noexcept {
    if (size < 0) return 0;
    const HANDLE file = OpenToRead(fileName);
    if (file == INVALID_HANDLE_VALUE) return kCannotOpen;
    // After a refused move the position is still the start, and its bytes are not those asked for.
    const bool isThere = SetFilePointer(file, filePosition, nullptr, FILE_BEGIN) != INVALID_SET_FILE_POINTER;
    return ReadAndClose(file, target, isThere ? size : 0);
}

int32_t WriteWholeFile(const char *fileName, const void *bytes, int32_t size) noexcept {
    if (size < 0) return 0;
    const HANDLE file =
        CreateFileA(fileName, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, 0);
    if (file == INVALID_HANDLE_VALUE) return kCannotOpen;
    DWORD count = 0;
    WriteFile(file, bytes, static_cast<DWORD>(size), &count, nullptr);
    CloseHandle(file);
    return static_cast<int32_t>(count);
}

}  // namespace fenlight

using namespace fenlight;

int32_t ReadFileFast(const char *fileName, void *memory, int32_t offset, int32_t size) noexcept {
    return ReadWholeFile(fileName, At(static_cast<uint8_t *>(memory), offset), size);
}

int32_t ReadFilePieceFast(const char *fileName, void *memory, int32_t offset, int32_t size,
                          int32_t filePosition) noexcept {
    return ReadFilePiece(fileName, At(static_cast<uint8_t *>(memory), offset), size, filePosition);
}

int32_t WriteFileFast(const char *fileName, const void *memory, int32_t offset, int32_t size) noexcept {
    return WriteWholeFile(fileName, At(static_cast<const uint8_t *>(memory), offset), size);
}
