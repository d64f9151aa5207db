// SPDX-License-Identifier: Zlib
// Any bytes as a WAV file in memory: found, put into a voice as the bank does it, and mixed. The sanitizers
// watch memory; here the promises of the reader are watched.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "platform/audio/mixer.h"
#include "sound/wave_reader.h"

namespace {

using namespace fenlight;
using namespace fenlight::platform;

void Require(bool holds) {
    if (!holds) std::abort();
}

void Hear(SampleBlock &samples) {
    Mixer mixer;
    Voice *voice = Voice::Create(samples);
    Require(voice != nullptr);
    std::vector<float> stereo(2 * 700);
    for (const bool isLooping : {true, false}) {
        mixer.Play(*voice, isLooping);
        for (const int32_t frames : {1, 64, 700}) mixer.Mix(stereo.data(), frames);
        for (const float sample : stereo) Require(sample >= -1 && sample <= 1);
        Require(voice->Frame() < samples.FrameCount());
        Require(!isLooping || voice->IsPlaying());
    }
    mixer.Clear();
    voice->DropReference();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *bytes, size_t size) {
    MemorySource source(bytes, size);
    WaveLayout layout{};
    if (!FindWave(source, layout)) return 0;
    Require(layout.format.wFormatTag == 1 && layout.format.cbSize == 0 && layout.dataSize > 0);
    Require(layout.dataOffset <= size && layout.dataSize <= size - layout.dataOffset);
    if (!IsPlayable(layout.format) || layout.dataSize < layout.format.nBlockAlign) return 0;
    SampleBlock *samples = SampleBlock::Create(layout.format, layout.dataSize);
    Require(samples != nullptr && source.Read(layout.dataOffset, samples->Bytes(), layout.dataSize - 1));
    Hear(*samples);
    samples->DropReference();
    return 0;
}
