// SPDX-License-Identifier: Zlib
#include "sound/sound_bank.h"

#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "fenlight/platform/system.h"
#include "fenlight/sound.h"
#include "sound/sound_voice.h"
#include "sound/wave_reader.h"

namespace fenlight {
namespace {

constexpr DWORD kPrimaryControls =
    DSBCAPS_PRIMARYBUFFER | DSBCAPS_CTRL3D | DSBCAPS_CTRLPAN | DSBCAPS_CTRLVOLUME;
constexpr DWORD kVoiceControls =
    DSBCAPS_STATIC | DSBCAPS_CTRLFREQUENCY | DSBCAPS_CTRLPAN | DSBCAPS_CTRLVOLUME;

struct ReleaseObject {
    void operator()(IUnknown *object) const noexcept { object->Release(); }
};
using DirectSoundPointer = std::unique_ptr<IDirectSound, ReleaseObject>;

struct ReleaseBlock {
    void operator()(SoundBlock *block) const noexcept {
        for (IDirectSoundBuffer *voice : block->voices) {
            if (voice != nullptr) voice->Release();
        }
        GlobalFree(block);
    }
};
using SoundBlockPointer = std::unique_ptr<SoundBlock, ReleaseBlock>;

// Never held while something loads or plays. Both are 0 before DSoundInit.
constinit std::mutex bankLock;
IDirectSound *bankSound = nullptr;
IDirectSoundBuffer *bankPrimary = nullptr;

HRESULT OpenBank(uintptr_t window) {
    IDirectSound *made = nullptr;
    HRESULT result = DirectSoundCreate(nullptr, &made, nullptr);
    if (result != DS_OK) return result;
    DirectSoundPointer sound(made);
    result = sound->SetCooperativeLevel(window, DSSCL_NORMAL);
    if (result != DS_OK) return result;
    DSBUFFERDESC description{sizeof description, kPrimaryControls, 0, 0, nullptr, {}};
    result = sound->CreateSoundBuffer(&description, &bankPrimary, nullptr);
    if (result == DS_OK) bankSound = sound.release();
    return result;
}

void CloseBank() {
    bankPrimary->SetVolume(DSBVOLUME_MAX);
    bankPrimary->SetPan(DSBPAN_CENTER);
    std::exchange(bankPrimary, nullptr)->Release();
    std::exchange(bankSound, nullptr)->Release();
}

// Stays good for a load that DSoundDeInit overtakes.
DirectSoundPointer HoldBankSound() {
    const std::lock_guard locked(bankLock);
    if (bankSound != nullptr) bankSound->AddRef();
    return DirectSoundPointer(bankSound);
}

SoundBlockPointer MakeEmptyBlock() {
    void *memory = GlobalAlloc(GMEM_ZEROINIT, sizeof(SoundBlock));
    return SoundBlockPointer(memory != nullptr ? new (memory) SoundBlock{} : nullptr);
}

// The last byte of the data keeps the buffer's silence.
bool FillBuffer(IDirectSoundBuffer &buffer, WaveSource &source, const WaveLayout &layout) {
    void *areas[2];
    DWORD sizes[2];
    const DWORD wanted = layout.dataSize - 1;
    if (buffer.Lock(0, wanted, &areas[0], &sizes[0], &areas[1], &sizes[1], 0) != DS_OK) return false;
    const bool isRead = source.Read(layout.dataOffset, areas[0], sizes[0]) &&
                        source.Read(layout.dataOffset + sizes[0], areas[1], sizes[1]);
    buffer.Unlock(areas[0], sizes[0], areas[1], sizes[1]);
    return isRead;
}

bool MakeVoices(IDirectSound &sound, WaveSource &source, WaveLayout &layout, SoundBlock &block) {
    const DSBUFFERDESC description{
        sizeof description, kVoiceControls, layout.dataSize, 0, &layout.format, {}};
    if (sound.CreateSoundBuffer(&description, &block.voices[0], nullptr) != DS_OK) return false;
    if (!FillBuffer(*block.voices[0], source, layout)) return false;
    for (uint32_t i = 1; i < kVoiceCount; ++i) {
        if (sound.DuplicateSoundBuffer(block.voices[0], &block.voices[i]) != DS_OK) return false;
    }
    return true;
}

uintptr_t LoadFromMemory(const void *bytes, size_t size) {
    MemorySource source(bytes, size);
    return LoadSound(source);
}

}  // namespace

uintptr_t LoadSound(WaveSource &source) noexcept {
    WaveLayout layout;
    const DirectSoundPointer sound = HoldBankSound();
    if (!sound || !FindWave(source, layout)) return 0;
    SoundBlockPointer block = MakeEmptyBlock();
    if (!block || !MakeVoices(*sound, source, layout, *block)) return 0;
    return reinterpret_cast<uintptr_t>(block.release());
}

void UnloadSound(uintptr_t sound) noexcept { SoundBlockPointer(reinterpret_cast<SoundBlock *>(sound)); }

}  // namespace fenlight

using namespace fenlight;

int32_t DSoundInit(uintptr_t window) noexcept {
    const std::lock_guard locked(bankLock);
    return bankSound != nullptr ? 0 : OpenBank(window);
}

int32_t DSoundDeInit() noexcept {
    const std::lock_guard locked(bankLock);
    if (bankSound != nullptr) CloseBank();
    return 0;
}

uintptr_t DSoundLoad(const char *fileName) noexcept {
    if (fileName == nullptr) return 0;
    FileSource source(fileName);
    return LoadSound(source);
}

uintptr_t DSoundLoadMemory(const void *data, int32_t size) noexcept {
    return size < 0 ? 0 : LoadFromMemory(data, static_cast<size_t>(size));
}

uintptr_t DSoundLoadResource(uintptr_t module, const char *name) noexcept {
    const HRSRC resource = FindResourceA(module, name, "WAVE");
    if (resource == 0) return 0;
    return LoadFromMemory(LockResource(LoadResource(module, resource)), SizeofResource(module, resource));
}

int32_t DSoundUnLoad(uintptr_t sound) noexcept {
    UnloadSound(sound);
    return 0;
}

int32_t DSoundSetGlobalVolume(int32_t volume) noexcept {
    const std::lock_guard locked(bankLock);
    if (bankPrimary != nullptr) bankPrimary->SetVolume(volume);
    return 0;
}

int32_t DSoundSetGlobalPan(int32_t pan) noexcept {
    const std::lock_guard locked(bankLock);
    if (bankPrimary != nullptr) bankPrimary->SetPan(pan);
    return 0;
}

uintptr_t DSoundGetInterfaces(uintptr_t *primaryBuffer) noexcept {
    const std::lock_guard locked(bankLock);
    if (primaryBuffer != nullptr) *primaryBuffer = reinterpret_cast<uintptr_t>(bankPrimary);
    return reinterpret_cast<uintptr_t>(bankSound);
}
