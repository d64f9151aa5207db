// SPDX-License-Identifier: Zlib
// Texts that callers hand over, as the UTF-8 that SDL shows.
#pragma once

#include <string>

namespace fenlight::platform {

// Of a title or a caption: more than any screen shows.
inline constexpr size_t kMaxTitleBytes = 1024;

// Text that is valid UTF-8 stays as it is; any other is taken byte by byte as the ANSI code page 1252. Only
// the first `maxBytes` bytes are read, so that an endless text costs nothing. Null is the empty text.
std::string TextToUtf8(const char *text, size_t maxBytes);

}  // namespace fenlight::platform
