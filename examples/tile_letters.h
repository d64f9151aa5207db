/* SPDX-License-Identifier: Zlib */
/* Text as a tile map: a line is a map of characters, the font a strip of 128 tiles of 8 x 10 pixels. */
#ifndef TILE_LETTERS_H
#define TILE_LETTERS_H
#include <fenlight/fenlight.h>
#include <fenlight/platform.h>
#include <stddef.h>
#include <string.h>

enum { kLetterWidth = 8, kLetterHeight = 10, kLetters = 128 };

/* Makes the strip, 0 on failure. Letters of 3 x 5 points, a row to an octal digit from the top, drawn with
 * points of 2 x 2 pixels. The rest of each tile, its top right pixel too, is white and becomes transparent.
 */
static HDC MakeLetters(COLORREF colour) {
    static const struct {
        char letter;
        int rows;
    } kGlyphs[] = {{'%', 051245}, {'+', 002720}, {'-', 000700}, {'0', 075557}, {'1', 026227}, {'2', 071747},
                   {'3', 071717}, {'4', 055711}, {'5', 074717}, {'6', 074757}, {'7', 071222}, {'8', 075757},
                   {'9', 075717}, {'A', 025755}, {'B', 065656}, {'C', 034443}, {'D', 065556}, {'E', 074647},
                   {'F', 074644}, {'G', 034553}, {'H', 055755}, {'I', 072227}, {'J', 011152}, {'K', 055655},
                   {'L', 044447}, {'M', 057755}, {'N', 065555}, {'O', 025552}, {'P', 065644}, {'Q', 025563},
                   {'R', 065655}, {'S', 034216}, {'T', 072222}, {'U', 055557}, {'V', 055522}, {'W', 055775},
                   {'X', 055255}, {'Y', 055222}, {'Z', 071247}};
    const HDC strip = CreateImage(GetDC(0), kLetters * kLetterWidth, kLetterHeight);
    ColorFillImage(strip, 0xFFFFFF, 0, 0, kLetters * kLetterWidth, kLetterHeight);
    for (size_t i = 0; i < sizeof kGlyphs / sizeof *kGlyphs; ++i)
        for (int point = 0; point < 15; ++point) {
            const int x = kGlyphs[i].letter * kLetterWidth + point % 3 * 2, y = point / 3 * 2;
            if (kGlyphs[i].rows >> (14 - point) & 1) ColorFillImage(strip, colour, x, y, x + 2, y + 2);
        }
    return strip;
}

static void WriteText(HDC target, HDC letters, const char *text, int x, int y) {
    SetTiles(letters, 0, (int)strlen(text), 1, kLetterWidth, kLetterHeight, (const uint8_t *)text, 0, 0, 0,
             target, x, y, -1, 0);
}

#endif
