// SPDX-License-Identifier: Zlib
// Alpha images from and to PNG files.
#include <limits>
#include <memory>

#include "fenlight/alpha_images.h"
#include "fenlight/platform/system.h"
#include "frame/codec_binding.h"
#include "fx/alpha/alpha_image.h"

namespace fenlight {
namespace {

struct GlobalFreer {
    void operator()(uint8_t *block) const noexcept { GlobalFree(block); }
};

struct FileBytes {
    std::unique_ptr<uint8_t, GlobalFreer> bytes;  // null: the file could not be read
    int32_t size = 0;
};

FileBytes ReadOpenFile(HANDLE file) {
    DWORD high = 0;
    const DWORD size = GetFileSize(file, &high);
    if (high != 0 || size > static_cast<DWORD>(std::numeric_limits<int32_t>::max())) return {};
    FileBytes content;
    content.bytes.reset(static_cast<uint8_t *>(GlobalAlloc(GMEM_FIXED, size)));
    DWORD read = 0;
    if (content.bytes == nullptr || ReadFile(file, content.bytes.get(), size, &read, nullptr) == 0) return {};
    content.size = static_cast<int32_t>(read);
    return content;
}

FileBytes ReadFileBytes(const char *fileName) {
    const HANDLE file = CreateFileA(fileName, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, 0);
    if (file == INVALID_HANDLE_VALUE) return {};
    FileBytes content = ReadOpenFile(file);
    CloseHandle(file);
    return content;
}

void WriteFileBytes(const char *fileName, const uint8_t *bytes, int32_t size) {
    const HANDLE file =
        CreateFileA(fileName, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, 0);
    if (file == INVALID_HANDLE_VALUE) return;
    WriteFile(file, bytes, static_cast<DWORD>(size), nullptr, nullptr);
    CloseHandle(file);
}

}  // namespace

bool ReadAlphaImage(const char *fileName, AlphaImage &image) noexcept {
    if (DecodePNG == nullptr) return false;
    const FileBytes file = ReadFileBytes(fileName);
    if (file.bytes == nullptr) return false;
    image = {};
    DecodePNG(&image.width, &image.height, file.bytes.get(), file.size, &image.pixels, &image.bytes);
    return true;
}

int32_t WriteAlphaImage(const uint8_t *pixels, int32_t width, int32_t height, const char *fileName) noexcept {
    uint8_t *stream = nullptr;
    int32_t size = 0;
    const uint32_t error = EncodePNG(width, height, pixels, &stream, &size);
    if (size == 0) return static_cast<int32_t>(error);
    WriteFileBytes(fileName, stream, size);
    FreePNGBuffer(stream);
    return size;
}

void ReleaseAlphaImage(uint8_t *pixels) noexcept {
    if (FreePNGBuffer != nullptr) FreePNGBuffer(pixels);
}

}  // namespace fenlight

using namespace fenlight;

uint8_t *ImportPng(const char *fileName, int32_t *widthOut, int32_t *heightOut, int32_t *bytesOut) noexcept {
    AlphaImage image;
    if (!ReadAlphaImage(fileName, image)) return nullptr;
    StoreSizes(image, widthOut, heightOut, bytesOut);
    return image.pixels;
}

int32_t ExportPng(const uint8_t *image, const char *fileName, int32_t width, int32_t height) noexcept {
    return EncodePNG != nullptr && image != nullptr ? WriteAlphaImage(image, width, height, fileName) : 0;
}

int32_t FreePng(uint8_t *image) noexcept {
    ReleaseAlphaImage(image);
    return 0;
}
