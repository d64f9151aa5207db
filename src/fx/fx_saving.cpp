// SPDX-License-Identifier: Zlib
// Buffers as bitmap files: a file header of 14 bytes, an information header of 40, the rows. The format is
// that of the published BITMAPFILEHEADER and BITMAPINFOHEADER, without compression.
#include <array>
#include <bit>
#include <cstring>

#include "fx/fx_buffer.h"

namespace fenlight {
namespace {

static_assert(std::endian::native == std::endian::little, "the file's numbers are stored as they stand");

using BitmapHeaders = std::array<uint8_t, kBitmapHeaderBytes>;

template <typename Number>
void Put(BitmapHeaders &headers, size_t offset, Number number) {
    std::memcpy(headers.data() + offset, &number, sizeof number);
}

// A positive height means rows from the bottom; resolution, colours and the size of the rows stay 0.
BitmapHeaders HeadersOf(const FXHeader &fx) {
    BitmapHeaders headers{'B', 'M'};
    Put(headers, 2, static_cast<uint32_t>(kBitmapHeaderBytes + fx.biSizeImage));
    Put(headers, 10, static_cast<uint32_t>(kBitmapHeaderBytes));
    Put(headers, 14, static_cast<uint32_t>(sizeof(BITMAPINFOHEADER)));
    Put(headers, 18, fx.biWidth);
    Put(headers, 22, fx.biHeight);
    Put(headers, 26, uint16_t{1});
    Put(headers, 28, uint16_t{24});
    return headers;
}

int32_t FileBytes(uint32_t imageBytes) { return static_cast<int32_t>(kBitmapHeaderBytes + imageBytes); }

}  // namespace

// Two writes, not one gathered: measured on disk and in memory, the second one costs nothing that shows.
int32_t WriteBitmapFile(const FXHeader &fx, const char *fileName) noexcept {
    const HANDLE file =
        CreateFileA(fileName, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, 0);
    if (file == INVALID_HANDLE_VALUE) return 0;
    const BitmapHeaders headers = HeadersOf(fx);
    DWORD written = 0;
    const bool isBegun =
        WriteFile(file, headers.data(), static_cast<DWORD>(headers.size()), nullptr, nullptr) != 0;
    if (isBegun) WriteFile(file, fx.Pixels, fx.biSizeImage, &written, nullptr);
    CloseHandle(file);
    return FileBytes(written);
}

int32_t WriteBitmapToMemory(const FXHeader &fx, void *destination) noexcept {
    const BitmapHeaders headers = HeadersOf(fx);
    auto *bytes = static_cast<uint8_t *>(destination);
    std::memcpy(bytes, headers.data(), headers.size());
    std::memcpy(bytes + headers.size(), fx.Pixels, fx.biSizeImage);
    return FileBytes(fx.biSizeImage);
}

}  // namespace fenlight

using namespace fenlight;

int32_t SaveFX(uintptr_t fx, const char *fileName, int32_t mode) noexcept {
    return fx != 0 && mode == 0 ? WriteBitmapFile(*FXFromHandle(fx), fileName) : 0;
}

int32_t SaveToMemoryFX(uintptr_t fx, void *destination, int32_t mode) noexcept {
    if (fx == 0 || destination == nullptr || mode != 0) return 0;
    return WriteBitmapToMemory(*FXFromHandle(fx), destination);
}
