// SPDX-License-Identifier: Zlib
#include "images/picture_loading.h"

#include <cstring>
#include <memory>

#include "fenlight/platform/graphics.h"
#include "fenlight/platform/system.h"
#include "fenlight/platform/windows.h"
#include "images/png/png_decoder.h"

namespace fenlight {
namespace {

using platform::IPicture;
using platform::IStream;

constexpr int32_t kHimetricPerInch = 2540;

// The one context of the PNG road: empty before and after each load.
PngContext pngContext;

class PngLoad {
  public:
    PngLoad() { PngLoaderInit(&pngContext); }
    PngLoad(const PngLoad &) = delete;
    PngLoad &operator=(const PngLoad &) = delete;
    ~PngLoad() { PngLoaderCleanup(&pngContext); }

    HBITMAP Finish(int32_t isLoaded) const {
        if (!isLoaded || !PngLoaderDecode(&pngContext)) return 0;
        return PngLoaderCreateBitmap(&pngContext);
    }
};

class ComScope {
  public:
    ComScope() { platform::CoInitialize(nullptr); }
    ComScope(const ComScope &) = delete;
    ComScope &operator=(const ComScope &) = delete;
    ~ComScope() { platform::CoUninitialize(); }
};

struct ReferenceRelease {
    void operator()(platform::ICounted *object) const noexcept { object->Release(); }
};
template <class Interface>
using Reference = std::unique_ptr<Interface, ReferenceRelease>;

struct BlockRelease {
    void operator()(void *block) const noexcept { platform::CoTaskMemFree(block); }
};
using WidePath = std::unique_ptr<char16_t[], BlockRelease>;

WidePath WidenPath(const char *path) {
    const int32_t count = platform::MultiByteToWideChar(0, 0, path, -1, nullptr, 0);
    WidePath wide(static_cast<char16_t *>(platform::CoTaskMemAlloc(static_cast<size_t>(count) * 2)));
    if (wide) platform::MultiByteToWideChar(0, 0, path, -1, wide.get(), count);
    return wide;
}

// A stream over a copy of the data, which it owns. Empty without memory.
Reference<IStream> StreamOverCopy(const void *data, uint32_t size) {
    void *copy = platform::CoTaskMemAlloc(size);
    if (copy == nullptr) return nullptr;
    std::memcpy(copy, data, size);
    IStream *stream = nullptr;
    platform::CreateStreamOnHGlobal(copy, size, true, &stream);
    if (stream == nullptr) platform::CoTaskMemFree(copy);
    return Reference<IStream>(stream);
}

class ScreenDC {
  public:
    ScreenDC() : context_(GetDC(0)) {}
    ScreenDC(const ScreenDC &) = delete;
    ScreenDC &operator=(const ScreenDC &) = delete;
    ~ScreenDC() { ReleaseDC(0, context_); }
    HDC Context() const { return context_; }

  private:
    HDC context_;
};

// A memory context that goes with its scope; with it what is selected into it is free again.
class MemoryDC {
  public:
    explicit MemoryDC(HDC pattern) : context_(CreateCompatibleDC(pattern)) {}
    MemoryDC(const MemoryDC &) = delete;
    MemoryDC &operator=(const MemoryDC &) = delete;
    ~MemoryDC() { DeleteDC(context_); }
    HDC Context() const { return context_; }

  private:
    HDC context_;
};

struct PictureSize {
    int32_t himetricWidth = 0;
    int32_t himetricHeight = 0;
    int32_t width = 0;
    int32_t height = 0;
};

PictureSize SizeOnScreen(IPicture &picture, HDC screen) {
    PictureSize size;
    picture.get_Width(&size.himetricWidth);
    picture.get_Height(&size.himetricHeight);
    size.width = MulDiv(size.himetricWidth, GetDeviceCaps(screen, LOGPIXELSX), kHimetricPerInch);
    size.height = MulDiv(size.himetricHeight, GetDeviceCaps(screen, LOGPIXELSY), kHimetricPerInch);
    return size;
}

// Fills `bitmap` with the picture. False on failure, with Render's code as last error if it was Render's.
bool RenderInto(HBITMAP bitmap, IPicture &picture, const PictureSize &size, HDC context) {
    const HGDIOBJ oldBitmap = SelectObject(context, bitmap);
    if (oldBitmap == 0) return false;
    const HRESULT result = picture.Render(context, 0, 0, size.width, size.height, 0, size.himetricHeight,
                                          size.himetricWidth, -size.himetricHeight, nullptr);
    SelectObject(context, oldBitmap);
    if (result < 0) SetLastError(static_cast<DWORD>(result));
    return result >= 0;
}

}  // namespace

bool StartsAsPng(const void *data, uint32_t size) noexcept {
    uint32_t magic = 0;
    if (size < sizeof magic) return false;
    std::memcpy(&magic, data, sizeof magic);
    return magic == PngMagic;
}

HBITMAP PngFromFile(const char *path) noexcept {
    const PngLoad load;
    return load.Finish(PngLoaderLoadFile(&pngContext, path));
}

HBITMAP PngFromMemory(const void *data, uint32_t size) noexcept {
    const PngLoad load;
    return load.Finish(PngLoaderLoadMemory(&pngContext, data, size));
}

HBITMAP PictureFromFile(const char *path) noexcept {
    const ComScope com;
    const WidePath wide = WidenPath(path);
    if (!wide) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return 0;
    }
    IPicture *loaded = nullptr;
    const HRESULT result =
        platform::OleLoadPicturePath(wide.get(), nullptr, 0, 0, platform::IID_IPicture, &loaded);
    const Reference<IPicture> picture(loaded);
    if (result < 0) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return 0;
    }
    return PictureToBitmap(picture.get());
}

HBITMAP PictureFromMemory(const void *data, uint32_t size) noexcept {
    const ComScope com;
    const Reference<IStream> stream = StreamOverCopy(data, size);
    IPicture *loaded = nullptr;
    platform::OleLoadPicture(stream.get(), 0, 1, platform::IID_IPicture, &loaded);
    const Reference<IPicture> picture(loaded);
    return PictureToBitmap(picture.get());
}

HBITMAP PictureToBitmap(IPicture *picture) noexcept {
    if (picture == nullptr) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const ScreenDC screen;
    const MemoryDC memory(screen.Context());
    if (memory.Context() == 0) return 0;
    const PictureSize size = SizeOnScreen(*picture, screen.Context());
    const HBITMAP bitmap = CreateCompatibleBitmap(screen.Context(), size.width, size.height);
    if (bitmap == 0) return 0;
    if (!RenderInto(bitmap, *picture, size, memory.Context())) {
        DeleteObject(bitmap);
        return 0;
    }
    return bitmap;
}

}  // namespace fenlight
