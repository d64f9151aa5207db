// SPDX-License-Identifier: Zlib
#include "platform/window/input_state.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <limits>
#include <mutex>

namespace fenlight::platform {
namespace {

constexpr uint8_t kDown = 1;
constexpr uint8_t kPressedSince = 2;
constexpr uint8_t kToggled = 4;

constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();
constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();
constexpr RECT kEverywhere{kLowest, kLowest, kHighest, kHighest};

std::array<std::atomic<uint8_t>, 256> keys{};
// x in the low half, y in the high half: a reader never sees the x of one place with the y of another.
std::atomic<uint64_t> cursor{0};
std::mutex moving;  // for `confines`, and for writing `cursor`
RECT confines = kEverywhere;

// The code that both sides of a key share, 0 for a key without sides.
constexpr uint8_t CommonCode(uint8_t key) {
    if (key < kLeftShift || key > kRightAlt) return 0;
    return static_cast<uint8_t>(kShift + (key - kLeftShift) / 2);
}

constexpr uint8_t OtherSide(uint8_t key) {
    return static_cast<uint8_t>(((key - kLeftShift) ^ 1) + kLeftShift);
}

constexpr uint8_t Pressed(uint8_t state) {
    return static_cast<uint8_t>((state ^ kToggled) | kDown | kPressedSince);
}

void MarkPressed(uint8_t key) {
    uint8_t state = keys[key].load(std::memory_order_relaxed);
    while (!keys[key].compare_exchange_weak(state, Pressed(state), std::memory_order_relaxed)) {
    }
}

void MarkReleased(uint8_t key) {
    keys[key].fetch_and(static_cast<uint8_t>(~kDown), std::memory_order_relaxed);
}

constexpr KeyState Unpack(uint8_t state) {
    return {(state & kDown) != 0, (state & kToggled) != 0, (state & kPressedSince) != 0};
}

// A rectangle that reaches to the end of the range is open on that side.
constexpr int32_t Confine(int32_t place, int32_t first, int32_t end) {
    return end == kHighest ? std::max(place, first) : std::clamp(place, first, end - 1);
}

void MoveLocked(CursorPosition position) {
    const int32_t x = Confine(position.x, confines.left, confines.right);
    const int32_t y = Confine(position.y, confines.top, confines.bottom);
    cursor.store(uint64_t{static_cast<uint32_t>(y)} << 32 | static_cast<uint32_t>(x),
                 std::memory_order_relaxed);
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
    if (common != 0 && !PeekKey(OtherSide(key)).isDown) MarkReleased(common);
}

void ReleaseAllKeys() noexcept {
    for (size_t key = 0; key < keys.size(); ++key) MarkReleased(static_cast<uint8_t>(key));
}

KeyState PeekKey(uint8_t key) noexcept { return Unpack(keys[key].load(std::memory_order_relaxed)); }

// Nearly every key of a scan has nothing to forget; only the others pay for a write.
KeyState QueryKey(uint8_t key) noexcept {
    uint8_t state = keys[key].load(std::memory_order_relaxed);
    if ((state & kPressedSince) != 0)
        state = keys[key].fetch_and(static_cast<uint8_t>(~kPressedSince), std::memory_order_relaxed);
    return Unpack(state);
}

int32_t TakeFreshKey() noexcept {
    for (size_t key = 0; key < keys.size(); ++key) {
        if ((keys[key].load(std::memory_order_relaxed) & kPressedSince) == 0) continue;
        const KeyState state = QueryKey(static_cast<uint8_t>(key));
        if (state.isDown && state.wasPressed) return static_cast<int32_t>(key);
    }
    return -1;
}

void MoveCursor(CursorPosition position) noexcept {
    const std::lock_guard lock(moving);
    MoveLocked(position);
}

CursorPosition CurrentCursor() noexcept {
    const uint64_t both = cursor.load(std::memory_order_relaxed);
    return {static_cast<int32_t>(both), static_cast<int32_t>(both >> 32)};
}

void ConfineCursor(const RECT &rectangle) noexcept {
    const std::lock_guard lock(moving);
    confines = rectangle;
    MoveLocked(CurrentCursor());
}

void FreeCursor() noexcept { ConfineCursor(kEverywhere); }

void ForgetInput() noexcept {
    for (auto &key : keys) key.store(0, std::memory_order_relaxed);
    FreeCursor();
    MoveCursor({});
}

}  // namespace fenlight::platform
