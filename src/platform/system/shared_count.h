// SPDX-License-Identifier: Zlib
// Shared ownership without an allocation of its own: the owned type counts its owners itself and offers
// AddOwner() and DropOwner(), which deletes it with the last one.
#pragma once

#include <utility>

namespace fenlight::platform {

template <class Object>
class Owner {
  public:
    Owner() noexcept = default;
    Owner(const Owner &other) noexcept : object_(other.object_) {
        if (object_ != nullptr) object_->AddOwner();
    }
    Owner(Owner &&other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    Owner &operator=(Owner other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }
    ~Owner() {
        if (object_ != nullptr) object_->DropOwner();
    }

    // Takes over one count that the object already has.
    static Owner Adopt(Object *object) noexcept {
        Owner owner;
        owner.object_ = object;
        return owner;
    }
    // Lets go of the object without dropping the count.
    Object *Detach() noexcept { return std::exchange(object_, nullptr); }

    explicit operator bool() const noexcept { return object_ != nullptr; }
    Object *operator->() const noexcept { return object_; }
    Object &operator*() const noexcept { return *object_; }

  private:
    Object *object_ = nullptr;
};

}  // namespace fenlight::platform
