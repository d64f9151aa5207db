// SPDX-License-Identifier: Zlib
#include "platform/audio/sample_rows.h"

#include <cstring>

namespace fenlight::platform {
namespace {

template <typename Integer>
float ReadInteger(const uint8_t *bytes) {
    Integer value;
    std::memcpy(&value, bytes, sizeof value);
    return static_cast<float>(value);
}

struct Bits8 {
    static constexpr int kBytes = 1;
    static constexpr float kScale = 1.0F / 128;
    static float Read(const uint8_t *bytes) { return static_cast<float>(*bytes - 128); }
};

struct Bits16 {
    static constexpr int kBytes = 2;
    static constexpr float kScale = 1.0F / 32768;
    static float Read(const uint8_t *bytes) { return ReadInteger<int16_t>(bytes); }
};

struct Bits24 {
    static constexpr int kBytes = 3;
    static constexpr float kScale = 1.0F / 8388608;
    static float Read(const uint8_t *bytes) {
        const auto high = static_cast<int8_t>(bytes[2]);
        return static_cast<float>(high * 65536 + bytes[1] * 256 + bytes[0]);
    }
};

struct Bits32 {
    static constexpr int kBytes = 4;
    static constexpr float kScale = 1.0F / 2147483648.0F;
    static float Read(const uint8_t *bytes) { return ReadInteger<int32_t>(bytes); }
};

// 24 bits behind the point are what a float holds, so the weight stays below 1.
float WeightOf(uint64_t position) {
    return static_cast<float>(static_cast<uint32_t>(position) >> 8) * (1.0F / 16777216);
}

template <class Sample, int channels>
void AddOnFrames(const SampleRow &row, float *stereo, int32_t frames) {
    const uint8_t *bytes = row.bytes + (row.position >> kFractionBits) * channels * Sample::kBytes;
    const float left = row.gains.left * Sample::kScale;
    const float right = row.gains.right * Sample::kScale;
    for (int32_t i = 0; i < frames; ++i) {
        const uint8_t *frame = bytes + i * (channels * Sample::kBytes);
        stereo[2 * i] += Sample::Read(frame) * left;
        stereo[2 * i + 1] += Sample::Read(frame + (channels - 1) * Sample::kBytes) * right;
    }
}

template <class Sample>
float ReadBetween(const uint8_t *bytes, int frameBytes, float weight) {
    const float here = Sample::Read(bytes);
    return here + (Sample::Read(bytes + frameBytes) - here) * weight;
}

template <class Sample, int channels>
void AddBetweenFrames(const SampleRow &row, float *stereo, int32_t frames) {
    constexpr int kFrameBytes = channels * Sample::kBytes;
    const float left = row.gains.left * Sample::kScale;
    const float right = row.gains.right * Sample::kScale;
    uint64_t position = row.position;
    for (int32_t i = 0; i < frames; ++i, position += row.step) {
        const uint8_t *frame = row.bytes + (position >> kFractionBits) * kFrameBytes;
        const float weight = WeightOf(position);
        const float first = ReadBetween<Sample>(frame, kFrameBytes, weight);
        const float second =
            channels == 1 ? first : ReadBetween<Sample>(frame + Sample::kBytes, kFrameBytes, weight);
        stereo[2 * i] += first * left;
        stereo[2 * i + 1] += second * right;
    }
}

template <class Sample, int channels>
void AddSamples(const SampleRow &row, float *stereo, int32_t frames) {
    if (IsOnFrames(row.position, row.step)) return AddOnFrames<Sample, channels>(row, stereo, frames);
    AddBetweenFrames<Sample, channels>(row, stereo, frames);
}

template <class Sample>
AddRow ForChannels(int channels) {
    return channels == 1 ? AddSamples<Sample, 1> : AddSamples<Sample, 2>;
}

}  // namespace

AddRow ChooseAddRow(int bitsPerSample, int channels) noexcept {
    switch (bitsPerSample) {
        case 8:
            return ForChannels<Bits8>(channels);
        case 16:
            return ForChannels<Bits16>(channels);
        case 24:
            return ForChannels<Bits24>(channels);
        default:
            return ForChannels<Bits32>(channels);
    }
}

}  // namespace fenlight::platform
