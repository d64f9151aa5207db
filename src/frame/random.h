// SPDX-License-Identifier: Zlib
// The one random generator of the process: the Mersenne Twister MT19937 of Matsumoto and Nishimura (ACM
// TOMACS 8, 1998) with the multiplicative seeding of its first publication.
//
// The caller's thread, the particle threads and the entry routine all draw from it or reseed it, so every
// function here takes the generator's own lock and may be called on any thread.
#pragma once

#include <cstdint>

namespace fenlight {

// Starts a new sequence.
void RandomSeed(uint32_t seed) noexcept;

// A number from 0 to limit - 1. 0 for a limit of 0.
uint32_t RandomDraw(uint32_t limit) noexcept;

// Fills count words with base plus a draw each, under one lock.
void RandomFill(int32_t *words, int64_t count, int32_t base, uint32_t range) noexcept;

// Several draws under one lock, which it holds as long as it stands: for a handful of draws in a row.
class RandomTurn {
  public:
    RandomTurn() noexcept;
    RandomTurn(const RandomTurn &) = delete;
    RandomTurn &operator=(const RandomTurn &) = delete;
    ~RandomTurn();

    uint32_t Draw(uint32_t limit) noexcept;
};

// A word of the state as the last seeding or refill left it, for tests. Index 0 to 623.
uint32_t RandomStateWord(int index) noexcept;

// Puts the generator into the state that it has before any seeding, for tests.
void ForgetRandomSeed() noexcept;

}  // namespace fenlight
