// SPDX-License-Identifier: Zlib
#include "platform/window/display_modes.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <iterator>

#include "fenlight/platform/windows.h"
#include "platform/graphics/screen_context.h"
#include "platform/system/suspend_gate.h"
#include "platform/window/display_thread.h"
#include "platform/window/full_screen.h"

namespace fenlight::platform {
namespace {

constexpr ScreenSize kSizes[] = {{320, 200},   {320, 240},   {400, 300},   {512, 384},   {640, 400},
                                 {640, 480},   {720, 480},   {720, 576},   {800, 600},   {848, 480},
                                 {1024, 768},  {1152, 864},  {1280, 720},  {1280, 768},  {1280, 800},
                                 {1280, 960},  {1280, 1024}, {1360, 768},  {1366, 768},  {1400, 1050},
                                 {1440, 900},  {1600, 900},  {1600, 1200}, {1680, 1050}, {1920, 1080},
                                 {1920, 1200}, {2048, 1152}, {2560, 1440}, {2560, 1600}, {3840, 2160}};
constexpr DWORD kBitsPerPixel = 32;
constexpr DWORD kRefreshRate = 60;

constexpr uint64_t Pack(ScreenSize size) {
    return uint64_t{static_cast<uint32_t>(size.height)} << 32 | static_cast<uint32_t>(size.width);
}
constexpr ScreenSize Unpack(uint64_t size) {
    return {static_cast<int32_t>(size), static_cast<int32_t>(size >> 32)};
}

std::atomic<uint64_t> changedMode{0};  // 0: not changed
std::atomic<uint64_t> desktopSize{Pack({kScreenWidth, kScreenHeight})};

// The display thread finds it out when it starts.
ScreenSize DesktopSize() {
    RunOnDisplayThread([] {});
    return Unpack(desktopSize.load(std::memory_order_relaxed));
}

ScreenSize CurrentSize() {
    const std::optional<ScreenSize> changed = ChangedMode();
    return changed ? *changed : DesktopSize();
}

bool IsMode(ScreenSize size) {
    return std::find(std::begin(kSizes), std::end(kSizes), size) != std::end(kSizes) || size == DesktopSize();
}

// What a record leaves out stays as it is.
std::optional<ScreenSize> WantedSize(const DEVMODEA &mode) {
    const bool hasDepth = (mode.dmFields & DM_BITSPERPEL) == 0 || mode.dmBitsPerPel == kBitsPerPixel;
    // 0 and 1 stand for the usual rate.
    const bool hasRate = (mode.dmFields & DM_DISPLAYFREQUENCY) == 0 || mode.dmDisplayFrequency <= 1 ||
                         mode.dmDisplayFrequency == kRefreshRate;
    ScreenSize size = CurrentSize();
    if ((mode.dmFields & DM_PELSWIDTH) != 0) size.width = static_cast<int32_t>(mode.dmPelsWidth);
    if ((mode.dmFields & DM_PELSHEIGHT) != 0) size.height = static_cast<int32_t>(mode.dmPelsHeight);
    if (!hasDepth || !hasRate || !IsMode(size)) return std::nullopt;
    return size;
}

void UseMode(uint64_t mode) {
    changedMode.store(mode, std::memory_order_relaxed);
    // Without the thread there is no window yet; the first one looks at the mode itself.
    if (IsDisplayThreadRunning()) RunOnDisplayThread([] { ArrangeFullScreen(); });
}

void Describe(ScreenSize size, DEVMODEA &mode) {
    mode.dmFields = DM_BITSPERPEL | DM_PELSWIDTH | DM_PELSHEIGHT | DM_DISPLAYFLAGS | DM_DISPLAYFREQUENCY;
    mode.dmBitsPerPel = kBitsPerPixel;
    mode.dmPelsWidth = static_cast<DWORD>(size.width);
    mode.dmPelsHeight = static_cast<DWORD>(size.height);
    mode.dmDisplayFlags = 0;
    mode.dmDisplayFrequency = kRefreshRate;
}

static_assert(sizeof(DEVMODEA) == 148);

}  // namespace

std::optional<ScreenSize> ChangedMode() noexcept {
    const uint64_t mode = changedMode.load(std::memory_order_relaxed);
    return mode != 0 ? std::optional(Unpack(mode)) : std::nullopt;
}

void NoteDesktopSize(ScreenSize size) noexcept { desktopSize.store(Pack(size), std::memory_order_relaxed); }

}  // namespace fenlight::platform

using namespace fenlight::platform;

BOOL EnumDisplaySettingsA(const char *device, DWORD number, DEVMODEA *mode) noexcept {
    PassSuspendGate();
    if (device != nullptr || mode == nullptr) return 0;
    if (number == ENUM_CURRENT_SETTINGS) {
        Describe(CurrentSize(), *mode);
    } else if (number == ENUM_REGISTRY_SETTINGS) {
        Describe(DesktopSize(), *mode);
    } else if (number < std::size(kSizes)) {
        Describe(kSizes[number], *mode);
    } else {
        return 0;
    }
    return 1;
}

LONG ChangeDisplaySettingsA(const DEVMODEA *mode, DWORD flags) noexcept {
    PassSuspendGate();
    if (mode == nullptr) {
        UseMode(0);
        return DISP_CHANGE_SUCCESSFUL;
    }
    const std::optional<ScreenSize> size = WantedSize(*mode);
    if (!size) return DISP_CHANGE_BADMODE;
    if ((flags & CDS_TEST) == 0) UseMode(Pack(*size));
    return DISP_CHANGE_SUCCESSFUL;
}
