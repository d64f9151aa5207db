// SPDX-License-Identifier: Zlib
#include "fenlight/sound.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <latch>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "fenlight/platform/sound.h"
#include "platform/system/failure_point.h"
#include "sound/sound_voice.h"
#include "sound/wave_image.h"

namespace fenlight {
namespace {

using platform::FailOnce;
using platform::ForgetFailures;
using platform::Operation;

class Sound : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(DSoundInit(0), 0); }
    void TearDown() override { EXPECT_EQ(DSoundDeInit(), 0); }
};

uintptr_t LoadImage(const std::string &image) {
    // An allocation of its own, so that reading behind the end is noticed.
    const std::vector<char> bytes(image.begin(), image.end());
    return DSoundLoadMemory(bytes.data(), static_cast<int32_t>(bytes.size()));
}

bool Loads(const std::string &image) {
    const uintptr_t sound = LoadImage(image);
    DSoundUnLoad(sound);
    return sound != 0;
}

std::string BytesOf(uintptr_t voice) {
    void *area = nullptr;
    DWORD size = 0;
    reinterpret_cast<IDirectSoundBuffer *>(voice)->Lock(0, 0, &area, &size, nullptr, nullptr,
                                                        DSBLOCK_ENTIREBUFFER);
    return {static_cast<const char *>(area), size};
}

std::string LongSilence() {
    WaveImage image;
    image.data.assign(400000, '\0');
    return image.Whole();
}

void WaitForEnd(uintptr_t voice) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (DSoundGetStatus(voice) != 0 && std::chrono::steady_clock::now() < deadline)
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_EQ(DSoundGetStatus(voice), 0);
}

TEST(SoundBefore, NothingHappensWithoutADeviceOrAHandle) {
    uintptr_t primary = 8;
    for (const bool isOpen : {false, true}) {
        EXPECT_EQ(isOpen ? DSoundInit(0) : 0, 0);
        EXPECT_EQ(Loads(WaveImage().Whole()), isOpen);
        EXPECT_EQ(DSoundGetInterfaces(&primary) != 0, isOpen);
        EXPECT_EQ(primary != 0, isOpen);
        EXPECT_EQ(DSoundPlay(0, 1) | DSoundGetNextBuffer(0), 0U);
        EXPECT_EQ(DSoundStop(0) | DSoundUnLoad(0) | DSoundSetVolume(0, -1) | DSoundSetPan(0, 1) |
                      DSoundGetStatus(0),
                  0);
        EXPECT_EQ(DSoundSetGlobalVolume(-5) | DSoundSetGlobalPan(5), 0);
        EXPECT_EQ(DSoundLoadMemory(nullptr, 100) | DSoundLoadMemory(&primary, -1) | DSoundLoad(nullptr), 0U);
        EXPECT_EQ(DSoundLoad("/nowhere/at/all.wav") | DSoundLoad("/tmp") | DSoundLoad(""), 0U);
        StartNextVoice(0);
    }
    EXPECT_EQ(DSoundDeInit() | DSoundDeInit(), 0);
    FailOnce(Operation::Voice, 1);
    EXPECT_EQ(DSoundInit(0), DSERR_NODRIVER);
    FailOnce(Operation::Voice, 2);
    EXPECT_EQ(DSoundInit(0), DSERR_OUTOFMEMORY) << "no primary buffer";
    ForgetFailures();
    EXPECT_EQ(DSoundGetInterfaces(&primary), 0U);
}

TEST_F(Sound, AllPcmFormatsLoadAtTheirOwnRate) {
    for (const uint32_t bits : {8U, 16U, 24U, 32U}) {
        for (const uint32_t channels : {1U, 2U}) {
            WaveImage image;
            image.format =
                WaveImage::FormatChunk(1, channels, 1000 * bits + channels, channels * bits / 8, bits);
            image.between = WaveImage::Chunk("LIST", "odd") + WaveImage::Chunk("dat ", "");
            const uintptr_t sound = LoadImage(image.Whole());
            ASSERT_NE(sound, 0U) << bits << " bit, " << channels << " channels";
            const uintptr_t voice = DSoundGetNextBuffer(sound);
            DWORD rate = 0;
            reinterpret_cast<IDirectSoundBuffer *>(voice)->GetFrequency(&rate);
            EXPECT_EQ(rate, 1000 * bits + channels);
            std::string expected = image.data;
            expected.back() = bits == 8 ? '\x80' : '\0';
            EXPECT_EQ(BytesOf(voice), expected) << "all but the last byte";
            DSoundUnLoad(sound);
        }
    }
}

TEST_F(Sound, BrokenFilesGiveZero) {
    const std::string good = WaveImage().Whole();
    const std::string path = FENLIGHT_TEST_OUTPUT "/cut.wav";
    std::filesystem::create_directories(FENLIGHT_TEST_OUTPUT);
    for (size_t length = 0; length <= good.size(); ++length) {
        const std::string cut = good.substr(0, length);
        EXPECT_EQ(Loads(cut), length == good.size()) << length;
        std::ofstream(path, std::ios::binary) << cut;
        const uintptr_t sound = DSoundLoad(path.c_str());
        EXPECT_EQ(sound != 0, length == good.size()) << "file of " << length;
        DSoundUnLoad(sound);
    }
    std::filesystem::remove(path);

    for (const size_t place : {size_t{4}, size_t{16}, good.size() - 44}) {  // the sizes of RIFF, format, data
        for (const uint32_t size :
             {0U, 1U, 3U, 0x0FFFFFFFU, 0x10000000U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFF8U, 0xFFFFFFFFU}) {
            std::string forged = good;
            forged.replace(place, 4, WaveImage::Word(size));
            const bool isRiffLargeEnough = place == 4 && size > 1000;
            EXPECT_EQ(Loads(forged), isRiffLargeEnough) << size << " at " << place;
        }
    }

    const auto loadsWith = [](uint32_t tag, uint32_t channels, uint32_t rate, uint32_t align, uint32_t bits) {
        WaveImage image;
        image.format = WaveImage::FormatChunk(tag, channels, rate, align, bits);
        return Loads(image.Whole());
    };
    EXPECT_TRUE(loadsWith(1, 1, 1, 2, 16));
    EXPECT_FALSE(loadsWith(2, 1, 44100, 2, 16) || loadsWith(3, 1, 44100, 4, 32) ||
                 loadsWith(0xFFFE, 1, 1, 2, 16));
    EXPECT_FALSE(loadsWith(1, 0, 44100, 0, 16) || loadsWith(1, 1, 44100, 0, 16) ||
                 loadsWith(1, 3, 44100, 6, 16));
    EXPECT_FALSE(loadsWith(1, 1, 0, 2, 16) || loadsWith(1, 1, 44100, 2, 12) || loadsWith(1, 2, 44100, 2, 16));
}

TEST_F(Sound, ChunksAreTakenByPlaceAndByName) {
    WaveImage image;
    std::string odd = image.Whole();
    odd.replace(12, 4, "what");
    EXPECT_TRUE(Loads(odd)) << "the first chunk is the format chunk, whatever its id";
    image.format = WaveImage::Chunk("LIST", "INFOISFT") + image.format;
    EXPECT_FALSE(Loads(image.Whole()));
    image = WaveImage();
    EXPECT_TRUE(Loads(WaveImage::Chunk("JUNK", "x") + image.Whole())) << "before the RIFF chunk";
    EXPECT_FALSE(
        Loads(WaveImage::Chunk("RIFF", "WAVE" + image.format) + WaveImage::Chunk("data", image.data)))
        << "samples behind the RIFF chunk";
    image.data = "abc";
    EXPECT_FALSE(Loads(image.Whole()));
    image.format = WaveImage::FormatChunk(1, 2, 44100, 6, 24);
    image.data = "abcde";
    EXPECT_FALSE(Loads(image.Whole())) << "not one frame";
    for (int i = 0; i < 100000; ++i) image.between += WaveImage::Chunk("tiny", "");
    image.data = "abcdefg";
    EXPECT_TRUE(Loads(image.Whole()));
}

TEST_F(Sound, ResourcesAndFilesLoadLikeMemory) {
    const std::string path = FENLIGHT_ASSETS "/coin.wav";
    std::ifstream file(path, std::ios::binary);
    const std::string bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
    const uintptr_t sounds[] = {LoadImage(bytes), DSoundLoad(path.c_str()), DSoundLoadResource(0, "coin")};
    for (const uintptr_t sound : sounds) {
        ASSERT_NE(sound, 0U);
        EXPECT_EQ(BytesOf(DSoundGetNextBuffer(sound)), BytesOf(DSoundGetNextBuffer(sounds[0])));
    }
    EXPECT_GT(BytesOf(DSoundGetNextBuffer(sounds[0])).size(), 40000U);
    EXPECT_EQ(DSoundLoadResource(0, "no such sound") | DSoundLoadResource(0, nullptr), 0U);
    for (const uintptr_t sound : sounds) DSoundUnLoad(sound);
}

TEST_F(Sound, VoicesTakeTurnsAndKeepTheirOwnSettings) {
    const uintptr_t sound = LoadImage(LongSilence());
    std::vector<uintptr_t> voices;
    for (int i = 0; i < 15; ++i) {
        const uintptr_t next = DSoundGetNextBuffer(sound);
        EXPECT_EQ(next, DSoundGetNextBuffer(sound));
        DSoundSetVolume(next, -100 * i);
        DSoundSetPan(next, 10 * i);
        EXPECT_EQ(DSoundGetStatus(next), 0);
        EXPECT_EQ(DSoundPlay(sound, i % 2), next);
        EXPECT_EQ(DSoundGetStatus(next), i % 2 == 0 ? 1 : 5);
        voices.push_back(next);
    }
    EXPECT_EQ(std::set<uintptr_t>(voices.begin(), voices.end()).size(), 15U);
    const auto &block = *reinterpret_cast<const SoundBlock *>(sound);
    EXPECT_EQ(voices.front(), reinterpret_cast<uintptr_t>(block.voices[1])) << "the first play takes voice 1";
    EXPECT_EQ(block.voiceIndex.load(), 0U);
    for (LONG i = 0; i < 15; ++i) {
        LONG volume = 1, pan = 0;
        auto *voice = reinterpret_cast<IDirectSoundBuffer *>(voices[static_cast<size_t>(i)]);
        EXPECT_EQ(voice->GetVolume(&volume) | voice->GetPan(&pan), DS_OK);
        EXPECT_EQ(volume, -100 * i);
        EXPECT_EQ(pan, 10 * i);
    }
    StartNextVoice(sound);
    EXPECT_EQ(DSoundGetNextBuffer(sound), voices[1]) << "the hit of a sprite took the turn";
    for (const uintptr_t voice : voices) EXPECT_EQ(DSoundStop(voice) | DSoundGetStatus(voice), 0);
    DSoundUnLoad(sound);
    WaveImage image;
    const uintptr_t brief = LoadImage(image.Whole());
    WaitForEnd(DSoundPlay(brief, 0));
    DSoundUnLoad(brief);
}

TEST_F(Sound, TheGlobalSettingsAreThePrimaryBuffersAndEndWithTheDevice) {
    uintptr_t handle = 0;
    const uintptr_t device = DSoundGetInterfaces(&handle);
    DSoundSetGlobalVolume(-300);
    DSoundSetGlobalPan(40);
    EXPECT_EQ(DSoundInit(1), 0);
    EXPECT_EQ(DSoundGetInterfaces(nullptr), device) << "a second start changes nothing";
    auto *primary = reinterpret_cast<IDirectSoundBuffer *>(handle);
    primary->AddRef();
    LONG volume = 0, pan = 0;
    primary->GetVolume(&volume);
    primary->GetPan(&pan);
    EXPECT_EQ(volume * 1000 + pan, -300 * 1000 + 40);
    const uintptr_t sound = LoadImage(LongSilence());
    DSoundDeInit();
    primary->GetVolume(&volume);
    primary->GetPan(&pan);
    EXPECT_EQ(volume * 1000 + pan, 0);
    primary->Release();
    EXPECT_EQ(DSoundGetStatus(DSoundPlay(sound, 1)), 5) << "a sound that was not unloaded in time";
    DSoundUnLoad(sound);
}

TEST_F(Sound, ALoadThatCannotHaveAllVoicesLeavesNothing) {
    const std::string image = WaveImage().Whole();
    for (const Operation operation : {Operation::Voice, Operation::Memory}) {
        for (int number = 1; number <= (operation == Operation::Voice ? 15 : 2); ++number) {
            FailOnce(operation, number);
            EXPECT_FALSE(Loads(image)) << number;
        }
    }
    ForgetFailures();
    EXPECT_TRUE(Loads(image));
}

TEST_F(Sound, ThreadsThatStartOneSoundEachGetATurnOfTheirOwn) {
    constexpr int kThreads = 2, kPlays = 4000000;
    const uintptr_t sound = LoadImage(WaveImage().Whole());
    std::latch start(kThreads);
    std::vector<std::thread> players;
    players.reserve(kThreads);
    for (int t = 0; t < kThreads; ++t) {
        players.emplace_back([&] {
            start.arrive_and_wait();
            for (int i = 0; i < kPlays; ++i) StartNextVoice(sound);
            for (int i = 0; i < 15; ++i) {
                DSoundSetVolume(DSoundPlay(sound, 0), -i);
                DSoundStop(DSoundGetNextBuffer(sound));
                DSoundSetGlobalVolume(-i);
            }
        });
    }
    for (std::thread &player : players) player.join();
    EXPECT_EQ(reinterpret_cast<const SoundBlock *>(sound)->voiceIndex.load(), 1U * kThreads * kPlays % 15);
    DSoundUnLoad(sound);
}

}  // namespace
}  // namespace fenlight
