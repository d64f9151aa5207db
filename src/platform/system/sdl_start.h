// SPDX-License-Identifier: Zlib
// SDL's parts are started and ended by several rooms on several threads, and SDL does not guard the counts
// and hints that this touches.
#pragma once

#include <mutex>

namespace fenlight::platform {

// Held around SDL_InitSubSystem and SDL_QuitSubSystem and the hints that are set for them; nothing else is
// locked or waited for inside.
inline constinit std::mutex sdlStartLock;

}  // namespace fenlight::platform
