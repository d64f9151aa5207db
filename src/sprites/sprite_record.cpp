// SPDX-License-Identifier: Zlib
#include "sprites/sprite_record.h"

#include <type_traits>

namespace fenlight {

namespace {

constexpr int32_t kWordCount = kPositionEnd / 4;

// All words in the order of their positions: ADDRESS is as wide as an address, NUMBER is 32 bits, NUMBERS a
// run of numbers. Each line begins with its first position.
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

struct WordPlace {
    uint16_t offset;
    bool isAddress;
};

// Takes a word of that kind only.
template <class WordType>
constexpr size_t PlaceOf(size_t offset, WordType SpriteRecord::*) {
    return offset;
}

constexpr auto MakePlaces() {
    std::array<WordPlace, kWordCount + 1> places{};
    size_t word = 0;
    const auto add = [&](size_t offset, bool isAddress, size_t count) {
        for (size_t i = 0; i < count; ++i)
            places[word++] = {static_cast<uint16_t>(offset + i * sizeof(NumberWord)), isAddress};
    };
#define FENLIGHT_ADDRESS(name) \
    add(PlaceOf<AddressWord>(offsetof(SpriteRecord, name), &SpriteRecord::name), true, 1);
#define FENLIGHT_NUMBER(name) \
    add(PlaceOf<NumberWord>(offsetof(SpriteRecord, name), &SpriteRecord::name), false, 1);
#define FENLIGHT_NUMBERS(name, count) \
    add(PlaceOf<NumberWord[count]>(offsetof(SpriteRecord, name), &SpriteRecord::name), false, count);
    FENLIGHT_SPRITE_WORDS(FENLIGHT_ADDRESS, FENLIGHT_NUMBER, FENLIGHT_NUMBERS)
#undef FENLIGHT_ADDRESS
#undef FENLIGHT_NUMBER
#undef FENLIGHT_NUMBERS
    places[kWordCount].offset = static_cast<uint16_t>(word);
    return places;
}

constexpr auto kPlaces = MakePlaces();
static_assert(kPlaces[kWordCount].offset == kWordCount, "the list must name all 256 words");

// One anchor in each stretch of the list, so that a word left out or doubled shows where.
constexpr bool StandsAt(size_t position, size_t offset) { return kPlaces[position / 4].offset == offset; }
static_assert(StandsAt(56, offsetof(SpriteRecord, ScreenDC)) && StandsAt(88, offsetof(SpriteRecord, Next)) &&
              StandsAt(120, offsetof(SpriteRecord, Self)) &&
              StandsAt(160, offsetof(SpriteRecord, MoveSource)) &&
              StandsAt(232, offsetof(SpriteRecord, ScrollMode)) &&
              StandsAt(320, offsetof(SpriteRecord, Table)) && StandsAt(348, offsetof(SpriteRecord, Path)) &&
              StandsAt(476, offsetof(SpriteRecord, CleanUpRequest)) &&
              StandsAt(556, offsetof(SpriteRecord, SystemBrake)));

constexpr bool IsPosition(int32_t position) {
    return position >= 0 && position < kPositionEnd && position % 4 == 0;
}

template <class WordType, class Record>
auto &WordAt(Record &record, size_t offset) {
    using Byte = std::conditional_t<std::is_const_v<Record>, const std::byte, std::byte>;
    using Target = std::conditional_t<std::is_const_v<Record>, const WordType, WordType>;
    return *reinterpret_cast<Target *>(reinterpret_cast<Byte *>(&record) + offset);
}

}  // namespace

intptr_t ReadWord(const SpriteRecord &record, int32_t position) noexcept {
    if (!IsPosition(position)) return 0;
    const WordPlace place = kPlaces[static_cast<size_t>(position) / 4];
    if (place.isAddress)
        return static_cast<intptr_t>(static_cast<uintptr_t>(WordAt<AddressWord>(record, place.offset)));
    return WordAt<NumberWord>(record, place.offset);
}

void WriteWord(SpriteRecord &record, int32_t position, intptr_t value) noexcept {
    if (!IsPosition(position)) return;
    const WordPlace place = kPlaces[static_cast<size_t>(position) / 4];
    if (place.isAddress)
        WordAt<AddressWord>(record, place.offset) = static_cast<uintptr_t>(value);
    else
        WordAt<NumberWord>(record, place.offset) = static_cast<int32_t>(value);
}

}  // namespace fenlight
