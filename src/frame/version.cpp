// SPDX-License-Identifier: Zlib
#include "fenlight/frame.h"
#include "fenlight/platform/windows.h"

namespace {

// Version number times 1000.
constexpr int32_t kVersion = 3000;

// Texts are in the 8-bit code page; 160 is its no-break space.
constexpr char kAboutTitle[] =
    "\xA0"
    "About Fenlight.dll"
    "\xA0";
constexpr char kAboutText[] =
    "Fenlight.dll Version 3.0\n"
    "Fast routines for games and multimedia: sprites, images, effects, sound, paths and data.";

}  // namespace

int32_t Version() noexcept {
    MessageBoxA(0, kAboutText, kAboutTitle, MB_OK | MB_ICONINFORMATION);
    return 0;
}

int32_t GetVersion() noexcept { return kVersion; }
