// SPDX-License-Identifier: Zlib
// Antialiasing in place. Of three rows copies are kept from before they were written, and of the rows around
// the marks that tell where the key colour was. So a pass is one walk through the picture.
#include <algorithm>
#include <cstring>
#include <utility>

#include "fenlight/fx_smoothing.h"
#include "fx/pixel_walks.h"
#include "fx/smoothing/smoothing_kernels.h"

namespace fenlight {
namespace {

constexpr int32_t kWithCentre = 1;
constexpr int32_t kEverywhere = 2;
constexpr uint32_t kColourOfLastPixel = 0xFFFFFFFF;
constexpr uint32_t kColours = 0x01000000;  // no pixel has a colour from here on
constexpr int64_t kCacheLine = 64;
// Reach of the search for the key colour.
constexpr int64_t kReach = 2;
constexpr int64_t kMarkRows = 2 * kReach + 1;
constexpr int64_t kKeptRows = 3;
// Marks are made a row ahead, since words that were just written one by one are slow to read in vectors. A
// power of two.
constexpr int64_t kKeptMarkRows = 8;

struct AntialiasingRule {
    uint32_t key;
    int32_t flags;
};

// Rows of marks by the picture's row, with empty words between them. They begin on vectors of 8 words and
// take whole ones. Words that are never marked stay empty.
class MarkRing {
  public:
    explicit MarkRing(int64_t pixels) noexcept
        : words_((WordsForMarks(pixels) + kVector - 1) / kVector * kVector), block_(Bytes()) {
        if (block_) std::memset(block_.Bytes(), 0, static_cast<size_t>(Bytes()));
    }
    explicit operator bool() const noexcept { return static_cast<bool>(block_); }
    uint64_t *Row(int64_t row) const { return Slot(row & (kKeptMarkRows - 1)); }
    // One more, for what is to be done.
    uint64_t *Outcome() const { return Slot(kKeptMarkRows); }
    int64_t Words() const { return words_; }

  private:
    static constexpr int64_t kVector = 8;

    uint64_t *Slot(int64_t slot) const {
        return reinterpret_cast<uint64_t *>(block_.Bytes()) + slot * (words_ + kVector) + kVector;
    }
    int64_t Bytes() const {
        return ((kKeptMarkRows + 1) * (words_ + kVector) + kVector) * int64_t{sizeof(uint64_t)};
    }

    int64_t words_;
    PixelBlock block_;
};

class Antialiaser {
  public:
    Antialiaser(const BufferRows<1> &rows, const AntialiasingRule &rule) noexcept
        : rows_(rows),
          rule_(rule),
          pitch_(rows.pitches[0]),
          marks_(IsNearKey() ? rows.width : 0),
          keptBytes_((pitch_ + kCacheLine - 1) / kCacheLine * kCacheLine + kCacheLine),
          copies_(kKeptRows * keptBytes_ + kCacheLine),
          kernels_(ChooseSmoothingKernels()) {}
    // False without memory.
    explicit operator bool() const noexcept { return marks_ && copies_; }

    void RunPass() const {
        uint8_t *above = Kept(0), *current = Kept(1), *next = Kept(2);
        Keep(above, 0);
        Keep(current, 1);
        for (int64_t row = 0; row <= kReach + 1; ++row) MarkRow(row);
        for (int64_t row = 1; row < rows_.rows - 1; ++row) {
            MarkRow(row + kReach + 1);
            Keep(next, row + 1);
            SmoothRow(row, above, current, next);
            if (IsNearKey() && IsInside(row)) TakeBack(row, current);
            std::swap(above, current);
            std::swap(current, next);
        }
    }

  private:
    bool IsNearKey() const { return (rule_.flags & kEverywhere) == 0; }
    bool IsInside(int64_t row) const {
        return rows_.width > 2 * kReach && row >= kReach && row < rows_.rows - kReach;
    }

    // With room before and behind, since the row's first and last pixel are smoothed too before they are set
    // right again: so vectors are whole and on cache lines.
    uint8_t *Kept(int64_t i) const { return copies_.Bytes() + kCacheLine + i * keptBytes_; }
    void Keep(uint8_t *kept, int64_t row) const { kernels_.keep(kept, rows_.Row(row), pitch_); }

    // Before the row is written.
    void MarkRow(int64_t row) const {
        if (!IsNearKey() || rule_.key >= kColours || row >= rows_.rows) return;
        kernels_.markColour(marks_.Row(row), rows_.Row(row), rows_.width, rule_.key);
    }

    void SmoothRow(int64_t row, const uint8_t *above, const uint8_t *current, const uint8_t *next) const {
        const RowNeighbours neighbours{above, current, next};
        uint8_t *bytes = rows_.Row(row);
        const bool hasCentre = (rule_.flags & kWithCentre) != 0;
        (hasCentre ? kernels_.averageWithCentre : kernels_.average)(bytes, neighbours, pitch_);
        TakePixel(bytes, current);
        TakePixel(bytes + pitch_ - kFXPixelBytes, current + pitch_ - kFXPixelBytes);
    }

    // From a kept row: the picture's own bytes may lie under a masked store that is not yet through.
    static void TakePixel(uint8_t *pixel, const uint8_t *kept) {
        for (int64_t i = 0; i < kFXPixelBytes; ++i) pixel[i] = static_cast<uint8_t>(~kept[i]);
    }

    // What lies too far from the key colour is as it was. The outer two pixels at both ends are left alone.
    void TakeBack(int64_t row, const uint8_t *current) const {
        const uint64_t *near[kMarkRows];
        for (int64_t i = 0; i < kMarkRows; ++i) near[i] = marks_.Row(row - kReach + i);
        uint64_t *far = marks_.Outcome();
        const int64_t end = rows_.width - kReach;
        const int64_t words = WordsForMarks(end);
        kernels_.markFar(far, near, marks_.Words());
        far[0] &= ~uint64_t{0} << 3 * kReach;
        far[words - 1] &= ~uint64_t{0} >> (64 - 3 * (end - kMarksPerWord * (words - 1)));
        kernels_.takeMarked(rows_.Row(row), current, far, end);
    }

    const BufferRows<1> &rows_;
    AntialiasingRule rule_;
    int64_t pitch_;
    MarkRing marks_;
    int64_t keptBytes_;
    PixelBlock copies_;
    const SmoothingKernels &kernels_;
};

// Repeated passes end in a picture that stays, or in a few that follow each other for ever. The picture is
// compared with one that was kept some passes ago, after twice as many each time (R. P. Brent, BIT 20, 1980);
// once it comes up again, whole rounds are left out.
class RoundWatch {
  public:
    explicit RoundWatch(const BufferRows<1> &rows, bool isWanted) noexcept
        : pixels_(rows.starts[0]),
          bytes_(isWanted ? static_cast<size_t>(rows.pitches[0] * rows.rows) : 0),
          kept_(static_cast<int64_t>(bytes_)) {}
    // False without memory.
    explicit operator bool() const noexcept { return static_cast<bool>(kept_); }

    // After each pass: how many of those `left` are still to be run.
    uint64_t PassesLeft(uint64_t left) {
        if (bytes_ == 0) return left;
        ++age_;
        const bool isKept = span_ > 1;
        if (isKept && std::memcmp(kept_.Bytes(), pixels_, bytes_) == 0) return left % age_;
        if (age_ == span_) {
            std::memcpy(kept_.Bytes(), pixels_, bytes_);
            span_ *= 2;
            age_ = 0;
        }
        return left;
    }

  private:
    const uint8_t *pixels_;
    size_t bytes_;
    PixelBlock kept_;
    uint64_t age_ = 0;   // passes since a picture was kept
    uint64_t span_ = 1;  // age at which another one is
};

// Fewer passes than these are not worth watching.
constexpr uint64_t kWatchedPasses = 16;

// False without memory.
bool RunPasses(const BufferRows<1> &rows, const AntialiasingRule &rule, uint64_t passes) {
    const Antialiaser antialiaser(rows, rule);
    RoundWatch watch(rows, passes >= kWatchedPasses);
    if (!antialiaser || !watch) return false;
    while (passes > 0) {
        antialiaser.RunPass();
        passes = watch.PassesLeft(passes - 1);
    }
    return true;
}

bool AntialiasPicture(const FXHeader &fx, AntialiasingRule rule, uint32_t extraPasses) {
    const BufferRows<1> rows = WalkRows(fx);
    if (rows.Inner(1).rows == 0) return true;
    if (rule.key == kColourOfLastPixel) rule.key = ColourOfPixel(fx.Pixels + fx.biSizeImage - kFXPixelBytes);
    return RunPasses(rows, rule, uint64_t{extraPasses} + 1);
}

}  // namespace
}  // namespace fenlight

using namespace fenlight;

int32_t Antialiasing(uintptr_t dc, int32_t x, int32_t y, uintptr_t fx, uint32_t key, int32_t flags,
                     uint32_t extraPasses) noexcept {
    if (fx == 0) return 0;
    const FXHeader &picture = *FXFromHandle(fx);
    if (AntialiasPicture(picture, {key, flags}, extraPasses)) PaintFX(dc, x, y, picture, picture.Pixels);
    return 0;
}
