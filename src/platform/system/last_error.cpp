// SPDX-License-Identifier: Zlib
#include "fenlight/platform/system.h"

namespace {
thread_local DWORD lastError = ERROR_SUCCESS;
}

DWORD GetLastError() noexcept { return lastError; }
void SetLastError(DWORD code) noexcept { lastError = code; }
