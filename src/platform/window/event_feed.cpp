// SPDX-License-Identifier: Zlib
#include "platform/window/event_feed.h"

#include <SDL_keyboard.h>
#include <SDL_mouse.h>
#include <SDL_video.h>

#include <array>

namespace fenlight::platform {
namespace {

struct KeyPair {
    SDL_Scancode scancode;
    uint8_t key;
};

// Keys outside the runs of letters, digits and function keys.
constexpr KeyPair kSingleKeys[] = {
    {SDL_SCANCODE_0, 0x30},
    {SDL_SCANCODE_RETURN, 0x0D},
    {SDL_SCANCODE_ESCAPE, 0x1B},
    {SDL_SCANCODE_BACKSPACE, 0x08},
    {SDL_SCANCODE_TAB, 0x09},
    {SDL_SCANCODE_SPACE, 0x20},
    {SDL_SCANCODE_MINUS, 0xBD},
    {SDL_SCANCODE_EQUALS, 0xBB},
    {SDL_SCANCODE_LEFTBRACKET, 0xDB},
    {SDL_SCANCODE_RIGHTBRACKET, 0xDD},
    {SDL_SCANCODE_BACKSLASH, 0xDC},
    {SDL_SCANCODE_NONUSHASH, 0xDC},
    {SDL_SCANCODE_SEMICOLON, 0xBA},
    {SDL_SCANCODE_APOSTROPHE, 0xDE},
    {SDL_SCANCODE_GRAVE, 0xC0},
    {SDL_SCANCODE_COMMA, 0xBC},
    {SDL_SCANCODE_PERIOD, 0xBE},
    {SDL_SCANCODE_SLASH, 0xBF},
    {SDL_SCANCODE_NONUSBACKSLASH, 0xE2},
    {SDL_SCANCODE_CAPSLOCK, 0x14},
    {SDL_SCANCODE_PRINTSCREEN, 0x2C},
    {SDL_SCANCODE_SCROLLLOCK, 0x91},
    {SDL_SCANCODE_PAUSE, 0x13},
    {SDL_SCANCODE_INSERT, 0x2D},
    {SDL_SCANCODE_DELETE, 0x2E},
    {SDL_SCANCODE_HOME, 0x24},
    {SDL_SCANCODE_END, 0x23},
    {SDL_SCANCODE_PAGEUP, 0x21},
    {SDL_SCANCODE_PAGEDOWN, 0x22},
    {SDL_SCANCODE_LEFT, 0x25},
    {SDL_SCANCODE_UP, 0x26},
    {SDL_SCANCODE_RIGHT, 0x27},
    {SDL_SCANCODE_DOWN, 0x28},
    {SDL_SCANCODE_NUMLOCKCLEAR, 0x90},
    {SDL_SCANCODE_KP_DIVIDE, 0x6F},
    {SDL_SCANCODE_KP_MULTIPLY, 0x6A},
    {SDL_SCANCODE_KP_MINUS, 0x6D},
    {SDL_SCANCODE_KP_PLUS, 0x6B},
    {SDL_SCANCODE_KP_ENTER, 0x0D},
    {SDL_SCANCODE_KP_0, 0x60},
    {SDL_SCANCODE_KP_PERIOD, 0x6E},
    {SDL_SCANCODE_APPLICATION, 0x5D},
    {SDL_SCANCODE_LGUI, 0x5B},
    {SDL_SCANCODE_RGUI, 0x5C},
    {SDL_SCANCODE_LSHIFT, kLeftShift},
    {SDL_SCANCODE_RSHIFT, kRightShift},
    {SDL_SCANCODE_LCTRL, kLeftControl},
    {SDL_SCANCODE_RCTRL, kRightControl},
    {SDL_SCANCODE_LALT, kLeftAlt},
    {SDL_SCANCODE_RALT, kRightAlt},
};

using KeyMap = std::array<uint8_t, SDL_NUM_SCANCODES>;

constexpr void MapRun(KeyMap &map, SDL_Scancode first, SDL_Scancode last, uint8_t key) {
    for (size_t i = first; i <= static_cast<size_t>(last); ++i) map[i] = key++;
}

constexpr KeyMap BuildKeyMap() {
    KeyMap map{};
    MapRun(map, SDL_SCANCODE_A, SDL_SCANCODE_Z, 'A');
    MapRun(map, SDL_SCANCODE_1, SDL_SCANCODE_9, '1');
    MapRun(map, SDL_SCANCODE_F1, SDL_SCANCODE_F12, 0x70);
    MapRun(map, SDL_SCANCODE_F13, SDL_SCANCODE_F24, 0x7C);
    MapRun(map, SDL_SCANCODE_KP_1, SDL_SCANCODE_KP_9, 0x61);
    for (const KeyPair &pair : kSingleKeys) map[pair.scancode] = pair.key;
    return map;
}

constexpr KeyMap kKeyMap = BuildKeyMap();

uint8_t ButtonKey(uint8_t button) {
    constexpr uint8_t kButtons[] = {
        0, kLeftButton, kMiddleButton, kRightButton, kExtraButton1, kExtraButton2};
    return button < std::size(kButtons) ? kButtons[button] : 0;
}

void FeedKey(uint8_t key, bool isDown) {
    if (isDown) {
        PressKey(key);
    } else {
        ReleaseKey(key);
    }
}

// The pointer of a program that the user has left is his own.
void TakePlace(CursorPosition place) {
    MoveCursor(place);
    const CursorPosition confined = CurrentCursor();
    if (confined != place && SDL_GetKeyboardFocus() != nullptr) MovePointer(confined);
}

// Motion comes in pixels of a window; the state holds pixels of the screen.
void FeedMotion(const SDL_MouseMotionEvent &motion) {
    int left = 0;
    int top = 0;
    if (SDL_Window *window = SDL_GetWindowFromID(motion.windowID)) SDL_GetWindowPosition(window, &left, &top);
    TakePlace({left + motion.x, top + motion.y});
}

}  // namespace

uint8_t VirtualKeyOf(SDL_Scancode scancode) noexcept {
    return static_cast<size_t>(scancode) < kKeyMap.size() ? kKeyMap[scancode] : 0;
}

void FeedInput(const SDL_Event &event) noexcept {
    switch (event.type) {
        case SDL_KEYDOWN:
        case SDL_KEYUP:
            // A repeat is no new press.
            if (event.key.repeat == 0)
                FeedKey(VirtualKeyOf(event.key.keysym.scancode), event.type == SDL_KEYDOWN);
            break;
        case SDL_MOUSEBUTTONDOWN:
        case SDL_MOUSEBUTTONUP:
            FeedKey(ButtonKey(event.button.button), event.type == SDL_MOUSEBUTTONDOWN);
            break;
        case SDL_MOUSEMOTION:
            FeedMotion(event.motion);
            break;
        default:
            break;
    }
}

void FeedLeave(const WindowRecord &window) noexcept {
    CursorPosition place = CurrentCursor();
    const CursorPosition corner = window.Corner();
    int width = 0;
    int height = 0;
    SDL_GetWindowSize(window.frame, &width, &height);
    const auto beyond = [](int32_t at, int32_t first, int32_t length) {
        return at == first ? at - 1 : at == first + length - 1 ? at + 1 : at;
    };
    place.x = beyond(place.x, corner.x, width);
    place.y = beyond(place.y, corner.y, height);
    MoveCursor(place);
}

// Where SDL hears nothing of the motion, it goes on to give an old answer.
void FollowPointerOutside() noexcept {
    static CursorPosition lastAnswer;
    CursorPosition place;
    SDL_GetGlobalMouseState(&place.x, &place.y);
    if (place != lastAnswer && SDL_GetMouseFocus() == nullptr) TakePlace(place);
    lastAnswer = place;
}

void MovePointer(CursorPosition place) noexcept { SDL_WarpMouseGlobal(place.x, place.y); }

}  // namespace fenlight::platform
