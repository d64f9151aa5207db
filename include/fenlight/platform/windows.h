/* SPDX-License-Identifier: Zlib */
/* Windows whose context is a bitmap, the screen's context, message boxes, tooltips and the display's mode.
 *
 * A window is a picture that is drawn on like any other context: OpenWindow, GetDC, then every drawing
 * function of graphics.h. What was drawn appears on the screen by itself, at most once per refresh of the
 * display; the caller pumps no messages and paints nothing anew. A thread of the layer's own does that; the
 * first OpenWindow, MessageBoxA, tooltip or question for the user's own display mode starts it. Keys, mouse
 * and the close button need no help from the caller either.
 *
 * Without a display everything works the same and nothing is shown: contexts can be drawn on and read back,
 * style bits and display modes are kept and given back, and a message box returns at once. The environment
 * variable SDL_VIDEODRIVER chooses the way to the screen; "dummy" means none.
 *
 * Every function may be called on any thread. */
#ifndef FENLIGHT_PLATFORM_WINDOWS_H
#define FENLIGHT_PLATFORM_WINDOWS_H
#include "types.h"

#define MB_OK 0u
#define MB_ICONINFORMATION 64u
#define IDOK 1

#define GWL_STYLE (-16)
#define GWL_EXSTYLE (-20)
#define WS_POPUP 0x80000000u
#define WS_CHILD 0x40000000u
#define WS_VISIBLE 0x10000000u
#define WS_CAPTION 0x00C00000u /* WS_BORDER and WS_DLGFRAME */
#define WS_BORDER 0x00800000u
#define WS_DLGFRAME 0x00400000u
#define WS_SYSMENU 0x00080000u
#define WS_THICKFRAME 0x00040000u
#define WS_MINIMIZEBOX 0x00020000u
#define WS_EX_TOPMOST 0x00000008u

#define SWP_NOSIZE 0x01u
#define SWP_NOMOVE 0x02u
#define SWP_NOZORDER 0x04u
#define SWP_FRAMECHANGED 0x20u

#define SW_HIDE 0
#define SW_SHOWNORMAL 1
#define SW_SHOWMINIMIZED 2
#define SW_SHOWMAXIMIZED 3
#define SW_SHOW 5
#define SW_MINIMIZE 6
#define SW_RESTORE 9

#define ERROR_CLASS_DOES_NOT_EXIST 1411u
#define ERROR_INVALID_INDEX 1413u
#define ERROR_INVALID_WINDOW_HANDLE 1400u

#define ENUM_CURRENT_SETTINGS 0xFFFFFFFFu
#define ENUM_REGISTRY_SETTINGS 0xFFFFFFFEu
#define CDS_TEST 0x2u
#define CDS_FULLSCREEN 0x4u
#define CDS_RESET 0x40000000u
#define DISP_CHANGE_SUCCESSFUL 0
#define DISP_CHANGE_BADMODE (-2)
#define DM_BITSPERPEL 0x040000u
#define DM_PELSWIDTH 0x080000u
#define DM_PELSHEIGHT 0x100000u
#define DM_DISPLAYFLAGS 0x200000u
#define DM_DISPLAYFREQUENCY 0x400000u

#define TOOLTIPS_CLASSA "tooltips_class32"
#define TTS_ALWAYSTIP 0x1u
#define TTF_IDISHWND 0x01u
#define TTF_SUBCLASS 0x10u
#define TTM_ADDTOOLA 0x404u
#define TTM_SETMAXTIPWIDTH 0x418u

typedef uintptr_t WPARAM;
typedef intptr_t LPARAM;
typedef intptr_t LRESULT;

/* A mode of the display. Fields without a comment are not looked at, and left alone. */
typedef struct DEVMODEA {
    BYTE dmDeviceName[32];
    WORD dmSpecVersion, dmDriverVersion, dmSize, dmDriverExtra;
    DWORD dmFields; /* DM_ bits of the fields that count */
    LONG dmPosition[2];
    DWORD dmDisplayOrientation, dmDisplayFixedOutput;
    int16_t dmColor, dmDuplex, dmYResolution, dmTTOption, dmCollate;
    BYTE dmFormName[32];
    WORD dmLogPixels;
    DWORD dmBitsPerPel; /* 32 */
    DWORD dmPelsWidth;
    DWORD dmPelsHeight;
    DWORD dmDisplayFlags;     /* 0 */
    DWORD dmDisplayFrequency; /* 60 per second; 0 and 1 mean the usual one too */
    DWORD dmICMMethod, dmICMIntent, dmMediaType, dmDitherType, dmReserved1, dmReserved2;
} DEVMODEA;

/* What a tooltip explains. */
typedef struct TOOLINFOA {
    UINT cbSize; /* of this record */
    UINT uFlags; /* TTF_IDISHWND must be set: uId is a window */
    HWND hwnd;
    uintptr_t uId;
    RECT rect;
    HINSTANCE hinst;
    const char *lpszText; /* UTF-8, or code page 1252; lines end with \n; up to 1024 bytes are read */
} TOOLINFOA;

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

/* Style, place and size of a window
 *
 * All bits of a style are kept and given back. What the display can show of them: WS_CAPTION, a frame with
 * the title; WS_BORDER or WS_DLGFRAME alone, a frame without the title's text; WS_THICKFRAME, a frame, and
 * the user may change the window's size; WS_VISIBLE; WS_EX_TOPMOST, in front of all others. The picture keeps
 * its size whatever the window's is. Where a window is not open, these calls fail with
 * ERROR_INVALID_WINDOW_HANDLE. */

/// Reads the style of a window.
/// @param index  GWL_STYLE or GWL_EXSTYLE
/// @return the bits; 0 with ERROR_INVALID_INDEX for another index. OpenWindow makes a window with WS_CAPTION,
///         WS_SYSMENU, WS_MINIMIZEBOX and WS_VISIBLE, and with the extended style 0.
FENLIGHT_API LONG GetWindowLongA(HWND window, int32_t index) FENLIGHT_NOEXCEPT;

/// Replaces the style of a window. It shows after SetWindowPos with SWP_FRAMECHANGED.
/// @param index  GWL_STYLE or GWL_EXSTYLE
/// @return the bits before; 0 with ERROR_INVALID_INDEX for another index
FENLIGHT_API LONG SetWindowLongA(HWND window, int32_t index, LONG value) FENLIGHT_NOEXCEPT;

/// Moves a window, sizes it, or has it look as its style says.
/// @param insertAfter    ignored: the order of windows is the user's, but for WS_EX_TOPMOST
/// @param x, y           pixels of the screen, for the picture's top left corner
/// @param width, height  pixels of the window without its frame; a size with one outside 1 to 16384 changes
///                       nothing
/// @param flags          SWP_NOMOVE and SWP_NOSIZE leave place and size alone; SWP_FRAMECHANGED heeds the
///                       style; other bits change nothing
/// @return 1, or 0
FENLIGHT_API BOOL SetWindowPos(HWND window, HWND insertAfter, int32_t x, int32_t y, int32_t width,
                               int32_t height, UINT flags) FENLIGHT_NOEXCEPT;

/// Hides or shows a window.
/// @param command  one of the SW_ values; others change nothing
/// @return 1 if the window was visible before, else 0
FENLIGHT_API BOOL ShowWindow(HWND window, int32_t command) FENLIGHT_NOEXCEPT;

/// Finds a window of this program that is open. Windows of other programs, a taskbar among them, are none of
/// the layer's.
/// @param className  "FenlightWindow" for windows of OpenWindow, in either case; 0 for any
/// @param title      the whole title as OpenWindow had it; 0 for any
/// @return the one that was opened last, or 0
FENLIGHT_API HWND FindWindowA(const char *className, const char *title) FENLIGHT_NOEXCEPT;

/* Display mode
 *
 * While the mode is changed, the window that was opened last fills the screen. On a screen that has no such
 * mode it is the next larger one, with the picture at the top left. When the program ends, the user's own
 * mode comes back. */

/// Describes a mode of the display.
/// @param device  0, the default one; others fail
/// @param number  from 0 on; or ENUM_CURRENT_SETTINGS for the one in use, ENUM_REGISTRY_SETTINGS for the
///                user's own. The list has the usual sizes from 320 x 200 to 3840 x 2160, all with 32 bits
///                and 60 refreshes a second.
/// @param mode    takes it; unchanged on failure
/// @return 1, or 0 behind the end of the list
FENLIGHT_API BOOL EnumDisplaySettingsA(const char *device, DWORD number, DEVMODEA *mode) FENLIGHT_NOEXCEPT;

/// Changes the mode of the display for the time that the program runs.
/// @param mode   the wanted one; what its dmFields leaves out stays as it is. 0 is the user's own.
/// @param flags  CDS_TEST only looks whether there is such a mode; other bits change nothing
/// @return DISP_CHANGE_SUCCESSFUL, or DISP_CHANGE_BADMODE and nothing changed for one that is neither in the
///         list nor the user's own
FENLIGHT_API LONG ChangeDisplaySettingsA(const DEVMODEA *mode, DWORD flags) FENLIGHT_NOEXCEPT;

/* Tooltips
 *
 * A tooltip is a window of its own without a context. When the pointer has rested on its control for half a
 * second, it stands below the pointer until the pointer leaves, a button is pressed, or five seconds have
 * passed. It draws its text in letters of its own, ASCII only; for others it has a box. */

/// There is nothing to prepare.
FENLIGHT_API void InitCommonControls(void) FENLIGHT_NOEXCEPT;

/// Makes a tooltip.
/// @param extendedStyle  kept for GetWindowLongA
/// @param className      TOOLTIPS_CLASSA; there is no other class
/// @param title          UTF-8, or code page 1252; 0 is the empty text
/// @param style          kept for GetWindowLongA
/// @param x, y, width, height, menu, instance, parameter  ignored
/// @param parent         window with which the tooltip is destroyed; 0 for none
/// @return the window's handle, for DestroyWindow. 0 with ERROR_CLASS_DOES_NOT_EXIST,
///         ERROR_INVALID_WINDOW_HANDLE for a parent that is not open, or ERROR_NOT_ENOUGH_MEMORY.
FENLIGHT_API HWND CreateWindowExA(DWORD extendedStyle, const char *className, const char *title, DWORD style,
                                  int32_t x, int32_t y, int32_t width, int32_t height, HWND parent,
                                  uintptr_t menu, HINSTANCE instance, void *parameter) FENLIGHT_NOEXCEPT;

/// Has a tooltip do something.
/// @param window   a tooltip
/// @param message  TTM_ADDTOOLA: serve the control of the record TOOLINFOA at `second`, in place of the one
///                 before. TTM_SETMAXTIPWIDTH: keep `second` as the greatest width; lines break at \n only.
/// @param first    ignored
/// @return for TTM_ADDTOOLA 1, or 0 and nothing changed for a record of another size or without
///         TTF_IDISHWND; for TTM_SETMAXTIPWIDTH the width before, -1 at first; else 0
FENLIGHT_API LRESULT SendMessageA(HWND window, UINT message, WPARAM first, LPARAM second) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
