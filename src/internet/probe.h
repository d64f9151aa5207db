// SPDX-License-Identifier: Zlib
// Where IsInternet looks. One word for the library, read by any thread.
#pragma once

namespace fenlight {

// For tests. The text must stay; nullptr brings back the page that the library always asks for.
void SetProbeAddress(const char *address) noexcept;

}  // namespace fenlight
