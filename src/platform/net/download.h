// SPDX-License-Identifier: Zlib
// Fetches a file over HTTP or HTTPS. Every download has a connection of its own and shares nothing with
// others, so any number of threads may call at the same time.
#pragma once

#include "fenlight/platform/types.h"

namespace fenlight::platform {

// How long a server may keep silent. There is no limit for the whole: a large file on a slow line goes on.
struct Patience {
    long connectSeconds = 60;
    long silentSeconds = 60;
};

// Waits until the file is there whole and in its newest version, past all caches, or until that has failed;
// then `fileName` is what it was before. Follows redirects, to those two protocols only. Gives 0 or a result
// code from download_result.h. A thread that is stopped meanwhile goes on receiving, but does not let the
// file appear before it is resumed.
FENLIGHT_API HRESULT DownloadToFile(const char *address, const char *fileName,
                                    const Patience &patience = {}) noexcept;

}  // namespace fenlight::platform
