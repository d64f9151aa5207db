// SPDX-License-Identifier: Zlib
// Counted objects of the picture loader, and the way back from a wide path to the bytes of a file name.
#pragma once

#include <atomic>
#include <memory>

#include "platform/pictures/picture.h"

namespace fenlight::platform {

// Objects of this kind that are alive, for CountPictureObjects.
extern std::atomic<int> livePictureObjects;

// Gives `Interface` its reference count.
template <class Interface>
class Counted : public Interface {
  public:
    Counted() { livePictureObjects.fetch_add(1, std::memory_order_relaxed); }
    Counted(const Counted &) = delete;
    Counted &operator=(const Counted &) = delete;
    virtual ~Counted() { livePictureObjects.fetch_sub(1, std::memory_order_relaxed); }

    uint32_t AddRef() noexcept override { return references_.fetch_add(1, std::memory_order_relaxed) + 1; }
    uint32_t Release() noexcept override {
        const uint32_t left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left == 0) delete this;
        return left;
    }

  private:
    std::atomic<uint32_t> references_{1};
};

struct TaskBlockRelease {
    void operator()(void *block) const noexcept { CoTaskMemFree(block); }
};
template <class Element>
using TaskBlock = std::unique_ptr<Element[], TaskBlockRelease>;

template <class Element>
TaskBlock<Element> MakeTaskBlock(size_t count) noexcept {
    return TaskBlock<Element>(static_cast<Element *>(CoTaskMemAlloc(count * sizeof(Element))));
}

// The bytes that MultiByteToWideChar made `wide` from. Empty if there is no memory.
TaskBlock<char> NarrowPath(const char16_t *wide) noexcept;

}  // namespace fenlight::platform
