// SPDX-License-Identifier: Zlib
// The list of all sprite records, in drawing order.
//
// The list owns its records. The caller's thread appends and swaps, the sprite thread alone unlinks and
// frees. Next is changed and followed under SpriteListLock only. The frame's walks take no lock: see
// frame_order.h.
#pragma once

#include <atomic>
#include <mutex>

#include "fenlight/sprite_list.h"
#include "sprites/sprite_record.h"

namespace fenlight {

// First record, nullptr if there is none. It keeps the list's global settings and stays first while the list
// lives. Changed under SpriteListLock only.
extern std::atomic<SpriteRecord *> SpriteList;

// Held while records are linked, relinked or freed, and by the caller's thread for each walk and for each use
// of the first record. Held for memory accesses only, never across a graphics call, a sleep or a wait: the
// sprite thread can be stopped in those, and would then stop the caller too.
extern std::mutex SpriteListLock;

// A record with everything that InitSprite sets, not linked yet; nullptr without memory.
[[nodiscard]] SpriteRecord *MakeRecord(const SpriteArguments &arguments) noexcept;

// Makes a complete record the only one of a new list. The caller holds SpriteListLock.
void StartList(SpriteRecord &first) noexcept;

// Links a complete record at the end and starts the sprite thread for the first one. False if there is no
// thread to be had; the record is not linked then.
[[nodiscard]] bool LinkRecord(SpriteRecord &record) noexcept;

// Asks the thread to take the sprite off the screen; it then passes through State 1 and 2 to 3.
void EraseSprite(SpriteRecord &record) noexcept;

// The end test: every record is finished. The sprite thread, with or without the lock.
bool AreAllFinished() noexcept;

// Takes a list whose records are all finished out of SpriteList, after `detach` has run, and frees it. Test
// and detachment are one step, so no new record is linked into a list that is about to be freed. False: some
// record lives, and nothing happened.
bool EndFinishedList(void (*detach)() noexcept) noexcept;

// Frees a record that nobody can reach any more, with its waypoint table.
void FreeRecord(SpriteRecord &record) noexcept;
// The same for a chain of records, linked by Next.
void FreeRecords(SpriteRecord *record) noexcept;

}  // namespace fenlight
