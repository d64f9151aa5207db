// SPDX-License-Identifier: Zlib
#include "sprites/frame_order.h"
#include "sprites/rectangle_batch.h"
#include "sprites/stages.h"

namespace fenlight {

namespace {

constinit RectangleBatch batch;

void PrefetchPlaces(const SpriteRecord &record) noexcept {
    PrefetchWords(record.FrameNext, record.PreviousY);
}

bool IsShown(const SpriteRecord &record) noexcept {
    return record.State != kStateFinished && record.FixMode == 0;
}

// The old place is wiped, the new one shown. BackDC does not change while these are collected, so it makes no
// difference in which order they are copied.
void AddPlaces(const SpriteRecord &record) noexcept {
    batch.SelectContexts(record.ScreenDC, record.BackDC);
    const int32_t width = record.Width, height = record.Height;
    batch.Add(record.PreviousX, record.PreviousY, width, height);
    batch.Add(record.DrawnX, record.DrawnY, width, height);
}

void AddErasure(const SpriteRecord &record) noexcept {
    batch.SelectContexts(record.BackDC, record.CleanDC);
    batch.Add(record.DrawnX, record.DrawnY, record.Width, record.Height);
}

// One step per frame, hence the later step first. A delete call may come in between, and then starts the
// steps anew. Where the fix stage served a request in the very moment of that call, FixMode is no longer 0,
// and the second frame could not erase the picture either.
void AdvanceState(SpriteRecord &record) noexcept {
    if (record.State == kStateAlive) return;
    record.State.Replace(kStateErasedAgain, kStateFinished);
    if (record.State.Replace(kStateErased, kStateErasedAgain)) record.FixMode = 0;
}

}  // namespace

void PresentStage(SpriteRecord &first) noexcept {
    if (first.BackgroundMode != 0) return PresentView(first);
    WalkFrameOrder(first, PrefetchPlaces, [](const SpriteRecord &record) {
        if (IsShown(record)) AddPlaces(record);
    });
    batch.Flush();
}

void RestoreStage(SpriteRecord &first) noexcept {
    WalkFrameOrder(first, PrefetchPlaces, [](SpriteRecord &record) {
        if (IsShown(record)) AddErasure(record);
        AdvanceState(record);
        ScrollOutStage(record);
    });
    batch.Flush();
}

void ReleaseFrameBuffers() noexcept { batch.Release(); }

}  // namespace fenlight
