// SPDX-License-Identifier: Zlib
// One block of 64 bytes after the other, written whole: the output never shrinks, so while a whole block of
// source is left behind the place, a store may reach beyond what is right so far, and what follows mends it.
#pragma once

#include <bit>

#include "data/tab_expansion.h"

namespace fenlight {
namespace {

constexpr int64_t kBlock = 64;

template <typename Block>
uint8_t *StoreBlanks(uint8_t *destination, int32_t count, const Block &blanks) {
    for (int64_t i = 0; i < count; i += kBlock) blanks.Store(destination + i);
    return destination + count;
}

template <typename Block>
int64_t ExpandTabsInBlocks(const uint8_t *source, int64_t length, uint8_t *destination,
                           int32_t tabWidth) noexcept {
    const Block tabs = Block::Fill('\t');
    const Block blanks = Block::Fill(' ');
    int64_t tabCount = 0;
    int64_t i = 0;
    for (; i + 2 * kBlock <= length; i += kBlock) {
        const Block block = Block::Load(source + i);
        block.Store(destination);
        uint64_t places = block.Matches(tabs);
        tabCount += std::popcount(places);
        int64_t start = 0;
        for (; places != 0; places &= places - 1) {
            const int64_t tab = std::countr_zero(places);
            destination = StoreBlanks(destination + tab - start, tabWidth, blanks);
            start = tab + 1;
            Block::Load(source + i + start).Store(destination);
        }
        destination += kBlock - start;
    }
    return tabCount * tabWidth + kPlainTabs.expandTabs(source + i, length - i, destination, tabWidth);
}

}  // namespace
}  // namespace fenlight
