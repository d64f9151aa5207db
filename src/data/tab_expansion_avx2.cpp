// SPDX-License-Identifier: Zlib
// One block of 64 bytes after the other, written whole: the output never shrinks, so while a whole block of
// source is left behind the place, a store may reach beyond what is right so far, and what follows mends it.
#if defined(__x86_64__)
#include <bit>

#include "data/tab_expansion.h"
#include "data/text_block_avx2.h"

namespace fenlight {
namespace {

constexpr int64_t kBlock = 64;
// Two tabs are expanded in every block, whether they are there or not, because a branch on their number goes
// wrong in most blocks of indented text. After so many blocks without a tab the next is taken to be alike.
constexpr int kForeseenTabs = 2;
constexpr int64_t kQuietBlocks = 2;

// One block of the text on its way.
class TabbedBlock {
  public:
    TabbedBlock(const uint8_t *bytes, uint64_t tabs, uint8_t *destination)
        : bytes_(bytes), tabs_(tabs), destination_(destination) {}

    bool HasTabs() const { return tabs_ != 0; }

    // Writes blanks for the next tab and what lies behind it. Without a tab it only passes to the end of the
    // block, so that it can be called before anybody knows.
    void Expand(int32_t tabWidth, const TextBlock &blanks) {
        const int64_t tab = std::countr_zero(tabs_);
        destination_ += tab - start_;
        const int64_t width = tabWidth * int64_t{HasTabs()};
        blanks.Store(destination_);
        for (int64_t i = kBlock; i < width; i += kBlock) blanks.Store(destination_ + i);
        destination_ += width;
        start_ = tab + int64_t{HasTabs()};
        TextBlock::Load(bytes_ + start_).Store(destination_);
        tabs_ &= tabs_ - 1;
    }
    uint8_t *Finish() const { return destination_ + kBlock - start_; }

  private:
    const uint8_t *bytes_;
    uint64_t tabs_;
    uint8_t *destination_;
    int64_t start_ = 0;
};

int64_t ExpandTabsInBlocks(const uint8_t *source, int64_t length, uint8_t *destination,
                           int32_t tabWidth) noexcept {
    const TextBlock tabs = TextBlock::Fill('\t');
    const TextBlock blanks = TextBlock::Fill(' ');
    int64_t tabCount = 0;
    int64_t quietBlocks = 0;
    int64_t i = 0;
    for (; i + 2 * kBlock <= length; i += kBlock) {
        const TextBlock block = TextBlock::Load(source + i);
        block.Store(destination);
        const uint64_t places = block.Matches(tabs);
        tabCount += std::popcount(places);
        quietBlocks = (quietBlocks + 1) * int64_t{places == 0};
        if (quietBlocks > kQuietBlocks) {
            destination += kBlock;
            continue;
        }
        TabbedBlock tabbed(source + i, places, destination);
        for (int k = 0; k < kForeseenTabs; ++k) tabbed.Expand(tabWidth, blanks);
        while (tabbed.HasTabs()) tabbed.Expand(tabWidth, blanks);
        destination = tabbed.Finish();
    }
    return tabCount * tabWidth + kPlainTabs.expandTabs(source + i, length - i, destination, tabWidth);
}

}  // namespace

const TabKernels kAvx2Tabs{ExpandTabsInBlocks};

}  // namespace fenlight
#endif
