// SPDX-License-Identifier: Zlib
// Memory that ends, or starts, where nothing can be read: a byte too far ends the test program. What is
// written too far at the other side is found at the end.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <string_view>
#include <vector>

namespace fenlight {

class GuardedMemory {
  public:
    explicit GuardedMemory(const std::vector<uint8_t> &content, bool isAtStart = false)
        : size_(content.size()), room_((size_ + kPage - 1) / kPage * kPage), mapped_(room_ + 2 * kPage) {
        void *block = mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (block == MAP_FAILED) throw std::bad_alloc();
        block_ = static_cast<uint8_t *>(block);
        if (room_ > 0 && mprotect(block_ + kPage, room_, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
        data_ = block_ + kPage + (isAtStart ? 0 : room_ - size_);
        if (size_ > 0) std::memcpy(data_, content.data(), size_);
    }
    explicit GuardedMemory(std::string_view text)
        : GuardedMemory(std::vector<uint8_t>(text.begin(), text.end())) {}
    ~GuardedMemory() {
        const auto isUntouched = [](uint8_t byte) { return byte == 0; };
        EXPECT_TRUE(std::all_of(block_ + kPage, data_, isUntouched)) << "written before the start";
        EXPECT_TRUE(std::all_of(data_ + size_, block_ + kPage + room_, isUntouched)) << "behind the end";
        munmap(block_, mapped_);
    }
    GuardedMemory(const GuardedMemory &) = delete;
    GuardedMemory &operator=(const GuardedMemory &) = delete;

    uint8_t *Data() const { return data_; }
    std::vector<uint8_t> Content() const { return {data_, data_ + size_}; }
    std::string Text() const { return {data_, data_ + size_}; }

  private:
    static constexpr size_t kPage = 4096;

    size_t size_;
    size_t room_;
    size_t mapped_;
    uint8_t *block_ = nullptr;
    uint8_t *data_ = nullptr;
};

}  // namespace fenlight
