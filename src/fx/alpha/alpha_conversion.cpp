// SPDX-License-Identifier: Zlib
// Between alpha images and FX buffers.
#include <cstring>
#include <limits>

#include "fenlight/alpha_images.h"
#include "fx/alpha/alpha_image.h"
#include "fx/alpha/alpha_kernels.h"
#include "fx/pixel_walks.h"
#include "platform/system/large_pages.h"

namespace fenlight {
namespace {

// No more than the buffers have; a picture of the alpha that is too small leaves the rest opaque.
void FillImage(const AlphaImage &image, const FXHeader &fx, const FXHeader *alpha) {
    const AlphaKernels &kernels = CurrentAlphaKernels();
    const BufferRun<1> colours = WalkPixels(fx);
    const BufferRun<2> both = alpha != nullptr ? WalkPixels(fx, *alpha) : BufferRun<2>{};
    kernels.widenWithAlpha(image.pixels, both.starts[0], both.starts[1], both.count);
    kernels.widen(image.pixels + kAlphaPixelBytes * both.count,
                  colours.starts[0] + kFXPixelBytes * both.count, colours.count - both.count);
    const int64_t filled = kAlphaPixelBytes * colours.count;
    std::memset(image.pixels + filled, 0, static_cast<size_t>(image.bytes - filled));
}

// The block may be given back by the codec's release, so it starts where the allocator says.
uint8_t *AllocateImage(int32_t bytes) {
    void *block = GlobalAlloc(GMEM_FIXED, static_cast<size_t>(bytes));
    if (block != nullptr) platform::AdviseLargePages(block, static_cast<size_t>(bytes));
    return static_cast<uint8_t *>(block);
}

void ClearFrom(const FXHeader &fx, int64_t pixel) {
    const int64_t kept = kFXPixelBytes * pixel;
    std::memset(fx.Pixels + kept, 0, static_cast<size_t>(fx.biSizeImage - kept));
}

}  // namespace

AlphaImage AlphaImageOfFX(const FXHeader &fx, const FXHeader *alpha) noexcept {
    const int64_t bytes = kAlphaPixelBytes * fx.biWidth * fx.biHeight;
    AlphaImage image{nullptr, fx.biWidth, fx.biHeight, 0};
    if (bytes > std::numeric_limits<int32_t>::max()) return image;
    image.bytes = static_cast<int32_t>(bytes);
    image.pixels = AllocateImage(image.bytes);
    if (image.pixels != nullptr) FillImage(image, fx, alpha);
    return image;
}

AlphaBuffers FXOfAlphaImage(const AlphaImage &image, bool wantsAlpha) noexcept {
    AlphaBuffers buffers;
    buffers.colours.reset(FXFromHandle(MakeBlankFX(image.width, image.height)));
    if (wantsAlpha && buffers.colours != nullptr)
        buffers.alpha.reset(FXFromHandle(MakeBlankFX(image.width, image.height)));
    if (buffers.colours == nullptr || (wantsAlpha && buffers.alpha == nullptr)) return {};
    const AlphaKernels &kernels = CurrentAlphaKernels();
    const BufferRun<1> colours = WalkPixels(*buffers.colours);
    const int64_t pixels = std::min(colours.count, AlphaPixels(image.bytes));
    if (wantsAlpha)
        kernels.narrowWithAlpha(colours.starts[0], buffers.alpha->Pixels, image.pixels, pixels);
    else
        kernels.narrow(colours.starts[0], image.pixels, pixels);
    for (const FXHeader *fx : {buffers.colours.get(), buffers.alpha.get()})
        if (fx != nullptr) ClearFrom(*fx, pixels);
    return buffers;
}

}  // namespace fenlight

using namespace fenlight;

uint8_t *FXToPng(uintptr_t fx, int32_t *widthOut, int32_t *heightOut, int32_t *bytesOut,
                 uintptr_t alphaFx) noexcept {
    AlphaImage image;
    if (fx != 0) image = AlphaImageOfFX(*FXFromHandle(fx), FXFromHandle(alphaFx));
    StoreSizes(image, widthOut, heightOut, bytesOut);
    return image.pixels;
}

uintptr_t PngToFX(const uint8_t *image, int32_t width, int32_t height, int32_t bytes,
                  uintptr_t *alphaFxOut) noexcept {
    if (image == nullptr) return 0;
    AlphaBuffers buffers =
        FXOfAlphaImage({const_cast<uint8_t *>(image), width, height, bytes}, alphaFxOut != nullptr);
    if (buffers.colours == nullptr) return 0;
    if (alphaFxOut != nullptr) *alphaFxOut = reinterpret_cast<uintptr_t>(buffers.alpha.release());
    return reinterpret_cast<uintptr_t>(buffers.colours.release());
}
