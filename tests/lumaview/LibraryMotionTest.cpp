// SPDX-License-Identifier: Apache-2.0
// The slow pan and zoom of still pictures. LUMAVIEW_KEN_BURNS says for how long.
#include <algorithm>

#include "tests/lumaview/GivenDisplay.h"

namespace lumaview_test {
namespace {

/// A picture much wider than the window, green with a red edge.
class GivenEdgedPicture : public GivenDisplay {
 protected:
  GivenEdgedPicture()
      : path(folder.WritePng("edged.png", 960, 480, [](int x, int y) {
          // What the window of 4 : 3 cuts off are 160 columns on either side.
          return x < 168 || x >= 792 || y < 8 || y >= 472 ? kRed : kGreen;
        })) {}

  long CountRedCorners() {
    const std::pair<int, int> corners[] = {{1, 1}, {kWidth - 2, 1}, {1, kHeight - 2}, {kWidth - 2, kHeight - 2}};
    return std::count_if(std::begin(corners), std::end(corners),
                         [this](const auto& corner) { return Shows(corner.first, corner.second, kRed); });
  }

  std::string path;
};

TEST_F(GivenEdgedPicture, MovesIntoOneCornerWithoutEverShowingBlack) {
  ShowUntilSeen(path);

  EXPECT_TRUE(Eventually([&] {
    EXPECT_FALSE(Shows(0, 0, kBlack) || Shows(160, 0, kBlack) || Shows(0, 120, kBlack));
    return CountRedCorners() == 3;  // the edges of the opposite corner are outside by then
  }));
}

TEST_F(GivenEdgedPicture, MovesAfterAnEffectAndGivesWayToTheNext) {
  StartEffect(0, path);
  EXPECT_EQ(Reports::Get().Next(), (Report{effect, 3, 8}));
  EXPECT_TRUE(Eventually([&] { return CountRedCorners() == 3; }));

  StartEffect(5, folder.WritePng("blue.png", 64, 48, Solid(kBlue)));

  EXPECT_EQ(Reports::Get().Next(), (Report{effect, 3, 8}));
  EXPECT_TRUE(Shows(0, 0, kBlue));
  EXPECT_TRUE(Shows(kWidth - 1, kHeight - 1, kBlue));
}

TEST_F(GivenEdgedPicture, FollowsTheSizeAsAWhole) {
  ShowUntilSeen(path);

  screen.Resize(window, 160, 120);

  EXPECT_TRUE(ShowsEventually(159, 119, kRed));
  EXPECT_TRUE(ShowsEventually(0, 0, kRed));
}

}  // namespace
}  // namespace lumaview_test
