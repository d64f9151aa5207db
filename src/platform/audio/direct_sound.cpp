// SPDX-License-Identifier: Zlib
#include <cstddef>
#include <new>

#include "platform/audio/sound_buffers.h"
#include "platform/system/failure_point.h"

namespace fenlight::platform {
namespace {

class DirectSound final : public CountedSound<DirectSound, IDirectSound> {
  public:
    static const GUID &InterfaceId() noexcept { return IID_IDirectSound; }

    HRESULT CreateSoundBuffer(const DSBUFFERDESC *description, IDirectSoundBuffer **buffer,
                              IUnknown *outer) noexcept override;
    HRESULT GetCaps(DSCAPS *caps) noexcept override;
    HRESULT DuplicateSoundBuffer(IDirectSoundBuffer *original,
                                 IDirectSoundBuffer **duplicate) noexcept override;
    HRESULT SetCooperativeLevel(HWND, DWORD level) noexcept override {
        return level >= DSSCL_NORMAL && level <= DSSCL_WRITEPRIMARY ? DS_OK : DSERR_INVALIDPARAM;
    }
    HRESULT Compact() noexcept override { return DSERR_UNSUPPORTED; }
    HRESULT GetSpeakerConfig(DWORD *) noexcept override { return DSERR_UNSUPPORTED; }
    HRESULT SetSpeakerConfig(DWORD) noexcept override { return DSERR_UNSUPPORTED; }
    HRESULT Initialize(const GUID *) noexcept override { return DSERR_ALREADYINITIALIZED; }
};

// Every object holds the output for itself, so that none of them outlives the mixer.
template <class Object, typename... Arguments>
Object *MakeHolding(Arguments &&...arguments) {
    if (!HoldOutput()) return nullptr;
    auto *object = new (std::nothrow) Object(arguments...);
    if (object == nullptr) LetGoOfOutput();
    return object;
}

HRESULT MakePrimary(const DSBUFFERDESC &description, IDirectSoundBuffer **buffer) {
    if (description.dwBufferBytes != 0 || description.lpwfxFormat != nullptr) return DSERR_INVALIDPARAM;
    *buffer = MakeHolding<PrimaryBuffer>(description.dwFlags);
    return *buffer != nullptr ? DS_OK : DSERR_OUTOFMEMORY;
}

HRESULT MakeVoiceBuffer(SampleBlock &samples, DWORD flags, VoiceBuffer **buffer) {
    OutputMixer().Sweep();
    Voice *voice = Voice::Create(samples);
    if (voice == nullptr) return DSERR_OUTOFMEMORY;
    *buffer = MakeHolding<VoiceBuffer>(flags, *voice);
    if (*buffer != nullptr) return DS_OK;
    voice->DropReference();
    return DSERR_OUTOFMEMORY;
}

HRESULT MakeSamplesAndVoice(const DSBUFFERDESC &description, IDirectSoundBuffer **buffer) {
    const DWORD size = description.dwBufferBytes;
    if (description.lpwfxFormat == nullptr || size < DSBSIZE_MIN || size > DSBSIZE_MAX)
        return DSERR_INVALIDPARAM;
    const WAVEFORMATEX format = *description.lpwfxFormat;
    if (!IsPlayable(format) || size < format.nBlockAlign) return DSERR_BADFORMAT;
    SampleBlock *samples = SampleBlock::Create(format, size);
    if (samples == nullptr) return DSERR_OUTOFMEMORY;
    VoiceBuffer *made = nullptr;
    const HRESULT result = MakeVoiceBuffer(*samples, description.dwFlags, &made);
    samples->DropReference();
    *buffer = made;
    return result;
}

// The record has had its last field only since a later version of the interface.
bool HasKnownSize(const DSBUFFERDESC &description) {
    return description.dwSize == sizeof description ||
           description.dwSize == offsetof(DSBUFFERDESC, guid3DAlgorithm);
}

HRESULT DirectSound::CreateSoundBuffer(const DSBUFFERDESC *description, IDirectSoundBuffer **buffer,
                                       IUnknown *outer) noexcept {
    if (buffer == nullptr) return DSERR_INVALIDPARAM;
    *buffer = nullptr;
    if (description == nullptr || !HasKnownSize(*description)) return DSERR_INVALIDPARAM;
    if (outer != nullptr) return DSERR_NOAGGREGATION;
    if (OperationFails(Operation::Voice)) return DSERR_OUTOFMEMORY;
    if ((description->dwFlags & DSBCAPS_PRIMARYBUFFER) != 0) return MakePrimary(*description, buffer);
    return MakeSamplesAndVoice(*description, buffer);
}

HRESULT DirectSound::DuplicateSoundBuffer(IDirectSoundBuffer *original,
                                          IDirectSoundBuffer **duplicate) noexcept {
    if (duplicate == nullptr) return DSERR_INVALIDPARAM;
    *duplicate = nullptr;
    auto *source = dynamic_cast<VoiceBuffer *>(original);
    if (source == nullptr) return DSERR_INVALIDPARAM;
    if (OperationFails(Operation::Voice)) return DSERR_OUTOFMEMORY;
    VoiceBuffer *made = nullptr;
    const HRESULT result = MakeVoiceBuffer(source->OwnVoice().Samples(), source->Flags(), &made);
    if (result != DS_OK) return result;
    made->OwnVoice().loudness.TakeOver(source->OwnVoice().loudness);
    made->OwnVoice().SetFrequency(source->OwnVoice().Frequency());
    *duplicate = made;
    return DS_OK;
}

HRESULT DirectSound::GetCaps(DSCAPS *caps) noexcept {
    if (caps == nullptr || caps->dwSize != sizeof *caps) return DSERR_INVALIDPARAM;
    *caps = {};
    caps->dwSize = sizeof *caps;
    caps->dwMinSecondarySampleRate = DSBFREQUENCY_MIN;
    caps->dwMaxSecondarySampleRate = DSBFREQUENCY_MAX;
    caps->dwPrimaryBuffers = 1;
    return DS_OK;
}

}  // namespace
}  // namespace fenlight::platform

using namespace fenlight::platform;

HRESULT DirectSoundCreate(const GUID *device, IDirectSound **sound, IUnknown *outer) noexcept {
    if (sound == nullptr) return DSERR_INVALIDPARAM;
    *sound = nullptr;
    if (outer != nullptr) return DSERR_NOAGGREGATION;
    if (device != nullptr || OperationFails(Operation::Voice) || !HoldOutput()) return DSERR_NODRIVER;
    *sound = MakeHolding<DirectSound>();
    LetGoOfOutput();
    return *sound != nullptr ? DS_OK : DSERR_OUTOFMEMORY;
}
