// SPDX-License-Identifier: Zlib
#include "sprites/stages.h"

namespace fenlight {

// Serves LayerRequests, once SetSpriteLayer fills them.
void LayerStage() noexcept {}

}  // namespace fenlight
