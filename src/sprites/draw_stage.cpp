// SPDX-License-Identifier: Zlib
#include "fenlight/platform/graphics.h"
#include "sprites/stages.h"

namespace fenlight {

namespace {

struct Frame {
    HDC image, back;
    int32_t x, y, width, height, frameX, sourceY;
};

// The key colour is read anew each time: callers repaint their pictures.
void DrawFrame(const Frame &frame) noexcept {
    const COLORREF key =
        GetPixel(frame.image, WrapAdd(frame.frameX, WrapSubtract(frame.width, 1)), frame.sourceY);
    TransparentBlt(frame.back, frame.x, frame.y, frame.width, frame.height, frame.image, frame.frameX,
                   frame.sourceY, frame.width, frame.height, key);
}

// A sprite without a screen is drawn nowhere, or it would show where another sprite's rectangle is copied.
bool HasScreen(const SpriteRecord &record) noexcept {
    return GetDeviceCaps(record.ScreenDC, LOGPIXELSX) != 0;
}

int32_t FrameStartX(const SpriteRecord &record) noexcept {
    const auto steps = static_cast<uint32_t>(record.Frame) - 1;
    return static_cast<int32_t>(static_cast<uint32_t>(record.SourceX) +
                                static_cast<uint32_t>(record.Width) * steps);
}

void RememberPlace(SpriteRecord &record, const Frame &frame) noexcept {
    record.PreviousX = record.DrawnX;
    record.PreviousY = record.DrawnY;
    record.DrawnX = frame.x;
    record.DrawnY = frame.y;
}

// The picture becomes part of the background, together with the lower layers that show through.
void StampFrame(HDC clean, const Frame &frame) noexcept {
    BitBlt(clean, frame.x, frame.y, frame.width, frame.height, frame.back, frame.x, frame.y, SRCCOPY);
}

}  // namespace

void DrawStage(SpriteRecord &record) noexcept {
    record.FrameX = FrameStartX(record);
    const Frame frame{record.ImageDC, record.BackDC, record.X,      record.Y,
                      record.Width,   record.Height, record.FrameX, record.SourceY};
    // Decided once: the delete functions write FixMode from the caller's thread.
    const bool isDrawn = record.FixMode == 0 && frame.width > 0 && frame.height > 0 && HasScreen(record);
    if (isDrawn) DrawFrame(frame);
    RememberPlace(record, frame);
    if (record.StampRequest == 1 && record.StampRequest.Replace(1, 0) && isDrawn)
        StampFrame(record.CleanDC, frame);
}

}  // namespace fenlight
