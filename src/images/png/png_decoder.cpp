// SPDX-License-Identifier: Zlib
#include "images/png/png_decoder.h"

#include <algorithm>

#include "fenlight/platform/graphics.h"
#include "fenlight/platform/system.h"
#include "fenlight/platform/windows.h"
#include "images/png/png_chunks.h"
#include "images/png/png_format.h"
#include "images/png/png_inflate.h"
#include "images/png/png_rows.h"
#include "platform/system/large_pages.h"

namespace fenlight {

namespace {

int32_t Fail(PngContext &context, PngError error) {
    context.lastError = error;
    return 0;
}

bool IsEmpty(const PngContext &context) {
    return context.state == PngStateEmpty && context.sourceKind == PngSourceNone;
}

class OpenFile {
  public:
    explicit OpenFile(const char *fileName) noexcept
        : handle_(CreateFileA(fileName, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                              FILE_ATTRIBUTE_NORMAL, 0)) {}
    OpenFile(const OpenFile &) = delete;
    OpenFile &operator=(const OpenFile &) = delete;
    ~OpenFile() {
        if (IsOpen()) CloseHandle(handle_);
    }

    bool IsOpen() const noexcept { return handle_ != INVALID_HANDLE_VALUE; }

    bool Measure(uint32_t &size) const noexcept {
        DWORD high = 0;
        size = GetFileSize(handle_, &high);
        return size != INVALID_FILE_SIZE && high == 0;
    }

    bool ReadAll(void *buffer, uint32_t size) const noexcept {
        DWORD bytesRead = 0;
        return ReadFile(handle_, buffer, size, &bytesRead, nullptr) != 0 && bytesRead == size;
    }

  private:
    HANDLE handle_;
};

PngError ReadSource(PngContext &context, const OpenFile &file) {
    uint32_t size = 0;
    if (!file.IsOpen() || !file.Measure(size)) return PngErrorFile;
    void *const buffer = GlobalAlloc(GMEM_FIXED, std::max(size, 1u));
    if (buffer == nullptr) return PngErrorMemory;
    context.sourceData = static_cast<const uint8_t *>(buffer);
    context.sourceSize = size;
    context.sourceKind = PngSourceFile;
    return file.ReadAll(buffer, size) ? PngErrorNone : PngErrorFile;
}

void FreeSource(PngContext &context) {
    if (context.sourceKind == PngSourceFile) GlobalFree(const_cast<uint8_t *>(context.sourceData));
}

// Nothing may point into the buffer once it is gone.
int32_t DropSource(PngContext &context, PngError error) {
    FreeSource(context);
    context = {};
    return Fail(context, error);
}

bool CanStreamFill(const PngContext &context, uint64_t rawSize) {
    return rawSize <= CountImageData(context) * kMaxExpansion;
}

// A header and room for the 256 colours that a section of 8 bits reads.
struct BitmapInfo {
    BITMAPINFOHEADER header;
    RGBQUAD colours[256];
};

void FillPalette(const PngContext &context, RGBQUAD *colours) {
    const uint32_t count = std::min(context.paletteCount, 256u);
    const uint8_t *entry = context.paletteData;
    for (uint32_t i = 0; i < count; ++i, entry += 3) colours[i] = {entry[2], entry[1], entry[0], 0};
}

void FillRamp(uint32_t size, RGBQUAD *colours) {
    for (uint32_t i = 0; i < size; ++i) {
        const auto level = static_cast<uint8_t>(i * 255 / (size - 1));
        colours[i] = {level, level, level, 0};
    }
}

BitmapInfo DescribeBitmap(const PngContext &context, const PngFormat &format) {
    BitmapInfo info{};
    info.header.biSize = sizeof info.header;
    info.header.biWidth = static_cast<LONG>(context.width);
    info.header.biHeight = -static_cast<LONG>(context.height);
    info.header.biPlanes = 1;
    info.header.biBitCount = format.bitCount;
    info.header.biCompression = BI_RGB;
    info.header.biClrUsed = format.rampSize;
    if (format.rampSize > 0) FillRamp(format.rampSize, info.colours);
    if (format.colourType == kPaletteColour) FillPalette(context, info.colours);
    return info;
}

HBITMAP CreateSection(const BitmapInfo &info, void **bits) {
    const HDC screen = GetDC(0);
    if (screen == 0) return 0;
    const HBITMAP section =
        CreateDIBSection(screen, reinterpret_cast<const BITMAPINFO *>(&info), DIB_RGB_COLORS, bits, 0, 0);
    ReleaseDC(0, screen);
    return section;
}

}  // namespace

int32_t PngLoaderInit(PngContext *context) noexcept {
    *context = {};
    return 1;
}

int32_t PngLoaderLoadFile(PngContext *context, const char *fileName) noexcept {
    if (!IsEmpty(*context)) return Fail(*context, PngErrorBusy);
    if (fileName == nullptr) return Fail(*context, PngErrorFile);
    const OpenFile file(fileName);
    PngError error = ReadSource(*context, file);
    if (error == PngErrorNone) error = ParsePngStream(*context);
    if (error != PngErrorNone) return DropSource(*context, error);
    context->state = PngStateHeaderRead;
    return 1;
}

int32_t PngLoaderLoadMemory(PngContext *context, const void *address, uint32_t size) noexcept {
    if (!IsEmpty(*context)) return Fail(*context, PngErrorBusy);
    context->sourceData = static_cast<const uint8_t *>(address);
    context->sourceSize = size;
    context->sourceKind = PngSourceMemory;
    const PngError error = ParsePngStream(*context);
    if (error != PngErrorNone) return Fail(*context, error);
    context->state = PngStateHeaderRead;
    return 1;
}

int32_t PngLoaderDecode(PngContext *context) noexcept {
    if (context->state != PngStateHeaderRead) return Fail(*context, PngErrorState);
    const PngFormat &format = *FindPngFormat(context->colourType, context->bitDepth);
    const uint64_t rawSize = RawDataSize(*context, format);
    // Before the allocation: a few bytes must not be able to ask for gigabytes.
    if (!CanStreamFill(*context, rawSize)) return Fail(*context, PngErrorData);
    const auto rawData = static_cast<uint8_t *>(GlobalAlloc(GMEM_FIXED, rawSize));
    if (rawData == nullptr) return Fail(*context, PngErrorMemory);
    platform::AdviseLargePages(rawData, rawSize);
    const PngError error = InflateImageData(*context, rawData, static_cast<uint32_t>(rawSize));
    if (error != PngErrorNone) {
        GlobalFree(rawData);
        return Fail(*context, error);
    }
    context->rawData = rawData;
    context->rawSize = static_cast<uint32_t>(rawSize);
    context->lastError = PngErrorNone;
    context->state = PngStateDecoded;
    return 1;
}

HBITMAP PngLoaderCreateBitmap(PngContext *context) noexcept {
    if (context->state != PngStateDecoded) {
        Fail(*context, PngErrorState);
        return 0;
    }
    const PngFormat &format = *FindPngFormat(context->colourType, context->bitDepth);
    void *bits = nullptr;
    const HBITMAP section = CreateSection(DescribeBitmap(*context, format), &bits);
    if (section == 0) {
        Fail(*context, PngErrorBitmap);
        return 0;
    }
    const BitmapRows target{static_cast<uint8_t *>(bits), BitmapPitch(format, context->width)};
    const RowsResult result = StoreRows(*context, format, target);
    if (result == RowsResult::Done) return section;
    if (result == RowsResult::NoMemory) Fail(*context, PngErrorMemory);
    DeleteObject(section);
    return 0;
}

int32_t PngLoaderCleanup(PngContext *context) noexcept {
    FreeSource(*context);
    if (context->state == PngStateDecoded) GlobalFree(context->rawData);
    *context = {};
    return 1;
}

}  // namespace fenlight
