// SPDX-License-Identifier: Zlib
// A whole record as numbers, by documented position.
#pragma once

#include <cstdint>
#include <map>

#include "sprites/sprite_record.h"

namespace fenlight {

// Every word that isn't 0.
inline std::map<int32_t, intptr_t> WordsOf(const SpriteRecord &record) {
    std::map<int32_t, intptr_t> words;
    for (int32_t position = 0; position < 1024; position += 4)
        if (const intptr_t value = ReadWord(record, position); value != 0) words[position] = value;
    return words;
}

}  // namespace fenlight
