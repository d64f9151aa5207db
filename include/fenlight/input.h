/* SPDX-License-Identifier: Zlib */
/* Joysticks, mouse and keys. Not yet part of the library: declared so that the types are settled, not
 * exported. */
#ifndef FENLIGHT_INPUT_H
#define FENLIGHT_INPUT_H
#include "types.h"

FENLIGHT_BEGIN_C

FENLIGHT_API int32_t FindJoystick(int32_t joystick) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t JoystickX(int32_t joystick) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t JoystickY(int32_t joystick) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t JoystickZ(int32_t joystick) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t JoystickR(int32_t joystick) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t JoystickU(int32_t joystick) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t JoystickV(int32_t joystick) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t JoystickButton(int32_t joystick) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t CountJoystickButtons(int32_t joystick) FENLIGHT_NOEXCEPT;
FENLIGHT_API void SetMouseXY(int32_t x, int32_t y) FENLIGHT_NOEXCEPT;
FENLIGHT_API void SetMouseRect(int32_t left, int32_t top, int32_t right, int32_t bottom) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t MouseButton(void) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t PMouse(int32_t left, int32_t top, int32_t right, int32_t bottom) FENLIGHT_NOEXCEPT;
FENLIGHT_API int32_t GetSystemKey(void) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
