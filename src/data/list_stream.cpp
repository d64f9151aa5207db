// SPDX-License-Identifier: Zlib
// The data stream: one for the library. Atomic words, so that calls from two threads by mistake mix up their
// places but nothing worse.
#include <atomic>

#include "data/list_parser.h"
#include "fenlight/lists.h"

namespace fenlight {
namespace {

std::atomic<uint8_t *> dataMemory{nullptr};
std::atomic<int32_t> dataPosition{0};

// The position moves on by what the writer says that it wrote.
int32_t WriteToStream(int32_t (*write)(uint8_t *target, const char *text) noexcept, const char *text) {
    uint8_t *const memory = dataMemory.load(std::memory_order_relaxed);
    if (memory == nullptr || text == nullptr) return 0;
    const int32_t count = write(memory + dataPosition.load(std::memory_order_relaxed), text);
    dataPosition.fetch_add(count, std::memory_order_relaxed);
    return count;
}

}  // namespace
}  // namespace fenlight

using namespace fenlight;

void DataMem(void *memory) noexcept {
    dataMemory.store(static_cast<uint8_t *>(memory), std::memory_order_relaxed);
    dataPosition.store(0, std::memory_order_relaxed);
}

void DataPos(int32_t position) noexcept { dataPosition.store(position, std::memory_order_relaxed); }

int32_t DataBytes(const char *text) noexcept { return WriteToStream(WriteList<uint8_t>, text); }

int32_t OemBytes(const char *text) noexcept { return WriteToStream(DecodeEscapedText, text); }
