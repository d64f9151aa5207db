// SPDX-License-Identifier: Zlib
// The two kinds of IDirectSoundBuffer. All methods on any thread.
#pragma once

#include "platform/audio/counted.h"
#include "platform/audio/voice.h"

namespace fenlight::platform {

// What both kinds answer alike. Loudness applies to the voice, or for the primary buffer to everything.
template <class Object>
class SoundBufferBase : public CountedSound<Object, IDirectSoundBuffer> {
  public:
    static const GUID &InterfaceId() noexcept { return IID_IDirectSoundBuffer; }

    HRESULT GetCaps(DSBCAPS *caps) noexcept override {
        if (caps == nullptr || caps->dwSize != sizeof *caps) return DSERR_INVALIDPARAM;
        *caps = {sizeof *caps, flags_ | DSBCAPS_LOCSOFTWARE, Self().ByteCount(), 0, 0};
        return DS_OK;
    }
    HRESULT GetFormat(WAVEFORMATEX *format, DWORD size, DWORD *written) noexcept override {
        if (format == nullptr && written == nullptr) return DSERR_INVALIDPARAM;
        const WAVEFORMATEX own = Self().Format();
        const DWORD count = size < sizeof own ? size : DWORD{sizeof own};
        if (format != nullptr) std::memcpy(format, &own, count);
        if (written != nullptr) *written = format != nullptr ? count : DWORD{sizeof own};
        return DS_OK;
    }
    HRESULT GetVolume(LONG *volume) noexcept override {
        return Read(DSBCAPS_CTRLVOLUME, volume, Self().OwnLoudness().Volume());
    }
    HRESULT GetPan(LONG *pan) noexcept override {
        return Read(DSBCAPS_CTRLPAN, pan, Self().OwnLoudness().Pan());
    }
    HRESULT SetVolume(LONG volume) noexcept override {
        if (!Has(DSBCAPS_CTRLVOLUME)) return DSERR_CONTROLUNAVAIL;
        Self().OwnLoudness().SetVolume(volume);
        return DS_OK;
    }
    HRESULT SetPan(LONG pan) noexcept override {
        if (!Has(DSBCAPS_CTRLPAN)) return DSERR_CONTROLUNAVAIL;
        Self().OwnLoudness().SetPan(pan);
        return DS_OK;
    }
    HRESULT Initialize(IDirectSound *, const DSBUFFERDESC *) noexcept override {
        return DSERR_ALREADYINITIALIZED;
    }
    HRESULT SetFormat(const WAVEFORMATEX *) noexcept override { return DSERR_UNSUPPORTED; }
    HRESULT Restore() noexcept override { return DS_OK; }

    [[nodiscard]] DWORD Flags() const noexcept { return flags_; }

  protected:
    explicit SoundBufferBase(DWORD flags) noexcept : flags_(flags) {}
    ~SoundBufferBase() = default;

    [[nodiscard]] bool Has(DWORD control) const noexcept { return (flags_ & control) != 0; }
    template <typename Value>
    HRESULT Read(DWORD control, Value *place, Value value) const noexcept {
        if (!Has(control)) return DSERR_CONTROLUNAVAIL;
        return Store(place, value);
    }
    template <typename Value>
    static HRESULT Store(Value *place, Value value) noexcept {
        if (place == nullptr) return DSERR_INVALIDPARAM;
        *place = value;
        return DS_OK;
    }

  private:
    Object &Self() noexcept { return static_cast<Object &>(*this); }

    const DWORD flags_;
};

// Has no samples of its own and always plays: what it sets is the mixer's.
class PrimaryBuffer final : public SoundBufferBase<PrimaryBuffer> {
  public:
    explicit PrimaryBuffer(DWORD flags) noexcept : SoundBufferBase(flags) {}

    HRESULT GetCurrentPosition(DWORD *, DWORD *) noexcept override { return DSERR_PRIOLEVELNEEDED; }
    HRESULT GetFrequency(DWORD *frequency) noexcept override;
    HRESULT GetStatus(DWORD *status) noexcept override;
    HRESULT Lock(DWORD, DWORD, void **, DWORD *, void **, DWORD *, DWORD) noexcept override {
        return DSERR_PRIOLEVELNEEDED;
    }
    HRESULT Play(DWORD, DWORD, DWORD) noexcept override { return DS_OK; }
    HRESULT SetCurrentPosition(DWORD) noexcept override { return DSERR_INVALIDCALL; }
    HRESULT SetFrequency(DWORD) noexcept override { return DSERR_CONTROLUNAVAIL; }
    HRESULT Stop() noexcept override { return DS_OK; }
    HRESULT Unlock(void *, DWORD, void *, DWORD) noexcept override { return DSERR_INVALIDCALL; }

    [[nodiscard]] static DWORD ByteCount() noexcept { return 0; }
    [[nodiscard]] static WAVEFORMATEX Format() noexcept;
    [[nodiscard]] static Loudness &OwnLoudness() noexcept { return OutputMixer().loudness; }
};

// A voice of the mixer.
class VoiceBuffer final : public SoundBufferBase<VoiceBuffer> {
  public:
    // Takes over the reference to the voice.
    VoiceBuffer(DWORD flags, Voice &voice) noexcept : SoundBufferBase(flags), voice_(voice) {}
    ~VoiceBuffer();

    HRESULT GetCurrentPosition(DWORD *playOffset, DWORD *writeOffset) noexcept override;
    HRESULT GetFrequency(DWORD *frequency) noexcept override;
    HRESULT GetStatus(DWORD *status) noexcept override;
    HRESULT Lock(DWORD offset, DWORD size, void **area1, DWORD *size1, void **area2, DWORD *size2,
                 DWORD flags) noexcept override;
    HRESULT Play(DWORD reserved, DWORD priority, DWORD flags) noexcept override;
    HRESULT SetCurrentPosition(DWORD offset) noexcept override;
    HRESULT SetFrequency(DWORD frequency) noexcept override;
    HRESULT Stop() noexcept override;
    HRESULT Unlock(void *area1, DWORD size1, void *area2, DWORD size2) noexcept override;

    [[nodiscard]] DWORD ByteCount() const noexcept { return voice_.Samples().ByteCount(); }
    [[nodiscard]] const WAVEFORMATEX &Format() const noexcept { return voice_.Samples().Format(); }
    [[nodiscard]] Loudness &OwnLoudness() noexcept { return voice_.loudness; }
    [[nodiscard]] Voice &OwnVoice() noexcept { return voice_; }

  private:
    [[nodiscard]] uint32_t OffsetOf(uint64_t frame) const noexcept;
    [[nodiscard]] uint32_t WriteOffset() const noexcept;

    Voice &voice_;
};

}  // namespace fenlight::platform
