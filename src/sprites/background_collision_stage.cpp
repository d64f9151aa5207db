// SPDX-License-Identifier: Zlib
#include "sprites/stages.h"

namespace fenlight {

// Runs for records with BackCollideMode, once SetBackAutoCollision sets it.
void BackgroundCollisionStage(SpriteRecord &) noexcept {}

}  // namespace fenlight
