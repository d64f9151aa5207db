// SPDX-License-Identifier: Zlib
// The one table behind every handle of the platform layer.
//
// A handle names a slot and the generation of what the slot holds, so a dead, foreign or wrong-kind handle is
// recognised instead of followed. Looking a handle up pins its object: an object that another thread deletes
// at that moment lives until the last pin is gone. Every function here may be called on any thread;
// a look-up takes no lock.
#pragma once

#include <cstdint>
#include <utility>

namespace fenlight::platform {

enum class HandleKind : uint8_t {
    None,
    Context,
    Bitmap,
    Pen,
    Brush,
    Window,
    Thread,
    Semaphore,
    File,
    Resource,
};

// Base of everything that a handle can name. The table owns the object from InsertHandle on.
class HandleObject {
  public:
    HandleObject() = default;
    HandleObject(const HandleObject &) = delete;
    HandleObject &operator=(const HandleObject &) = delete;
    virtual ~HandleObject() = default;
};

// Gives the object a handle and takes ownership of it. 0 if the table is full; the object is then deleted.
uintptr_t InsertHandle(HandleKind kind, HandleObject *object) noexcept;

// Ends the handle. The object is deleted at once or with its last pin. False if the handle is not alive or
// not of that kind.
bool RemoveHandle(HandleKind kind, uintptr_t handle) noexcept;

// The kind of a live handle, None for any other number.
HandleKind KindOfHandle(uintptr_t handle) noexcept;

// Live handles of one kind, for tests that look for leaks.
int CountHandles(HandleKind kind) noexcept;

namespace detail {
HandleObject *PinHandle(HandleKind kind, uintptr_t handle) noexcept;
void UnpinHandle(uintptr_t handle) noexcept;
}  // namespace detail

// The object behind a handle, held alive as long as this stands. Empty for a handle that is dead or of
// another kind.
template <class Object, HandleKind Kind>
class Pinned {
  public:
    explicit Pinned(uintptr_t handle) noexcept
        : handle_(handle), object_(static_cast<Object *>(detail::PinHandle(Kind, handle))) {}
    Pinned(Pinned &&other) noexcept
        : handle_(other.handle_), object_(std::exchange(other.object_, nullptr)) {}
    Pinned(const Pinned &) = delete;
    Pinned &operator=(const Pinned &) = delete;
    Pinned &operator=(Pinned &&) = delete;
    ~Pinned() {
        if (object_ != nullptr) detail::UnpinHandle(handle_);
    }

    explicit operator bool() const noexcept { return object_ != nullptr; }
    Object *operator->() const noexcept { return object_; }
    Object &operator*() const noexcept { return *object_; }

  private:
    uintptr_t handle_;
    Object *object_;
};

}  // namespace fenlight::platform
