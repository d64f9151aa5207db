/* SPDX-License-Identifier: Zlib */
/* Keys, mouse and joysticks, to be asked at any moment.
 *
 * The thread that shows the windows takes what the keyboard and the mouse have to tell, for all threads of
 * the program; nobody pumps messages. It hears them while one of the windows has the keyboard's focus or the
 * pointer over it. When the focus goes away, or the last window, all keys are taken to be up. Without a
 * window or without a display nothing is ever pressed, and the cursor stands where SetCursorPos put it, at
 * first at 0, 0.
 *
 * Virtual keys have the published codes: letters and digits are their capital ASCII codes, whatever stands on
 * the key, and the mouse buttons are keys too.
 *
 * Every function may be called on any thread. */
#ifndef FENLIGHT_PLATFORM_INPUT_H
#define FENLIGHT_PLATFORM_INPUT_H
#include "types.h"

#define VK_LBUTTON 0x01
#define VK_RBUTTON 0x02
#define VK_MBUTTON 0x04
#define VK_BACK 0x08
#define VK_TAB 0x09
#define VK_RETURN 0x0D
#define VK_SHIFT 0x10
#define VK_CONTROL 0x11
#define VK_MENU 0x12
#define VK_CAPITAL 0x14
#define VK_ESCAPE 0x1B
#define VK_SPACE 0x20
#define VK_LEFT 0x25
#define VK_UP 0x26
#define VK_RIGHT 0x27
#define VK_DOWN 0x28
#define VK_F1 0x70

FENLIGHT_BEGIN_C

/// Tells whether a key is down, and whether it was pressed since it was last asked for.
/// @param key  virtual key, 0 to 255
/// @return bit 15 (the number is negative): down now; bit 0: pressed since the last call for this key, on
///         whichever thread that was. A key that repeats while it is held was pressed once. 0 for other
///         codes.
FENLIGHT_API int16_t GetAsyncKeyState(int32_t key) FENLIGHT_NOEXCEPT;

/// Tells whether a key is down, as the calling thread's queue of messages has it. All threads share one
/// queue here, and its messages are taken as they come, so this is the state of GetAsyncKeyState.
/// @param key  virtual key, 0 to 255
/// @return bit 15 (the number is negative): down; bit 0: turned round by each press, off at first. 0 for
///         other codes. Asking changes nothing.
FENLIGHT_API int16_t GetKeyState(int32_t key) FENLIGHT_NOEXCEPT;

/// Tells where the cursor is.
/// @param position  takes pixels of the screen
/// @return 1, or 0 if `position` is 0
FENLIGHT_API BOOL GetCursorPos(POINT *position) FENLIGHT_NOEXCEPT;

/// Moves the cursor, and the pointer on the screen where windows are shown. Inside a rectangle of ClipCursor
/// it goes to the place nearest to the one asked for.
/// @param x, y  pixels of the screen
/// @return 1
FENLIGHT_API BOOL SetCursorPos(int32_t x, int32_t y) FENLIGHT_NOEXCEPT;

/// Confines the cursor to a rectangle, and moves it in. The pointer on the screen is brought back as often as
/// it leaves while one of the windows has the keyboard's focus.
/// @param rectangle  pixels of the screen, right and bottom excluded; 0 frees the cursor
/// @return 1; 0 with ERROR_INVALID_PARAMETER for an empty rectangle, which changes nothing
FENLIGHT_API BOOL ClipCursor(const RECT *rectangle) FENLIGHT_NOEXCEPT;

/// Tells which window the user works with.
/// @return the window with the keyboard's focus. A window has it from the moment it is opened, until the
///         display says otherwise. 0 if none of this program has it.
FENLIGHT_API HWND GetActiveWindow(void) FENLIGHT_NOEXCEPT;

/// Turns a place on the screen into one in a window's picture.
/// @param window  window that is open
/// @param point   pixels of the screen on the way in, of the picture on the way out
/// @return 1; 0 and the point unchanged if the window is not open or `point` is 0
FENLIGHT_API BOOL ScreenToClient(HWND window, POINT *point) FENLIGHT_NOEXCEPT;

/* Joysticks
 *
 * There is room for 16, with the identifiers 0 to 15. A device that is plugged in takes the lowest that is
 * free and keeps it until it is unplugged; what is plugged in at the start is numbered in the system's order.
 * Both are noticed by the next call. Devices are read at most once in a millisecond. Their first six axes are
 * X, Y, Z, R, U and V. */

#define JOYERR_NOERROR 0u
#define JOYERR_PARMS 165u     /* no such identifier, or a record of another size */
#define JOYERR_UNPLUGGED 167u /* nothing is plugged in there */
#define MMSYSERR_NODRIVER 6u  /* the system's joysticks cannot be reached */
#define MMSYSERR_INVALPARAM 11u

#define JOY_RETURNX 1u
#define JOY_RETURNY 2u
#define JOY_RETURNZ 4u
#define JOY_RETURNR 8u
#define JOY_RETURNU 16u
#define JOY_RETURNV 32u
#define JOY_RETURNPOV 64u
#define JOY_RETURNBUTTONS 128u
#define JOY_RETURNALL 255u
#define JOY_POVCENTERED 65535u

#define JOYCAPS_HASZ 1u
#define JOYCAPS_HASR 2u
#define JOYCAPS_HASU 4u
#define JOYCAPS_HASV 8u
#define JOYCAPS_HASPOV 16u
#define JOYCAPS_POV4DIR 32u

/* What a joystick has. The limits of an axis are 0 and 65535; of one that it does not have, 0 and 0. */
typedef struct JOYCAPSA {
    WORD wMid; /* maker and product as USB has them; 0: unknown */
    WORD wPid;
    char szPname[32]; /* name in UTF-8 */
    UINT wXmin, wXmax, wYmin, wYmax, wZmin, wZmax;
    UINT wNumButtons;            /* at most 32 */
    UINT wPeriodMin, wPeriodMax; /* milliseconds between two looks */
    UINT wRmin, wRmax, wUmin, wUmax, wVmin, wVmax;
    UINT wCaps;              /* JOYCAPS_ bits */
    UINT wMaxAxes, wNumAxes; /* the most there can be, and those it has */
    UINT wMaxButtons;
    char szRegKey[32];  /* empty */
    char szOEMVxD[260]; /* empty */
} JOYCAPSA;

/* Three axes from 0 to 65535, 32768 where the device has none, and the first four buttons, bit 0 for the
   first. */
typedef struct JOYINFO {
    UINT wXpos, wYpos, wZpos;
    UINT wButtons;
} JOYINFO;

/* Six axes from 0 to 65535, 32768 where the device has none, 32 buttons with bit 0 for the first, and a
   hat. */
typedef struct JOYINFOEX {
    DWORD dwSize;  /* of this record, 52; set by the caller */
    DWORD dwFlags; /* JOY_RETURN bits of what is wanted; set by the caller */
    DWORD dwXpos, dwYpos, dwZpos, dwRpos, dwUpos, dwVpos;
    DWORD dwButtons;
    DWORD dwButtonNumber; /* how many of them are pressed */
    DWORD dwPOV;          /* hundredths of a degree, clockwise from above; JOY_POVCENTERED */
    DWORD dwReserved1, dwReserved2;
} JOYINFOEX;

/// Tells what a joystick has.
/// @param joystick  identifier, 0 to 15
/// @param caps      takes the record; unchanged on failure
/// @param size      of that record, 404
/// @return JOYERR_NOERROR, or one of the codes above
FENLIGHT_API UINT joyGetDevCapsA(uintptr_t joystick, JOYCAPSA *caps, UINT size) FENLIGHT_NOEXCEPT;

/// Reads three axes and four buttons. An axis that the device does not have reads 0.
/// @param joystick  identifier, 0 to 15
/// @param info      takes the record; unchanged on failure
/// @return JOYERR_NOERROR, or one of the codes above
FENLIGHT_API UINT joyGetPos(UINT joystick, JOYINFO *info) FENLIGHT_NOEXCEPT;

/// Reads what the record's flags ask for; the other fields stay as they are. An axis that the device does not
/// have reads 0, a hat that it does not have is centred.
/// @param joystick  identifier, 0 to 15
/// @param info      size and flags in, the rest out; unchanged on failure
/// @return JOYERR_NOERROR, or one of the codes above
FENLIGHT_API UINT joyGetPosEx(UINT joystick, JOYINFOEX *info) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
