// SPDX-License-Identifier: Zlib
#include "platform/window/message_box.h"

#include <SDL_messagebox.h>

#include <mutex>

#include "fenlight/platform/windows.h"
#include "platform/system/suspend_gate.h"
#include "platform/window/ansi_text.h"
#include "platform/window/display_thread.h"
#include "platform/window/video.h"

namespace fenlight::platform {
namespace {

// More than any screen shows.
constexpr size_t kMaxCaptionBytes = 1024;
constexpr size_t kMaxTextBytes = 64 * 1024;

constexpr UINT kIconBits = 0xF0;
constexpr UINT kErrorIcon = 0x10;
constexpr UINT kWarningIcon = 0x30;

struct LastBox {
    std::mutex mutex;  // for the record
    MessageBoxRecord record;
    std::mutex standing;  // held as long as a box stands
};

// Never destroyed: a box may be asked for while the process exits.
LastBox &TheLastBox() {
    static LastBox &box = *new LastBox;
    return box;
}

void Remember(const MessageBoxRecord &record) {
    LastBox &last = TheLastBox();
    const std::lock_guard lock(last.mutex);
    const uint32_t count = last.record.count + 1;
    last.record = record;
    last.record.count = count;
}

Uint32 IconOf(UINT type) {
    switch (type & kIconBits) {
        case kErrorIcon:
            return SDL_MESSAGEBOX_ERROR;
        case kWarningIcon:
            return SDL_MESSAGEBOX_WARNING;
        default:
            return SDL_MESSAGEBOX_INFORMATION;
    }
}

void ShowBox(const MessageBoxRecord &record) {
    const std::lock_guard oneAtATime(TheLastBox().standing);
    const PinnedWindow owner(record.owner);
    SDL_Window *frame = nullptr;
    bool mayShow = false;
    RunOnDisplayThread([&] {
        mayShow = BeginBox();
        frame = owner ? owner->frame : nullptr;
    });
    if (!mayShow) return;
    SDL_ShowSimpleMessageBox(IconOf(record.type), record.caption.c_str(), record.text.c_str(), frame);
    RunOnDisplayThread([] { EndBox(); });
}

}  // namespace

MessageBoxRecord LastMessageBox() {
    LastBox &last = TheLastBox();
    const std::lock_guard lock(last.mutex);
    return last.record;
}

}  // namespace fenlight::platform

using namespace fenlight::platform;

int32_t MessageBoxA(HWND owner, const char *text, const char *caption, UINT type) noexcept {
    PassSuspendGate();
    const MessageBoxRecord record{
        .owner = owner,
        .type = type,
        .caption = TextToUtf8(caption != nullptr ? caption : "Error", kMaxCaptionBytes),
        .text = TextToUtf8(text, kMaxTextBytes)};
    Remember(record);
    // Whoever stops this thread must not wait until somebody answers the box.
    const Resting rest;
    ShowBox(record);
    return IDOK;
}
