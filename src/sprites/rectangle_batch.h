// SPDX-License-Identifier: Zlib
// Collects rectangles that are to be copied at equal coordinates and copies them in one go as long as source
// and target stay the same. In a frame of many sprites the rectangles overlap so much that copying their
// exact union once costs a third of copying each. Of the sprite thread alone.
#pragma once

#include "fenlight/platform/graphics.h"

namespace fenlight {

class RectangleBatch {
  public:
    constexpr RectangleBatch() noexcept = default;
    RectangleBatch(const RectangleBatch &) = delete;
    RectangleBatch &operator=(const RectangleBatch &) = delete;

    // Where the rectangles that follow go. Copies those so far if that is a new place.
    void SelectContexts(HDC target, HDC source) noexcept;
    // Sizes below 1 are nothing. What lies beyond the last coordinate is cut off.
    void Add(int32_t x, int32_t y, int32_t width, int32_t height) noexcept;
    // Copies what is left; to be called before the contents of the source change.
    void Flush() noexcept;
    // Flushes and gives the memory back.
    void Release() noexcept;

  private:
    static constexpr int32_t kFirstCapacity = 64;

    bool Grow() noexcept;

    HDC target_ = 0;
    HDC source_ = 0;
    int32_t count_ = 0;
    int32_t capacity_ = kFirstCapacity;
    RECT *block_ = nullptr;  // in use once first_ has become too small
    RECT first_[kFirstCapacity]{};
};

}  // namespace fenlight
