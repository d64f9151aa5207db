// SPDX-License-Identifier: Zlib
// The sprite record: 256 words in a fixed order, which is part of the library's interface because callers
// read and write words by their position.
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

// The one list of all words in their order: ADDRESS is as wide as an address, NUMBER is 32 bits, NUMBERS a
// run of numbers. Struct and position map are both made from it. Each line begins with its first position.
// clang-format off
#define FENLIGHT_SPRITE_WORDS(ADDRESS, NUMBER, NUMBERS)                                                     \
    /*   0 */ ADDRESS(ImageDC)                                                                              \
    /*   4 */ NUMBER(SourceX) NUMBER(SourceY) NUMBER(Width) NUMBER(Height)                                  \
    /*  20 */ NUMBER(FrameCount) NUMBER(Frame) NUMBER(FrameDelay)                                           \
    /*  32 */ NUMBER(X) NUMBER(Y) NUMBER(TargetX) NUMBER(TargetY) NUMBER(SpeedX) NUMBER(SpeedY)             \
    /*  56 */ ADDRESS(ScreenDC) NUMBER(State) NUMBER(FrameTimer)                                            \
    /*  68 */ ADDRESS(BackDC) NUMBER(FrameX) NUMBERS(Unused76, 2)                                           \
    /*  84 */ ADDRESS(CleanDC) ADDRESS(Next)                                                                \
    /*  92 */ NUMBER(BackgroundMode) NUMBER(ScrollStepX) NUMBER(ScrollStepY)                                \
    /* 104 */ NUMBER(ViewWidth) NUMBER(ViewHeight) NUMBER(ScrollX) NUMBER(ScrollY)                          \
    /* 120 */ ADDRESS(Self) NUMBER(Unused124)                                                               \
    /* 128 */ NUMBER(DrawnX) NUMBER(DrawnY) NUMBER(PreviousX) NUMBER(PreviousY)                             \
    /* 144 */ NUMBER(AnimOnce) NUMBER(StampRequest) NUMBER(FixMode) NUMBER(Mark)                            \
    /* 160 */ NUMBERS(MoveSource, 18)                                                                       \
    /* 232 */ NUMBER(ScrollMode) NUMBER(ScrollShiftX) NUMBER(ScrollShiftY) NUMBERS(Unused244, 2)            \
    /* 252 */ NUMBER(RectLeft) NUMBER(RectTop) NUMBER(RectRight) NUMBER(RectBottom)                         \
    /* 268 */ NUMBER(BackCollideMode) ADDRESS(BackCollideDC) NUMBER(NextX) NUMBER(NextY)                    \
    /* 284 */ NUMBER(BackLeft) NUMBER(BackTop) NUMBER(BackRight) NUMBER(BackBottom)                         \
    /* 300 */ NUMBER(BackFrameCount) NUMBER(BackFrame) NUMBER(BackFrameDelay)                               \
    /* 312 */ NUMBER(TableIndex) NUMBER(TableLength) ADDRESS(Table) NUMBER(TableBaseX) NUMBER(TableBaseY)   \
    /* 332 */ ADDRESS(BackCollideSound) NUMBER(MovingMode) NUMBERS(Unused340, 2)                            \
    /* 348 */ NUMBERS(Path, 32)                                                                             \
    /* 476 */ NUMBER(CleanUpRequest) NUMBER(CleanUpMark)                                                    \
    /* 484 */ ADDRESS(AttachedTo) NUMBER(AttachX) NUMBER(AttachY)                                           \
    /* 496 */ NUMBER(CageLeft) NUMBER(CageTop) NUMBER(CageRight) NUMBER(CageBottom)                         \
    /* 512 */ NUMBER(CageHomeX) NUMBER(CageHomeY)                                                           \
    /* 520 */ NUMBER(SpriteBrake) NUMBER(TableMode)                                                         \
    /* 528 */ NUMBER(SlowPeriodX) NUMBER(SlowCountX) NUMBER(SlowPeriodY) NUMBER(SlowCountY)                 \
    /* 544 */ ADDRESS(AnimFrom) NUMBER(FixRequest) NUMBER(FixRequestMode) NUMBER(SystemBrake)               \
    /* 560 */ NUMBERS(Unused560, 116)
// clang-format on

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
#define FENLIGHT_ADDRESS(name) AddressWord name;
#define FENLIGHT_NUMBER(name) NumberWord name;
#define FENLIGHT_NUMBERS(name, count) NumberWord name[count];
    FENLIGHT_SPRITE_WORDS(FENLIGHT_ADDRESS, FENLIGHT_NUMBER, FENLIGHT_NUMBERS)
#undef FENLIGHT_ADDRESS
#undef FENLIGHT_NUMBER
#undef FENLIGHT_NUMBERS

    // Behind the documented words: the record after this one in the running frame, and one some places
    // further on. Of frame_order.h alone.
    std::atomic<SpriteRecord *> FrameNext{nullptr};
    std::atomic<SpriteRecord *> FrameAhead{nullptr};
    // The running frame has added ScrollShiftX and ScrollShiftY. Of the sprite thread alone.
    bool IsShifted = false;

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

static_assert(sizeof(void *) != 4 || offsetof(SpriteRecord, FrameNext) == 1024);
static_assert(std::atomic<uintptr_t>::is_always_lock_free && std::atomic<int32_t>::is_always_lock_free);

inline SpriteRecord *RecordOf(uintptr_t sprite) noexcept { return reinterpret_cast<SpriteRecord *>(sprite); }
inline uintptr_t HandleOf(const SpriteRecord *record) noexcept { return reinterpret_cast<uintptr_t>(record); }
inline SpriteRecord *NextOf(const SpriteRecord &record) noexcept { return RecordOf(record.Next); }

// The word at a documented position (0 to 1020, a multiple of 4), numbers with their sign. Any other position
// reads 0 and writes nothing. A number takes the low 32 bits of `value`.
intptr_t ReadWord(const SpriteRecord &record, int32_t position) noexcept;
void WriteWord(SpriteRecord &record, int32_t position, intptr_t value) noexcept;

}  // namespace fenlight
