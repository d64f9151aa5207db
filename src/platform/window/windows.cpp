// SPDX-License-Identifier: Zlib
#include "fenlight/platform/windows.h"

#include <new>
#include <string>

#include "platform/graphics/screen_context.h"
#include "platform/graphics/surface_access.h"
#include "platform/system/failure_point.h"
#include "platform/system/suspend_gate.h"
#include "platform/window/ansi_text.h"
#include "platform/window/display_thread.h"
#include "platform/window/video.h"
#include "platform/window/window_record.h"

namespace fenlight::platform {
namespace {

// SDL's own limit for a window's side.
constexpr int32_t kMaxSide = 16384;
constexpr size_t kMaxTitleBytes = 1024;

// The record's handle, 0 if there was no room for it.
HWND InsertRecord(HDC context, int32_t width, int32_t height) {
    if (OperationFails(Operation::Memory)) return 0;
    auto *record = new (std::nothrow) WindowRecord(context, width, height);
    return record != nullptr ? InsertHandle(HandleKind::Window, record) : 0;
}

bool PutOnScreen(HWND window, const std::string &title) {
    const PinnedWindow record(window);
    if (!record) return false;
    bool isAttached = false;
    const bool wasRun = RunOnDisplayThread([&] { isAttached = AttachWindow(*record, title.c_str()); });
    return wasRun && isAttached;
}

// Ends the handle and takes the window off the screen. Of several threads that try, one gets the context,
// which is then its to delete; the others get 0.
HDC TakeDown(HWND window) {
    const PinnedWindow record(window);
    if (!record || !RemoveHandle(HandleKind::Window, window)) return 0;
    // From here on nobody attaches it any more; so where no thread runs yet, none needs to be started.
    record->isEnding.store(true, std::memory_order_relaxed);
    if (IsDisplayThreadRunning()) RunOnDisplayThread([&] { DetachWindow(*record); });
    return record->context;
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

constexpr bool IsSide(int32_t pixels) { return pixels > 0 && pixels <= kMaxSide; }

}  // namespace
}  // namespace fenlight::platform

using namespace fenlight::platform;

HWND OpenWindow(const char *title, int32_t width, int32_t height) noexcept {
    PassSuspendGate();
    return IsSide(width) && IsSide(height) ? OpenWindowOfSize(title, width, height) : 0;
}

BOOL IsWindow(HWND window) noexcept {
    const PinnedWindow record(window);
    return record && record->isOpen.load(std::memory_order_acquire) ? 1 : 0;
}

BOOL DestroyWindow(HWND window) noexcept {
    PassSuspendGate();
    const HDC context = TakeDown(window);
    if (context == 0) return 0;
    DeleteSurfaceContext(context);
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
