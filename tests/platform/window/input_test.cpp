// SPDX-License-Identifier: Zlib
#include <SDL.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "platform/window/ansi_text.h"
#include "platform/window/event_feed.h"
#include "platform/window/input_state.h"

namespace fenlight::platform {
namespace {

void FeedKey(SDL_Scancode scancode, bool isDown, bool isRepeat = false) {
    SDL_Event event{};
    event.type = isDown ? SDL_KEYDOWN : SDL_KEYUP;
    event.key.keysym.scancode = scancode;
    event.key.repeat = isRepeat;
    FeedInput(event);
}

void FeedButton(uint8_t button, bool isDown) {
    SDL_Event event{};
    event.type = isDown ? SDL_MOUSEBUTTONDOWN : SDL_MOUSEBUTTONUP;
    event.button.button = button;
    FeedInput(event);
}

TEST(Input, KeysAnswerUnderThePublishedCodes) {
    const struct {
        SDL_Scancode scancode;
        int key;
    } cases[] = {{SDL_SCANCODE_A, 0x41},      {SDL_SCANCODE_Z, 0x5A},        {SDL_SCANCODE_0, 0x30},
                 {SDL_SCANCODE_1, 0x31},      {SDL_SCANCODE_9, 0x39},        {SDL_SCANCODE_F1, 0x70},
                 {SDL_SCANCODE_F12, 0x7B},    {SDL_SCANCODE_F13, 0x7C},      {SDL_SCANCODE_F24, 0x87},
                 {SDL_SCANCODE_KP_0, 0x60},   {SDL_SCANCODE_KP_1, 0x61},     {SDL_SCANCODE_KP_9, 0x69},
                 {SDL_SCANCODE_LEFT, 0x25},   {SDL_SCANCODE_UP, 0x26},       {SDL_SCANCODE_RIGHT, 0x27},
                 {SDL_SCANCODE_DOWN, 0x28},   {SDL_SCANCODE_SPACE, 0x20},    {SDL_SCANCODE_ESCAPE, 0x1B},
                 {SDL_SCANCODE_RETURN, 0x0D}, {SDL_SCANCODE_KP_ENTER, 0x0D}, {SDL_SCANCODE_UNKNOWN, 0},
                 {SDL_SCANCODE_AUDIOPLAY, 0}, {SDL_NUM_SCANCODES, 0}};
    for (const auto &[scancode, key] : cases)
        EXPECT_EQ(VirtualKeyOf(scancode), key) << "scancode " << scancode;
}

TEST(Input, BothSidesHoldTheCommonKeyAndPressesAreRememberedOnce) {
    ForgetInput();
    FeedKey(SDL_SCANCODE_LSHIFT, true);
    FeedKey(SDL_SCANCODE_RSHIFT, true);
    FeedKey(SDL_SCANCODE_LSHIFT, false);
    EXPECT_FALSE(PeekKey(kLeftShift).isDown);
    EXPECT_TRUE(PeekKey(kRightShift).isDown && PeekKey(kShift).isDown);
    EXPECT_FALSE(PeekKey(kControl).isDown || PeekKey(kAlt).isDown);
    FeedKey(SDL_SCANCODE_RSHIFT, false);
    EXPECT_FALSE(PeekKey(kShift).isDown);
    EXPECT_TRUE(QueryKey(kShift).wasPressed) << "pressed and released in between";
    EXPECT_FALSE(QueryKey(kShift).wasPressed);
    FeedKey(SDL_SCANCODE_A, true);
    EXPECT_TRUE(QueryKey('A').wasPressed);
    FeedKey(SDL_SCANCODE_A, true, true);
    EXPECT_FALSE(QueryKey('A').wasPressed) << "a repeat is no press";
    EXPECT_TRUE(PeekKey('A').isDown);
    FeedKey(SDL_SCANCODE_UNKNOWN, true);
    EXPECT_FALSE(PeekKey(0).isDown);
}

TEST(Input, ButtonsAreKeysOfTheirOwn) {
    ForgetInput();
    const struct {
        uint8_t button;
        uint8_t key;
    } cases[] = {{SDL_BUTTON_LEFT, 1},
                 {SDL_BUTTON_RIGHT, 2},
                 {SDL_BUTTON_MIDDLE, 4},
                 {SDL_BUTTON_X1, 5},
                 {SDL_BUTTON_X2, 6}};
    for (const auto &[button, key] : cases) {
        FeedButton(button, true);
        for (const auto &other : cases)
            EXPECT_EQ(PeekKey(other.key).isDown, other.key == key) << "button " << +button;
        FeedButton(button, false);
        EXPECT_FALSE(PeekKey(key).isDown);
    }
    FeedButton(200, true);
    for (int key = 0; key < 256; ++key) EXPECT_FALSE(PeekKey(static_cast<uint8_t>(key)).isDown);
}

TEST(Input, CursorKeepsPlacesLeftOfAndAboveTheScreen) {
    for (const auto &[x, y] : {std::pair{7, -1}, {-1, 7}, {-5, -6}, {INT32_MAX, INT32_MIN}, {0, 0}}) {
        SDL_Event event{};
        event.type = SDL_MOUSEMOTION;
        event.motion.x = x;
        event.motion.y = y;
        FeedInput(event);
        EXPECT_EQ(CurrentCursor().x, x);
        EXPECT_EQ(CurrentCursor().y, y);
    }
}

TEST(Texts, Utf8StaysAndEverythingElseIsCodePage1252) {
    const struct {
        const char *text;
        size_t limit;
        std::string utf8;
    } cases[] = {
        {nullptr, 9, ""},
        {"", 9, ""},
        {"plain", 9, "plain"},
        {"plain", 3, "pla"},
        {"Gr\xC3\xBC\xC3\x9F", 9, "Gr\xC3\xBC\xC3\x9F"},
        {"\xA0text", 9, "\xC2\xA0text"},
        {"Gr\xFC\xDF", 9, "Gr\xC3\xBC\xC3\x9F"},
        {"\x80\x9F\x81", 9, "\xE2\x82\xAC\xC5\xB8\xC2\x81"},
        {"\xC0\x80", 9, "\xC3\x80\xE2\x82\xAC"},              // a form that is too long
        {"\xED\xA0\x80", 9, "\xC3\xAD\xC2\xA0\xE2\x82\xAC"},  // half a surrogate pair
        {"\xF4\x90\x80\x80", 9, "\xC3\xB4\xC2\x90\xE2\x82\xAC\xE2\x82\xAC"},
        {"\xF0\x9F\x8E\xAE", 9, "\xF0\x9F\x8E\xAE"},
        {"ab\xF0\x9F\x8E\xAE", 5, "ab"},  // cut off inside: the part is left out
        {"ab\xC3\xBC", 4, "ab\xC3\xBC"},
        {"ab\xC3", 9, "ab\xC3\x83"},  // ends inside by itself
    };
    for (const auto &[text, limit, utf8] : cases) {
        EXPECT_EQ(TextToUtf8(text, limit), utf8) << (text != nullptr ? text : "null") << ", limit " << limit;
    }
}

}  // namespace
}  // namespace fenlight::platform
