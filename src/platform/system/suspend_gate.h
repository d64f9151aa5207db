// SPDX-License-Identifier: Zlib
// Where a thread that SuspendThread has stopped comes to rest. Called at the start of each graphics operation
// and around sleeps and waits, never while an internal lock or a pin is held.
#pragma once

namespace fenlight::platform {

// Returns at once on a thread that is not stopped or was not started by CreateThread; else when it is
// resumed.
void PassSuspendGate() noexcept;

}  // namespace fenlight::platform
