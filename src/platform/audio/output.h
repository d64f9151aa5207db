// SPDX-License-Identifier: Zlib
// The one audio device of the process, which pulls blocks out of the one mixer on a thread of SDL's.
#pragma once

#include "platform/audio/mixer.h"

namespace fenlight::platform {

// Runs as long as somebody holds the output.
[[nodiscard]] Mixer &OutputMixer() noexcept;

// The first opens the device, the last closes it and clears the mixer. Any thread; both wait for a change
// that is under way. Without any device, not even a silent one, HoldOutput says false and holds nothing.
[[nodiscard]] bool HoldOutput() noexcept;
void LetGoOfOutput() noexcept;

}  // namespace fenlight::platform
