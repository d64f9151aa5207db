// SPDX-License-Identifier: Zlib
// SDL's events, translated into the input state. Belongs to the display thread; a test calls it directly.
#pragma once

#include <SDL_events.h>

#include <cstdint>

#include "platform/window/window_record.h"

namespace fenlight::platform {

// The published virtual-key code of a key at its place on the keyboard, 0 where there is none.
uint8_t VirtualKeyOf(SDL_Scancode scancode) noexcept;

// Takes key, button and motion events; leaves all others alone.
void FeedInput(const SDL_Event &event) noexcept;

// The pointer has left a window. SDL has moved it to the window's edge before: it is put beyond that.
void FeedLeave(const WindowRecord &window) noexcept;

// Motion outside of all windows makes no events: asks for the pointer's place there.
void FollowPointerOutside() noexcept;

// Moves the pointer on the screen.
void MovePointer(CursorPosition place) noexcept;

}  // namespace fenlight::platform
