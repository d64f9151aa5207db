// SPDX-License-Identifier: Zlib
#include "sprites/waypoint_table.h"

#include <algorithm>
#include <cstring>
#include <mutex>
#include <utility>

#include "fenlight/platform/system.h"

namespace fenlight {

namespace {

struct Waypoint {
    int16_t x;
    int16_t y;
};
static_assert(sizeof(Waypoint) == 4);

// Stands in front of the waypoints; Table holds the address of the first waypoint, for callers that look.
struct BlockHeader {
    int64_t entries;
};
static_assert(sizeof(BlockHeader) % alignof(Waypoint) == 0);

// Guards Table of every record, and the four words beside it where they must agree with it. The innermost
// lock: taken under SpriteListLock too, and none is taken under it.
std::mutex tableLock;

// The words and the block as they go in and out together.
struct TableWords {
    uintptr_t table = 0;
    int32_t index = 0;
    int32_t length = 0;
    int32_t baseX = 0;
    int32_t baseY = 0;
};

BlockHeader *HeaderOf(uintptr_t table) { return reinterpret_cast<BlockHeader *>(table) - 1; }

void FreeBlock(uintptr_t table) {
    if (table != 0) GlobalFree(HeaderOf(table));
}

// 0 without memory.
uintptr_t MakeBlock(const void *points, int64_t entries) {
    const auto bytes = static_cast<size_t>(entries) * sizeof(Waypoint);
    auto *header = static_cast<BlockHeader *>(GlobalAlloc(GPTR, sizeof(BlockHeader) + bytes));
    if (header == nullptr) return 0;
    header->entries = entries;
    std::memcpy(header + 1, points, bytes);
    return reinterpret_cast<uintptr_t>(header + 1);
}

// Under tableLock. Gives back the block that is no longer in use.
uintptr_t ExchangeWords(SpriteRecord &record, const TableWords &words) {
    const uintptr_t old = record.Table;
    record.TableIndex = words.index;
    record.TableLength = words.length;
    record.TableBaseX = words.baseX;
    record.TableBaseY = words.baseY;
    record.Table = words.table;
    return old;
}

void ReplaceWords(SpriteRecord &record, const TableWords &words) {
    uintptr_t old = 0;
    {
        const std::scoped_lock hold(tableLock);
        old = ExchangeWords(record, words);
    }
    FreeBlock(old);
}

// Under tableLock. Callers may have written any number into the words, so both are bounded by the block.
void TakeEntry(SpriteRecord &record, uintptr_t table) {
    const int64_t length = std::min<int64_t>(record.TableLength, HeaderOf(table)->entries);
    if (length < 1) return;
    int64_t index = record.TableIndex;
    if (index < 0 || index >= length) index = 0;
    const Waypoint waypoint = reinterpret_cast<const Waypoint *>(table)[index];
    record.TargetX = WrapAdd(waypoint.x, record.TableBaseX);
    record.TargetY = WrapAdd(waypoint.y, record.TableBaseY);
    const bool isLast = index + 1 == length;
    if (!isLast)
        ++index;
    else if (record.TableMode != 1)
        index = 0;
    record.TableIndex = static_cast<int32_t>(index);
}

}  // namespace

void ReplaceWaypointTable(SpriteRecord &record, const WaypointSource &source) noexcept {
    TableWords words;
    if (source.points != nullptr && source.entries > 0)
        words.table = MakeBlock(source.points, source.entries);
    if (words.table != 0) {
        const bool isInside = source.startEntry >= 0 && source.startEntry < source.entries;
        words.index = isInside ? source.startEntry : 0;
        words.length = source.entries;
        words.baseX = source.baseX;
        words.baseY = source.baseY;
    }
    ReplaceWords(record, words);
}

bool CopyWaypointTable(const SpriteRecord &from, SpriteRecord &to) noexcept {
    // The allocation stays under the lock, or the caller's next table could free what is being copied.
    const std::scoped_lock hold(tableLock);
    TableWords words;
    const uintptr_t table = from.Table;
    if (table != 0) words.table = MakeBlock(reinterpret_cast<const void *>(table), HeaderOf(table)->entries);
    if (words.table != 0)
        words = {words.table, from.TableIndex, from.TableLength, from.TableBaseX, from.TableBaseY};
    ExchangeWords(to, words);
    return words.table != 0 || table == 0;
}

void FreeWaypointTable(SpriteRecord &record) noexcept { ReplaceWords(record, {}); }

void TakeNextWaypoint(SpriteRecord &record) noexcept {
    if (record.Table == 0 || record.X != record.TargetX || record.Y != record.TargetY) return;
    const std::scoped_lock hold(tableLock);
    const uintptr_t table = record.Table;
    if (table != 0) TakeEntry(record, table);
}

}  // namespace fenlight
