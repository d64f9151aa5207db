// SPDX-License-Identifier: Zlib
// What happens when the library enters or leaves a process and when one of its threads starts or ends.
#pragma once

#include <cstdint>

namespace fenlight {

// Runs by itself: when the library is loaded and unloaded, and on each thread of the library at its start and
// end. `reason` is one of the DLL_... values of the platform layer. Any reason reseeds the random generator
// from the clock; attach binds the codecs, detach lets them go. Always 1. Any thread.
uint32_t EntryRoutine(uint32_t reason) noexcept;

}  // namespace fenlight
