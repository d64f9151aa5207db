/* SPDX-License-Identifier: Zlib */
/* The display's mode, styles of windows, tooltips, and a stopwatch for the pace of a loop.
 *
 * Windows are those of OpenWindow of the platform layer. Nothing here waits for a person. Every function may
 * be called on any thread. */
#ifndef FENLIGHT_DESKTOP_H
#define FENLIGHT_DESKTOP_H
#include "types.h"

FENLIGHT_BEGIN_C

/// Changes the mode of the display: the window that was opened last fills the screen, also one that is opened
/// later. When the program ends, the user's own mode comes back.
/// @param width   pixels: one of the usual sizes from 320 x 200 to 3840 x 2160, or the user's own; 0 brings
///                the user's own mode back
/// @param height  pixels; not looked at if `width` is 0
/// @return 0; -2 for a size that is no mode, and nothing is changed
/// @note A screen that has no such mode takes the next larger one, with the window's picture at its top left.
///       Without a display only the answer is given.
FENLIGHT_API int32_t ChangeDisplay(int32_t width, int32_t height) FENLIGHT_NOEXCEPT;

/// Sets bits in the style of a window. The published bits have an effect where the display can show it:
/// WS_CAPTION (0xC00000) a frame with a title, WS_THICKFRAME (0x40000) a frame at which the user changes the
/// window's size, WS_VISIBLE (0x10000000); of the extended style WS_EX_TOPMOST (8), in front of all others.
/// All other bits are only kept.
/// @param windowHandle  window that is open
/// @param style         bits to set
/// @param extended      1: the extended style; any other value: the plain one
/// @return 1; 0 if the window is not open
/// @note Not for one window from two threads at once.
FENLIGHT_API int32_t AddWindowStyle(uintptr_t windowHandle, uint32_t style,
                                    int32_t extended) FENLIGHT_NOEXCEPT;

/// Clears bits in the style of a window, as AddWindowStyle sets them. Without WS_CAPTION and WS_THICKFRAME it
/// has no frame.
/// @param windowHandle  window that is open
/// @param style         bits to clear
/// @param extended      1: the extended style; any other value: the plain one
/// @return 1; 0 if the window is not open
/// @note Not for one window from two threads at once.
FENLIGHT_API int32_t SubWindowStyle(uintptr_t windowHandle, uint32_t style,
                                    int32_t extended) FENLIGHT_NOEXCEPT;

/// Shows or hides the system's taskbar, where the system lets a program do that. This one has none that a
/// program could reach: nothing happens.
/// @param mode  0: hide it, 1: show it; other values are those of ShowWindow
/// @return 0
FENLIGHT_API int32_t SwitchTaskbar(int32_t mode) FENLIGHT_NOEXCEPT;

/// Gives a control a tooltip: a small window with a text that comes up below the pointer when it has rested
/// on the control for half a second, and goes when the pointer leaves, a button is pressed, or after five
/// seconds. ASCII letters are drawn, for others a box.
/// @param controlHandle   window that is explained. The tooltip of one that is not open never comes up.
/// @param text            zero-terminated UTF-8 text, or code page 1252 if it is no valid UTF-8; lines end
///                        with \n. At most 1024 bytes are read, during the call only. 0 or "": never comes
///                        up.
/// @param parentHandle    window with which the tooltip is destroyed, or 0
/// @param instanceHandle  not looked at
/// @return the tooltip's window handle, for DestroyWindow; 0 if `parentHandle` is neither 0 nor open, and
///         where memory ran out
FENLIGHT_API uintptr_t Tooltip(uintptr_t controlHandle, const char *text, uintptr_t parentHandle,
                               uintptr_t instanceHandle) FENLIGHT_NOEXCEPT;

/// Starts the stopwatch. There is one for the whole program, so only one loop can use it.
/// @return 0
FENLIGHT_API int32_t StartWatch(void) FENLIGHT_NOEXCEPT;

/// Reads the stopwatch; it runs on.
/// @return milliseconds since StartWatch, negative from 2^31 on; before the first StartWatch a number without
///         a meaning
FENLIGHT_API int32_t ReadWatch(void) FENLIGHT_NOEXCEPT;

/// Waits until the stopwatch shows a time, which is counted from StartWatch and not from this call. A loop
/// with StartWatch at its top and WaitWatch at its bottom runs at that pace, whatever its body costs below
/// it. The processor is given away a millisecond at a time.
/// @param milliseconds  what ReadWatch must give at least. The call rests for a millisecond even if that time
///                      is over, so 0 and below are a short rest.
FENLIGHT_API void WaitWatch(int32_t milliseconds) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
