// SPDX-License-Identifier: Zlib
// A record lock on a whole file, which excludes other processes and which the system takes back from a
// process that dies. Within one process it excludes nobody.
//
// Closing any descriptor of the file would drop the lock, so the file is opened once and never closed.
#pragma once

#include <string_view>

#include "platform/system/deadline.h"

namespace fenlight::platform {

class LockFile {
  public:
    // Opens or makes the file of a name, any text, in the user's run-time directory. Without success the lock
    // excludes nobody.
    void Open(std::string_view name);
    bool IsOpen() const { return descriptor_ >= 0; }

    bool TryLock() noexcept;
    // False at the deadline. An endless wait sleeps in the system; one with a limit has to ask again and
    // again.
    bool Lock(const Deadline &deadline) noexcept;
    void Unlock() noexcept;

  private:
    int descriptor_ = -1;
};

}  // namespace fenlight::platform
