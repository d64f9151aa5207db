// SPDX-License-Identifier: Zlib
#include "platform/pictures/com_runtime.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <new>

#include "platform/system/failure_point.h"

namespace fenlight::platform {

std::atomic<int> livePictureObjects{0};

namespace {

thread_local int initializations = 0;
std::atomic<int> liveTaskBlocks{0};

class MemoryStream final : public Counted<IStream> {
  public:
    MemoryStream(void *block, uint32_t size, bool freeBlock)
        : bytes_(static_cast<const uint8_t *>(block)), size_(size), owned_(freeBlock ? block : nullptr) {}
    ~MemoryStream() override { CoTaskMemFree(owned_); }

    HRESULT Read(void *buffer, uint32_t size, uint32_t *bytesRead) noexcept override {
        const uint32_t count = std::min(size, size_ - position_);
        if (count > 0) std::memcpy(buffer, bytes_ + position_, count);
        position_ += count;
        if (bytesRead != nullptr) *bytesRead = count;
        return count == size ? S_OK : S_FALSE;
    }

  private:
    const uint8_t *bytes_;
    uint32_t size_;
    uint32_t position_ = 0;
    void *owned_;
};

}  // namespace

HRESULT CoInitialize(void *) noexcept { return initializations++ == 0 ? S_OK : S_FALSE; }

void CoUninitialize() noexcept {
    if (initializations > 0) --initializations;
}

int CountInitializations() noexcept { return initializations; }
int CountTaskBlocks() noexcept { return liveTaskBlocks.load(std::memory_order_relaxed); }
int CountPictureObjects() noexcept { return livePictureObjects.load(std::memory_order_relaxed); }

void *CoTaskMemAlloc(size_t bytes) noexcept {
    if (OperationFails(Operation::Memory)) return nullptr;
    void *block = std::malloc(std::max<size_t>(bytes, 1));
    if (block != nullptr) liveTaskBlocks.fetch_add(1, std::memory_order_relaxed);
    return block;
}

void CoTaskMemFree(void *block) noexcept {
    if (block == nullptr) return;
    liveTaskBlocks.fetch_sub(1, std::memory_order_relaxed);
    std::free(block);
}

HRESULT CreateStreamOnHGlobal(void *block, uint32_t size, bool freeBlock, IStream **stream) noexcept {
    if (stream == nullptr) return E_POINTER;
    *stream = nullptr;
    if (block == nullptr) return E_INVALIDARG;
    if (OperationFails(Operation::Memory)) return E_OUTOFMEMORY;
    *stream = new (std::nothrow) MemoryStream(block, size, freeBlock);
    return *stream != nullptr ? S_OK : E_OUTOFMEMORY;
}

}  // namespace fenlight::platform
