// SPDX-License-Identifier: Zlib
// SDL's side of the windows: driver, events, pictures. Owned by the display thread; every function here runs
// on it and nowhere else, except where it says otherwise.
#pragma once

#include <SDL_video.h>

#include "platform/window/window_record.h"

namespace fenlight::platform {

// Takes the display's own driver, or the dummy driver where there is no display. No signal handlers.
void StartVideo() noexcept;

// Shows a window for the record; false if SDL has none to give. The record must be detached before it ends.
bool AttachWindow(WindowRecord &window, const char *title) noexcept;
// Takes the record's window off the screen, if it is there.
void DetachWindow(WindowRecord &window) noexcept;
bool HasShownWindows() noexcept;

// Stand around SDL's message box, which runs on the thread that asked for it, so that pictures go on
// meanwhile. The box touches SDL's keyboard, mouse and focus: in between no events are taken and no window is
// destroyed, only put aside. False, and no box may be shown, where nobody can look at it. One box at a time.
bool BeginBox() noexcept;
void EndBox() noexcept;

// Takes what SDL has to tell: input goes to the input state, a window closed by hand goes off the screen.
void PumpEvents() noexcept;
// Brings the bitmaps that changed on the screen, each at most once per refresh of its display.
void ShowChangedWindows() noexcept;

}  // namespace fenlight::platform
