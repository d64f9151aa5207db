// SPDX-License-Identifier: Zlib
// SDL's virtual joysticks, plugged in and out. The clock stands still but for Later: what is read depends on
// the millisecond.
#include <SDL.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

#include "fenlight/input.h"
#include "fenlight/platform/input.h"
#include "platform/system/clock.h"

namespace fenlight {
namespace {

constexpr int32_t (*kAxes[])(int32_t) = {JoystickX, JoystickY, JoystickZ, JoystickR, JoystickU, JoystickV};

class JoystickTest : public ::testing::Test, platform::Clock {
  protected:
    JoystickTest() {
        ReplaceClock(this);
        FindJoystick(1);  // starts SDL's part, which virtual ones need
    }
    ~JoystickTest() override {
        for (const int32_t device : devices_) UnplugDevice(device);
        Later();
        FindJoystick(1);
        platform::ReplaceClock(nullptr);
    }

    // SDL's own number of the device.
    SDL_JoystickID Plug(int axes, int buttons, int hats = 0) {
        const int index = SDL_JoystickAttachVirtual(SDL_JOYSTICK_TYPE_FLIGHT_STICK, axes, buttons, hats);
        devices_.push_back(SDL_JoystickGetDeviceInstanceID(index));
        Later();
        return devices_.back();
    }
    void Unplug(SDL_JoystickID device) {
        UnplugDevice(device);
        std::erase(devices_, device);
        Later();
    }
    void Later() { ++tick_; }
    SDL_Joystick *Open(int32_t joystick, SDL_JoystickID device) {
        EXPECT_EQ(FindJoystick(joystick), 0);
        return SDL_JoystickFromInstanceID(device);
    }

  private:
    static void UnplugDevice(SDL_JoystickID device) {
        for (int index = 0; index < SDL_NumJoysticks(); ++index) {
            if (SDL_JoystickGetDeviceInstanceID(index) == device) SDL_JoystickDetachVirtual(index);
        }
    }
    uint32_t TickCount() noexcept override { return tick_; }
    void Sleep(uint32_t) noexcept override {}

    std::atomic<uint32_t> tick_{1000};
    std::vector<SDL_JoystickID> devices_;
};

TEST_F(JoystickTest, NumbersWithoutADeviceAnswerAsNoJoystick) {
    const SDL_JoystickID only = Plug(6, 3);
    for (const int32_t number : {0, -1, 2, 16, 17, 257, INT32_MIN, INT32_MAX}) {
        EXPECT_EQ(FindJoystick(number), -1) << number;
        for (const auto axis : kAxes) EXPECT_EQ(axis(number), 256) << number;
        EXPECT_EQ(JoystickButton(number) | CountJoystickButtons(number), 0) << number;
    }
    EXPECT_EQ(FindJoystick(1), 0);
    Unplug(only);
    EXPECT_EQ(FindJoystick(1), -1);
    EXPECT_EQ(JoystickX(1), 256);
}

TEST_F(JoystickTest, EachAxisAndButtonIsReadOnItsOwnScale) {
    SDL_Joystick *device = Open(1, Plug(6, 12));
    const struct {
        int16_t position;  // SDL's
        int32_t value;
    } cases[] = {{-32768, -128}, {-32513, -128}, {-32512, -127}, {-1, -1},
                 {0, 0},         {255, 0},       {256, 1},       {32767, 127}};
    for (int moved = 0; moved < 6; ++moved) {
        for (const auto &[position, value] : cases) {
            for (int axis = 0; axis < 6; ++axis)
                SDL_JoystickSetVirtualAxis(device, axis, axis == moved ? position : int16_t{0x1234});
            Later();
            for (int axis = 0; axis < 6; ++axis)
                EXPECT_EQ(kAxes[axis](1), axis == moved ? value : 0x12) << axis << " at " << position;
        }
    }
    EXPECT_EQ(CountJoystickButtons(1), 12);
    EXPECT_EQ(JoystickButton(1), 0);
    for (const int button : {0, 11}) SDL_JoystickSetVirtualButton(device, button, 1);
    EXPECT_EQ(JoystickButton(1), 0) << "read in this millisecond already";
    Later();
    EXPECT_EQ(JoystickButton(1), 0x801);
}

TEST_F(JoystickTest, AnAxisThatADeviceLacksIsToldApartFromOneInTheMiddle) {
    for (int axes = 0; axes <= 7; ++axes) {
        const SDL_JoystickID device = Plug(axes, 40);
        for (int axis = 0; axis < 6; ++axis)
            EXPECT_EQ(kAxes[axis](1), axis < axes ? 0 : 256) << axes << " axes";
        EXPECT_EQ(CountJoystickButtons(1), 32) << "more have no bit";
        SDL_JoystickSetVirtualButton(Open(1, device), 31, 1);
        Later();
        EXPECT_EQ(JoystickButton(1), INT32_MIN);
        Unplug(device);
    }
}

// The number of buttons tells the devices apart.
TEST_F(JoystickTest, DevicesKeepTheirNumbersAndNewOnesTakeTheLowestThatIsFree) {
    Plug(2, 1);
    const SDL_JoystickID second = Plug(2, 2);
    Plug(2, 3);
    EXPECT_EQ(CountJoystickButtons(1) * 100 + CountJoystickButtons(2) * 10 + CountJoystickButtons(3), 123);
    Unplug(second);
    EXPECT_EQ(CountJoystickButtons(1) * 100 + CountJoystickButtons(2) * 10 + CountJoystickButtons(3), 103);
    for (int buttons = 4; buttons <= 18; ++buttons) Plug(2, buttons);
    EXPECT_EQ(CountJoystickButtons(1) * 100 + CountJoystickButtons(2) * 10 + CountJoystickButtons(3), 143);
    for (int32_t number = 4; number <= 16; ++number) EXPECT_EQ(CountJoystickButtons(number), number + 1);
    const SDL_JoystickID late = Plug(2, 20);
    EXPECT_EQ(CountJoystickButtons(16), 17) << "17 devices: the last two have no place";
    Unplug(SDL_JoystickGetDeviceInstanceID(0));
    EXPECT_EQ(CountJoystickButtons(1), 18) << "until one is free";
    Unplug(late);
    EXPECT_EQ(CountJoystickButtons(1), 18);
}

TEST_F(JoystickTest, PublishedCallsFillWhatIsAskedForAndRefuseWrongRecords) {
    SDL_Joystick *device = Open(1, Plug(3, 6, 1));
    SDL_JoystickSetVirtualAxis(device, 1, 1000);
    SDL_JoystickSetVirtualHat(device, 0, SDL_HAT_RIGHTDOWN);
    for (const int button : {1, 3, 5}) SDL_JoystickSetVirtualButton(device, button, 1);
    Later();
    JOYINFOEX info{
        sizeof info, JOY_RETURNY | JOY_RETURNPOV | JOY_RETURNBUTTONS, 77, 0, 77, 0, 0, 0, 0, 0, 0, 0, 0};
    info.dwFlags |= JOY_RETURNR;
    ASSERT_EQ(joyGetPosEx(0, &info), JOYERR_NOERROR);
    EXPECT_EQ(info.dwYpos, 33768u);
    EXPECT_EQ(info.dwRpos, 32768u) << "lacks the axis, as if it rested";
    EXPECT_TRUE(info.dwXpos == 77 && info.dwZpos == 77) << "not asked for";
    EXPECT_TRUE(info.dwPOV == 13500 && info.dwButtons == 0x2A && info.dwButtonNumber == 3);
    JOYINFO simple;
    ASSERT_EQ(joyGetPos(0, &simple), JOYERR_NOERROR);
    EXPECT_TRUE(simple.wYpos == 33768 && simple.wButtons == 0xA) << "the first four";
    JOYCAPSA caps;
    ASSERT_EQ(joyGetDevCapsA(0, &caps, 404), JOYERR_NOERROR);
    EXPECT_TRUE(caps.wZmax == 65535 && caps.wRmax == 0);
    EXPECT_EQ(caps.wCaps, JOYCAPS_HASZ | JOYCAPS_HASPOV | JOYCAPS_POV4DIR);

    EXPECT_EQ(joyGetPosEx(1, &info), JOYERR_UNPLUGGED);
    EXPECT_EQ(joyGetPos(16, &simple), JOYERR_PARMS);
    EXPECT_EQ(joyGetDevCapsA(UINTPTR_MAX, &caps, 404), JOYERR_PARMS);
    EXPECT_EQ(joyGetDevCapsA(0, &caps, 403), JOYERR_PARMS);
    info.dwSize = 51;
    EXPECT_EQ(joyGetPosEx(0, &info), JOYERR_PARMS);
    EXPECT_EQ(joyGetPos(0, nullptr) + joyGetPosEx(0, nullptr) + joyGetDevCapsA(0, nullptr, 404), 33u);
}

TEST_F(JoystickTest, CanBePolledOnAllThreadsWhileDevicesComeAndGo) {
    std::atomic<bool> isOver{false};
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            while (!isOver) {
                Later();
                for (int32_t number = 1; number <= 2; ++number) {
                    const int32_t value = JoystickV(number);
                    wrong += value != 0 && value != 256;
                    wrong += (JoystickButton(number) & ~7) != 0 || CountJoystickButtons(number) > 7;
                }
            }
        });
    }
    for (int round = 0; round < 100; ++round) {
        const SDL_JoystickID first = Plug(6, 7);
        const SDL_JoystickID second = Plug(5, 3);
        Unplug(first);
        Unplug(second);
    }
    isOver = true;
    for (auto &thread : threads) thread.join();
    EXPECT_EQ(wrong, 0);
}

}  // namespace
}  // namespace fenlight
