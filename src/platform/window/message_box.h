// SPDX-License-Identifier: Zlib
// Message boxes, and a record of the last one, so that a test without a display can see what was said.
#pragma once

#include <cstdint>
#include <string>

#include "fenlight/platform/types.h"
#include "platform/window/window_record.h"

namespace fenlight::platform {

struct MessageBoxRecord {
    uint32_t count = 0;  // boxes asked for since the process began, this one included
    HWND owner = 0;
    UINT type = 0;
    std::string caption;  // both as UTF-8, as they are shown
    std::string text;
};

// The last box that MessageBoxA was asked for, shown or not. Any thread.
MessageBoxRecord LastMessageBox();

}  // namespace fenlight::platform
