// SPDX-License-Identifier: Zlib
// What the platform layer knows of keys, mouse buttons and the cursor. The display thread writes it from
// SDL's events, any thread reads it and asks for another cursor position, and a test feeds it by the same
// functions. Every key is one atomic word, the cursor another; only the rectangle that confines the cursor
// has a lock, which is taken to move, never to read.
#pragma once

#include <cstdint>

#include "fenlight/platform/types.h"

namespace fenlight::platform {

// The published virtual-key codes that the state itself treats in a special way.
enum VirtualKey : uint8_t {
    kLeftButton = 0x01,
    kRightButton = 0x02,
    kMiddleButton = 0x04,
    kExtraButton1 = 0x05,
    kExtraButton2 = 0x06,
    kShift = 0x10,
    kControl = 0x11,
    kAlt = 0x12,
    kLeftShift = 0xA0,
    kRightShift = 0xA1,
    kLeftControl = 0xA2,
    kRightControl = 0xA3,
    kLeftAlt = 0xA4,
    kRightAlt = 0xA5,
};

struct CursorPosition {
    int32_t x = 0, y = 0;  // pixels of the screen, from its top left corner
    bool operator==(const CursorPosition &) const = default;
};

struct KeyState {
    bool isDown;
    bool isToggled;   // turns round with each press
    bool wasPressed;  // since the last QueryKey for that key
};

// A key or mouse button goes down or up. A side's own Shift, Control or Alt moves the common code along,
// which stays down until both sides are up. Code 0 is no key.
void PressKey(uint8_t key) noexcept;
void ReleaseKey(uint8_t key) noexcept;
// Nobody hears any more whether they go up.
void ReleaseAllKeys() noexcept;

KeyState PeekKey(uint8_t key) noexcept;
// The same, and forgets that the key was pressed.
KeyState QueryKey(uint8_t key) noexcept;

// Queries all keys in the order of their codes up to the first that is down and was pressed: that one, or -1.
FENLIGHT_API int32_t TakeFreshKey() noexcept;

// Goes there, or to the nearest place of the confining rectangle.
void MoveCursor(CursorPosition position) noexcept;
CursorPosition CurrentCursor() noexcept;

// Confines the cursor to a rectangle that is not empty, and moves it in. Right and bottom are excluded.
void ConfineCursor(const RECT &rectangle) noexcept;
void FreeCursor() noexcept;

// All keys up, nothing pressed since, cursor free and at 0, 0. For tests, and for the start.
void ForgetInput() noexcept;

}  // namespace fenlight::platform
