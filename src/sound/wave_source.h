// SPDX-License-Identifier: Zlib
// Where the bytes of a WAV file come from: memory, or a file that is read piece by piece.
#pragma once

#include <cstddef>
#include <cstdint>

#include "fenlight/platform/types.h"

namespace fenlight {

class WaveSource {
  public:
    WaveSource() = default;
    WaveSource(const WaveSource &) = delete;
    WaveSource &operator=(const WaveSource &) = delete;

    [[nodiscard]] uint64_t Size() const noexcept { return size_; }
    // False, and the target undefined, unless all bytes are there.
    [[nodiscard]] bool Read(uint64_t offset, void *target, uint32_t size) noexcept {
        return offset <= size_ && size <= size_ - offset && (size == 0 || ReadInside(offset, target, size));
    }

  protected:
    ~WaveSource() = default;
    virtual bool ReadInside(uint64_t offset, void *target, uint32_t size) noexcept = 0;
    uint64_t size_ = 0;
};

class MemorySource final : public WaveSource {
  public:
    MemorySource(const void *bytes, size_t size) noexcept : bytes_(static_cast<const uint8_t *>(bytes)) {
        size_ = bytes != nullptr ? size : 0;
    }

  private:
    bool ReadInside(uint64_t offset, void *target, uint32_t size) noexcept override;
    const uint8_t *bytes_;
};

// Of size 0 where there is no such file.
class FileSource final : public WaveSource {
  public:
    explicit FileSource(const char *fileName) noexcept;
    ~FileSource();

  private:
    bool ReadInside(uint64_t offset, void *target, uint32_t size) noexcept override;
    bool ReadFromFile(uint64_t offset, void *target, uint32_t size) noexcept;

    HANDLE file_;
    // Chunk headers come out of this window: a file may consist of millions of empty chunks.
    uint64_t windowOffset_ = 0;
    uint32_t windowSize_ = 0;
    uint8_t window_[4096];
};

}  // namespace fenlight
