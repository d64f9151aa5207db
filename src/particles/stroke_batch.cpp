// SPDX-License-Identifier: Zlib
#include "particles/stroke_batch.h"

#include "platform/graphics/surface_access.h"

namespace fenlight {

using platform::PixelFormat;
using platform::PixelView;
using platform::SurfaceAccess;
using platform::SwapRedBlue;

namespace {

// The format that particles meet nearly always. Works on copies of the view's numbers, which the compiler
// need not read anew after each pixel.
class WordPixels {
  public:
    explicit WordPixels(const PixelView &view) noexcept
        : topRow_(view.topRow),
          pitch_(view.pitch),
          width_(static_cast<uint32_t>(view.width)),
          height_(static_cast<uint32_t>(view.height)) {}

    COLORREF Get(int32_t x, int32_t y) const noexcept {
        return Contains(x, y) ? SwapRedBlue(*At(x, y)) : CLR_INVALID;
    }
    // False outside.
    bool Set(int32_t x, int32_t y, COLORREF colour) const noexcept {
        if (!Contains(x, y)) return false;
        *At(x, y) = SwapRedBlue(colour);
        return true;
    }

  private:
    bool Contains(int32_t x, int32_t y) const noexcept {
        return static_cast<uint32_t>(x) < width_ && static_cast<uint32_t>(y) < height_;
    }
    uint32_t *At(int32_t x, int32_t y) const noexcept {
        return reinterpret_cast<uint32_t *>(topRow_ + y * pitch_) + x;
    }

    uint8_t *const topRow_;
    const ptrdiff_t pitch_;
    const uint32_t width_, height_;
};

// Any other format, and the dead context.
class AnyPixels {
  public:
    explicit AnyPixels(SurfaceAccess &surface) noexcept : surface_(surface) {}
    COLORREF Get(int32_t x, int32_t y) const noexcept {
        return surface_ ? surface_.GetPixel(x, y) : CLR_INVALID;
    }
    bool Set(int32_t x, int32_t y, COLORREF colour) const noexcept {
        if (surface_) surface_.SetPixel(x, y, colour);
        return false;  // the surface has noticed
    }

  private:
    SurfaceAccess &surface_;
};

// Runs `work` on the pixels of a context while its surface is locked. It returns whether it has written.
template <class Work>
void WorkOn(HDC context, const Work &work) noexcept {
    SurfaceAccess surface(context);
    const bool isWords = surface && surface.View().format == PixelFormat::Bgrx32;
    if (isWords ? work(WordPixels(surface.View())) : work(AnyPixels(surface))) surface.MarkChanged();
}

}  // namespace

void StrokeBatch::Draw() noexcept {
    if (!surfaces_.isBlackBehind && surfaces_.background == surfaces_.dest) {
        DrawInTurn();
    } else {
        // What lies behind does not change by the painting, so all of it can be read first.
        Colours behind;
        FindBehind(behind);
        Paint(behind);
    }
    count_ = 0;
}

void StrokeBatch::DrawInTurn() const noexcept {
    WorkOn(surfaces_.dest, [this](const auto &pixels) {
        bool hasChanged = false;
        for (const Stroke &stroke : Strokes()) {
            hasChanged |= pixels.Set(stroke.oldX, stroke.oldY, pixels.Get(stroke.oldX, stroke.oldY));
            // Read once more: the nearest colour of a palette may be another one.
            if (surfaces_.showsOnBlackOnly && pixels.Get(stroke.oldX, stroke.oldY) != 0) continue;
            hasChanged |= pixels.Set(stroke.newX, stroke.newY, stroke.colour);
        }
        return hasChanged;
    });
}

void StrokeBatch::FindBehind(Colours &behind) const noexcept {
    if (surfaces_.isBlackBehind) {
        behind.fill(0);
        return;
    }
    WorkOn(surfaces_.background, [this, &behind](const auto &pixels) {
        COLORREF *colour = behind.data();
        for (const Stroke &stroke : Strokes()) *colour++ = pixels.Get(stroke.oldX, stroke.oldY);
        return false;
    });
}

void StrokeBatch::Paint(const Colours &behind) const noexcept {
    WorkOn(surfaces_.dest, [this, &behind](const auto &pixels) {
        const bool showsOnBlackOnly = surfaces_.showsOnBlackOnly;
        bool hasChanged = false;
        const COLORREF *colour = behind.data();
        for (const Stroke &stroke : Strokes()) {
            hasChanged |= pixels.Set(stroke.oldX, stroke.oldY, *colour);
            if (!showsOnBlackOnly || *colour == 0)
                hasChanged |= pixels.Set(stroke.newX, stroke.newY, stroke.colour);
            ++colour;
        }
        return hasChanged;
    });
}

}  // namespace fenlight
