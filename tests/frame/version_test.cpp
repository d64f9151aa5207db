// SPDX-License-Identifier: Zlib
#include <gtest/gtest.h>

#include <string>

#include "fenlight/frame.h"
#include "fenlight/platform/windows.h"
#include "platform/window/message_box.h"

namespace fenlight {
namespace {

constexpr char kNoBreakSpace[] = "\xC2\xA0";

TEST(Version, ShowsOneBoxThatNamesLibraryAndVersion) {
    const int boxes = platform::LastMessageBox().count;
    EXPECT_EQ(GetVersion(), 3000);
    EXPECT_EQ(platform::LastMessageBox().count, boxes) << "telling the version opens nothing";

    EXPECT_EQ(Version(), 0);
    const auto box = platform::LastMessageBox();
    EXPECT_EQ(box.count, boxes + 1);
    EXPECT_EQ(box.owner, 0u);
    EXPECT_EQ(box.type, 64u);
    EXPECT_EQ(box.caption, std::string(kNoBreakSpace) + "About Fenlight.dll" + kNoBreakSpace);
    EXPECT_EQ(box.text.substr(0, box.text.find('\n')), "Fenlight.dll Version 3.0");
    EXPECT_GT(box.text.size(), box.text.find('\n') + 1) << "a line about the library follows";
}

}  // namespace
}  // namespace fenlight
