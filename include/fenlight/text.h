/* SPDX-License-Identifier: Zlib */
#ifndef FENLIGHT_TEXT_H
#define FENLIGHT_TEXT_H
#include "types.h"

FENLIGHT_BEGIN_C

/* Data: text.
 *
 * Texts are counted runs of bytes: they need no zero at their end, a zero within them is a byte like any
 * other, and a character is a byte whatever the encoding. The result goes to a destination that the caller
 * makes large enough; nothing behind the result is touched, but for what DeleteTags takes back. Sizes of 0
 * and below end a call at once: nothing is read or written, and the result is 0.
 *
 * A result of more than 2147483647 is written whole, but not told right.
 *
 * A destination that overlaps the source is allowed. The result is then that of going through the source byte
 * by byte from the front, each written byte changing what is read later; so a text can be changed in place as
 * long as the output never runs ahead of the source. This is slower, except in DeleteTags.
 *
 * Any thread may call these functions at any time, as long as nobody changes the texts meanwhile. */

/// Copies a text with every occurrence of a string replaced. Occurrences are taken from left to right and
/// don't overlap; what was written is not searched again.
/// @param sourceLength       bytes of `source`
/// @param destination        room for the result: `sourceLength` bytes, or more if the replacement is longer
///                           than the search string
/// @param searchLength       bytes of `search`; longer than the source: the text is copied
/// @param replacement        may be 0 if its length is
/// @param replacementLength  bytes of `replacement`; 0 and below delete the occurrences
/// @return bytes written; 0 and nothing written if `sourceLength` or `searchLength` is below 1
FENLIGHT_API int32_t Replace(const void *source, int32_t sourceLength, void *destination, const void *search,
                             int32_t searchLength, const void *replacement,
                             int32_t replacementLength) FENLIGHT_NOEXCEPT;

/// Copies a text with a fixed number of blanks for each tab (byte 9), whatever the column.
/// @param destination   room for `sourceLength` * `tabWidth` bytes at worst
/// @param sourceLength  bytes of `source`
/// @param tabWidth      blanks for a tab
/// @return blanks written for tabs. The output has `sourceLength` + result - number of tabs bytes. 0 and
///         nothing written if `sourceLength` or `tabWidth` is below 1.
FENLIGHT_API int32_t ReplaceTabs(const void *source, void *destination, int32_t sourceLength,
                                 int32_t tabWidth) FENLIGHT_NOEXCEPT;

/// Counts the occurrences of a string, overlapping ones too: aa is found twice in aaa.
/// @param memory         start of the block
/// @param offset         bytes from there to the first place where an occurrence may start
/// @param length         number of places where one may start. Its last bytes may lie behind them; they are
///                       read only if all bytes before them are the same.
/// @param patternLength  bytes of `pattern`
/// @return number of occurrences; 0 if `length` or `patternLength` is below 1
FENLIGHT_API int32_t CountStrings(const void *memory, int32_t offset, int32_t length, const void *pattern,
                                  int32_t patternLength) FENLIGHT_NOEXCEPT;

/// Copies what lies inside tags, or what lies outside, and writes a zero byte behind it. A tag runs from
/// `openChar` to the first `closeChar` behind it; tags don't nest, and one that is left open runs to the end.
/// @param sourceLength  bytes of `source`
/// @param destination   room for `sourceLength` + 1 bytes, with `flags` 2 one more for each stray closing
///                      character
/// @param openChar      opening byte; the low 8 bits count
/// @param closeChar     closing byte; the low 8 bits count. Equal to `openChar`: no tag ever opens, and the
///                      byte is a delimiter.
/// @param flags         bit 0: keep what lies inside (else outside); bit 1: keep the delimiters. For 0 to 3
///                      there stay ac, b, a()c and (b) of a(b)c. Other bits are ignored.
/// @return bytes written without the zero; 0, and nothing written, if `sourceLength` is below 1
/// @note A stray closing character, outside of any tag, is written with `flags` 0 and written twice with 2.
///       With 3 it is dropped, with 1 it also takes back the last byte written, if there is one; where that
///       stood, behind the zero at the end, the destination is then undefined.
FENLIGHT_API int32_t DeleteTags(const void *source, int32_t sourceLength, void *destination, int32_t openChar,
                                int32_t closeChar, int32_t flags) FENLIGHT_NOEXCEPT;

FENLIGHT_END_C
#endif
