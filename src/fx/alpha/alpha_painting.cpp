// SPDX-License-Identifier: Zlib
// Painting alpha images. It is defined by a scratch image: the backdrop is copied into an image of the
// target's format, composed there and painted. Where all pixels have 32 bits nobody can tell that from
// composing straight on the target, which is one pass and not five.
#include <cstring>

#include "fenlight/alpha_images.h"
#include "fx/alpha/alpha_image.h"
#include "fx/alpha/alpha_kernels.h"
#include "images/image_slots.h"
#include "platform/graphics/surface_access.h"

namespace fenlight {
namespace {

using platform::PixelFormat;
using platform::PixelView;

// The largest picture that the platform makes an image of.
constexpr int64_t kMostPixels = int64_t{1} << 28;
constexpr int32_t kWidthUnit = 4;

// A run of pixels of one row; image pixels from `shown` on are clear.
struct PixelRun {
    uint8_t *target;
    const uint8_t *backdrop;
    const uint8_t *image;
    int64_t shown;
    int64_t pixels;
};

void ComposeRun(const PixelRun &run) {
    const int64_t shown = std::clamp<int64_t>(run.shown, 0, run.pixels);
    CurrentAlphaKernels().paint(run.target, run.backdrop, run.image, shown);
    for (int64_t i = 4 * shown; i < 4 * run.pixels; i += 4) {
        std::memmove(run.target + i, run.backdrop + i, 3);
        run.target[i + 3] = 0;
    }
}

// The first `covered` pixels have a backdrop, the others none: that counts as black.
void ComposeRow(const PixelRun &run, int64_t covered) {
    PixelRun part = run;
    part.pixels = covered;
    ComposeRun(part);
    if (covered == run.pixels) return;
    part.pixels = run.pixels - covered;
    part.target += 4 * covered;
    part.image += 4 * covered;
    part.shown -= covered;
    part.backdrop = part.target;
    std::memset(part.target, 0, static_cast<size_t>(4 * part.pixels));
    ComposeRun(part);
}

// One axis of the place on the target: what is skipped at the start, and what is left.
struct Span {
    int64_t skipped, length;
};

Span ClipAxis(int64_t start, int64_t length, int64_t targetLength) {
    const int64_t skipped = std::max<int64_t>(-start, 0);
    return {skipped, std::min(length, targetLength - start) - skipped};
}

// Both views have 32 bits; they may be one.
void ComposeOnTarget(const uint8_t *pixels, const AlphaPlace &place, const PixelView &target,
                     const PixelView &backdrop) {
    const Span columns = ClipAxis(place.x, place.width, target.width);
    const Span rows = ClipAxis(place.y, place.height, target.height);
    const int64_t x = place.x + columns.skipped;
    for (int64_t row = rows.skipped; columns.length > 0 && row < rows.skipped + rows.length; ++row) {
        const auto y = static_cast<int32_t>(place.y + row);
        const int64_t first = row * place.width + columns.skipped;
        const bool hasBackdrop = y < backdrop.height;
        const int64_t covered = hasBackdrop ? std::clamp<int64_t>(backdrop.width - x, 0, columns.length) : 0;
        ComposeRow({target.Row(y) + 4 * x, covered > 0 ? backdrop.Row(y) + 4 * x : nullptr,
                    pixels + kAlphaPixelBytes * first, AlphaPixels(place.bytes) - first, columns.length},
                   covered);
    }
}

// An image may lie in the memory of a bitmap that the caller has the address of.
bool AreApart(const uint8_t *pixels, int32_t bytes, const PixelView &view) {
    const auto begin = reinterpret_cast<uintptr_t>(pixels);
    const auto first = reinterpret_cast<uintptr_t>(view.Row(0));
    const auto last = reinterpret_cast<uintptr_t>(view.Row(view.height - 1));
    const auto rowBytes = static_cast<uintptr_t>(4 * int64_t{view.width});
    return begin + static_cast<uintptr_t>(std::max(bytes, 0)) <= std::min(first, last) ||
           std::max(first, last) + rowBytes <= begin;
}

enum class Outcome { Painted, DeadTarget, OtherFormat };

// A dead backdrop has an empty view, and shows black as any place beside a backdrop does.
Outcome PaintDirectly(const uint8_t *pixels, const AlphaPlace &place, HDC target, HDC backdrop) {
    platform::SurfacePairAccess surfaces(target, backdrop != 0 ? backdrop : target);
    const PixelView &view = surfaces.TargetView();
    if (view.topRow == nullptr) return Outcome::DeadTarget;
    if (view.format != PixelFormat::Bgrx32 || surfaces.SourceView().format != PixelFormat::Bgrx32 ||
        !AreApart(pixels, place.bytes, view))
        return Outcome::OtherFormat;
    ComposeOnTarget(pixels, place, view, surfaces.SourceView());
    surfaces.MarkTargetChanged();
    return Outcome::Painted;
}

class ScratchImage {
  public:
    ScratchImage(HDC model, int32_t width, int32_t height) noexcept
        : handle_(CreateImageInSlot(model, width, height)) {}
    ScratchImage(const ScratchImage &) = delete;
    ScratchImage &operator=(const ScratchImage &) = delete;
    ~ScratchImage() {
        if (handle_ != 0) ReleaseImage(handle_);
    }
    ImageHandle Handle() const noexcept { return handle_; }

  private:
    ImageHandle handle_;
};

bool PaintThroughScratch(const uint8_t *pixels, const AlphaPlace &place, HDC target, HDC backdrop) {
    const int64_t area = int64_t{place.width} * place.height;
    const ScratchImage scratch(target, place.width, place.height);
    const PixelBlock block(scratch.Handle() != 0 ? 4 * area : 0);
    if (scratch.Handle() == 0 || !block) return false;
    BitBlt(scratch.Handle(), 0, 0, place.width, place.height, backdrop != 0 ? backdrop : target, place.x,
           place.y, SRCCOPY);
    PixelView view;
    view.topRow = block.Bytes();
    view.pitch = ptrdiff_t{4} * place.width;
    view.width = place.width;
    view.height = place.height;
    if (!platform::FetchPixels(scratch.Handle(), view)) return false;
    ComposeRun({block.Bytes(), block.Bytes(), pixels, AlphaPixels(place.bytes), area});
    return platform::DrawPixels(target, place.x, place.y, view);
}

}  // namespace

bool PaintAlphaImage(const uint8_t *pixels, const AlphaPlace &place, HDC target, HDC backdrop) noexcept {
    if (place.width < 1 || place.height < 1 || int64_t{place.width} * place.height > kMostPixels)
        return false;
    // The direct way needs no slot, but which way is taken must not show.
    if (!FindFreeSlot()) return false;
    const Outcome outcome = PaintDirectly(pixels, place, target, backdrop);
    if (outcome != Outcome::OtherFormat) return outcome == Outcome::Painted;
    return PaintThroughScratch(pixels, place, target, backdrop);
}

}  // namespace fenlight

using namespace fenlight;

int32_t PaintPng(const uint8_t *image, int32_t bytes, uintptr_t dc, int32_t x, int32_t y, int32_t width,
                 int32_t height, uintptr_t backdrop) noexcept {
    if (image == nullptr || width % kWidthUnit != 0) return 0;
    return PaintAlphaImage(image, {x, y, width, height, bytes}, dc, backdrop) ? 1 : 0;
}
