// SPDX-License-Identifier: Zlib
#include "platform/audio/output.h"

#include <SDL.h>

#include <mutex>

#include "platform/system/sdl_start.h"

namespace fenlight::platform {
namespace {

constinit Mixer mixer;
constinit std::mutex outputLock;  // guards the device and the count; the mixing thread never takes it
int holders = 0;
SDL_AudioDeviceID device = 0;

void PullBlock(void *, Uint8 *stream, int byteCount) {
    constexpr int kFrameBytes = 2 * sizeof(float);
    mixer.Mix(reinterpret_cast<float *>(stream), byteCount / kFrameBytes);
}

// Both with SDL's start lock held.
bool OpenDevice() {
    if (SDL_InitSubSystem(SDL_INIT_AUDIO) != 0) return false;
    SDL_AudioSpec wanted{};
    wanted.freq = kMixRate;
    wanted.format = AUDIO_F32SYS;
    wanted.channels = 2;
    wanted.samples = kMixBlockFrames;
    wanted.callback = PullBlock;
    device = SDL_OpenAudioDevice(nullptr, 0, &wanted, nullptr, 0);
    if (device == 0) SDL_QuitSubSystem(SDL_INIT_AUDIO);
    return device != 0;
}

// Without a sound card SDL starts a driver all the same, and only opening its device fails.
bool OpenSilentDevice() {
    SDL_SetHintWithPriority(SDL_HINT_AUDIODRIVER, "dummy", SDL_HINT_OVERRIDE);
    const bool isOpen = OpenDevice();
    SDL_ResetHint(SDL_HINT_AUDIODRIVER);
    return isOpen;
}

}  // namespace

Mixer &OutputMixer() noexcept { return mixer; }

bool HoldOutput() noexcept {
    const std::lock_guard locked(outputLock);
    if (holders == 0) {
        const std::lock_guard starting(sdlStartLock);
        if (!OpenDevice() && !OpenSilentDevice()) return false;
        SDL_PauseAudioDevice(device, 0);
    }
    ++holders;
    return true;
}

// Closing waits for the block that is being mixed; afterwards nobody mixes.
void LetGoOfOutput() noexcept {
    const std::lock_guard locked(outputLock);
    if (--holders > 0) return;
    SDL_CloseAudioDevice(device);
    {
        const std::lock_guard ending(sdlStartLock);
        SDL_QuitSubSystem(SDL_INIT_AUDIO);
    }
    mixer.Clear();
}

}  // namespace fenlight::platform
