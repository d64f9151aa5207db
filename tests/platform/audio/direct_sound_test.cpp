// SPDX-License-Identifier: Zlib
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "fenlight/platform/sound.h"
#include "platform/system/failure_point.h"

namespace fenlight::platform {
namespace {

constexpr DWORD kControls = DSBCAPS_CTRLFREQUENCY | DSBCAPS_CTRLPAN | DSBCAPS_CTRLVOLUME;

struct Sound {
    explicit Sound(DWORD size = 1000, WAVEFORMATEX wanted = {1, 1, 44100, 88200, 2, 16, 0})
        : format(wanted), description{sizeof description, kControls, size, 0, &format, {}} {
        EXPECT_EQ(DirectSoundCreate(nullptr, &object, nullptr), DS_OK);
    }
    ~Sound() {
        if (buffer != nullptr) buffer->Release();
        object->Release();
    }
    HRESULT Create() { return object->CreateSoundBuffer(&description, &buffer, nullptr); }

    WAVEFORMATEX format;
    DSBUFFERDESC description;
    IDirectSound *object = nullptr;
    IDirectSoundBuffer *buffer = nullptr;
};

DWORD StatusOf(IDirectSoundBuffer *buffer) {
    DWORD status = 99;
    EXPECT_EQ(buffer->GetStatus(&status), DS_OK);
    return status;
}

TEST(DirectSound, RefusesWhatItCannotPlay) {
    const struct {
        const char *what;
        std::function<void(Sound &)> spoil;
        HRESULT result;
    } cases[] = {
        {"size 0", [](Sound &s) { s.description.dwBufferBytes = 0; }, DSERR_INVALIDPARAM},
        {"size 3", [](Sound &s) { s.description.dwBufferBytes = 3; }, DSERR_INVALIDPARAM},
        {"size too large", [](Sound &s) { s.description.dwBufferBytes = 0x10000000; }, DSERR_INVALIDPARAM},
        {"record size", [](Sound &s) { s.description.dwSize = 20; }, DSERR_INVALIDPARAM},
        {"no format", [](Sound &s) { s.description.lpwfxFormat = nullptr; }, DSERR_INVALIDPARAM},
        {"primary with size", [](Sound &s) { s.description.dwFlags = 1; }, DSERR_INVALIDPARAM},
        {"compressed", [](Sound &s) { s.format.wFormatTag = 0x11; }, DSERR_BADFORMAT},
        {"no channels", [](Sound &s) { s.format.nChannels = s.format.nBlockAlign = 0; }, DSERR_BADFORMAT},
        {"3 channels", [](Sound &s) { s.format.nChannels = 3, s.format.nBlockAlign = 6; }, DSERR_BADFORMAT},
        {"align 0", [](Sound &s) { s.format.nBlockAlign = 0; }, DSERR_BADFORMAT},
        {"12 bit", [](Sound &s) { s.format.wBitsPerSample = 12, s.format.nBlockAlign = 1; }, DSERR_BADFORMAT},
        {"rate 0", [](Sound &s) { s.format.nSamplesPerSec = 0; }, DSERR_BADFORMAT},
        {"no frame", [](Sound &s) { s.format = {1, 2, 44100, 0, 8, 32, 0}, s.description.dwBufferBytes = 7; },
         DSERR_BADFORMAT},
    };
    for (const auto &[what, spoil, result] : cases) {
        Sound sound;
        spoil(sound);
        sound.buffer = reinterpret_cast<IDirectSoundBuffer *>(8);
        EXPECT_EQ(sound.Create(), result) << what;
        EXPECT_EQ(sound.buffer, nullptr) << what;
    }
}

TEST(DirectSound, MethodsStandInThePublishedPlacesOfTheTable) {
    Sound sound;
    ASSERT_EQ(sound.Create(), DS_OK);
    void *const *methods = *reinterpret_cast<void *const *const *>(sound.buffer);
    const auto set = [&](int place, LONG value) {
        return reinterpret_cast<HRESULT (*)(void *, LONG)>(methods[place])(sound.buffer, value);
    };
    const auto get = [&](int place) {
        LONG value = -1;
        EXPECT_EQ(reinterpret_cast<HRESULT (*)(void *, LONG *, void *)>(methods[place])(sound.buffer, &value,
                                                                                        nullptr),
                  DS_OK);
        return value;
    };
    EXPECT_EQ(set(15, -1234) | set(16, 777) | set(17, 30000), DS_OK);
    EXPECT_EQ(get(6), -1234);
    EXPECT_EQ(get(7), 777);
    EXPECT_EQ(get(8), 30000);
    EXPECT_EQ(set(17, 99), DSERR_INVALIDPARAM);
    EXPECT_EQ(set(17, 0), DS_OK);
    EXPECT_EQ(get(8), 44100);
    EXPECT_EQ(set(14, 0), DSERR_UNSUPPORTED);
    EXPECT_EQ(set(13, 998), DS_OK);
    EXPECT_EQ(get(4), 998);
    EXPECT_EQ(set(13, 1000), DSERR_INVALIDPARAM);
}

TEST(DirectSound, DuplicatesShareTheSamplesAndNothingElse) {
    Sound sound(10);
    ASSERT_EQ(sound.Create(), DS_OK);
    sound.buffer->SetVolume(-500);
    IDirectSoundBuffer *twin = nullptr;
    ASSERT_EQ(sound.object->DuplicateSoundBuffer(sound.buffer, &twin), DS_OK);
    sound.buffer->SetVolume(-700);
    sound.buffer->Play(0, 0, DSBPLAY_LOOPING);
    LONG volume = 0;
    twin->GetVolume(&volume);
    EXPECT_EQ(volume, -500);
    EXPECT_EQ(StatusOf(twin), 0U);
    EXPECT_EQ(StatusOf(sound.buffer), DSBSTATUS_PLAYING | DSBSTATUS_LOOPING);
    void *area1 = nullptr, *area2 = nullptr, *start = nullptr;
    DWORD size1 = 0, size2 = 0;
    EXPECT_EQ(twin->Lock(10, 1, &area1, &size1, &area2, &size2, 0), DSERR_INVALIDPARAM);
    EXPECT_EQ(twin->Lock(0, 11, &area1, &size1, &area2, &size2, 0), DSERR_INVALIDPARAM);
    ASSERT_EQ(twin->Lock(7, 5, &area1, &size1, &area2, &size2, 0), DS_OK);
    ASSERT_EQ(sound.buffer->Lock(0, 10, &start, &size1, nullptr, nullptr, 0), DS_OK);
    EXPECT_EQ(static_cast<char *>(area1) - static_cast<char *>(start), 7);
    EXPECT_EQ(area2, start);
    EXPECT_EQ(size2, 2U) << "three bytes to the end, two from the start";
    EXPECT_EQ(twin->Unlock(area1, 3, area2, 2), DS_OK);
    sound.object->AddRef();
    EXPECT_EQ(sound.object->Release(), 1U);
    EXPECT_EQ(twin->Release(), 0U);
}

TEST(DirectSound, WhateverFailsLeavesNothingBehind) {
    for (const Operation operation : {Operation::Voice, Operation::Memory}) {
        Sound sound;
        FailFrom(operation, 1);
        EXPECT_EQ(sound.Create(), DSERR_OUTOFMEMORY);
        IDirectSound *other = nullptr;
        const HRESULT result = DirectSoundCreate(nullptr, &other, nullptr);
        EXPECT_EQ(result == DS_OK, other != nullptr);
        if (other != nullptr) other->Release();
        ForgetFailures();
        EXPECT_EQ(sound.Create(), DS_OK);
        FailFrom(Operation::Voice, 1);
        IDirectSoundBuffer *twin = sound.buffer;
        EXPECT_EQ(sound.object->DuplicateSoundBuffer(sound.buffer, &twin), DSERR_OUTOFMEMORY);
        EXPECT_EQ(twin, nullptr);
        ForgetFailures();
        EXPECT_EQ(sound.object->DuplicateSoundBuffer(nullptr, &twin), DSERR_INVALIDPARAM);
    }
}

// A sine without a zero among its samples, as it comes out of a device that writes to a file.
std::vector<float> Record(const std::vector<int16_t> &samples, LONG volume, LONG pan, LONG masterVolume) {
    const std::string path = FENLIGHT_TEST_OUTPUT "/heard.raw";
    std::filesystem::create_directories(FENLIGHT_TEST_OUTPUT);
    const char *usual = std::getenv("SDL_AUDIODRIVER");
    const std::string before = usual != nullptr ? usual : "dummy";
    setenv("SDL_AUDIODRIVER", "disk", 1);
    setenv("SDL_DISKAUDIOFILE", path.c_str(), 1);
    setenv("SDL_DISKAUDIODELAY", "1", 1);
    {
        Sound sound(static_cast<DWORD>(samples.size() * 2));
        setenv("SDL_AUDIODRIVER", before.c_str(), 1);
        EXPECT_EQ(sound.Create(), DS_OK);
        DSBUFFERDESC description{sizeof description, 0xD1, 0, 0, nullptr, {}};
        IDirectSoundBuffer *primary = nullptr;
        EXPECT_EQ(sound.object->CreateSoundBuffer(&description, &primary, nullptr), DS_OK);
        void *area = nullptr;
        DWORD size = 0;
        sound.buffer->Lock(0, 0, &area, &size, nullptr, nullptr, DSBLOCK_ENTIREBUFFER);
        std::memcpy(area, samples.data(), size);
        sound.buffer->Unlock(area, size, nullptr, 0);
        sound.buffer->SetVolume(volume);
        sound.buffer->SetPan(pan);
        primary->SetVolume(masterVolume);
        sound.buffer->Play(0, 0, 0);
        EXPECT_EQ(StatusOf(sound.buffer), DSBSTATUS_PLAYING);
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
        while (StatusOf(sound.buffer) != 0 && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
        EXPECT_EQ(StatusOf(sound.buffer), 0U);
        primary->Release();
    }
    std::ifstream file(path, std::ios::binary);
    const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    std::vector<float> heard(bytes.size() / sizeof(float));
    std::memcpy(heard.data(), bytes.data(), heard.size() * sizeof(float));
    std::filesystem::remove(path);
    return heard;
}

TEST(DirectSound, ADeviceGetsTheSineAtTheRightLevelOnEachSideAndInFull) {
    std::vector<int16_t> samples(22050);
    for (size_t i = 0; i < samples.size(); ++i)
        samples[i] =
            static_cast<int16_t>(std::lround(24000 * std::sin((static_cast<double>(i) + 0.5) * 0.0628)));
    const std::vector<float> heard = Record(samples, -600, 1000, -200);
    float peaks[2] = {0, 0};
    size_t first = heard.size(), last = 0;
    for (size_t i = 0; i < heard.size(); ++i) {
        peaks[i % 2] = std::max(peaks[i % 2], std::abs(heard[i]));
        if (heard[i] == 0.0F) continue;
        first = std::min(first, i / 2);
        last = i / 2;
    }
    const double level = 20 * std::log10(24000.0 / 32768);
    EXPECT_NEAR(20 * std::log10(peaks[0]), level - 6 - 2 - 10, 0.2);
    EXPECT_NEAR(20 * std::log10(peaks[1]), level - 6 - 2, 0.2);
    EXPECT_EQ(last - first + 1, samples.size());
}

}  // namespace
}  // namespace fenlight::platform
