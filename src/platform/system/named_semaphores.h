// SPDX-License-Identifier: Zlib
// The one table of named semaphores of this process.
#pragma once

#include <string_view>

#include "platform/system/semaphore.h"

namespace fenlight::platform {

struct NamedSemaphore {
    Owner<Semaphore> semaphore;  // empty: no memory
    bool existed = false;
};

// Opens the semaphore of that name, or makes it. May throw std::bad_alloc; nothing is changed then.
NamedSemaphore OpenNamedSemaphore(std::string_view name, int32_t initialCount, int32_t maximumCount);

// Takes one owner off; the last one ends the semaphore, and its name is free again.
void DropNamedSemaphore(Semaphore *semaphore) noexcept;

}  // namespace fenlight::platform
