// SPDX-License-Identifier: Zlib
// What the platform layer knows of keys, mouse buttons and the cursor. The display thread writes it from
// SDL's events, any thread reads it, and a test feeds it by the same functions. Every word is atomic and
// stands for itself; no lock belongs to it.
#pragma once

#include <cstdint>

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
};

// A key or mouse button goes down or up. A side's own Shift, Control or Alt moves the common code along,
// which stays down until both sides are up. Code 0 is no key.
void PressKey(uint8_t key) noexcept;
void ReleaseKey(uint8_t key) noexcept;
void MoveCursor(CursorPosition position) noexcept;

bool IsKeyDown(uint8_t key) noexcept;
// Was the key pressed since the last call for that key? Forgets it.
bool TakePressedSince(uint8_t key) noexcept;
CursorPosition CurrentCursor() noexcept;

// All keys up, nothing pressed since, cursor at 0, 0. For tests, and for the start.
void ForgetInput() noexcept;

}  // namespace fenlight::platform
