// SPDX-License-Identifier: Zlib
// From the handle of a thread to its record.
#pragma once

#include "fenlight/platform/types.h"
#include "platform/system/handle_table.h"
#include "platform/system/shared_count.h"
#include "platform/system/thread_record.h"

namespace fenlight::platform {

struct ThreadHandle : HandleObject {
    explicit ThreadHandle(const Owner<ThreadRecord> &owner) : record(owner) {}
    const Owner<ThreadRecord> record;
};

// Empty, with the last error set, for anything but a live handle of a thread.
Owner<ThreadRecord> FindThread(HANDLE thread);

}  // namespace fenlight::platform
