// SPDX-License-Identifier: Zlib
#include "fenlight/input.h"
#include "fenlight/platform/input.h"

namespace fenlight {
namespace {

constexpr int32_t kNoAxis = 256;  // one more than an axis can give

// Numbers start with 1, the platform's with 0. What is below 1 wraps to one that it refuses.
constexpr UINT Identifier(int32_t joystick) { return static_cast<UINT>(joystick) - 1; }

// A joystick that is not there leaves the record empty.
JOYCAPSA CapsOf(int32_t joystick) {
    JOYCAPSA caps{};
    joyGetDevCapsA(Identifier(joystick), &caps, sizeof caps);
    return caps;
}

constexpr int32_t ScaleAxis(DWORD position) { return static_cast<int32_t>(position >> 8) - 128; }

template <UINT JOYCAPSA::*Maximum, UINT JOYINFO::*Position>
int32_t ReadAxis(int32_t joystick) {
    if (CapsOf(joystick).*Maximum == 0) return kNoAxis;
    JOYINFO info{};
    return joyGetPos(Identifier(joystick), &info) == JOYERR_NOERROR ? ScaleAxis(info.*Position) : kNoAxis;
}

// False, and a record of zeros, if the joystick has gone.
bool ReadExtended(int32_t joystick, DWORD flags, JOYINFOEX &info) {
    info = {};
    info.dwSize = sizeof info;
    info.dwFlags = flags;
    return joyGetPosEx(Identifier(joystick), &info) == JOYERR_NOERROR;
}

template <UINT JOYCAPSA::*Maximum, DWORD JOYINFOEX::*Position, DWORD Flag>
int32_t ReadExtendedAxis(int32_t joystick) {
    if (CapsOf(joystick).*Maximum == 0) return kNoAxis;
    JOYINFOEX info;
    return ReadExtended(joystick, Flag, info) ? ScaleAxis(info.*Position) : kNoAxis;
}

}  // namespace
}  // namespace fenlight

using namespace fenlight;

int32_t FindJoystick(int32_t joystick) noexcept {
    JOYINFO info;
    return joyGetPos(Identifier(joystick), &info) == JOYERR_NOERROR ? 0 : -1;
}

int32_t JoystickX(int32_t joystick) noexcept { return ReadAxis<&JOYCAPSA::wXmax, &JOYINFO::wXpos>(joystick); }

int32_t JoystickY(int32_t joystick) noexcept { return ReadAxis<&JOYCAPSA::wYmax, &JOYINFO::wYpos>(joystick); }

int32_t JoystickZ(int32_t joystick) noexcept {
    return ReadExtendedAxis<&JOYCAPSA::wZmax, &JOYINFOEX::dwZpos, JOY_RETURNZ>(joystick);
}

int32_t JoystickR(int32_t joystick) noexcept {
    return ReadExtendedAxis<&JOYCAPSA::wRmax, &JOYINFOEX::dwRpos, JOY_RETURNR>(joystick);
}

int32_t JoystickU(int32_t joystick) noexcept {
    return ReadExtendedAxis<&JOYCAPSA::wUmax, &JOYINFOEX::dwUpos, JOY_RETURNU>(joystick);
}

int32_t JoystickV(int32_t joystick) noexcept {
    return ReadExtendedAxis<&JOYCAPSA::wVmax, &JOYINFOEX::dwVpos, JOY_RETURNV>(joystick);
}

int32_t JoystickButton(int32_t joystick) noexcept {
    JOYINFOEX info;
    return ReadExtended(joystick, JOY_RETURNBUTTONS, info) ? static_cast<int32_t>(info.dwButtons) : 0;
}

int32_t CountJoystickButtons(int32_t joystick) noexcept {
    return static_cast<int32_t>(CapsOf(joystick).wNumButtons);
}
