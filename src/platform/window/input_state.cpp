// SPDX-License-Identifier: Zlib
#include "platform/window/input_state.h"

#include <array>
#include <atomic>

namespace fenlight::platform {
namespace {

constexpr uint8_t kDown = 1;
constexpr uint8_t kPressedSince = 2;

std::array<std::atomic<uint8_t>, 256> keys{};
// x in the low half, y in the high half: a reader never sees the x of one place with the y of another.
std::atomic<uint64_t> cursor{0};

// The code that both sides of a key share, 0 for a key without sides.
constexpr uint8_t CommonCode(uint8_t key) {
    if (key < kLeftShift || key > kRightAlt) return 0;
    return static_cast<uint8_t>(kShift + (key - kLeftShift) / 2);
}

constexpr uint8_t OtherSide(uint8_t key) {
    return static_cast<uint8_t>(((key - kLeftShift) ^ 1) + kLeftShift);
}

void MarkPressed(uint8_t key) { keys[key].fetch_or(kDown | kPressedSince, std::memory_order_relaxed); }
void MarkReleased(uint8_t key) {
    keys[key].fetch_and(static_cast<uint8_t>(~kDown), std::memory_order_relaxed);
}

}  // namespace

void PressKey(uint8_t key) noexcept {
    if (key == 0) return;
    MarkPressed(key);
    if (const uint8_t common = CommonCode(key); common != 0) MarkPressed(common);
}

void ReleaseKey(uint8_t key) noexcept {
    MarkReleased(key);
    const uint8_t common = CommonCode(key);
    if (common != 0 && !IsKeyDown(OtherSide(key))) MarkReleased(common);
}

void MoveCursor(CursorPosition position) noexcept {
    cursor.store(uint64_t{static_cast<uint32_t>(position.y)} << 32 | static_cast<uint32_t>(position.x),
                 std::memory_order_relaxed);
}

bool IsKeyDown(uint8_t key) noexcept { return (keys[key].load(std::memory_order_relaxed) & kDown) != 0; }

bool TakePressedSince(uint8_t key) noexcept {
    const uint8_t before =
        keys[key].fetch_and(static_cast<uint8_t>(~kPressedSince), std::memory_order_relaxed);
    return (before & kPressedSince) != 0;
}

CursorPosition CurrentCursor() noexcept {
    const uint64_t both = cursor.load(std::memory_order_relaxed);
    return {static_cast<int32_t>(both), static_cast<int32_t>(both >> 32)};
}

void ForgetInput() noexcept {
    for (auto &key : keys) key.store(0, std::memory_order_relaxed);
    MoveCursor({});
}

}  // namespace fenlight::platform
