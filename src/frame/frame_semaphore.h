// SPDX-License-Identifier: Zlib
// The named semaphore "mysem", which every drawing thread holds while it draws one frame. Being named, it is
// one object for all drawing threads and all processes of a user.
//
// Each drawing thread opens it for itself and closes its own handle when it ends, so no thread ever waits on
// a handle that another one has closed. No exported function takes it.
#pragma once

#include "fenlight/platform/system.h"

namespace fenlight {

// A handle for one drawing thread, opened by its starter; 0 if the system refuses.
[[nodiscard]] HANDLE OpenFrameSemaphore() noexcept;
void CloseFrameSemaphore(HANDLE semaphore) noexcept;

// One frame's turn at drawing: waits without a time limit for it and gives it back at its end. Where the wait
// fails the frame is drawn all the same, and nothing is given back.
class FrameTurn {
  public:
    explicit FrameTurn(HANDLE semaphore) noexcept;
    FrameTurn(const FrameTurn &) = delete;
    FrameTurn &operator=(const FrameTurn &) = delete;
    ~FrameTurn();

  private:
    HANDLE semaphore_;
    bool isHeld_;
};

}  // namespace fenlight
