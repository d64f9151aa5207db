// SPDX-License-Identifier: Zlib
#include "particles/stroke_batch.h"

#include "platform/graphics/surface_access.h"

namespace fenlight {

using platform::PixelFormat;
using platform::PixelView;
using platform::SurfaceAccess;
using platform::SwapRedBlue;

// The format that particles meet nearly always: 32 bits.
class StrokeBatch::WordPixels {
  public:
    explicit WordPixels(const SurfaceAccess &surface) noexcept : view_(surface.View()) {}

    void Read(const Places &places, size_t count, Column<COLORREF> &colours) const noexcept {
        const Addresses addresses(view_, places, count);
        addresses.Fetch(count);
        uint32_t outside = SwapRedBlue(CLR_INVALID);  // drops the highest byte, as any later write would
        for (size_t i = 0; i < count; ++i) colours[i] = *addresses.FindOr(i, outside);
        SwapEach(colours, colours, count);
    }

    // False if all of it lies outside.
    bool Write(const Places &oldPlaces, const Column<COLORREF> &oldColours, const Places &newPlaces,
               const Column<COLORREF> &newColours, size_t count) const noexcept {
        const PixelView view = view_;  // a copy, which need not be read anew after each store
        bool hasWritten = false;
        for (size_t i = 0; i < count; ++i) {
            hasWritten |= Set(view, oldPlaces.x[i], oldPlaces.y[i], oldColours[i]);
            hasWritten |= Set(view, newPlaces.x[i], newPlaces.y[i], newColours[i]);
        }
        return hasWritten;
    }

  private:
    static bool Set(const PixelView &view, int32_t x, int32_t y, COLORREF colour) noexcept {
        if (static_cast<uint32_t>(x) >= static_cast<uint32_t>(view.width)) return false;
        if (static_cast<uint32_t>(y) >= static_cast<uint32_t>(view.height)) return false;
        reinterpret_cast<uint32_t *>(view.Row(y))[x] = SwapRedBlue(colour);
        return true;
    }

    static void SwapEach(const Column<COLORREF> &colours, Column<uint32_t> &words, size_t count) noexcept {
        for (size_t i = 0; i < count; ++i) words[i] = SwapRedBlue(colours[i]);
    }

    // Bytes from the top left pixel to that of each place; a bitmap has less than 2^31.
    class Addresses {
      public:
        Addresses(const PixelView &view, const Places &places, size_t count) noexcept : topRow_(view.topRow) {
            const auto width = static_cast<uint32_t>(view.width), height = static_cast<uint32_t>(view.height);
            const auto pitch = static_cast<int32_t>(view.pitch);
            for (size_t i = 0; i < count; ++i) {
                const auto x = static_cast<uint32_t>(places.x[i]), y = static_cast<uint32_t>(places.y[i]);
                const bool isInside = (x < width) & (y < height);
                const auto offset = static_cast<int32_t>(y * static_cast<uint32_t>(pitch) + x * 4);
                offsets_[i] = isInside ? offset : kOutside;
            }
        }
        // Has the processor fetch all of them at once; by itself it looks only a few places ahead.
        void Fetch(size_t count) const noexcept {
            for (size_t i = 0; i < count; ++i) __builtin_prefetch(topRow_ + offsets_[i]);
        }
        // Not a branch: which particles have left the picture is hard to foretell.
        uint32_t *FindOr(size_t i, uint32_t &other) const noexcept {
            uint32_t *word = At(i);
            return offsets_[i] != kOutside ? word : &other;
        }

      private:
        static constexpr int32_t kOutside = 1;  // no word begins there

        uint32_t *At(size_t i) const noexcept { return reinterpret_cast<uint32_t *>(topRow_ + offsets_[i]); }

        uint8_t *const topRow_;
        Column<int32_t> offsets_;
    };

    const PixelView view_;
};

// Any other format, and the dead context.
class StrokeBatch::AnyPixels {
  public:
    explicit AnyPixels(SurfaceAccess &surface) noexcept : surface_(surface) {}

    COLORREF Get(int32_t x, int32_t y) const noexcept {
        return surface_ ? surface_.GetPixel(x, y) : CLR_INVALID;
    }
    void Set(int32_t x, int32_t y, COLORREF colour) const noexcept {
        if (surface_) surface_.SetPixel(x, y, colour);
    }
    void Read(const Places &places, size_t count, Column<COLORREF> &colours) const noexcept {
        for (size_t i = 0; i < count; ++i) colours[i] = Get(places.x[i], places.y[i]);
    }
    bool Write(const Places &oldPlaces, const Column<COLORREF> &oldColours, const Places &newPlaces,
               const Column<COLORREF> &newColours, size_t count) const noexcept {
        for (size_t i = 0; i < count; ++i) {
            Set(oldPlaces.x[i], oldPlaces.y[i], oldColours[i]);
            Set(newPlaces.x[i], newPlaces.y[i], newColours[i]);
        }
        return false;  // the surface has noticed
    }

  private:
    SurfaceAccess &surface_;
};

// Runs `work` on the pixels of a context while its surface is locked. It returns whether it has written.
template <class Work>
void StrokeBatch::WorkOn(HDC context, const Work &work) noexcept {
    SurfaceAccess surface(context);
    const bool isWords = surface && surface.View().format == PixelFormat::Bgrx32;
    if (isWords ? work(WordPixels(surface)) : work(AnyPixels(surface))) surface.MarkChanged();
}

void StrokeBatch::Draw(size_t count) noexcept {
    if (!surfaces_.isBlackBehind) {
        if (surfaces_.background == surfaces_.dest) return DrawInTurn(count);
        // It does not change by the painting, so all of it can be read first.
        FindBehind(count);
        if (surfaces_.showsOnBlackOnly) HideNew(count);
    }
    Paint(count);
}

void StrokeBatch::DrawInTurn(size_t count) noexcept {
    SurfaceAccess surface(surfaces_.dest);
    const AnyPixels pixels(surface);
    for (size_t i = 0; i < count; ++i) {
        pixels.Set(old_.x[i], old_.y[i], pixels.Get(old_.x[i], old_.y[i]));
        // Read once more: the nearest colour of a palette may be another one.
        if (surfaces_.showsOnBlackOnly && pixels.Get(old_.x[i], old_.y[i]) != 0) continue;
        pixels.Set(new_.x[i], new_.y[i], colours_[i]);
    }
}

void StrokeBatch::FindBehind(size_t count) noexcept {
    WorkOn(surfaces_.background, [this, count](const auto &pixels) {
        pixels.Read(old_, count, behind_);
        return false;
    });
}

void StrokeBatch::HideNew(size_t count) noexcept {
    for (size_t i = 0; i < count; ++i) new_.x[i] = behind_[i] == 0 ? new_.x[i] : kNowhere;
}

void StrokeBatch::Paint(size_t count) noexcept {
    WorkOn(surfaces_.dest,
           [this, count](const auto &pixels) { return pixels.Write(old_, behind_, new_, colours_, count); });
}

}  // namespace fenlight
