// SPDX-License-Identifier: Zlib
// The joysticks that are plugged in, on SDL's joystick part, which needs no window. One lock covers all of
// it; whoever asks reads the devices anew, so no thread runs for joysticks.
#include <SDL.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <mutex>

#include "fenlight/platform/input.h"
#include "fenlight/platform/system.h"
#include "platform/system/sdl_start.h"
#include "platform/window/display_thread.h"

namespace fenlight::platform {
namespace {

constexpr size_t kSeats = 16;
constexpr int kMostAxes = 6;
constexpr int kMostButtons = 32;
constexpr UINT kHighestPosition = 65535;
constexpr int kCentre = 32768;  // of a position, where SDL has 0

struct Seat {
    SDL_Joystick *device = nullptr;  // nullptr: free
    JOYCAPSA caps;
    JOYINFOEX position;  // everything that can be asked for
};

class Joysticks {
  public:
    // Both read the devices first, unless that was done in this millisecond: a game asks for all axes of a
    // device one after the other. JOYERR_NOERROR, or why not; nothing is written then.
    UINT GetCaps(size_t number, JOYCAPSA &caps);
    UINT GetPosition(size_t number, JOYINFOEX &position);

  private:
    // All of them are called with the lock held.
    UINT FindSeat(size_t number, DWORD tick);
    bool Start();
    void Refresh();
    void ClearLeftSeats();
    void SeatNewcomers();

    std::mutex mutex_;
    std::array<Seat, kSeats> seats_{};
    bool isStarted_ = false;
    DWORD refreshedAt_ = 0;
    SDL_JoystickID lastSeen_ = -1;  // SDL counts devices upwards; each is tried once
};

// Never destroyed: it may be asked while the process exits.
Joysticks &TheJoysticks() {
    static Joysticks &joysticks = *new Joysticks;
    return joysticks;
}

UINT Limit(int axisCount, int axis) { return axis < axisCount ? kHighestPosition : 0; }

JOYCAPSA DescribeDevice(SDL_Joystick *device) {
    JOYCAPSA caps{};
    const int axes = std::min(SDL_JoystickNumAxes(device), kMostAxes);
    const bool hasHat = SDL_JoystickNumHats(device) > 0;
    if (const char *name = SDL_JoystickName(device))
        std::strncpy(caps.szPname, name, sizeof caps.szPname - 1);
    caps.wMid = SDL_JoystickGetVendor(device);
    caps.wPid = SDL_JoystickGetProduct(device);
    caps.wXmax = Limit(axes, 0);
    caps.wYmax = Limit(axes, 1);
    caps.wZmax = Limit(axes, 2);
    caps.wRmax = Limit(axes, 3);
    caps.wUmax = Limit(axes, 4);
    caps.wVmax = Limit(axes, 5);
    caps.wNumButtons = static_cast<UINT>(std::clamp(SDL_JoystickNumButtons(device), 0, kMostButtons));
    caps.wPeriodMin = 1;
    caps.wPeriodMax = 1000;
    caps.wCaps = (axes > 2 ? JOYCAPS_HASZ : 0) | (axes > 3 ? JOYCAPS_HASR : 0) |
                 (axes > 4 ? JOYCAPS_HASU : 0) | (axes > 5 ? JOYCAPS_HASV : 0) |
                 (hasHat ? JOYCAPS_HASPOV | JOYCAPS_POV4DIR : 0);
    caps.wMaxAxes = kMostAxes;
    caps.wNumAxes = static_cast<UINT>(std::max(axes, 0));
    caps.wMaxButtons = kMostButtons;
    return caps;
}

DWORD HatAngle(SDL_Joystick *device) {
    switch (SDL_JoystickGetHat(device, 0)) {
        case SDL_HAT_UP:
            return 0;
        case SDL_HAT_RIGHTUP:
            return 4500;
        case SDL_HAT_RIGHT:
            return 9000;
        case SDL_HAT_RIGHTDOWN:
            return 13500;
        case SDL_HAT_DOWN:
            return 18000;
        case SDL_HAT_LEFTDOWN:
            return 22500;
        case SDL_HAT_LEFT:
            return 27000;
        case SDL_HAT_LEFTUP:
            return 31500;
        default:
            return JOY_POVCENTERED;
    }
}

// An axis that the device lacks rests in the middle: between asking for the caps and for the position
// another device may have taken the seat, and the caller must not be steered into a corner by that.
void ReadDevice(Seat &seat) {
    JOYINFOEX &position = seat.position;
    const auto read = [&seat](int axis) {
        const bool isThere = static_cast<UINT>(axis) < seat.caps.wNumAxes;
        return static_cast<DWORD>(isThere ? SDL_JoystickGetAxis(seat.device, axis) + kCentre : kCentre);
    };
    position.dwXpos = read(0);
    position.dwYpos = read(1);
    position.dwZpos = read(2);
    position.dwRpos = read(3);
    position.dwUpos = read(4);
    position.dwVpos = read(5);
    position.dwButtons = 0;
    for (UINT button = 0; button < seat.caps.wNumButtons; ++button) {
        const DWORD isDown = SDL_JoystickGetButton(seat.device, static_cast<int>(button));
        position.dwButtons |= isDown << button;
    }
    position.dwButtonNumber = static_cast<DWORD>(std::popcount(position.dwButtons));
    position.dwPOV = HatAngle(seat.device);
}

bool StartJoysticks() {
    const std::lock_guard lock(sdlStartLock);
    SDL_SetHint(SDL_HINT_JOYSTICK_ALLOW_BACKGROUND_EVENTS, "1");
    if (SDL_InitSubSystem(SDL_INIT_JOYSTICK) != 0) return false;
    // They are polled. Events would fill SDL's queue where no window is open to empty it.
    SDL_JoystickEventState(SDL_IGNORE);
    return true;
}

UINT Joysticks::GetCaps(size_t number, JOYCAPSA &caps) {
    const DWORD tick = GetTickCount();
    const std::lock_guard lock(mutex_);
    const UINT result = FindSeat(number, tick);
    if (result == JOYERR_NOERROR) caps = seats_[number].caps;
    return result;
}

UINT Joysticks::GetPosition(size_t number, JOYINFOEX &position) {
    const DWORD tick = GetTickCount();
    const std::lock_guard lock(mutex_);
    const UINT result = FindSeat(number, tick);
    if (result == JOYERR_NOERROR) position = seats_[number].position;
    return result;
}

UINT Joysticks::FindSeat(size_t number, DWORD tick) {
    if (number >= kSeats) return JOYERR_PARMS;
    if (!isStarted_ && !Start()) return MMSYSERR_NODRIVER;
    if (tick != refreshedAt_) {
        refreshedAt_ = tick;
        Refresh();
    }
    return seats_[number].device != nullptr ? JOYERR_NOERROR : JOYERR_UNPLUGGED;
}

// SDL's subsystems are started one after the other, and the display thread starts the largest.
bool Joysticks::Start() {
    RunOnDisplayThread([this] { isStarted_ = StartJoysticks(); });
    refreshedAt_ = ~GetTickCount();
    return isStarted_;
}

void Joysticks::Refresh() {
    SDL_JoystickUpdate();
    ClearLeftSeats();
    SeatNewcomers();
    for (Seat &seat : seats_) {
        if (seat.device != nullptr) ReadDevice(seat);
    }
}

void Joysticks::ClearLeftSeats() {
    for (Seat &seat : seats_) {
        if (seat.device == nullptr || SDL_JoystickGetAttached(seat.device)) continue;
        SDL_JoystickClose(seat.device);
        seat.device = nullptr;
        lastSeen_ = -1;  // one that found no seat may take this one
    }
}

void Joysticks::SeatNewcomers() {
    // Devices may come and go in between, also by the program's own calls.
    SDL_LockJoysticks();
    SDL_JoystickID newest = lastSeen_;
    for (int index = 0; index < SDL_NumJoysticks(); ++index) {
        const SDL_JoystickID instance = SDL_JoystickGetDeviceInstanceID(index);
        newest = std::max(newest, instance);
        const auto holds = [instance](const Seat &seat) {
            return seat.device != nullptr && SDL_JoystickInstanceID(seat.device) == instance;
        };
        const auto isFree = [](const Seat &seat) { return seat.device == nullptr; };
        if (instance <= lastSeen_ || std::any_of(seats_.begin(), seats_.end(), holds)) continue;
        Seat *seat = std::find_if(seats_.begin(), seats_.end(), isFree);
        if (seat == seats_.end() || (seat->device = SDL_JoystickOpen(index)) == nullptr) continue;
        seat->caps = DescribeDevice(seat->device);
    }
    lastSeen_ = newest;
    SDL_UnlockJoysticks();
}

void CopyWanted(const JOYINFOEX &position, JOYINFOEX &info) {
    if (info.dwFlags & JOY_RETURNX) info.dwXpos = position.dwXpos;
    if (info.dwFlags & JOY_RETURNY) info.dwYpos = position.dwYpos;
    if (info.dwFlags & JOY_RETURNZ) info.dwZpos = position.dwZpos;
    if (info.dwFlags & JOY_RETURNR) info.dwRpos = position.dwRpos;
    if (info.dwFlags & JOY_RETURNU) info.dwUpos = position.dwUpos;
    if (info.dwFlags & JOY_RETURNV) info.dwVpos = position.dwVpos;
    if (info.dwFlags & JOY_RETURNPOV) info.dwPOV = position.dwPOV;
    if (info.dwFlags & JOY_RETURNBUTTONS) {
        info.dwButtons = position.dwButtons;
        info.dwButtonNumber = position.dwButtonNumber;
    }
}

static_assert(sizeof(JOYCAPSA) == 404 && sizeof(JOYINFO) == 16 && sizeof(JOYINFOEX) == 52);

}  // namespace
}  // namespace fenlight::platform

using namespace fenlight::platform;

UINT joyGetDevCapsA(uintptr_t joystick, JOYCAPSA *caps, UINT size) noexcept {
    if (caps == nullptr) return MMSYSERR_INVALPARAM;
    if (size != sizeof *caps) return JOYERR_PARMS;
    return TheJoysticks().GetCaps(joystick, *caps);
}

UINT joyGetPos(UINT joystick, JOYINFO *info) noexcept {
    constexpr DWORD kFirstButtons = 0xF;
    if (info == nullptr) return MMSYSERR_INVALPARAM;
    JOYINFOEX position;
    const UINT result = TheJoysticks().GetPosition(joystick, position);
    if (result == JOYERR_NOERROR)
        *info = {position.dwXpos, position.dwYpos, position.dwZpos, position.dwButtons & kFirstButtons};
    return result;
}

UINT joyGetPosEx(UINT joystick, JOYINFOEX *info) noexcept {
    if (info == nullptr) return MMSYSERR_INVALPARAM;
    if (info->dwSize != sizeof *info) return JOYERR_PARMS;
    JOYINFOEX position;
    const UINT result = TheJoysticks().GetPosition(joystick, position);
    if (result == JOYERR_NOERROR) CopyWanted(position, *info);
    return result;
}
