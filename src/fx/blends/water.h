// SPDX-License-Identifier: Zlib
// Water: rows of a picture, each shifted sideways by a wave, some dropped and some doubled.
//
// A frame is planned first, one shift for each row of the picture and one row of the picture for each row of
// the frame, and then made in one pass, in a block of its own or within the picture. Where the waves stand is
// kept for the whole process; a call takes its turn in one atomic step. All else belongs to the call.
#pragma once

#include <cstdint>

#include "fx/pixel_walks.h"

namespace fenlight {

// Entries before the end of a wave table; those behind are not looked at. Far more than pictures have rows,
// and where a caller forgot the end, so far at most is it sought.
inline constexpr int32_t kMostWaveEntries = 65536;

struct Wave {
    const int32_t *entries;
    int32_t count;  // without the end
};

// The default wave where the address is none.
Wave WaveOf(const int32_t *table) noexcept;

// Where this call reads first, and the move of the waves by one.
int32_t TakeWaveStart(int32_t count) noexcept;
int32_t TakeRowStepStart() noexcept;

// What a frame is made of. Rows of the frame from `filled` on are black.
struct WaterPlan {
    const int32_t *shifts;   // of each row of the picture, to the right, at most its width
    const int32_t *sources;  // row of the picture for each row of the frame, never falling; null: its own
    int64_t filled;
};

void PlanShifts(int32_t *shifts, int64_t rows, int64_t width, const Wave &wave, int32_t start) noexcept;
// Rows of the frame that get one of the picture. A source may lie below the last row of the picture, where a
// padded block goes on; such rows are black.
int64_t PlanSources(int32_t *sources, const FXHeader &fx, int64_t rows, int32_t calmRows,
                    int32_t start) noexcept;

// `frame` has biSizeImage bytes and lies apart from the picture.
void MakeFrame(uint8_t *frame, const FXHeader &fx, const WaterPlan &plan) noexcept;
// The frame in place of the picture.
void MoveWithin(const FXHeader &fx, const WaterPlan &plan) noexcept;

}  // namespace fenlight
