// SPDX-License-Identifier: Zlib
// The stages of scrolling worlds. They have nothing to do until InitSpriteBackground and SpriteScrollMode
// turn a view on.
#include "sprites/stages.h"

namespace fenlight {

void BackgroundStage(SpriteRecord &) noexcept {}

void ScrollInStage(SpriteRecord &) noexcept {}

void PresentView(const SpriteRecord &) noexcept {}

void ScrollOutStage(SpriteRecord &) noexcept {}

}  // namespace fenlight
