// SPDX-License-Identifier: Zlib
#include "images/image_loading.h"

#include "fenlight/images.h"
#include "fenlight/platform/system.h"
#include "images/picture_loading.h"

namespace fenlight {
namespace {

constexpr DWORD kPathSize = 1024;

// False too for a file that cannot be opened: the picture loader reports it.
bool FileStartsAsPng(const char *path) {
    const HANDLE file = CreateFileA(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, 0);
    if (file == INVALID_HANDLE_VALUE) return false;
    uint8_t start[4] = {};
    DWORD count = 0;
    const bool isRead = GetFileSize(file, nullptr) != INVALID_FILE_SIZE &&
                        ReadFile(file, start, sizeof start, &count, nullptr) != 0;
    CloseHandle(file);
    return isRead && StartsAsPng(start, count);
}

HBITMAP BitmapFromFile(const char *fileName) {
    char path[kPathSize] = {};
    const DWORD length = fileName != nullptr ? GetFullPathNameA(fileName, kPathSize, path, nullptr) : 0;
    if (length == 0 || length >= kPathSize) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return 0;
    }
    return FileStartsAsPng(path) ? PngFromFile(path) : PictureFromFile(path);
}

HBITMAP BitmapFromMemory(const void *data, uint32_t size) {
    return StartsAsPng(data, size) ? PngFromMemory(data, size) : PictureFromMemory(data, size);
}

HBITMAP BitmapFromResource(HMODULE module, const char *name) {
    const HRSRC resource = FindResourceA(module, name, ImageResourceType);
    if (resource == 0) return LoadBitmapA(module, name);
    const void *data = LockResource(LoadResource(module, resource));
    const DWORD size = SizeofResource(module, resource);
    if (data == nullptr || size == 0) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return 0;
    }
    return BitmapFromMemory(data, size);
}

// The common end of all loads: the slot was found before anything was touched.
ImageHandle TakeBitmap(HBITMAP bitmap) { return bitmap != 0 ? FillSlot(0, bitmap) : 0; }

}  // namespace

ImageHandle LoadImageFromFile(const char *fileName) noexcept {
    return FindFreeSlot() ? TakeBitmap(BitmapFromFile(fileName)) : 0;
}

ImageHandle LoadImageFromMemory(const void *data, int32_t size) noexcept {
    if (!FindFreeSlot()) return 0;
    if (data == nullptr || size < 4) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    return TakeBitmap(BitmapFromMemory(data, static_cast<uint32_t>(size)));
}

ImageHandle LoadImageFromResource(HMODULE module, const char *name) noexcept {
    return FindFreeSlot() ? TakeBitmap(BitmapFromResource(module, name)) : 0;
}

}  // namespace fenlight

using namespace fenlight;

uintptr_t LoadFileImage(const char *fileName) noexcept { return LoadImageFromFile(fileName); }

uintptr_t LoadMemoryImage(const void *data, int32_t size) noexcept { return LoadImageFromMemory(data, size); }

uintptr_t LoadResourceImage(uintptr_t module, const char *name) noexcept {
    return LoadImageFromResource(module, name);
}
