/* SPDX-License-Identifier: Zlib */
/* Windows whose context is a bitmap, the screen's context, and message boxes.
 *
 * A window is a picture that is drawn on like any other context: OpenWindow, GetDC, then every drawing
 * function of graphics.h. What was drawn appears on the screen by itself, at most once per refresh of the
 * display; the caller pumps no messages and paints nothing anew. A thread of the layer's own does that; the
 * first OpenWindow or MessageBoxA starts it. Keys, mouse and the close button need no help from the caller
 * either.
 *
 * Without a display everything works the same and nothing is shown: contexts can be drawn on and read back,
 * and a message box returns at once. The environment variable SDL_VIDEODRIVER chooses the way to the screen;
 * "dummy" means none.
 *
 * Every function may be called on any thread. */
#ifndef FENLIGHT_PLATFORM_WINDOWS_H
#define FENLIGHT_PLATFORM_WINDOWS_H
#include "types.h"

#define MB_OK 0u
#define MB_ICONINFORMATION 64u
#define IDOK 1

FENLIGHT_BEGIN_C

/// Opens a window with a black picture. An addition of our own to the published calls.
/// @param title   zero-terminated UTF-8 text, or code page 1252 if it is no valid UTF-8; 0 is the empty
///                title. At most 1024 bytes are read. Needed during the call only.
/// @param width   pixels of the picture, 1 to 16384
/// @param height  pixels of the picture, 1 to 16384
/// @return the window's handle, for DestroyWindow; or 0 for a size outside the range, and where memory,
///         handles or the system's windows ran out
/// @note A picture larger than the screen keeps its size.
FENLIGHT_API HWND OpenWindow(const char *title, int32_t width, int32_t height) FENLIGHT_NOEXCEPT;

/// Tells whether a window is still open: the way to notice that the user closed it.
/// @param window  any number
/// @return 1 from OpenWindow until the window is closed by hand or destroyed, else 0. Without a display
///         nobody can close a window by hand.
FENLIGHT_API BOOL IsWindow(HWND window) FENLIGHT_NOEXCEPT;

/// Takes a window off the screen and ends its handle, its context and its picture. Also needed for a
/// window that was closed by hand.
/// @param window  window handle
/// @return 1, or 0 for a handle that is not alive; nothing is changed then
/// @note Drawing on the window's context that is under way on another thread ends first; drawing that
///       comes later fails as for any dead context. While a message box stands, the window stays visible
///       until its end.
FENLIGHT_API BOOL DestroyWindow(HWND window) FENLIGHT_NOEXCEPT;

/// The context of a window, or the reference context of the screen.
/// @param window  window handle, or 0 for the screen
/// @return for a window its context, always the same one, with a 32-bit bitmap of the window's size,
///         valid until DestroyWindow also if the window was closed by hand. For 0 the reference context:
///         it gives compatible contexts and bitmaps their format, 32 bits, and is never shown; 0 if
///         there is no memory for it. 0 for a handle that is not alive.
/// @note The context is not the caller's: it is not to be deleted, and no other bitmap can be selected
///       into it.
FENLIGHT_API HDC GetDC(HWND window) FENLIGHT_NOEXCEPT;

/// The counterpart of GetDC. It ends nothing: the context stays valid, and a call left out costs
/// nothing.
/// @param window   window handle, or 0 for the screen
/// @param context  what GetDC gave for it
/// @return 1 if the window is alive and the context is its own, else 0
FENLIGHT_API int32_t ReleaseDC(HWND window, HDC context) FENLIGHT_NOEXCEPT;

/// Shows a box with a text and an OK button, and waits until it is answered.
/// @param owner    window that the box stands before; 0 or a dead handle: none
/// @param text     zero-terminated UTF-8 text, or code page 1252 if it is no valid UTF-8; lines end with
///                 \n. 0 is the empty text. At most 64 KiB are read.
/// @param caption  the same, for the title of the box; 0 is "Error". At most 1024 bytes are read.
/// @param type     MB_OK, with MB_ICONINFORMATION or not; of other published values only the icon is
///                 heeded
/// @return IDOK. At once, without a box, where there is no display or it has no fonts for one.
/// @note While the box stands, windows go on to show what is drawn but take no input, and cannot be
///       closed by hand; other boxes wait.
FENLIGHT_API int32_t MessageBoxA(HWND owner, const char *text, const char *caption,
                                 UINT type) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
