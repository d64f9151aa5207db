// SPDX-License-Identifier: Zlib
// The clock behind GetTickCount and Sleep, which a test can replace.
#pragma once

#include <cstdint>

namespace fenlight::platform {

class Clock {
  public:
    virtual ~Clock() = default;
    virtual uint32_t TickCount() noexcept = 0;               // milliseconds, wraps
    virtual void Sleep(uint32_t milliseconds) noexcept = 0;  // the calling thread rests
};

// Puts `clock` in the place of the system's; nullptr gives the system's back. Only while no thread of the
// library runs. The clock stays the caller's.
void ReplaceClock(Clock *clock) noexcept;

}  // namespace fenlight::platform
