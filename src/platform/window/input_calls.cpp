// SPDX-License-Identifier: Zlib
// The published calls for keys and cursor, on the input state and the open windows.
#include "fenlight/platform/input.h"
#include "fenlight/platform/system.h"
#include "platform/window/display_thread.h"
#include "platform/window/event_feed.h"
#include "platform/window/video.h"
#include "platform/window/window_record.h"

namespace fenlight::platform {
namespace {

constexpr bool IsVirtualKey(int32_t key) { return key >= 0 && key < 256; }

int16_t Packed(bool isDown, bool lowBit) {
    return static_cast<int16_t>(static_cast<uint16_t>((isDown ? 0x8000 : 0) | (lowBit ? 1 : 0)));
}

// Without a window the pointer is the user's own. Before the thread runs there is none.
void ShowCursorPlace() {
    if (!IsDisplayThreadRunning()) return;
    RunOnDisplayThread([] {
        if (HasShownWindows()) MovePointer(CurrentCursor());
    });
}

}  // namespace
}  // namespace fenlight::platform

using namespace fenlight::platform;

int16_t GetAsyncKeyState(int32_t key) noexcept {
    if (!IsVirtualKey(key)) return 0;
    const KeyState state = QueryKey(static_cast<uint8_t>(key));
    return Packed(state.isDown, state.wasPressed);
}

int16_t GetKeyState(int32_t key) noexcept {
    if (!IsVirtualKey(key)) return 0;
    const KeyState state = PeekKey(static_cast<uint8_t>(key));
    return Packed(state.isDown, state.isToggled);
}

BOOL GetCursorPos(POINT *position) noexcept {
    if (position == nullptr) return 0;
    const CursorPosition cursor = CurrentCursor();
    *position = {cursor.x, cursor.y};
    return 1;
}

BOOL SetCursorPos(int32_t x, int32_t y) noexcept {
    MoveCursor({x, y});
    ShowCursorPlace();
    return 1;
}

BOOL ClipCursor(const RECT *rectangle) noexcept {
    if (rectangle == nullptr) {
        FreeCursor();
        return 1;
    }
    if (rectangle->left >= rectangle->right || rectangle->top >= rectangle->bottom) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    const CursorPosition before = CurrentCursor();
    ConfineCursor(*rectangle);
    if (CurrentCursor() != before) ShowCursorPlace();
    return 1;
}

HWND GetActiveWindow() noexcept { return ActiveWindow(); }

BOOL ScreenToClient(HWND window, POINT *point) noexcept {
    const PinnedWindow record(window);
    if (point == nullptr || !record || !record->isOpen.load(std::memory_order_acquire)) return 0;
    const CursorPosition corner = record->Corner();
    // In 32 bits, wrapping: a cursor may be confined to the ends of the range.
    point->x = static_cast<LONG>(static_cast<DWORD>(point->x) - static_cast<DWORD>(corner.x));
    point->y = static_cast<LONG>(static_cast<DWORD>(point->y) - static_cast<DWORD>(corner.y));
    return 1;
}
