// SPDX-License-Identifier: Zlib
// The part that all objects of the sound interfaces share: references, identity, and the hold on the output.
#pragma once

#include <atomic>
#include <cstring>

#include "fenlight/platform/sound.h"
#include "platform/audio/output.h"

namespace fenlight::platform {

inline bool IsSameId(const GUID &one, const GUID &other) noexcept {
    return std::memcmp(&one, &other, sizeof one) == 0;
}

// One reference at the start; the last one deletes. Whoever makes the object has held the output for it.
template <class Object, class Interface>
class CountedSound : public Interface {
  public:
    CountedSound(const CountedSound &) = delete;
    CountedSound &operator=(const CountedSound &) = delete;

    HRESULT QueryInterface(const GUID &interfaceId, void **object) noexcept override {
        if (object == nullptr) return DSERR_INVALIDPARAM;
        *object = nullptr;
        if (!IsSameId(interfaceId, Object::InterfaceId()) && !IsSameId(interfaceId, IID_IUnknown))
            return DSERR_NOINTERFACE;
        AddRef();
        *object = static_cast<Interface *>(this);
        return DS_OK;
    }

    ULONG AddRef() noexcept override { return references_.fetch_add(1, std::memory_order_relaxed) + 1; }

    ULONG Release() noexcept override {
        const ULONG left = references_.fetch_sub(1, std::memory_order_acq_rel) - 1;
        if (left != 0) return left;
        delete static_cast<Object *>(this);
        LetGoOfOutput();
        return 0;
    }

  protected:
    CountedSound() = default;
    ~CountedSound() = default;

  private:
    std::atomic<ULONG> references_{1};
};

}  // namespace fenlight::platform
