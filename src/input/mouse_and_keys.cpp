// SPDX-License-Identifier: Zlib
#include "fenlight/input.h"
#include "fenlight/platform/graphics.h"
#include "fenlight/platform/input.h"
#include "platform/window/input_state.h"

namespace fenlight {
namespace {

// `bit` if the key is down, else 0. The sign of a key's state tells.
int32_t ButtonBit(int32_t key, int32_t bit) { return GetKeyState(key) < 0 ? bit : 0; }

}  // namespace
}  // namespace fenlight

using namespace fenlight;

void SetMouseXY(int32_t x, int32_t y) noexcept { SetCursorPos(x, y); }

void SetMouseRect(int32_t left, int32_t top, int32_t right, int32_t bottom) noexcept {
    const RECT rectangle{left, top, right, bottom};
    ClipCursor(&rectangle);
}

int32_t MouseButton() noexcept {
    return ButtonBit(VK_LBUTTON, 1) | ButtonBit(VK_RBUTTON, 2) | ButtonBit(VK_MBUTTON, 4);
}

int32_t PMouse(int32_t left, int32_t top, int32_t right, int32_t bottom) noexcept {
    const RECT rectangle{left, top, right, bottom};
    POINT cursor;
    GetCursorPos(&cursor);
    // Without an active window the cursor keeps its place on the screen.
    ScreenToClient(GetActiveWindow(), &cursor);
    return PtInRect(&rectangle, cursor);
}

// The same as GetAsyncKeyState for one code after the other, in a tenth of the time.
int32_t GetSystemKey() noexcept { return platform::TakeFreshKey(); }
