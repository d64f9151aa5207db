// SPDX-License-Identifier: Zlib
#include "platform/pictures/picture.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>

#include "fenlight/platform/graphics.h"
#include "fenlight/platform/system.h"
#include "platform/pictures/com_runtime.h"
#include "platform/pictures/picture_survey.h"
#include "platform/pictures/pixbuf_decoder.h"
#include "platform/system/failure_point.h"

namespace fenlight::platform {
namespace {

constexpr int64_t kHimetricPerInch = 2540;
// Where positions and sizes end: leaves room for sums within 32 bits.
constexpr int64_t kFarAway = INT32_MAX - (1 << 28);

// value x numerator / denominator to the nearest integer, within 32 bits.
int32_t Scale(int64_t value, int64_t numerator, int64_t denominator) {
    const int64_t product = value * numerator;
    const int64_t half = product < 0 ? -denominator / 2 : denominator / 2;
    return static_cast<int32_t>(std::clamp<int64_t>((product + half) / denominator, -kFarAway, kFarAway));
}

BITMAPINFO TopDownInfo(const DecodedPicture &picture) {
    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof info.bmiHeader;
    info.bmiHeader.biWidth = static_cast<LONG>(picture.width);
    info.bmiHeader.biHeight = -static_cast<LONG>(picture.height);
    info.bmiHeader.biPlanes = 1;
    info.bmiHeader.biBitCount = picture.bitCount;
    return info;
}

// The picture as a bitmap selected into a context, which is what a scaled transfer reads from.
class PictureContext {
  public:
    explicit PictureContext(const DecodedPicture &picture) {
        const BITMAPINFO info = TopDownInfo(picture);
        void *bits = nullptr;
        bitmap_ = CreateDIBSection(0, &info, DIB_RGB_COLORS, &bits, 0, 0);
        if (bitmap_ == 0) return;
        const size_t pitch = (size_t{picture.width} * picture.bitCount / 8 + 3) & ~size_t{3};
        std::memcpy(bits, picture.pixels, pitch * picture.height);
        context_ = CreateCompatibleDC(0);
        isReady_ = context_ != 0 && SelectObject(context_, bitmap_) != 0;
    }
    PictureContext(const PictureContext &) = delete;
    PictureContext &operator=(const PictureContext &) = delete;
    ~PictureContext() {
        if (context_ != 0) DeleteDC(context_);
        if (bitmap_ != 0) DeleteObject(bitmap_);
    }
    HDC Context() const { return isReady_ ? context_ : 0; }

  private:
    HBITMAP bitmap_ = 0;
    HDC context_ = 0;
    bool isReady_ = false;
};

struct Area {
    int32_t x, y, width, height;
};

class DecodedPictureObject final : public Counted<IPicture> {
  public:
    DecodedPictureObject(DecodedPicture picture, uint32_t dpiX, uint32_t dpiY)
        : picture_(std::move(picture)),
          himetricWidth_(Scale(picture_.width, kHimetricPerInch, dpiX)),
          himetricHeight_(Scale(picture_.height, kHimetricPerInch, dpiY)) {}

    HRESULT get_Width(int32_t *himetric) noexcept override {
        if (himetric == nullptr) return E_POINTER;
        *himetric = himetricWidth_;
        return S_OK;
    }
    HRESULT get_Height(int32_t *himetric) noexcept override {
        if (himetric == nullptr) return E_POINTER;
        *himetric = himetricHeight_;
        return S_OK;
    }
    HRESULT Render(HDC context, int32_t x, int32_t y, int32_t cx, int32_t cy, int32_t xSrc, int32_t ySrc,
                   int32_t cxSrc, int32_t cySrc, const RECT *) noexcept override {
        if (cx == 0 || cy == 0 || cxSrc == 0 || cySrc == 0 || himetricWidth_ == 0 || himetricHeight_ == 0) {
            return CTL_E_INVALIDPROPERTYVALUE;
        }
        const auto width = static_cast<int32_t>(picture_.width);
        const auto height = static_cast<int32_t>(picture_.height);
        const Area source{.x = Scale(xSrc, width, himetricWidth_),
                          .y = height - Scale(ySrc, height, himetricHeight_),
                          .width = Scale(cxSrc, width, himetricWidth_),
                          .height = Scale(-int64_t{cySrc}, height, himetricHeight_)};
        const bool isWhole =
            source.x == 0 && source.y == 0 && source.width == width && source.height == height;
        if (isWhole && cx == width && cy == height) return Copy(context, x, y);
        return Stretch(context, {.x = x, .y = y, .width = cx, .height = cy}, source);
    }

  private:
    // Straight from the decoded rows, without a second copy of the picture.
    HRESULT Copy(HDC context, int32_t x, int32_t y) const {
        const BITMAPINFO info = TopDownInfo(picture_);
        const int32_t lines = SetDIBitsToDevice(context, x, y, picture_.width, picture_.height, 0, 0, 0,
                                                picture_.height, picture_.pixels, &info, DIB_RGB_COLORS);
        return lines > 0 ? S_OK : E_FAIL;
    }

    HRESULT Stretch(HDC context, const Area &target, const Area &source) const {
        const PictureContext picture(picture_);
        if (picture.Context() == 0) return E_OUTOFMEMORY;
        const int32_t oldMode = SetStretchBltMode(context, COLORONCOLOR);
        // A mirrored transfer starts with the pixel before the edge that the source area names.
        const BOOL isDrawn =
            StretchBlt(context, target.x, target.y, target.width, target.height, picture.Context(),
                       source.width < 0 ? source.x - 1 : source.x,
                       source.height < 0 ? source.y - 1 : source.y, source.width, source.height, SRCCOPY);
        if (oldMode != 0) SetStretchBltMode(context, oldMode);
        return isDrawn ? S_OK : E_FAIL;
    }

    DecodedPicture picture_;
    int32_t himetricWidth_;
    int32_t himetricHeight_;
};

HRESULT MakePicture(std::span<const uint8_t> data, IPicture **picture) {
    const auto survey = SurveyPicture(data);
    if (!survey) return CTL_E_INVALIDPICTURE;
    DecodedPicture decoded = DecodePicture(data, *survey);
    if (!decoded) return CTL_E_INVALIDPICTURE;
    if (OperationFails(Operation::Memory)) return E_OUTOFMEMORY;
    *picture = new (std::nothrow) DecodedPictureObject(std::move(decoded), survey->dpiX, survey->dpiY);
    return *picture != nullptr ? S_OK : E_OUTOFMEMORY;
}

struct LoadedBytes {
    TaskBlock<uint8_t> block = nullptr;
    uint32_t size = 0;
    HRESULT result = E_OUTOFMEMORY;
};

// The rest of a stream, which does not tell its length beforehand.
LoadedBytes ReadRest(IStream &stream) {
    uint32_t capacity = 1u << 16;
    LoadedBytes bytes{.block = MakeTaskBlock<uint8_t>(capacity)};
    while (bytes.block) {
        uint32_t count = 0;
        const HRESULT result = stream.Read(&bytes.block[bytes.size], capacity - bytes.size, &count);
        bytes.size += count;
        if (result < 0 || bytes.size < capacity) {
            bytes.result = result < 0 ? result : S_OK;
            return bytes;
        }
        if (capacity > UINT32_MAX / 2) return {};
        capacity *= 2;
        TaskBlock<uint8_t> larger = MakeTaskBlock<uint8_t>(capacity);
        if (larger) std::memcpy(larger.get(), bytes.block.get(), bytes.size);
        bytes.block = std::move(larger);
    }
    return bytes;
}

LoadedBytes ReadNext(IStream &stream, uint32_t size) {
    LoadedBytes bytes{.block = MakeTaskBlock<uint8_t>(size)};
    if (bytes.block) bytes.result = stream.Read(bytes.block.get(), size, &bytes.size);
    return bytes;
}

LoadedBytes ReadOpenFile(HANDLE file) {
    DWORD sizeHigh = 0;
    const DWORD size = GetFileSize(file, &sizeHigh);
    if (size == INVALID_FILE_SIZE || sizeHigh != 0) return {.result = STG_E_FILENOTFOUND};
    LoadedBytes bytes{.block = MakeTaskBlock<uint8_t>(size)};
    if (!bytes.block) return bytes;
    const BOOL isRead = ReadFile(file, bytes.block.get(), size, &bytes.size, nullptr);
    bytes.result = isRead && bytes.size == size ? S_OK : STG_E_FILENOTFOUND;
    return bytes;
}

LoadedBytes ReadWholeFile(const char *path) {
    const HANDLE file =
        CreateFileA(path, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, 0);
    if (file == INVALID_HANDLE_VALUE) return {.result = STG_E_FILENOTFOUND};
    LoadedBytes bytes = ReadOpenFile(file);
    CloseHandle(file);
    return bytes;
}

HRESULT MakePicture(const LoadedBytes &bytes, IPicture **picture) {
    if (bytes.result < 0) return bytes.result;
    return MakePicture(std::span<const uint8_t>(bytes.block.get(), bytes.size), picture);
}

HRESULT CheckRequest(InterfaceId wanted, IPicture **picture) {
    if (picture == nullptr) return E_POINTER;
    *picture = nullptr;
    return wanted == IID_IPicture ? S_OK : E_NOINTERFACE;
}

}  // namespace

HRESULT OleLoadPicture(IStream *stream, uint32_t size, BOOL, InterfaceId wanted,
                       IPicture **picture) noexcept {
    const HRESULT request = CheckRequest(wanted, picture);
    if (request < 0) return request;
    if (stream == nullptr) return E_POINTER;
    return MakePicture(size == 0 ? ReadRest(*stream) : ReadNext(*stream, size), picture);
}

HRESULT OleLoadPicturePath(const char16_t *path, void *, DWORD, COLORREF, InterfaceId wanted,
                           IPicture **picture) noexcept {
    const HRESULT request = CheckRequest(wanted, picture);
    if (request < 0) return request;
    if (path == nullptr) return E_POINTER;
    const TaskBlock<char> narrow = NarrowPath(path);
    if (!narrow) return E_OUTOFMEMORY;
    return MakePicture(ReadWholeFile(narrow.get()), picture);
}

}  // namespace fenlight::platform
