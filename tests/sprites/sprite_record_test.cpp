// SPDX-License-Identifier: Zlib
#include "sprites/sprite_record.h"

#include <gtest/gtest.h>

#include <memory>

namespace fenlight {
namespace {

struct Place {
    int32_t position;
    NumberWord SpriteRecord::*number;
    AddressWord SpriteRecord::*address;
};

// Callers have these numbers in their programs.
const Place kPlaces[] = {
    {0, nullptr, &SpriteRecord::ImageDC},
    {4, &SpriteRecord::SourceX, nullptr},
    {24, &SpriteRecord::Frame, nullptr},
    {32, &SpriteRecord::X, nullptr},
    {44, &SpriteRecord::TargetY, nullptr},
    {56, nullptr, &SpriteRecord::ScreenDC},
    {60, &SpriteRecord::State, nullptr},
    {68, nullptr, &SpriteRecord::BackDC},
    {72, &SpriteRecord::FrameX, nullptr},
    {84, nullptr, &SpriteRecord::CleanDC},
    {88, nullptr, &SpriteRecord::Next},
    {116, &SpriteRecord::ScrollY, nullptr},
    {120, nullptr, &SpriteRecord::Self},
    {128, &SpriteRecord::DrawnX, nullptr},
    {156, &SpriteRecord::Mark, nullptr},
    {232, &SpriteRecord::ScrollMode, nullptr},
    {252, &SpriteRecord::RectLeft, nullptr},
    {272, nullptr, &SpriteRecord::BackCollideDC},
    {308, &SpriteRecord::BackFrameDelay, nullptr},
    {320, nullptr, &SpriteRecord::Table},
    {332, nullptr, &SpriteRecord::BackCollideSound},
    {336, &SpriteRecord::MovingMode, nullptr},
    {480, &SpriteRecord::CleanUpMark, nullptr},
    {484, nullptr, &SpriteRecord::AttachedTo},
    {516, &SpriteRecord::CageHomeY, nullptr},
    {540, &SpriteRecord::SlowCountY, nullptr},
    {544, nullptr, &SpriteRecord::AnimFrom},
    {556, &SpriteRecord::SystemBrake, nullptr},
};

TEST(SpriteRecord, KeepsEachWordAtItsDocumentedPosition) {
    const auto record = std::make_unique<SpriteRecord>();
    // All words at once, so that two positions of one word would show. 5 << 40 is lost in numbers only.
    for (int32_t position = 0; position < 1024; position += 4)
        WriteWord(*record, position, (intptr_t{5} << 40) - 1 - position);
    for (const Place &place : kPlaces) {
        SCOPED_TRACE(place.position);
        if (place.number != nullptr) {
            EXPECT_EQ(record.get()->*place.number, -1 - place.position);
            EXPECT_EQ(ReadWord(*record, place.position), -1 - place.position);
        } else {
            const intptr_t whole = (intptr_t{5} << 40) - 1 - place.position;
            EXPECT_EQ(static_cast<intptr_t>(record.get()->*place.address), whole);
            EXPECT_EQ(ReadWord(*record, place.position), whole);
        }
    }
    EXPECT_EQ(record->MoveSourceX(1), -161);
    EXPECT_EQ(record->MoveSourceY(8), -221);
    EXPECT_EQ(record->MoveSourceX(0), -225);
    EXPECT_EQ(record->PathX(0), -349);
    EXPECT_EQ(record->PathY(15), -473);
    for (int32_t position : {76, 80, 124, 244, 248, 340, 344, 560, 1020})
        EXPECT_EQ(ReadWord(*record, position), -1 - position) << position;
}

TEST(SpriteRecord, ReadsNothingAndWritesNothingBesideItsPositions) {
    struct Guarded {
        int64_t before = 0x1111111111111111;
        SpriteRecord record;
        int64_t after = 0x2222222222222222;
    };
    const auto guarded = std::make_unique<Guarded>();
    for (int32_t position : {-4, -1, 1, 2, 3, 57, 1021, 1022, 1024, 1028, INT32_MAX, INT32_MIN}) {
        WriteWord(guarded->record, position, -1);
        EXPECT_EQ(ReadWord(guarded->record, position), 0) << position;
    }
    for (int32_t position = 0; position < 1024; position += 4)
        EXPECT_EQ(ReadWord(guarded->record, position), 0) << position;
    EXPECT_EQ(guarded->before, 0x1111111111111111);
    EXPECT_EQ(guarded->after, 0x2222222222222222);
}

TEST(SpriteRecord, WrapsSumsInsteadOfOverflowing) {
    SpriteRecord record;
    record.X = INT32_MAX;
    record.X += 2;
    record.Y = INT32_MIN;
    record.Y -= 1;
    EXPECT_EQ(record.X, INT32_MIN + 1);
    EXPECT_EQ(record.Y, INT32_MAX);
}

}  // namespace
}  // namespace fenlight
