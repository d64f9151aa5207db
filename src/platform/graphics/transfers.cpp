// SPDX-License-Identifier: Zlib
// Block transfers between contexts: the locks and colours of the contexts, the pixels of the raster code.
#include "platform/graphics/context.h"
#include "platform/system/suspend_gate.h"

namespace fenlight::platform {
namespace {

TransferColours ColoursOf(const Context &target, const Context &source) {
    TransferColours colours;
    colours.targetText = target.text;
    colours.targetBackground = target.background;
    colours.sourceBackground = source.background;
    colours.brush = target.brushColour;
    return colours;
}

// `transfer` gets the target's view, the source's view or nullptr, and the colours.
template <class Transfer>
bool WithoutSource(HDC targetHandle, Transfer transfer) {
    const LockedContext target(targetHandle);
    if (!target) return false;
    target.Surface().CountChange();
    return transfer(target.View(), static_cast<const PixelView *>(nullptr), ColoursOf(*target, *target));
}

template <class Transfer>
bool WithSource(HDC targetHandle, HDC sourceHandle, Transfer transfer) {
    const LockedPair pair(targetHandle, sourceHandle);
    if (!pair) return false;
    pair.TargetSurface().CountChange();
    return transfer(pair.TargetView(), &pair.SourceView(), ColoursOf(pair.Target(), pair.Source()));
}

template <class Transfer>
bool RunTransfer(HDC target, HDC source, DWORD rasterCode, Transfer transfer) {
    PassSuspendGate();
    return NeedsSource(rasterCode) ? WithSource(target, source, transfer) : WithoutSource(target, transfer);
}

}  // namespace
}  // namespace fenlight::platform

using namespace fenlight::platform;

BOOL BitBlt(HDC target, int32_t targetX, int32_t targetY, int32_t width, int32_t height, HDC source,
            int32_t sourceX, int32_t sourceY, DWORD rasterCode) noexcept {
    const Block block{targetX, targetY, width, height, sourceX, sourceY};
    return RunTransfer(target, source, rasterCode,
                       [&](const PixelView &to, const PixelView *from, const TransferColours &colours) {
                           return BlitBlock(to, from, block, rasterCode, colours);
                       });
}

BOOL StretchBlt(HDC target, int32_t targetX, int32_t targetY, int32_t targetWidth, int32_t targetHeight,
                HDC source, int32_t sourceX, int32_t sourceY, int32_t sourceWidth, int32_t sourceHeight,
                DWORD rasterCode) noexcept {
    const ScaledBlock block{targetX, targetY, targetWidth, targetHeight,
                            sourceX, sourceY, sourceWidth, sourceHeight};
    return RunTransfer(target, source, rasterCode,
                       [&](const PixelView &to, const PixelView *from, const TransferColours &colours) {
                           return StretchBlock(to, from, block, rasterCode, colours);
                       });
}

BOOL TransparentBlt(HDC target, int32_t targetX, int32_t targetY, int32_t targetWidth, int32_t targetHeight,
                    HDC source, int32_t sourceX, int32_t sourceY, int32_t sourceWidth, int32_t sourceHeight,
                    UINT keyColour) noexcept {
    const ScaledBlock block{targetX, targetY, targetWidth, targetHeight,
                            sourceX, sourceY, sourceWidth, sourceHeight};
    PassSuspendGate();
    return WithSource(target, source,
                      [&](const PixelView &to, const PixelView *from, const TransferColours &colours) {
                          return KeyedBlock(to, *from, block, keyColour, colours);
                      });
}

BOOL CopyRectangles(HDC target, HDC source, const RECT *rectangles, int32_t count) noexcept {
    if (count < 0 || (count > 0 && rectangles == nullptr)) return 0;
    const std::span<const RECT> all(rectangles, static_cast<size_t>(count));
    PassSuspendGate();
    return WithSource(target, source,
                      [&](const PixelView &to, const PixelView *from, const TransferColours &colours) {
                          return CopyUnion(to, *from, all, colours);
                      });
}
