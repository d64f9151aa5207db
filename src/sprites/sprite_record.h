// SPDX-License-Identifier: Zlib
// The sprite record: 256 words, each with a fixed position, which is part of the library's interface because
// callers read and write words by it. Where a word lies in memory is the library's own business.
//
// A record lives in a GlobalAlloc block and belongs to the sprite list. The caller's thread and the sprite
// thread touch it without a lock: each word is read and written whole, pairs such as X and Y are not. Words
// that hold an address or a handle publish what they lead to (release and acquire), numbers are relaxed.
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace fenlight {

// One word of a record. Reads and writes like a plain variable. The compound operators are a load and a
// store, not one step: a value that the other thread writes in between is lost, as with any plain word.
template <class Value, std::memory_order LoadOrder, std::memory_order StoreOrder>
class Word {
  public:
    Word() noexcept = default;
    Word(const Word &) = delete;

    operator Value() const noexcept { return value_.load(LoadOrder); }
    Value operator=(Value value) noexcept {
        value_.store(value, StoreOrder);
        return value;
    }
    Value operator=(const Word &other) noexcept { return *this = static_cast<Value>(other); }
    // Sums wrap round instead of overflowing.
    Value operator+=(Value step) noexcept { return *this = WrapAdd(*this, step); }
    Value operator-=(Value step) noexcept { return *this = WrapSubtract(*this, step); }
    // One indivisible step, for words that both threads hand to and fro.
    Value Exchange(Value value) noexcept { return value_.exchange(value, std::memory_order_acq_rel); }
    bool Replace(Value expected, Value value) noexcept {
        return value_.compare_exchange_strong(expected, value, std::memory_order_acq_rel);
    }

    static constexpr Value WrapAdd(Value a, Value b) noexcept {
        return static_cast<Value>(static_cast<uintptr_t>(a) + static_cast<uintptr_t>(b));
    }
    static constexpr Value WrapSubtract(Value a, Value b) noexcept {
        return static_cast<Value>(static_cast<uintptr_t>(a) - static_cast<uintptr_t>(b));
    }

  private:
    std::atomic<Value> value_{0};
};

using NumberWord = Word<int32_t, std::memory_order_relaxed, std::memory_order_relaxed>;
using AddressWord = Word<uintptr_t, std::memory_order_acquire, std::memory_order_release>;

// Sum and difference of two coordinates; callers may set any number, so these wrap instead of overflowing.
constexpr int32_t WrapAdd(int32_t a, int32_t b) noexcept { return NumberWord::WrapAdd(a, b); }
constexpr int32_t WrapSubtract(int32_t a, int32_t b) noexcept { return NumberWord::WrapSubtract(a, b); }

// Documented positions lie below it.
constexpr int32_t kPositionEnd = 1024;
constexpr int32_t kPathPlaces = 16;
// What both words of a free place of Path hold.
constexpr int32_t kPathEmpty = 11111;

// Values of State.
constexpr int32_t kStateAlive = 0;
constexpr int32_t kStateErased = 1;
constexpr int32_t kStateErasedAgain = 2;
constexpr int32_t kStateFinished = 3;

struct SpriteRecord {
    // Chained by frame_order.h alone: the record after this one in the running frame, and one further on.
    std::atomic<SpriteRecord *> FrameNext{nullptr};
    std::atomic<SpriteRecord *> FrameAhead{nullptr};
    // The running frame has added ScrollShiftX and ScrollShiftY. Of the sprite thread alone.
    bool IsShifted = false;

    // What a frame reads of each sprite lies close together, in five lines of the cache instead of twelve,
    // and first of all what its three walks share. The documented positions are in sprite_record.cpp.
    AddressWord ScreenDC, BackDC, CleanDC;
    NumberWord State, FixMode, Width, Height;
    NumberWord DrawnX, DrawnY, PreviousX, PreviousY;

    AddressWord ImageDC;
    NumberWord X, Y, TargetX, TargetY, SpeedX, SpeedY, NextX, NextY;
    NumberWord SourceX, SourceY, FrameCount, Frame, FrameDelay, FrameTimer, FrameX, AnimOnce;
    NumberWord StampRequest, FixRequest, ScrollMode, BackCollideMode, MovingMode;
    NumberWord RectLeft, RectTop, RectRight, RectBottom;
    NumberWord CageLeft, CageTop, CageRight, CageBottom;
    NumberWord SlowPeriodX, SlowCountX, SlowPeriodY, SlowCountY;
    AddressWord AttachedTo, AnimFrom, Table;
    NumberWord MoveSource[18];

    // What some sprites need, what stands in the first record, and words of no field.
    AddressWord Next, Self, BackCollideDC, BackCollideSound;
    NumberWord FixRequestMode, Mark, ScrollShiftX, ScrollShiftY, AttachX, AttachY, CageHomeX, CageHomeY;
    NumberWord TableIndex, TableLength, TableBaseX, TableBaseY, TableMode;
    NumberWord Path[32];
    NumberWord BackLeft, BackTop, BackRight, BackBottom, BackFrameCount, BackFrame, BackFrameDelay;
    NumberWord BackgroundMode, ScrollStepX, ScrollStepY, ViewWidth, ViewHeight, ScrollX, ScrollY;
    NumberWord CleanUpRequest, CleanUpMark, SpriteBrake, SystemBrake;
    NumberWord Unused76[2], Unused124, Unused244[2], Unused340[2], Unused560[116];

    // The frame origin for a direction of movement, 0 to 8. Direction 0 (standing still) comes last in
    // memory.
    NumberWord &MoveSourceX(int32_t direction) noexcept { return MoveSource[MovePair(direction)]; }
    NumberWord &MoveSourceY(int32_t direction) noexcept { return MoveSource[MovePair(direction) + 1]; }
    // A place of the line path, 0 to 15.
    NumberWord &PathX(int32_t place) noexcept { return Path[2 * place]; }
    NumberWord &PathY(int32_t place) noexcept { return Path[2 * place + 1]; }

  private:
    static constexpr int32_t MovePair(int32_t direction) noexcept {
        return direction == 0 ? 16 : 2 * (direction - 1);
    }
};

static_assert(std::atomic<uintptr_t>::is_always_lock_free && std::atomic<int32_t>::is_always_lock_free);

inline SpriteRecord *RecordOf(uintptr_t sprite) noexcept { return reinterpret_cast<SpriteRecord *>(sprite); }
inline uintptr_t HandleOf(const SpriteRecord *record) noexcept { return reinterpret_cast<uintptr_t>(record); }
inline SpriteRecord *NextOf(const SpriteRecord &record) noexcept { return RecordOf(record.Next); }

// The word at a documented position (0 to 1020, a multiple of 4), numbers with their sign. Any other position
// reads 0 and writes nothing. A number takes the low 32 bits of `value`.
intptr_t ReadWord(const SpriteRecord &record, int32_t position) noexcept;
void WriteWord(SpriteRecord &record, int32_t position, intptr_t value) noexcept;

}  // namespace fenlight
