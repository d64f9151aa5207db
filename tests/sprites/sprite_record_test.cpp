// SPDX-License-Identifier: Zlib
#include "sprites/sprite_record.h"

#include <gmock/gmock.h>

#include <memory>
#include <utility>

namespace fenlight {
namespace {

// Callers have these numbers in their programs.
using R = SpriteRecord;
const std::pair<int32_t, NumberWord R::*> kNumbers[] = {
    {4, &R::SourceX},      {24, &R::Frame},        {32, &R::X},          {44, &R::TargetY},
    {60, &R::State},       {72, &R::FrameX},       {116, &R::ScrollY},   {128, &R::DrawnX},
    {156, &R::Mark},       {232, &R::ScrollMode},  {252, &R::RectLeft},  {308, &R::BackFrameDelay},
    {336, &R::MovingMode}, {480, &R::CleanUpMark}, {516, &R::CageHomeY}, {540, &R::SlowCountY},
    {556, &R::SystemBrake}};
const std::pair<int32_t, AddressWord R::*> kAddresses[] = {
    {0, &R::ImageDC},         {56, &R::ScreenDC}, {68, &R::BackDC},
    {84, &R::CleanDC},        {88, &R::Next},     {120, &R::Self},
    {272, &R::BackCollideDC}, {320, &R::Table},   {332, &R::BackCollideSound},
    {484, &R::AttachedTo},    {544, &R::AnimFrom}};

TEST(SpriteRecord, KeepsEachWordAtItsDocumentedPosition) {
    const auto record = std::make_unique<SpriteRecord>();
    // All words at once, so that two positions of one word would show. 5 << 40 is lost in numbers only.
    const auto valueAt = [](int32_t position) { return (intptr_t{5} << 40) - 1 - position; };
    for (int32_t position = 0; position < 1024; position += 4)
        WriteWord(*record, position, valueAt(position));
    for (const auto &[position, number] : kNumbers) {
        EXPECT_EQ(record.get()->*number, -1 - position);
        EXPECT_EQ(ReadWord(*record, position), -1 - position);
    }
    for (const auto &[position, address] : kAddresses) {
        EXPECT_EQ(static_cast<intptr_t>(record.get()->*address), valueAt(position)) << position;
        EXPECT_EQ(ReadWord(*record, position), valueAt(position));
    }
    const int32_t pairs[] = {record->MoveSourceX(1), record->MoveSourceY(8), record->MoveSourceX(0),
                             record->PathX(0), record->PathY(15)};
    EXPECT_THAT(pairs, testing::ElementsAre(-161, -221, -225, -349, -473));
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

}  // namespace
}  // namespace fenlight
