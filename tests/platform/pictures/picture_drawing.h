// SPDX-License-Identifier: Zlib
// The picture loader as a caller uses it.
#pragma once

#include <cstring>
#include <memory>

#include "platform/graphics/canvas.h"
#include "platform/pictures/picture.h"
#include "platform/pictures/picture_bytes.h"
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

inline Picture ShownBy(HDC context, int width, int height) { return PictureOf(context, width, height); }

// A canvas that is grey all over at first.
class GreyCanvas : public Canvas {
  public:
    static constexpr uint32_t kGrey = 0x5A5A5A;

    GreyCanvas(int width, int height) : Canvas(width, height), width_(width), height_(height) {
        for (int i = 0; i < width * height; ++i) SetPixel(context, i % width, i / width, kGrey);
    }
    Picture Shown() const { return PictureOf(context, width_, height_); }

  private:
    int width_, height_;
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
    const GreyCanvas canvas(width, height);
    const HRESULT result = picture->Render(canvas.context, 0, 0, width, height, 0, himetricHeight,
                                           himetricWidth, -himetricHeight, nullptr);
    return result >= 0 ? canvas.Shown() : Picture();
}

}  // namespace fenlight::test
