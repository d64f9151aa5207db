// SPDX-License-Identifier: Zlib
// What polling costs: the scan of all keys, one axis of a joystick, the stopwatch. Beside them what a program
// would do without the library: SDL's own state for keys and axes, a plain read of the clock.
#include <SDL.h>
#include <benchmark/benchmark.h>

#include <chrono>

#include "fenlight/desktop.h"
#include "fenlight/input.h"
#include "platform/window/input_state.h"

namespace fenlight {
namespace {

void SystemKeyNonePressed(benchmark::State &state) {
    platform::ForgetInput();
    for (auto _ : state) benchmark::DoNotOptimize(GetSystemKey());
}
BENCHMARK(SystemKeyNonePressed);

// The last code of the scan, pressed anew before each.
void SystemKeyLastPressed(benchmark::State &state) {
    platform::ForgetInput();
    for (auto _ : state) {
        platform::PressKey(255);
        benchmark::DoNotOptimize(GetSystemKey());
    }
}
BENCHMARK(SystemKeyLastPressed);

void SdlScanOfAllKeys(benchmark::State &state) {
    for (auto _ : state) {
        int count = 0;
        const Uint8 *keys = SDL_GetKeyboardState(&count);
        int first = -1;
        for (int i = 0; i < count; ++i) {
            if (keys[i] != 0) {
                first = i;
                break;
            }
        }
        benchmark::DoNotOptimize(first);
    }
}
BENCHMARK(SdlScanOfAllKeys);

// Six axes, twelve buttons.
SDL_Joystick *PlugIn() {
    FindJoystick(1);
    static const int index = SDL_JoystickAttachVirtual(SDL_JOYSTICK_TYPE_FLIGHT_STICK, 6, 12, 1);
    static SDL_Joystick *device = SDL_JoystickOpen(index);
    while (FindJoystick(1) != 0) SDL_Delay(1);
    return device;
}

template <int32_t (*Read)(int32_t)>
void PollJoystick(benchmark::State &state) {
    PlugIn();
    for (auto _ : state) benchmark::DoNotOptimize(Read(1));
}
BENCHMARK(PollJoystick<JoystickX>)->Name("JoystickX");
BENCHMARK(PollJoystick<JoystickV>)->Name("JoystickV");
BENCHMARK(PollJoystick<JoystickButton>)->Name("JoystickButton");

void JoystickOfNoDevice(benchmark::State &state) {
    PlugIn();
    for (auto _ : state) benchmark::DoNotOptimize(JoystickX(9));
}
BENCHMARK(JoystickOfNoDevice);

void SdlAxisWithUpdate(benchmark::State &state) {
    SDL_Joystick *device = PlugIn();
    for (auto _ : state) {
        SDL_JoystickUpdate();
        benchmark::DoNotOptimize(SDL_JoystickGetAxis(device, 0));
    }
}
BENCHMARK(SdlAxisWithUpdate);

void SdlAxisWithoutUpdate(benchmark::State &state) {
    SDL_Joystick *device = PlugIn();
    for (auto _ : state) benchmark::DoNotOptimize(SDL_JoystickGetAxis(device, 0));
}
BENCHMARK(SdlAxisWithoutUpdate);

void MouseInRectangle(benchmark::State &state) {
    for (auto _ : state) benchmark::DoNotOptimize(PMouse(0, 0, 100, 100) + MouseButton());
}
BENCHMARK(MouseInRectangle);

void Watch(benchmark::State &state) {
    StartWatch();
    for (auto _ : state) benchmark::DoNotOptimize(ReadWatch());
}
BENCHMARK(Watch);

void PlainClock(benchmark::State &state) {
    for (auto _ : state) benchmark::DoNotOptimize(std::chrono::steady_clock::now());
}
BENCHMARK(PlainClock);

}  // namespace
}  // namespace fenlight
