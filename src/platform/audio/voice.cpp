// SPDX-License-Identifier: Zlib
#include "platform/audio/voice.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "platform/audio/mixer.h"

namespace fenlight::platform {

Voice *Voice::Create(SampleBlock &samples) noexcept { return new (std::nothrow) Voice(samples); }

Voice::Voice(SampleBlock &samples) noexcept
    : samples_(samples),
      addRow_(ChooseAddRow(samples.Format().wBitsPerSample, samples.Format().nChannels)),
      frequency_(samples.Format().nSamplesPerSec) {
    samples_.AddReference();
}

void Voice::DropReference() noexcept {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
}

uint32_t Voice::Status() const noexcept {
    const uint64_t cursor = cursor_.load();
    return ((cursor & kPlaying) != 0 ? DSBSTATUS_PLAYING : 0) |
           ((cursor & kLooping) != 0 ? DSBSTATUS_LOOPING : 0);
}

uint32_t Voice::Frame() const noexcept {
    return static_cast<uint32_t>(cursor_.load() >> (kPositionShift + kFractionBits));
}

void Voice::SetFrame(uint32_t frame) noexcept {
    const uint64_t position = uint64_t{frame} << (kPositionShift + kFractionBits);
    uint64_t old = cursor_.load();
    while (!cursor_.compare_exchange_weak(old, position | (old & kStateBits))) {
    }
}

void Voice::Start(bool isLooping) noexcept {
    const uint64_t state = isLooping ? kPlaying | kLooping : kPlaying;
    uint64_t old = cursor_.load();
    while (!cursor_.compare_exchange_weak(old, (old & ~kStateBits) | state)) {
    }
}

uint64_t Voice::Step() const noexcept {
    return ((uint64_t{Frequency()} << kFractionBits) + kMixRate / 2) / kMixRate;
}

// Mixes up to the last frame that has a neighbour, or that last frame, whose neighbour is the first frame
// again or silence. Gives the frames added and moves the row's position on, to the end or beyond.
int32_t Voice::AddStretch(SampleRow &row, bool isLooping, float *stereo, int32_t frames) const noexcept {
    const uint64_t last = uint64_t{samples_.FrameCount() - 1} << kFractionBits;
    const bool isOnFrames = IsOnFrames(row.position, row.step);
    const bool isInside = row.position < last || isOnFrames;
    const uint64_t limit = isInside && !isOnFrames ? last : last + kOneFrame;
    const uint64_t steps = (limit - row.position + row.step - 1) / row.step;
    const auto count = static_cast<int32_t>(std::min<uint64_t>(steps, static_cast<uint32_t>(frames)));
    if (isInside) {
        addRow_(row, stereo, count);
    } else {
        const size_t frameBytes = samples_.Format().nBlockAlign;
        uint8_t seam[2 * 8];
        std::memset(seam, samples_.SilentByte(), sizeof seam);
        std::memcpy(seam, samples_.Bytes() + (last >> kFractionBits) * frameBytes, frameBytes);
        if (isLooping) std::memcpy(seam + frameBytes, samples_.Bytes(), frameBytes);
        addRow_({seam, row.position - last, row.step, row.gains}, stereo, count);
    }
    row.position += row.step * static_cast<uint32_t>(count);
    return count;
}

void Voice::AddTo(float *stereo, int32_t frames) noexcept {
    const uint64_t from = cursor_.load();
    if ((from & kPlaying) == 0) return;
    const bool isLooping = (from & kLooping) != 0;
    const uint64_t length = uint64_t{samples_.FrameCount()} << kFractionBits;
    SampleRow row{samples_.Bytes(), from >> kPositionShift, Step(), heardGains_.Of(loudness)};
    while (frames > 0 && row.position < length) {
        const int32_t added = AddStretch(row, isLooping, stereo, frames);
        if (isLooping && row.position >= length) row.position %= length;
        stereo += 2 * added;
        frames -= added;
    }
    MoveOn(from, row.position);
}

// Behind the last frame the voice rests at 0. A caller's new position stays, and so does a state that he has
// set meanwhile: a voice that was told to loop while its end was mixed begins again.
void Voice::MoveOn(uint64_t mixedFrom, uint64_t position) noexcept {
    const bool hasEnded = position >= uint64_t{samples_.FrameCount()} << kFractionBits;
    const uint64_t moved = hasEnded ? 0 : position << kPositionShift;
    uint64_t old = mixedFrom;
    while (true) {
        if ((old & ~kStateBits) != (mixedFrom & ~kStateBits)) return;
        const bool hasNewState = (old & kStateBits) != (mixedFrom & kStateBits);
        const uint64_t state = hasEnded && !hasNewState ? 0 : old & kStateBits;
        if (cursor_.compare_exchange_weak(old, moved | state)) return;
    }
}

}  // namespace fenlight::platform
