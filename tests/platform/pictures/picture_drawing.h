// SPDX-License-Identifier: Zlib
// The picture loader as a caller uses it.
#pragma once

#include <cstring>
#include <memory>

#include "fenlight/platform/graphics.h"
#include "platform/graphics/screen_context.h"
#include "platform/pictures/picture.h"
#include "platform/pictures/picture_bytes.h"
#include "platform/raster/pixel_view.h"
#include "platform/system/handle_table.h"

namespace fenlight::test {

struct PictureRelease {
    void operator()(platform::ICounted *object) const { object->Release(); }
};
using PictureReference = std::unique_ptr<platform::IPicture, PictureRelease>;

inline PictureReference LoadFromStream(const Bytes &bytes) {
    void *copy = platform::CoTaskMemAlloc(bytes.size());
    if (copy == nullptr) return nullptr;
    if (!bytes.empty()) std::memcpy(copy, bytes.data(), bytes.size());
    platform::IStream *stream = nullptr;
    platform::CreateStreamOnHGlobal(copy, static_cast<uint32_t>(bytes.size()), true, &stream);
    if (stream == nullptr) {
        platform::CoTaskMemFree(copy);
        return nullptr;
    }
    platform::IPicture *picture = nullptr;
    platform::OleLoadPicture(stream, 0, 1, platform::IID_IPicture, &picture);
    stream->Release();
    return PictureReference(picture);
}

inline Picture ShownBy(HDC context, int width, int height) {
    Picture picture(width, height);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) picture.At(x, y) = platform::SwapRedBlue(GetPixel(context, x, y));
    }
    return picture;
}

// A context of the screen's format, grey all over.
class Canvas {
  public:
    static constexpr uint32_t kGrey = 0x5A5A5A;

    Canvas(int width, int height)
        : width_(width),
          height_(height),
          bitmap_(CreateCompatibleBitmap(platform::ScreenContext(), width, height)),
          context_(CreateCompatibleDC(0)) {
        SelectObject(context_, bitmap_);
        for (int i = 0; i < width * height; ++i) SetPixel(context_, i % width, i / width, kGrey);
    }
    Canvas(const Canvas &) = delete;
    Canvas &operator=(const Canvas &) = delete;
    ~Canvas() { DeleteDC(context_), DeleteObject(bitmap_); }
    HDC Context() const { return context_; }
    Picture Shown() const { return ShownBy(context_, width_, height_); }

  private:
    int width_, height_;
    HBITMAP bitmap_;
    HDC context_;
};

// Live contexts and bitmaps beyond the screen's own, which the first use of either makes.
struct LiveHandles {
    int contexts, bitmaps;
    bool operator==(const LiveHandles &) const = default;
};
inline LiveHandles CountGraphicsHandles() {
    const auto count = [] {
        return LiveHandles{platform::CountHandles(platform::HandleKind::Context),
                           platform::CountHandles(platform::HandleKind::Bitmap)};
    };
    static const LiveHandles kAtRest = [&count] {
        platform::ScreenContext();
        return count();
    }();
    return {count().contexts - kAtRest.contexts, count().bitmaps - kAtRest.bitmaps};
}

// The picture drawn whole at width x height. Of no size if it could not be loaded or drawn.
inline Picture Draw(platform::IPicture *picture, int width, int height) {
    if (picture == nullptr) return {};
    int32_t himetricWidth = 0;
    int32_t himetricHeight = 0;
    picture->get_Width(&himetricWidth);
    picture->get_Height(&himetricHeight);
    const Canvas canvas(width, height);
    const HRESULT result = picture->Render(canvas.Context(), 0, 0, width, height, 0, himetricHeight,
                                           himetricWidth, -himetricHeight, nullptr);
    return result >= 0 ? canvas.Shown() : Picture();
}

}  // namespace fenlight::test
