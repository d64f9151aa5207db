// SPDX-License-Identifier: Zlib
#include "platform/audio/sound_buffers.h"

#include <algorithm>

namespace fenlight::platform {

HRESULT PrimaryBuffer::GetFrequency(DWORD *frequency) noexcept { return Store(frequency, kMixRate); }

HRESULT PrimaryBuffer::GetStatus(DWORD *status) noexcept {
    return Store(status, DSBSTATUS_PLAYING | DSBSTATUS_LOOPING);
}

WAVEFORMATEX PrimaryBuffer::Format() noexcept {
    return {WAVE_FORMAT_PCM, 2, kMixRate, kMixRate * 4, 4, 16, 0};
}

VoiceBuffer::~VoiceBuffer() {
    voice_.Stop();
    voice_.DropReference();
    OutputMixer().Sweep();
}

uint32_t VoiceBuffer::OffsetOf(uint64_t frame) const noexcept {
    return static_cast<uint32_t>(frame % voice_.Samples().FrameCount()) * Format().nBlockAlign;
}

// While the voice plays, the mixer may be a block ahead of what it has told.
uint32_t VoiceBuffer::WriteOffset() const noexcept {
    const uint64_t frame = voice_.Frame();
    if (!voice_.IsPlaying()) return OffsetOf(frame);
    return OffsetOf(frame + uint64_t{kMixBlockFrames} * voice_.Frequency() / kMixRate + 2);
}

HRESULT VoiceBuffer::GetCurrentPosition(DWORD *playOffset, DWORD *writeOffset) noexcept {
    if (playOffset != nullptr) *playOffset = OffsetOf(voice_.Frame());
    if (writeOffset != nullptr) *writeOffset = WriteOffset();
    return DS_OK;
}

HRESULT VoiceBuffer::GetFrequency(DWORD *frequency) noexcept {
    return Read(DSBCAPS_CTRLFREQUENCY, frequency, voice_.Frequency());
}

HRESULT VoiceBuffer::GetStatus(DWORD *status) noexcept { return Store(status, voice_.Status()); }

HRESULT VoiceBuffer::Lock(DWORD offset, DWORD size, void **area1, DWORD *size1, void **area2, DWORD *size2,
                          DWORD flags) noexcept {
    const DWORD length = ByteCount();
    if ((flags & DSBLOCK_FROMWRITECURSOR) != 0) offset = WriteOffset();
    if ((flags & DSBLOCK_ENTIREBUFFER) != 0) size = length;
    if (area1 == nullptr || size1 == nullptr || offset >= length || size == 0 || size > length)
        return DSERR_INVALIDPARAM;
    const DWORD first = std::min(size, length - offset);
    *area1 = voice_.Samples().Bytes() + offset;
    *size1 = first;
    const bool wraps = first < size && area2 != nullptr && size2 != nullptr;
    if (area2 != nullptr) *area2 = wraps ? voice_.Samples().Bytes() : nullptr;
    if (size2 != nullptr) *size2 = wraps ? size - first : 0;
    return DS_OK;
}

HRESULT VoiceBuffer::Unlock(void *area1, DWORD, void *, DWORD) noexcept {
    if (area1 == nullptr) return DSERR_INVALIDPARAM;
    voice_.PublishSamples();
    return DS_OK;
}

HRESULT VoiceBuffer::Play(DWORD reserved, DWORD, DWORD flags) noexcept {
    if (reserved != 0) return DSERR_INVALIDPARAM;
    OutputMixer().Play(voice_, (flags & DSBPLAY_LOOPING) != 0);
    return DS_OK;
}

HRESULT VoiceBuffer::SetCurrentPosition(DWORD offset) noexcept {
    const uint32_t frame = offset / Format().nBlockAlign;
    if (frame >= voice_.Samples().FrameCount()) return DSERR_INVALIDPARAM;
    voice_.SetFrame(frame);
    return DS_OK;
}

HRESULT VoiceBuffer::SetFrequency(DWORD frequency) noexcept {
    if (!Has(DSBCAPS_CTRLFREQUENCY)) return DSERR_CONTROLUNAVAIL;
    const DWORD wanted = frequency == DSBFREQUENCY_ORIGINAL ? Format().nSamplesPerSec : frequency;
    if (frequency != DSBFREQUENCY_ORIGINAL && (frequency < DSBFREQUENCY_MIN || frequency > DSBFREQUENCY_MAX))
        return DSERR_INVALIDPARAM;
    voice_.SetFrequency(wanted);
    return DS_OK;
}

HRESULT VoiceBuffer::Stop() noexcept {
    voice_.Stop();
    return DS_OK;
}

}  // namespace fenlight::platform
