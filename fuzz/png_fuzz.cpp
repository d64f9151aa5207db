// SPDX-License-Identifier: Zlib
// Any bytes as a PNG stream in memory, through all steps of the loader. The sanitizers watch memory; here the
// promises of the steps are watched.
#include <cstdint>
#include <cstdlib>

#include "fenlight/platform/graphics.h"
#include "images/png/png_decoder.h"
#include "platform/graphics/bitmap.h"

namespace {

void Require(bool holds) {
    if (!holds) std::abort();
}

// Every byte of the picture is there to be read.
uint32_t SumPixels(HBITMAP bitmap) {
    const fenlight::platform::LockedBitmap locked(bitmap);
    Require(static_cast<bool>(locked));
    const auto &view = locked.View();
    const int64_t rowBytes = (int64_t{view.width} * BitsPerPixel(view.format) + 7) / 8;
    uint32_t sum = 0;
    for (int32_t y = 0; y < view.height; ++y) {
        for (int64_t i = 0; i < rowBytes; ++i) sum += view.Row(y)[i];
    }
    return sum;
}

void CheckBitmap(const fenlight::PngContext &context, HBITMAP bitmap) {
    Require(context.lastError == 0);
    [[maybe_unused]] static volatile uint32_t seen;
    seen = SumPixels(bitmap);
    Require(DeleteObject(bitmap) != 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    fenlight::PngContext context;
    fenlight::PngLoaderInit(&context);
    if (fenlight::PngLoaderLoadMemory(&context, bytes, static_cast<uint32_t>(size)) == 0) {
        Require(context.lastError != 0 && context.state == fenlight::PngStateEmpty);
    } else if (fenlight::PngLoaderDecode(&context) == 0) {
        Require(context.lastError != 0 && context.rawData == nullptr);
    } else if (const HBITMAP bitmap = fenlight::PngLoaderCreateBitmap(&context); bitmap != 0) {
        CheckBitmap(context, bitmap);
    }
    fenlight::PngLoaderCleanup(&context);
    Require(context.state == fenlight::PngStateEmpty && context.sourceKind == fenlight::PngSourceNone);
    return 0;
}
