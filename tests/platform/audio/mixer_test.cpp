// SPDX-License-Identifier: Zlib
#include "platform/audio/mixer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <memory>
#include <random>
#include <thread>
#include <vector>

namespace fenlight::platform {
namespace {

WAVEFORMATEX Pcm(int bits, int channels, uint32_t rate) {
    const auto align = static_cast<WORD>(channels * bits / 8);
    return {WAVE_FORMAT_PCM, static_cast<WORD>(channels), rate, rate * align,
            align,           static_cast<WORD>(bits),     0};
}

struct DropVoice {
    void operator()(Voice *voice) const {
        voice->Stop();
        voice->DropReference();
    }
};
using VoicePointer = std::unique_ptr<Voice, DropVoice>;

VoicePointer MakeVoice(const WAVEFORMATEX &format, const std::vector<uint8_t> &bytes) {
    SampleBlock *samples = SampleBlock::Create(format, static_cast<uint32_t>(bytes.size()));
    std::copy(bytes.begin(), bytes.end(), samples->Bytes());
    VoicePointer voice(Voice::Create(*samples));
    samples->DropReference();
    return voice;
}

VoicePointer MakeSteady(int16_t value, int frames) {
    std::vector<uint8_t> bytes(static_cast<size_t>(2 * frames));
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(value >> (i % 2 * 8));
    return MakeVoice(Pcm(16, 1, kMixRate), bytes);
}

std::vector<float> MixIn(Mixer &mixer, int frames) {
    std::vector<float> block(static_cast<size_t>(2 * frames), 99.0F);
    mixer.Mix(block.data(), frames);
    return block;
}

int CountHeard(const std::vector<float> &block) {
    int count = 0;
    for (size_t i = 0; i < block.size(); i += 2) count += block[i] != 0.0F ? 1 : 0;
    return count;
}

// The samples once more as plain numbers, and what a listener should get of them, frame by frame.
struct Model {
    std::vector<uint8_t> bytes;
    std::vector<double> values;  // one for each sample
    int channels, frames;

    Model(int bits, int channelCount, int frameCount, std::mt19937 &random)
        : channels(channelCount), frames(frameCount) {
        for (int i = 0; i < frames * channels; ++i) {
            const auto value = static_cast<int32_t>(random());
            values.push_back((value >> (32 - bits)) / std::exp2(bits - 1));
            const uint32_t stored = bits == 8 ? static_cast<uint32_t>((value >> 24) + 128)
                                              : static_cast<uint32_t>(value >> (32 - bits));
            for (int k = 0; k < bits / 8; ++k) bytes.push_back(static_cast<uint8_t>(stored >> (8 * k)));
        }
    }
    [[nodiscard]] double At(int64_t frame, int side, bool isLooping) const {
        if (frame >= frames && !isLooping) return 0;
        return values[static_cast<size_t>(frame % frames * channels + (channels == 2 ? side : 0))];
    }
    [[nodiscard]] double Heard(int64_t k, uint32_t rate, int side, bool isLooping) const {
        const double place = static_cast<double>(k) * rate / 44100.0;
        const auto frame = static_cast<int64_t>(place);
        if (frame >= frames && !isLooping) return 0;
        const double weight = place - static_cast<double>(frame);
        return At(frame, side, isLooping) * (1 - weight) + At(frame + 1, side, isLooping) * weight;
    }
};

void CheckAgainstModel(const Model &model, int bits, uint32_t rate, bool isLooping) {
    SCOPED_TRACE(testing::Message() << bits << " bit, " << model.channels << " channels, " << rate
                                    << (isLooping ? " looping" : ""));
    Mixer mixer;
    const VoicePointer voice = MakeVoice(Pcm(bits, model.channels, rate), model.bytes);
    mixer.Play(*voice, isLooping);
    int64_t k = 0;
    for (const int frames : {1, 7, 64, 3, 130, 512, 1}) {
        const bool plays = isLooping || static_cast<double>(k) * rate / 44100.0 < model.frames;
        ASSERT_EQ(voice->Status(), plays ? (isLooping ? 5U : 1U) : 0U) << "before frame " << k;
        const std::vector<float> block = MixIn(mixer, frames);
        for (int i = 0; i < 2 * frames; ++i)
            ASSERT_NEAR(block[static_cast<size_t>(i)], model.Heard(k + i / 2, rate, i % 2, isLooping), 2e-5)
                << "frame " << k + i / 2 << " side " << i % 2;
        k += frames;
    }
    mixer.Clear();
}

TEST(Mixer, EveryFormatAndRateIsHeardAsTheFormulaSays) {
    std::mt19937 random(5);
    for (const int bits : {8, 16, 24, 32}) {
        for (const int channels : {1, 2}) {
            for (const int frames : {1, 2, 67}) {
                const Model model(bits, channels, frames, random);
                for (const uint32_t rate : {44100U, 22050U, 48000U, 8000U, 97001U, 300U, 4000000000U}) {
                    CheckAgainstModel(model, bits, rate, false);
                    CheckAgainstModel(model, bits, rate, rate < 1000000);
                }
            }
        }
    }
}

TEST(Mixer, VolumeAndPanAreHundredthsOfADecibelOfEachSide) {
    const struct {
        int volume, pan, masterVolume, masterPan;
        double leftDecibel, rightDecibel;  // -1000: silent
    } cases[] = {{0, 0, 0, 0, 0, 0},
                 {-600, 1000, 0, 0, -16, -6},
                 {-600, -1000, 0, 0, -6, -16},
                 {500, 0, 0, 0, 0, 0},
                 {-10000, 0, 0, 0, -1000, -1000},
                 {-9999, 0, 0, 0, -99.99, -99.99},
                 {-30000, 0, 0, 0, -1000, -1000},
                 {0, 10000, 0, 0, -1000, 0},
                 {0, -70000, 0, 0, 0, -1000},
                 {-100, 200, -300, -400, -6, -8},
                 {0, 0, -10000, 0, -1000, -1000}};
    for (const auto &each : cases) {
        SCOPED_TRACE(testing::Message() << each.volume << " " << each.pan << " " << each.masterVolume);
        Mixer mixer;
        const VoicePointer voice = MakeSteady(16384, 8);
        mixer.Play(*voice, true);
        MixIn(mixer, 4);  // a change takes effect on a voice that plays
        voice->loudness.SetVolume(each.volume);
        voice->loudness.SetPan(each.pan);
        mixer.loudness.SetPan(each.masterPan);
        mixer.loudness.SetVolume(each.masterVolume);
        const std::vector<float> block = MixIn(mixer, 4);
        const auto expected = [](double decibel) {
            return decibel == -1000 ? 0 : 0.5 * std::exp(decibel / 20 * std::log(10.0));
        };
        for (size_t i = 0; i < 8; i += 2) {
            ASSERT_NEAR(block[i], expected(each.leftDecibel), 1e-7);
            ASSERT_NEAR(block[i + 1], expected(each.rightDecibel), 1e-7);
        }
        mixer.Clear();
    }
}

TEST(Mixer, ManyLoudVoicesStopAtFullScaleInsteadOfWrapping) {
    Mixer mixer;
    std::vector<VoicePointer> voices;
    for (int i = 0; i < 15; ++i) {
        voices.push_back(MakeSteady(i < 10 ? 30000 : -30000, 100));
        mixer.Play(*voices.back(), false);
        if (i >= 10) voices.back()->SetFrame(50);  // 10 against 5 first, then 10 alone, then none
    }
    for (const float sample : MixIn(mixer, 100)) ASSERT_EQ(sample, 1.0F);
    for (const VoicePointer &voice : voices) {
        voice->loudness.SetVolume(-2000);
        mixer.Play(*voice, false);
    }
    const std::vector<float> block = MixIn(mixer, 100);
    for (const float sample : block) ASSERT_NEAR(sample, 5 * 0.1 * 30000 / 32768, 1e-5);
    for (size_t i = 10; i < 15; ++i) voices[i]->SetFrame(0);
    for (size_t i = 10; i < 15; ++i) mixer.Play(*voices[i], false);
    for (const float sample : MixIn(mixer, 50)) ASSERT_NEAR(sample, -5 * 0.1 * 30000 / 32768, 1e-5);
    mixer.Clear();
}

TEST(Mixer, StopKeepsThePositionAndPlayNeverRewinds) {
    Mixer mixer;
    const VoicePointer voice = MakeSteady(8192, 100);
    mixer.Play(*voice, false);
    MixIn(mixer, 30);
    mixer.Play(*voice, false);
    EXPECT_EQ(voice->Frame(), 30U) << "play on a playing voice";
    voice->Stop();
    EXPECT_EQ(CountHeard(MixIn(mixer, 50)), 0);
    EXPECT_EQ(voice->Frame(), 30U);
    mixer.Play(*voice, false);
    EXPECT_EQ(CountHeard(MixIn(mixer, 69)), 69);
    EXPECT_EQ(voice->Status(), 1U) << "one frame before the end";
    EXPECT_EQ(CountHeard(MixIn(mixer, 50)), 1);
    EXPECT_EQ(voice->Status(), 0U);
    mixer.Play(*voice, true);
    EXPECT_EQ(CountHeard(MixIn(mixer, 250)), 250) << "from 0 again, and round";
    EXPECT_EQ(voice->Frame(), 50U);
    mixer.Play(*voice, false);
    EXPECT_EQ(CountHeard(MixIn(mixer, 250)), 50) << "the last round";
    voice->SetFrame(90);
    mixer.Play(*voice, false);
    EXPECT_EQ(CountHeard(MixIn(mixer, 250)), 10);
    mixer.Play(*voice, false);
    voice->Stop();
    EXPECT_EQ(CountHeard(MixIn(mixer, 10)), 0) << "stopped before the mixer saw it";
}

// Each play of a voice at rest must be heard in full, whatever the moment at which the mixer leaves it. As
// many plays as there is time for; a lost one would be waited for until the time is over, and be missing in
// the sum.
TEST(Mixer, EveryPlayIsHeardOnceWhileTheMixerComesAndGoes) {
    constexpr int kMostPlays = 100000, kFrames = 2;
    Mixer mixer;
    const VoicePointer voice = MakeSteady(1024, kFrames);
    std::atomic<bool> isOver{false};
    int plays = 0;
    std::thread player([&] {
        while (plays < kMostPlays && !isOver.load(std::memory_order_relaxed)) {
            ++plays;
            mixer.Play(*voice, false);
            while (voice->IsPlaying() && !isOver.load(std::memory_order_relaxed)) {
            }
        }
        isOver.store(true);
    });
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    double sum = 0;
    float block[2] = {};
    for (int left = 2 * kFrames; left > 0; left -= isOver.load() ? 1 : 0) {
        mixer.Mix(block, 1);
        sum += block[0];
        if (isOver.load() && player.joinable()) player.join();
        if (std::chrono::steady_clock::now() > deadline) isOver.store(true);
    }
    EXPECT_EQ(sum * 32, 1.0 * plays * kFrames) << plays << " plays";
    EXPECT_FALSE(voice->IsPlaying());
}

}  // namespace
}  // namespace fenlight::platform
