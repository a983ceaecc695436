// SPDX-License-Identifier: Apache-2.0
// Zoom, pan, rotation, third dimension and display lock, as they are seen.
#include "tests/lumaview/GivenDisplay.h"

namespace lumaview_test {
namespace {

/// A picture of four coloured quarters fills the window.
class GivenQuarters : public GivenDisplay {
 protected:
  GivenQuarters() {
    ShowUntilSeen(folder.WritePng("quarters.png", 1280, 960, Quarters(1280, 960, kRed, kGreen, kBlue, kWhite)));
  }

  int SetView(int zoom, int rotation) {
    lumaview_display_param_s param{};
    param.field[kDisplayParamZoomRatio] = zoom;
    param.field[kDisplayParamRotation] = rotation;
    return lumaview_set_display_param(picture, param);
  }
  int Move(lumaview_key_direction_e direction) { return lumaview_set_zoom_move(picture, direction, &x, &y); }

  /// Waits until the corners have these colours: upper left, upper right, lower left, lower right.
  bool CornersAre(uint32_t upper_left, uint32_t upper_right, uint32_t lower_left, uint32_t lower_right) {
    return Eventually([&] {
      return Shows(50, 20, upper_left) && Shows(kWidth - 51, 20, upper_right) && Shows(50, kHeight - 21, lower_left) &&
             Shows(kWidth - 51, kHeight - 21, lower_right);
    });
  }

  int x = 0;
  int y = 0;
};

TEST_F(GivenQuarters, RotationTurnsClockwise) {
  EXPECT_EQ(SetView(1, 180), 0);
  EXPECT_TRUE(CornersAre(kWhite, kBlue, kGreen, kRed));

  EXPECT_EQ(SetView(1, 90), 0);
  // 180 x 240 in the middle: columns 70 to 250.
  EXPECT_TRUE(ShowsEventually(80, 20, kBlue));
  EXPECT_TRUE(ShowsEventually(240, 20, kRed));
  EXPECT_TRUE(ShowsEventually(80, 220, kWhite));
  EXPECT_TRUE(ShowsEventually(240, 220, kGreen));
  EXPECT_TRUE(ShowsEventually(60, 120, kBlack));

  EXPECT_EQ(SetView(1, 270), 0);
  EXPECT_TRUE(ShowsEventually(80, 20, kGreen));

  EXPECT_EQ(SetView(1, 0), 0);
  EXPECT_TRUE(CornersAre(kRed, kGreen, kBlue, kWhite));
  EXPECT_TRUE(Reports::Get().IsEmpty()) << "a change of the view is not reported";
}

TEST_F(GivenQuarters, ZoomShowsTheMiddleAndPanningReachesTheCorners) {
  EXPECT_EQ(SetView(4, 0), 0);
  EXPECT_TRUE(CornersAre(kRed, kGreen, kBlue, kWhite));
  float ratio = 0;
  EXPECT_EQ(lumaview_get_zoom_ratio(picture, &ratio), 0);
  EXPECT_EQ(ratio, 4.0f);

  for (int step = 0; step < 4; ++step) {
    EXPECT_EQ(Move(LUMAVIEW_DIRECTION_RIGHT), 0);
  }
  EXPECT_EQ(x, 4 * kWidth / 8);
  EXPECT_EQ(y, 0);
  EXPECT_TRUE(CornersAre(kGreen, kGreen, kWhite, kWhite));

  for (int step = 0; step < 100; ++step) {
    EXPECT_EQ(Move(LUMAVIEW_DIRECTION_DOWN), 0);
  }
  EXPECT_EQ(y, (4 * kHeight - kHeight) / 2) << "the picture's edge is the end";
  EXPECT_TRUE(CornersAre(kWhite, kWhite, kWhite, kWhite));
}

TEST_F(GivenQuarters, PanningWithoutZoomStaysWhereItIs) {
  for (auto direction :
       {LUMAVIEW_DIRECTION_UP, LUMAVIEW_DIRECTION_DOWN, LUMAVIEW_DIRECTION_LEFT, LUMAVIEW_DIRECTION_RIGHT}) {
    EXPECT_EQ(Move(direction), 0);
    EXPECT_EQ(x, 0);
    EXPECT_EQ(y, 0);
  }
  EXPECT_TRUE(CornersAre(kRed, kGreen, kBlue, kWhite));
}

TEST_F(GivenQuarters, ZoomedOutAgainThePictureIsWhole) {
  EXPECT_EQ(SetView(16, 0), 0);
  EXPECT_EQ(Move(LUMAVIEW_DIRECTION_LEFT), 0);
  EXPECT_EQ(x, -kWidth / 8);

  EXPECT_EQ(SetView(1, 0), 0);

  EXPECT_TRUE(CornersAre(kRed, kGreen, kBlue, kWhite));
}

TEST_F(GivenQuarters, SideBySideShowsTheLeftHalf) {
  EXPECT_EQ(lumaview_set_3d_mode(picture, 1), 0);
  EXPECT_TRUE(CornersAre(kRed, kRed, kBlue, kBlue));

  EXPECT_EQ(lumaview_set_3d_mode(picture, 2), 0);
  EXPECT_TRUE(CornersAre(kRed, kGreen, kRed, kGreen));

  EXPECT_EQ(lumaview_set_3d_mode(picture, 0), 0);
  EXPECT_TRUE(CornersAre(kRed, kGreen, kBlue, kWhite));
}

TEST_F(GivenQuarters, LockedDisplayShowsTheNewestOnceItIsUnlocked) {
  ASSERT_EQ(lumaview_set_display_lock(picture, window, 1), 0);
  DestroyPicture();
  ShowUntilSeen(folder.WritePng("green.png", 32, 24, Solid(kGreen)));
  DestroyPicture();
  ShowUntilSeen(folder.WritePng("blue.png", 32, 24, Solid(kBlue)));
  EXPECT_TRUE(Shows(50, 20, kRed)) << "what was shown stays";
  EXPECT_TRUE(Shows(50, kHeight - 21, kBlue)) << "what was shown stays: this quarter was blue";
  EXPECT_TRUE(Shows(kWidth - 51, kHeight - 21, kWhite));

  ASSERT_EQ(lumaview_set_display_lock(picture, window, 0), 0);

  EXPECT_TRUE(CornersAre(kBlue, kBlue, kBlue, kBlue));
}

TEST_F(GivenDisplay, ViewSetBeforeTheShowingIsThatOfTheFirstFrame) {
  const auto path = folder.WritePng("quarters.png", 1280, 960, Quarters(1280, 960, kRed, kGreen, kBlue, kWhite));
  ASSERT_EQ(lumaview_create_from_url(path.c_str(), &picture), 0);
  ASSERT_EQ(lumaview_set_window(picture, window), 0);
  lumaview_display_param_s turned{};
  turned.field[kDisplayParamZoomRatio] = 1;
  turned.field[kDisplayParamRotation] = 180;
  ASSERT_EQ(lumaview_set_display_param(picture, turned), 0);
  lumaview_add_event_callback(picture, LUMAVIEW_EVENT_DECODE, Reports::Callback);

  ASSERT_EQ(lumaview_decode(picture, 0), 0);

  EXPECT_EQ(Reports::Get().Next(), (Report{picture, 1, 3}));
  EXPECT_TRUE(Shows(50, 20, kWhite));
}

}  // namespace
}  // namespace lumaview_test
