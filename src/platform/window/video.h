// SPDX-License-Identifier: Zlib
// SDL's side of the windows: driver, events, pictures. Owned by the display thread; every function here runs
// on it and nowhere else, except where it says otherwise.
#pragma once

#include <SDL_video.h>

#include "platform/window/window_record.h"

namespace fenlight::platform {

// Takes the display's own driver, or the dummy driver where there is no display. No signal handlers.
void StartVideo() noexcept;

// Shows a window for the record; false if SDL has none to give. The record must leave the screen before it
// ends.
bool AttachWindow(WindowRecord &window) noexcept;
// The window that was opened last, from where nextShown leads to the older ones; nullptr if none is shown.
WindowRecord *FirstShownWindow() noexcept;
// Notes where the windows are on the screen. To be called after moving one; also done whenever events are
// taken.
void NoteCorners() noexcept;
inline bool HasShownWindows() noexcept { return FirstShownWindow() != nullptr; }
// The shown window that the pointer is on, 0 if there is none.
HWND WindowUnderPointer() noexcept;
// The window with the keyboard's focus, 0 if there is none. Any thread.
HWND ActiveWindow() noexcept;

// Stand around SDL's message box, which runs on the thread that asked for it, so that pictures go on
// meanwhile. The box touches SDL's keyboard, mouse and focus: in between no events are taken and no window is
// destroyed, only put aside. False, and no box may be shown, where nobody can look at it. One box at a time.
bool BeginBox() noexcept;
void EndBox() noexcept;
bool IsBoxStanding() noexcept;
// Destroys it now, or when no box stands any more.
void DestroyFrame(SDL_Window *frame) noexcept;

// Takes what SDL has to tell: input goes to the input state, a window closed by hand goes off the screen.
void PumpEvents() noexcept;
// Brings the bitmaps that changed on the screen, each at most once per refresh of its display.
void ShowChangedWindows() noexcept;

}  // namespace fenlight::platform
