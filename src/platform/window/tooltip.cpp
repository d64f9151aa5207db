// SPDX-License-Identifier: Zlib
#include "platform/window/tooltip.h"

#include <SDL.h>
#include <strings.h>

#include <algorithm>
#include <atomic>
#include <new>
#include <utility>

#include "fenlight/platform/system.h"
#include "fenlight/platform/windows.h"
#include "platform/system/failure_point.h"
#include "platform/system/suspend_gate.h"
#include "platform/window/ansi_text.h"
#include "platform/window/display_thread.h"
#include "platform/window/input_state.h"
#include "platform/window/tooltip_picture.h"
#include "platform/window/video.h"
#include "platform/window/window_record.h"

namespace fenlight::platform {
namespace {

using TimePoint = std::chrono::steady_clock::time_point;

constexpr auto kRestBefore = std::chrono::milliseconds(500);
constexpr auto kLongestShow = std::chrono::seconds(5);
constexpr int kBelowPointer = 20;  // pixels: the arrow must not cover the text

struct TooltipRecord final : WindowRecord {
    TooltipRecord() noexcept : WindowRecord(0, 0, 0) {}
    void LeaveScreen() noexcept override;

    // The display thread's own.
    HWND parent = 0;
    HWND control = 0;
    std::string text;
    intptr_t maxWidth = -1;
    TooltipRecord *next = nullptr;
};

// All of it the display thread's own, but for the count.
TooltipRecord *firstTooltip = nullptr;
std::atomic<int> tooltipCount{0};
TooltipRecord *shown = nullptr;
TimePoint shownAt;

struct Rest {
    HWND over = 0;
    CursorPosition place;
    TimePoint since;
    bool isSpent = true;  // nothing more is shown until the pointer moves
} rest;

SDL_Rect PlaceNear(CursorPosition pointer, PictureSize size) {
    SDL_Rect place{pointer.x, pointer.y + kBelowPointer, size.width, size.height};
    SDL_Rect screen;
    if (SDL_GetDisplayBounds(SDL_GetWindowDisplayIndex(SDL_GetMouseFocus()), &screen) != 0) return place;
    place.x = std::max(screen.x, std::min(place.x, screen.x + screen.w - place.w));
    if (place.y + place.h > screen.y + screen.h) place.y = pointer.y - kBelowPointer / 2 - place.h;
    return place;
}

void Hide() {
    if (shown == nullptr) return;
    DestroyFrame(std::exchange(shown->frame, nullptr));
    shown = nullptr;
}

void Show(TooltipRecord &tooltip, TimePoint now) {
    constexpr Uint32 kKind =
        SDL_WINDOW_TOOLTIP | SDL_WINDOW_BORDERLESS | SDL_WINDOW_ALWAYS_ON_TOP | SDL_WINDOW_SKIP_TASKBAR;
    SDL_Window *focused = SDL_GetKeyboardFocus();
    const SDL_Rect place = PlaceNear(rest.place, TooltipSize(tooltip.text));
    tooltip.frame = SDL_CreateWindow(tooltip.text.c_str(), place.x, place.y, place.w, place.h, kKind);
    if (tooltip.frame == nullptr) return;
    shown = &tooltip;
    shownAt = now;
    if (SDL_Surface *picture = SDL_GetWindowSurface(tooltip.frame)) {
        DrawTooltip(tooltip.text, *picture);
        SDL_UpdateWindowSurface(tooltip.frame);
    }
    // Without a window manager SDL gives each new window the keyboard.
    if (focused != nullptr && SDL_GetKeyboardFocus() != focused) SDL_SetWindowInputFocus(focused);
}

TooltipRecord *FindForControl(HWND control) {
    TooltipRecord *tooltip = firstTooltip;
    while (tooltip != nullptr && (tooltip->control != control || tooltip->text.empty()))
        tooltip = tooltip->next;
    return tooltip;
}

bool IsButtonDown() {
    return PeekKey(kLeftButton).isDown || PeekKey(kRightButton).isDown || PeekKey(kMiddleButton).isDown;
}

// The pointer is on what it was on, as long as that is there, if the tooltip has come up under it.
void NoteRest(TimePoint now, HWND over) {
    const bool isOnTooltip = shown != nullptr && SDL_GetMouseFocus() == shown->frame;
    if (isOnTooltip && IsWindow(rest.over) != 0) over = rest.over;
    const CursorPosition place = CurrentCursor();
    if (over != rest.over) Hide();
    if (over != rest.over || place != rest.place) rest = {over, place, now, false};
    if (!IsButtonDown()) return;
    Hide();
    rest.isSpent = true;
}

void Link(TooltipRecord &tooltip) {
    tooltip.next = firstTooltip;
    firstTooltip = &tooltip;
    tooltip.isOpen.store(true, std::memory_order_release);
    ++tooltipCount;
}

void TooltipRecord::LeaveScreen() noexcept {
    TooltipRecord **link = &firstTooltip;
    while (*link != nullptr && *link != this) link = &(*link)->next;
    if (*link == nullptr) return;
    *link = next;
    --tooltipCount;
    isOpen.store(false, std::memory_order_release);
    if (shown == this) Hide();
}

HWND InsertTooltip() {
    if (OperationFails(Operation::Memory)) return 0;
    auto *record = new (std::nothrow) TooltipRecord;
    return record != nullptr ? InsertHandle(HandleKind::Window, record) : 0;
}

struct Wishes {
    DWORD style, extendedStyle;
    std::string title;
    HWND parent;
};

// The parent is looked at again where it would be taken down: a tooltip must not come too late to go with it.
bool PutUp(HWND window, Wishes wishes) {
    const PinnedWindow record(window);
    if (!record) return false;
    bool isLinked = false;
    RunOnDisplayThread([&] {
        if (wishes.parent != 0 && IsWindow(wishes.parent) == 0) return;
        if (record->isEnding.load(std::memory_order_relaxed)) return;
        auto &tooltip = static_cast<TooltipRecord &>(*record);
        tooltip.handle = window;
        tooltip.title = std::move(wishes.title);
        tooltip.parent = wishes.parent;
        tooltip.style = wishes.style;
        tooltip.extendedStyle = wishes.extendedStyle;
        Link(tooltip);
        isLinked = true;
    });
    return isLinked;
}

HWND CreateTooltip(Wishes wishes) {
    const HWND window = InsertTooltip();
    if (window != 0 && PutUp(window, std::move(wishes))) return window;
    if (window != 0) DestroyWindow(window);
    SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return 0;
}

LRESULT AddTool(TooltipRecord &tooltip, const TOOLINFOA *tool) {
    if (tool == nullptr || tool->cbSize != sizeof *tool || (tool->uFlags & TTF_IDISHWND) == 0) return 0;
    std::string text = TextToUtf8(tool->lpszText, kMaxTitleBytes);
    const bool wasRun = RunOnDisplayThread([&] {
        if (shown == &tooltip) Hide();
        tooltip.control = tool->uId;
        tooltip.text = std::move(text);
    });
    return wasRun ? 1 : 0;
}

LRESULT SetMaxWidth(TooltipRecord &tooltip, intptr_t width) {
    RunOnDisplayThread([&] { std::swap(tooltip.maxWidth, width); });
    return width;
}

}  // namespace

void UpdateTooltips(TimePoint now, HWND over) noexcept {
    if (firstTooltip == nullptr || IsBoxStanding()) return;
    NoteRest(now, over);
    if (shown != nullptr) {
        if (now - shownAt >= kLongestShow) Hide();
        return;
    }
    if (rest.isSpent || rest.over == 0 || now - rest.since < kRestBefore) return;
    rest.isSpent = true;
    if (TooltipRecord *tooltip = FindForControl(rest.over)) Show(*tooltip, now);
}

bool IsTooltipShown() noexcept { return shown != nullptr; }

HWND TooltipOf(HWND parent) noexcept {
    HWND found = 0;
    if (tooltipCount == 0) return 0;
    RunOnDisplayThread([&] {
        const TooltipRecord *tooltip = firstTooltip;
        while (tooltip != nullptr && tooltip->parent != parent) tooltip = tooltip->next;
        if (tooltip != nullptr) found = tooltip->handle;
    });
    return found;
}

}  // namespace fenlight::platform

using namespace fenlight::platform;

void InitCommonControls() noexcept {}

HWND CreateWindowExA(DWORD extendedStyle, const char *className, const char *title, DWORD style, int32_t,
                     int32_t, int32_t, int32_t, HWND parent, uintptr_t, HINSTANCE, void *) noexcept {
    PassSuspendGate();
    if (className == nullptr || strcasecmp(className, TOOLTIPS_CLASSA) != 0) {
        SetLastError(ERROR_CLASS_DOES_NOT_EXIST);
        return 0;
    }
    if (parent != 0 && IsWindow(parent) == 0) {
        SetLastError(ERROR_INVALID_WINDOW_HANDLE);
        return 0;
    }
    return CreateTooltip({style, extendedStyle, TextToUtf8(title, kMaxTitleBytes), parent});
}

LRESULT SendMessageA(HWND window, UINT message, WPARAM, LPARAM second) noexcept {
    PassSuspendGate();
    const PinnedWindow record(window);
    auto *tooltip = record ? dynamic_cast<TooltipRecord *>(&*record) : nullptr;
    if (tooltip == nullptr) return 0;
    if (message == TTM_ADDTOOLA) return AddTool(*tooltip, reinterpret_cast<const TOOLINFOA *>(second));
    return message == TTM_SETMAXTIPWIDTH ? SetMaxWidth(*tooltip, second) : 0;
}
