// SPDX-License-Identifier: Zlib
// The mixer with 64 voices, block by block: frames of output per second, and as "share" the part of one core
// that playing at 44.1 kHz takes. A peer mixes the same voices where it is installed. Then the cost of a
// play.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "fenlight/sound.h"
#include "platform/audio/mixer.h"

#if BENCH_SDL2_MIXER
#include <SDL.h>
#include <SDL_mixer.h>
#include <dlfcn.h>
#endif

namespace {

using namespace fenlight::platform;

constexpr int kVoices = 64;
constexpr int kSoundFrames = 22050;

// A sine so quiet that 64 voices stay in range.
std::vector<int16_t> MakeSamples(int channels) {
    std::vector<int16_t> samples(static_cast<size_t>(kSoundFrames * channels));
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] = static_cast<int16_t>(500 * std::sin(static_cast<double>(i) * 0.05));
    return samples;
}

WAVEFORMATEX FormatOf(int channels, uint32_t rate) {
    const auto align = static_cast<WORD>(2 * channels);
    return {WAVE_FORMAT_PCM, static_cast<WORD>(channels), rate, rate * align, align, 16, 0};
}

void ReportShare(benchmark::State &state) {
    const double frames = static_cast<double>(state.iterations()) * kMixBlockFrames;
    state.SetItemsProcessed(static_cast<int64_t>(frames));
    state.counters["share"] =
        benchmark::Counter(frames / kMixRate, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

void Mixing(benchmark::State &state) {
    const auto channels = static_cast<int>(state.range(0));
    const std::vector<int16_t> samples = MakeSamples(channels);
    const auto byteCount = static_cast<uint32_t>(samples.size() * sizeof(int16_t));
    SampleBlock *block =
        SampleBlock::Create(FormatOf(channels, static_cast<uint32_t>(state.range(1))), byteCount);
    std::memcpy(block->Bytes(), samples.data(), byteCount);
    Mixer mixer;
    std::array<Voice *, kVoices> voices{};
    for (int i = 0; i < kVoices; ++i) {
        Voice *voice = voices[static_cast<size_t>(i)] = Voice::Create(*block);
        voice->loudness.SetVolume(-10 * i);
        voice->loudness.SetPan(20 * i);
        voice->SetFrame(static_cast<uint32_t>(300 * i));
        mixer.Play(*voice, true);
    }
    std::vector<float> stereo(2 * kMixBlockFrames);
    for ([[maybe_unused]] auto each : state) {
        mixer.Mix(stereo.data(), kMixBlockFrames);
        benchmark::DoNotOptimize(stereo.data());
    }
    ReportShare(state);
    mixer.Clear();
    for (Voice *voice : voices) voice->DropReference();
    block->DropReference();
}
BENCHMARK(Mixing)
    ->ArgNames({"channels", "rate"})
    ->Args({1, 44100})
    ->Args({2, 44100})
    ->Args({1, 22050})
    ->Args({2, 22050});

// The plainest loop over samples that are floats and stereo already: what must be read, multiplied and added.
void MixingPlain(benchmark::State &state) {
    std::vector<float> samples(2 * kSoundFrames, 0.01F);
    std::vector<float> stereo(2 * kMixBlockFrames);
    for ([[maybe_unused]] auto each : state) {
        std::fill(stereo.begin(), stereo.end(), 0.0F);
        for (int voice = 0; voice < kVoices; ++voice) {
            const float *source = samples.data() + 600 * voice;
            const float left = 0.5F, right = 0.25F;
            for (size_t i = 0; i < stereo.size(); i += 2) {
                stereo[i] += source[i] * left;
                stereo[i + 1] += source[i + 1] * right;
            }
            benchmark::DoNotOptimize(stereo.data());
        }
    }
    ReportShare(state);
}
BENCHMARK(MixingPlain);

#if BENCH_SDL2_MIXER
// The peer shows its mixing function to nobody but the device, so this stands in for opening the device.
SDL_AudioSpec peerSpec{};
bool catchesDevice = false;
constexpr SDL_AudioDeviceID kCaughtDevice = 1000;

void MixingPeer(benchmark::State &state) {
    setenv("SDL_AUDIODRIVER", "dummy", 1);
    SDL_InitSubSystem(SDL_INIT_AUDIO);
    catchesDevice = true;
    const int failed = Mix_OpenAudioDevice(44100, AUDIO_S16SYS, 2, kMixBlockFrames, nullptr, 0);
    catchesDevice = false;
    if (failed != 0 || peerSpec.callback == nullptr) return state.SkipWithError("no device");
    std::vector<int16_t> samples = MakeSamples(2);
    Mix_Chunk *chunk = Mix_QuickLoad_RAW(reinterpret_cast<Uint8 *>(samples.data()),
                                         static_cast<Uint32>(samples.size() * sizeof(int16_t)));
    Mix_AllocateChannels(kVoices);
    for (int i = 0; i < kVoices; ++i) {
        Mix_PlayChannel(i, chunk, -1);
        Mix_Volume(i, 128 - i);
        if (state.range(0) != 0) Mix_SetPanning(i, static_cast<Uint8>(254 - i), 254);
    }
    std::vector<Uint8> block(kMixBlockFrames * 4);
    for ([[maybe_unused]] auto each : state) {
        peerSpec.callback(peerSpec.userdata, block.data(), static_cast<int>(block.size()));
        benchmark::DoNotOptimize(block.data());
    }
    ReportShare(state);
    Mix_HaltChannel(-1);
    Mix_FreeChunk(chunk);
    Mix_CloseAudio();
    SDL_QuitSubSystem(SDL_INIT_AUDIO);
}
BENCHMARK(MixingPeer)->ArgName("pan")->Arg(0)->Arg(1);
#endif

// With the output running beside it, as in a game: each voice is stopped, so that each play starts one.
void Playing(benchmark::State &state) {
    setenv("SDL_AUDIODRIVER", "dummy", 1);
    const std::vector<int16_t> samples = MakeSamples(1);
    const auto byteCount = static_cast<uint32_t>(samples.size() * sizeof(int16_t));
    struct Header {
        char riff[4] = {'R', 'I', 'F', 'F'};
        uint32_t size;
        char wave[8] = {'W', 'A', 'V', 'E', 'f', 'm', 't', ' '};
        uint32_t formatSize = sizeof(WAVEFORMATEX) + 2;
        WAVEFORMATEX format = FormatOf(1, 44100);
        uint16_t filler = 0;
        char data[4] = {'d', 'a', 't', 'a'};
        uint32_t dataSize;
    } header{.size = byteCount + 48, .dataSize = byteCount};
    std::vector<uint8_t> image(sizeof header + byteCount);
    std::memcpy(image.data(), &header, sizeof header);
    std::memcpy(image.data() + sizeof header, samples.data(), byteCount);
    DSoundInit(0);
    const uintptr_t sound = DSoundLoadMemory(image.data(), static_cast<int32_t>(image.size()));
    if (sound == 0) return state.SkipWithError("no sound");
    for ([[maybe_unused]] auto each : state) DSoundStop(DSoundPlay(sound, 0));
    DSoundUnLoad(sound);
    DSoundDeInit();
}
BENCHMARK(Playing);

}  // namespace

#if BENCH_SDL2_MIXER
SDL_AudioDeviceID SDL_OpenAudioDevice(const char *device, int isCapture, const SDL_AudioSpec *desired,
                                      SDL_AudioSpec *obtained, int changes) {
    if (!catchesDevice) {
        static const auto open =
            reinterpret_cast<decltype(&SDL_OpenAudioDevice)>(dlsym(RTLD_NEXT, "SDL_OpenAudioDevice"));
        return open(device, isCapture, desired, obtained, changes);
    }
    peerSpec = *desired;
    peerSpec.size = peerSpec.samples * 4U;
    if (obtained != nullptr) *obtained = peerSpec;
    return kCaughtDevice;
}
#endif
