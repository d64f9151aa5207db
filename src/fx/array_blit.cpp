// SPDX-License-Identifier: Zlib
#include "fx/array_blit.h"

#include <algorithm>
#include <cstring>

namespace fenlight {
namespace {

void KeyRows(const ArrayBlock &block, uint32_t key) noexcept {
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        for (int64_t i = 0; i < block.rowBytes; i += 3) {
            const uint8_t blue = source[i], green = source[i + 1], red = source[i + 2];
            if ((uint32_t{blue} | uint32_t{green} << 8 | uint32_t{red} << 16) == key) continue;
            target[i] = blue;
            target[i + 1] = green;
            target[i + 2] = red;
        }
    }
}

// (target * mask + source * (255 - mask)) / 255 in 16 bits throughout, which compilers put into vectors. Up
// to 65534 a sum is divided exactly so.
uint8_t MixByte(uint8_t target, uint8_t source, uint8_t mask) {
    const auto rest = static_cast<uint16_t>(255 - mask);
    const auto sum = static_cast<uint16_t>(target * mask + source * rest);
    return static_cast<uint8_t>(static_cast<uint16_t>(sum + 1 + (sum >> 8)) >> 8);
}

void MixRow(uint8_t *target, const uint8_t *source, const uint8_t *mask, int64_t rowBytes) {
    for (int64_t i = 0; i < rowBytes; ++i) target[i] = MixByte(target[i], source[i], mask[i]);
}

void MixRows(const ArrayBlock &block) noexcept {
    for (int64_t row = 0; row < block.rows; ++row)
        MixRow(block.target + row * block.targetPitch, block.source + row * block.sourcePitch,
               block.mask + row * block.maskPitch, block.rowBytes);
}

void CopyRowsInStep(const ArrayBlock &block) {
    for (int64_t row = 0; row < block.rows; ++row) {
        uint8_t *target = block.target + row * block.targetPitch;
        const uint8_t *source = block.source + row * block.sourcePitch;
        for (int64_t i = 0; i < block.rowBytes; ++i) target[i] = source[i];
    }
}

}  // namespace

extern const ArrayKernels kPlainArrayKernels{KeyRows, MixRows};

namespace {

constexpr KernelVersions<ArrayKernels> kVersions{
    &kPlainArrayKernels, nullptr, FENLIGHT_ON_X86(kAvx2ArrayKernels), FENLIGHT_ON_X86(kAvx512ArrayKernels)};

// One axis of a rectangle, cut to both buffers.
struct Span {
    int64_t skipped;  // pixels cut off before the first that is left
    int64_t length;   // 0 or below: nothing is left
};

Span ClipAxis(int64_t dest, int64_t destSize, int64_t source, int64_t sourceSize, int64_t length) {
    const int64_t skipped = std::max({int64_t{0}, -dest, -source});
    return {skipped, std::min({length, destSize - dest, sourceSize - source}) - skipped};
}

// Rows are taken as packed, whatever padding a buffer has.
uint8_t *PixelAt(const FXHeader &buffer, int64_t x, int64_t y) {
    return buffer.Pixels + 3 * (buffer.biWidth * y + x);
}

// Where the mask ends, so does the block: its last row may become shorter than the others, and is then left
// to a block of its own.
struct MaskedBlocks {
    ArrayBlock whole;
    ArrayBlock last;
};

struct ClippedRectangle {
    Span columns, lines;
    ArrayBlock block;

    bool IsEmpty() const { return columns.length <= 0 || lines.length <= 0; }
};

ClippedRectangle Clip(const FXHeader &target, const FXHeader &source, const ArrayRectangle &rectangle) {
    const Span columns =
        ClipAxis(rectangle.destX, target.biWidth, rectangle.srcX, source.biWidth, rectangle.width);
    const Span lines =
        ClipAxis(rectangle.destY, target.biHeight, rectangle.srcY, source.biHeight, rectangle.height);
    ClippedRectangle clipped{columns, lines, {}};
    if (clipped.IsEmpty()) return clipped;
    const int64_t x = columns.skipped, y = lines.skipped;
    clipped.block = {PixelAt(target, rectangle.destX + x, rectangle.destY + y),
                     ptrdiff_t{3} * target.biWidth,
                     PixelAt(source, rectangle.srcX + x, rectangle.srcY + y),
                     ptrdiff_t{3} * source.biWidth,
                     nullptr,
                     0,
                     3 * columns.length,
                     lines.length};
    return clipped;
}

// The mask is a packed block for the rectangle as it was before clipping.
MaskedBlocks Mask(const ClippedRectangle &clipped, int64_t width, const FXHeader &mask) {
    const int64_t pitch = 3 * width;
    const int64_t rowBytes = clipped.block.rowBytes;
    MaskedBlocks blocks{clipped.block, clipped.block};
    blocks.whole.rows = blocks.last.rows = 0;
    // Asked first: the product of two sizes near 2^31 would not fit.
    if (clipped.lines.skipped > mask.biSizeImage / pitch) return blocks;
    const int64_t start = clipped.lines.skipped * pitch + 3 * clipped.columns.skipped;
    const int64_t left = mask.biSizeImage - start;

    const int64_t wholeRows = left < rowBytes ? 0 : (left - rowBytes) / pitch + 1;
    blocks.whole.mask = mask.Pixels + start;
    blocks.whole.maskPitch = pitch;
    blocks.whole.rows = std::min(wholeRows, clipped.block.rows);
    const int64_t rest = left - wholeRows * pitch;
    if (wholeRows >= clipped.block.rows || rest <= 0) return blocks;
    blocks.last = blocks.whole;
    blocks.last.target += wholeRows * blocks.last.targetPitch;
    blocks.last.source += wholeRows * blocks.last.sourcePitch;
    blocks.last.mask += wholeRows * pitch;
    blocks.last.rowBytes = rest;
    blocks.last.rows = 1;
    return blocks;
}

struct Range {
    uintptr_t begin, end;
};

Range RangeOf(const uint8_t *start, ptrdiff_t pitch, const ArrayBlock &block) {
    const auto begin = reinterpret_cast<uintptr_t>(start);
    return {begin, begin + static_cast<uintptr_t>((block.rows - 1) * pitch + block.rowBytes)};
}

bool AreApart(const Range &a, const Range &b) { return a.end <= b.begin || b.end <= a.begin; }

bool IsSourceApart(const ArrayBlock &block) {
    return AreApart(RangeOf(block.target, block.targetPitch, block),
                    RangeOf(block.source, block.sourcePitch, block));
}

// Whether pieces of `step` bytes, read as a whole and then written, give what the walk gives.
bool CanTakeSteps(const ArrayBlock &block, int64_t step) {
    if (IsSourceApart(block)) return true;
    const ptrdiff_t distance = block.target - block.source;
    return block.targetPitch == block.sourcePitch && (distance <= 0 || distance >= step);
}

bool IsMaskApart(const ArrayBlock &block) {
    return AreApart(RangeOf(block.target, block.targetPitch, block),
                    RangeOf(block.mask, block.maskPitch, block));
}

// Rows without a gap are one long row.
ArrayBlock JoinRows(ArrayBlock block) {
    const bool isJoined = block.targetPitch == block.rowBytes && block.sourcePitch == block.rowBytes &&
                          (block.mask == nullptr || block.maskPitch == block.rowBytes);
    if (!isJoined) return block;
    block.rowBytes *= block.rows;
    block.rows = 1;
    return block;
}

void CopyRows(const ArrayBlock &block) {
    for (int64_t row = 0; row < block.rows; ++row)
        std::memmove(block.target + row * block.targetPitch, block.source + row * block.sourcePitch,
                     static_cast<size_t>(block.rowBytes));
}

void MixBlock(const ArrayBlock &block) {
    if (block.rows == 0) return;
    const bool isPlain = !CanTakeSteps(block, kArrayStep) || !IsMaskApart(block);
    (isPlain ? kPlainArrayKernels : ChooseKernels(kVersions)).mixRows(JoinRows(block));
}

// 0x00BBGGRR to the order of a pixel's bytes.
uint32_t PixelOrder(uint32_t colour) {
    return (colour & 0xFF) << 16 | (colour & 0xFF00) | (colour >> 16 & 0xFF);
}

}  // namespace

void CopyArray(const FXHeader &target, const FXHeader &source, const ArrayRectangle &rectangle) noexcept {
    const ClippedRectangle clipped = Clip(target, source, rectangle);
    if (clipped.IsEmpty()) return;
    const ArrayBlock &block = clipped.block;
    if (IsSourceApart(block)) return CopyRows(JoinRows(block));
    if (CanTakeSteps(block, block.rowBytes)) return CopyRows(block);
    CopyRowsInStep(block);
}

void CopyArrayKeyed(const FXHeader &target, const FXHeader &source, const ArrayRectangle &rectangle,
                    uint32_t key) noexcept {
    const ClippedRectangle clipped = Clip(target, source, rectangle);
    if (clipped.IsEmpty()) return;
    const ArrayBlock &block = clipped.block;
    const bool isPlain = !CanTakeSteps(block, kArrayStep);
    (isPlain ? kPlainArrayKernels : ChooseKernels(kVersions)).keyRows(JoinRows(block), PixelOrder(key));
}

void MixArray(const FXHeader &target, const FXHeader &source, const ArrayRectangle &rectangle,
              const FXHeader &mask) noexcept {
    const ClippedRectangle clipped = Clip(target, source, rectangle);
    if (clipped.IsEmpty()) return;
    const MaskedBlocks blocks = Mask(clipped, rectangle.width, mask);
    MixBlock(blocks.whole);
    MixBlock(blocks.last);
}

}  // namespace fenlight

using namespace fenlight;

void BitBltArray(uintptr_t destFX, int32_t destX, int32_t destY, int32_t width, int32_t height,
                 uintptr_t srcFX, int32_t srcX, int32_t srcY, int32_t mode, uintptr_t parameter) noexcept {
    if (destFX == 0 || srcFX == 0 || (mode == kArrayMask && parameter == 0)) return;
    const FXHeader &target = *FXFromHandle(destFX);
    const FXHeader &source = *FXFromHandle(srcFX);
    const ArrayRectangle rectangle{destX, destY, width, height, srcX, srcY};
    if (mode == kArrayKey) return CopyArrayKeyed(target, source, rectangle, static_cast<uint32_t>(parameter));
    if (mode == kArrayMask) return MixArray(target, source, rectangle, *FXFromHandle(parameter));
    CopyArray(target, source, rectangle);
}
