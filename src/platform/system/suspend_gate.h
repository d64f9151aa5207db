// SPDX-License-Identifier: Zlib
// Where a thread that SuspendThread has stopped comes to rest. Called at the start of each graphics operation
// and around sleeps and waits, never while an internal lock or a pin is held.
#pragma once

namespace fenlight::platform {

class ThreadRecord;

// Returns at once on a thread that is not stopped or was not started by CreateThread; else when it is
// resumed.
void PassSuspendGate() noexcept;

// Stands around a sleep or a wait. Inside, the thread counts as stopped as soon as somebody stops it; at the
// end it passes the gate. May be nested; the outermost one counts. Everything that another thread may see
// must be left alone inside.
class Resting {
  public:
    Resting() noexcept;
    ~Resting();
    Resting(const Resting &) = delete;
    Resting &operator=(const Resting &) = delete;

    // Ends the rest before its time and says true, unless the thread is stopped.
    [[nodiscard]] bool TryEnd() noexcept;

  private:
    ThreadRecord *record_;  // nullptr: on a thread of the caller's, or ended
};

}  // namespace fenlight::platform
