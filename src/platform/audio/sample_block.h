// SPDX-License-Identifier: Zlib
// The samples of a sound as they were loaded, shared by all its voices. The bytes are plain memory: whoever
// writes them must keep away from what a voice is about to read.
#pragma once

#include <atomic>
#include <cstdint>

#include "fenlight/platform/sound.h"

namespace fenlight::platform {

// PCM, mono or stereo, 8, 16, 24 or 32 bit, at any rate but 0.
[[nodiscard]] bool IsPlayable(const WAVEFORMATEX &format) noexcept;

class SampleBlock {
  public:
    // Silent samples with one reference. The format must be playable and one frame must fit. nullptr without
    // memory.
    [[nodiscard]] static SampleBlock *Create(const WAVEFORMATEX &format, uint32_t byteCount) noexcept;
    SampleBlock(const SampleBlock &) = delete;
    SampleBlock &operator=(const SampleBlock &) = delete;

    void AddReference() noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
    void DropReference() noexcept;

    [[nodiscard]] const WAVEFORMATEX &Format() const noexcept { return format_; }
    [[nodiscard]] uint8_t *Bytes() const noexcept { return bytes_; }
    [[nodiscard]] uint32_t ByteCount() const noexcept { return byteCount_; }
    [[nodiscard]] uint32_t FrameCount() const noexcept { return byteCount_ / format_.nBlockAlign; }
    [[nodiscard]] uint8_t SilentByte() const noexcept { return format_.wBitsPerSample == 8 ? 0x80 : 0; }

  private:
    SampleBlock(const WAVEFORMATEX &format, uint8_t *bytes, uint32_t byteCount) noexcept
        : format_(format), bytes_(bytes), byteCount_(byteCount) {}
    ~SampleBlock();

    const WAVEFORMATEX format_;
    uint8_t *const bytes_;
    const uint32_t byteCount_;
    std::atomic<uint32_t> references_{1};
};

}  // namespace fenlight::platform
