// SPDX-License-Identifier: Zlib
// The stages of a frame, in the order in which the sprite thread runs them. Each can be run on its own, on
// any record, without the thread.
#pragma once

#include "sprites/sprite_record.h"

namespace fenlight {

// Once per frame, before the passes; `first` is the first record of the list.
void LayerStage() noexcept;                          // layer_stage.cpp
void CleanUpStage() noexcept;                        // clean_up_stage.cpp
void BackgroundStage(SpriteRecord &first) noexcept;  // world_stages.cpp

// The pass over one record, on every record whatever its State.
void SlowStage(SpriteRecord &record) noexcept;  // movement
void CageStage(SpriteRecord &record) noexcept;  // movement

// Only while State is 0.
void ScrollInStage(SpriteRecord &record) noexcept;             // world_stages.cpp
void FacingStage(SpriteRecord &record) noexcept;               // animation
void LookAheadStage(SpriteRecord &record) noexcept;            // movement
void BackgroundCollisionStage(SpriteRecord &record) noexcept;  // background_collision_stage.cpp
void MovingRectangleStage(SpriteRecord &record) noexcept;      // movement
void AnimCopyStage(SpriteRecord &record) noexcept;             // movement
void FixStage(SpriteRecord &record) noexcept;                  // fix_mode.cpp
void DrawStage(SpriteRecord &record) noexcept;                 // draw_stage.cpp, works out FrameX first

// While State is 0, 1 or 2.
void MoveStage(SpriteRecord &record) noexcept;  // movement
void AnimStage(SpriteRecord &record) noexcept;  // animation

// Once per frame, after the passes.
void PresentStage(SpriteRecord &first) noexcept;       // present_stage.cpp
void PresentView(const SpriteRecord &first) noexcept;  // world_stages.cpp, in place of the rectangles
void RestoreStage(SpriteRecord &first) noexcept;       // present_stage.cpp
void ScrollOutStage(SpriteRecord &record) noexcept;  // world_stages.cpp, for each record of the restore stage

// Gives back what the stages keep from frame to frame. At the end of the thread.
void ReleaseFrameBuffers() noexcept;  // present_stage.cpp

}  // namespace fenlight
