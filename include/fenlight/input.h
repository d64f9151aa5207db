/* SPDX-License-Identifier: Zlib */
/* Joysticks, mouse and keys, to be polled in the caller's own loop: no events, no callbacks.
 *
 * Keys and mouse are heard while a window of this program has the keyboard's focus or the pointer over it;
 * nobody has to pump messages for that. Joysticks need no window. Every function may be called on any thread.
 *
 * Joysticks have the numbers 1 to 16. A device that is plugged in takes the lowest number that is free and
 * keeps it until it is unplugged, also while the program runs. Any other number is no joystick. An axis gives
 * -128 to 127, out of the device's position from 0 to 65535: the high byte less 128, so that left and up are
 * -128, the middle is 0. 256 means that there is no such axis. A device is read at most once in a
 * millisecond; calls in between give what was read. */
#ifndef FENLIGHT_INPUT_H
#define FENLIGHT_INPUT_H
#include "types.h"

FENLIGHT_BEGIN_C

/// Tells whether a joystick answers.
/// @param joystick  number, 1 to 16
/// @return 0 if it does, -1 if not, also for any other number
FENLIGHT_API int32_t FindJoystick(int32_t joystick) FENLIGHT_NOEXCEPT;

/// Reads the first axis: -128 at the left, 127 at the right.
/// @param joystick  number, 1 to 16
/// @return -128 to 127; 256 if there is no such axis or no such joystick
FENLIGHT_API int32_t JoystickX(int32_t joystick) FENLIGHT_NOEXCEPT;

/// Reads the second axis: -128 above, 127 below.
/// @param joystick  number, 1 to 16
/// @return -128 to 127; 256 if there is no such axis or no such joystick
FENLIGHT_API int32_t JoystickY(int32_t joystick) FENLIGHT_NOEXCEPT;

/// Reads the third axis, often a throttle.
/// @param joystick  number, 1 to 16
/// @return -128 to 127; 256 if there is no such axis or no such joystick
FENLIGHT_API int32_t JoystickZ(int32_t joystick) FENLIGHT_NOEXCEPT;

/// Reads the fourth axis, often a rudder.
/// @param joystick  number, 1 to 16
/// @return -128 to 127; 256 if there is no such axis or no such joystick
FENLIGHT_API int32_t JoystickR(int32_t joystick) FENLIGHT_NOEXCEPT;

/// Reads the fifth axis.
/// @param joystick  number, 1 to 16
/// @return -128 to 127; 256 if there is no such axis or no such joystick
FENLIGHT_API int32_t JoystickU(int32_t joystick) FENLIGHT_NOEXCEPT;

/// Reads the sixth axis.
/// @param joystick  number, 1 to 16
/// @return -128 to 127; 256 if there is no such axis or no such joystick
FENLIGHT_API int32_t JoystickV(int32_t joystick) FENLIGHT_NOEXCEPT;

/// Reads the buttons of a joystick.
/// @param joystick  number, 1 to 16
/// @return a bit for each button that is down, bit 0 for the first of up to 32; 0 if there is no such
///         joystick
FENLIGHT_API int32_t JoystickButton(int32_t joystick) FENLIGHT_NOEXCEPT;

/// Tells how many buttons a joystick has.
/// @param joystick  number, 1 to 16
/// @return 0 to 32; 0 if there is no such joystick
FENLIGHT_API int32_t CountJoystickButtons(int32_t joystick) FENLIGHT_NOEXCEPT;

/// Moves the mouse cursor; on the screen too, where a window is open. Inside a rectangle of SetMouseRect it
/// goes to the place nearest to the one asked for.
/// @param x, y  pixels of the screen, from its top left corner
FENLIGHT_API void SetMouseXY(int32_t x, int32_t y) FENLIGHT_NOEXCEPT;

/// Confines the mouse cursor to a rectangle, and moves it in. The pointer on the screen is brought back as
/// often as it leaves while a window of this program has the keyboard's focus. A rectangle of the screen's
/// size frees it again.
/// @param left, top, right, bottom  pixels of the screen; right and bottom are excluded. An empty rectangle
///                                  changes nothing.
FENLIGHT_API void SetMouseRect(int32_t left, int32_t top, int32_t right, int32_t bottom) FENLIGHT_NOEXCEPT;

/// Reads the buttons of the mouse.
/// @return 1 for the left one, 2 for the right one, 4 for the middle one, added; 0 without a window
FENLIGHT_API int32_t MouseButton(void) FENLIGHT_NOEXCEPT;

/// Tells whether the mouse cursor is in a rectangle of the active window's picture. Where no window of this
/// program is active, the rectangle is one of the screen.
/// @param left, top, right, bottom  pixels; right and bottom are excluded, so nothing is in an empty
///                                  rectangle
/// @return 1 or 0
FENLIGHT_API int32_t PMouse(int32_t left, int32_t top, int32_t right, int32_t bottom) FENLIGHT_NOEXCEPT;

/// Gives a key that was pressed since the last call and is still down, each press once, however long the key
/// is held. Of several keys the one with the lowest code comes first, the others with the next calls. Mouse
/// buttons are keys (1, 2, 4), and Shift, Control and Alt come under the common code (16 to 18) and then
/// under their side's (160 to 165).
/// @return a published virtual-key code, 0 to 255: letters and digits are their capital ASCII codes, 37 to 40
///         the arrows left, up, right and down; -1 if there is none, as always without a window
/// @note A key that was pressed and let go between two calls is not given.
FENLIGHT_API int32_t GetSystemKey(void) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
