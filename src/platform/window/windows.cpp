// SPDX-License-Identifier: Zlib
#include "fenlight/platform/windows.h"

#include <new>
#include <string>
#include <utility>

#include "platform/graphics/screen_context.h"
#include "platform/graphics/surface_access.h"
#include "platform/system/failure_point.h"
#include "platform/system/suspend_gate.h"
#include "platform/window/ansi_text.h"
#include "platform/window/display_thread.h"
#include "platform/window/tooltip.h"
#include "platform/window/video.h"
#include "platform/window/window_record.h"

namespace fenlight::platform {
namespace {

// A frame with a title that the user cannot change in size, as OpenWindow makes it.
constexpr DWORD kOpenedStyle = WS_CAPTION | WS_SYSMENU | WS_MINIMIZEBOX | WS_VISIBLE;

// The record's handle, 0 if there was no room for it.
HWND InsertRecord(HDC context, int32_t width, int32_t height) {
    if (OperationFails(Operation::Memory)) return 0;
    auto *record = new (std::nothrow) WindowRecord(context, width, height);
    return record != nullptr ? InsertHandle(HandleKind::Window, record) : 0;
}

bool PutOnScreen(HWND window, std::string title) {
    const PinnedWindow record(window);
    if (!record) return false;
    bool isAttached = false;
    const bool wasRun = RunOnDisplayThread([&] {
        record->handle = window;
        record->title = std::move(title);
        record->style = kOpenedStyle;
        isAttached = AttachWindow(*record);
    });
    return wasRun && isAttached;
}

// Ends the handle and takes the window off the screen. Of several threads that try, one succeeds, and the
// context is then its to delete.
bool TakeDown(HWND window, HDC &context) {
    const PinnedWindow record(window);
    if (!record || !RemoveHandle(HandleKind::Window, window)) return false;
    context = record->context;
    // From here on nobody attaches it any more; so where no thread runs yet, none needs to be started.
    record->isEnding.store(true, std::memory_order_relaxed);
    if (IsDisplayThreadRunning()) RunOnDisplayThread([&] { record->LeaveScreen(); });
    return true;
}

HWND OpenWindowOfSize(const char *title, int32_t width, int32_t height) {
    const HDC context = CreateSurfaceContext(width, height);
    if (context == 0) return 0;
    const HWND window = InsertRecord(context, width, height);
    if (window == 0) {
        DeleteSurfaceContext(context);
        return 0;
    }
    if (PutOnScreen(window, TextToUtf8(title, kMaxTitleBytes))) return window;
    DestroyWindow(window);
    return 0;
}

}  // namespace
}  // namespace fenlight::platform

using namespace fenlight::platform;

HWND OpenWindow(const char *title, int32_t width, int32_t height) noexcept {
    PassSuspendGate();
    return IsWindowSide(width) && IsWindowSide(height) ? OpenWindowOfSize(title, width, height) : 0;
}

BOOL IsWindow(HWND window) noexcept {
    const PinnedWindow record(window);
    return record && record->isOpen.load(std::memory_order_acquire) ? 1 : 0;
}

BOOL DestroyWindow(HWND window) noexcept {
    PassSuspendGate();
    HDC context = 0;
    if (!TakeDown(window, context)) return 0;
    if (context != 0) DeleteSurfaceContext(context);
    while (const HWND tooltip = TooltipOf(window)) DestroyWindow(tooltip);
    return 1;
}

HDC GetDC(HWND window) noexcept {
    if (window == 0) return ScreenContext();
    const PinnedWindow record(window);
    return record ? record->context : 0;
}

int32_t ReleaseDC(HWND window, HDC context) noexcept {
    return context != 0 && GetDC(window) == context ? 1 : 0;
}
