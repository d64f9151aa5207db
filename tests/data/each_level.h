// SPDX-License-Identifier: Zlib
// Texts beside memory that must not be touched.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <string_view>

#include "data/memory_guard.h"
#include "support/each_level.h"

namespace fenlight {

inline std::string TextAt(const uint8_t *bytes, int64_t count) {
    return {reinterpret_cast<const char *>(bytes), static_cast<size_t>(count)};
}

// A text that ends where the memory ends, behind 64 bytes that tell whether somebody wrote before it.
class FencedText {
  public:
    explicit FencedText(std::string_view text) : memory_(Fence(text)), length_(text.size()) {}
    explicit FencedText(int64_t length) : FencedText(std::string(static_cast<size_t>(length), '?')) {}

    uint8_t *Data() { return memory_.Data() + kFence; }
    std::string Text() const { return TextAt(memory_.Data() + kFence, static_cast<int64_t>(length_)); }
    bool IsFenceWhole() const { return TextAt(memory_.Data(), kFence) == std::string(kFence, '|'); }

  private:
    static constexpr size_t kFence = 64;

    static std::vector<uint8_t> Fence(std::string_view text) {
        std::vector<uint8_t> fenced(kFence, '|');
        fenced.insert(fenced.end(), text.begin(), text.end());
        return fenced;
    }

    GuardedMemory memory_;
    size_t length_;
};

}  // namespace fenlight
