// SPDX-License-Identifier: Apache-2.0
// Pictures on a real screen: what is seen, and which reports come. Runs once for each way of drawing.
#include <unistd.h>

#include "tests/lumaview/GivenDisplay.h"

namespace lumaview_test {
namespace {

TEST_F(GivenDisplay, PngFillsTheWindowThatHasItsProportions) {
  const auto path = folder.WritePng("quarters.png", 640, 480, Quarters(640, 480, kRed, kGreen, kBlue, kWhite));

  ShowUntilSeen(path);

  EXPECT_TRUE(Shows(2, 2, kRed));
  EXPECT_TRUE(Shows(kWidth - 3, 2, kGreen));
  EXPECT_TRUE(Shows(2, kHeight - 3, kBlue));
  EXPECT_TRUE(Shows(kWidth - 3, kHeight - 3, kWhite));
}

TEST_F(GivenDisplay, JpegIsShownBetweenBlackBars) {
  const auto path = folder.WriteJpeg("wide.jpg", 1600, 600, Solid(kWhite));

  ShowUntilSeen(path);

  // 320 x 120 in the middle of 240 rows.
  EXPECT_TRUE(Shows(160, 58, kBlack));
  EXPECT_TRUE(Shows(160, 62, kWhite));
  EXPECT_TRUE(Shows(0, 120, kWhite));
  EXPECT_TRUE(Shows(160, 177, kWhite));
  EXPECT_TRUE(Shows(160, 182, kBlack));
}

TEST_F(GivenDisplay, SmallPictureIsEnlarged) {
  const auto path = folder.WritePng("small.png", 4, 3, Solid(kGreen));

  ShowUntilSeen(path);

  EXPECT_TRUE(Shows(0, 0, kGreen));
  EXPECT_TRUE(Shows(kWidth - 1, kHeight - 1, kGreen));
}

TEST_F(GivenDisplay, SecondPictureTakesThePlaceOfTheFirst) {
  ShowUntilSeen(folder.WritePng("red.png", 32, 24, Solid(kRed)));
  DestroyPicture();
  EXPECT_TRUE(Shows(100, 100, kRed)) << "the last frame stays after its picture is destroyed";

  ShowUntilSeen(folder.WritePng("green.png", 32, 24, Solid(kGreen)));

  EXPECT_TRUE(Shows(100, 100, kGreen));
}

TEST_F(GivenDisplay, OwnersDrawingLeavesThePictureAlone) {
  ShowUntilSeen(folder.WritePng("red.png", 32, 24, Solid(kRed)));

  screen.FillWhite(window);

  EXPECT_TRUE(Shows(100, 100, kRed));
  EXPECT_TRUE(Shows(0, 0, kRed));
}

TEST_F(GivenDisplay, DestroyedDisplayLetsTheWindowItselfBeSeen) {
  ShowUntilSeen(folder.WritePng("red.png", 32, 24, Solid(kRed)));

  DestroyDisplay();

  EXPECT_TRUE(ShowsEventually(100, 100, kBlack));
  EXPECT_TRUE(screen.ChildrenOf(window).empty());
}

TEST_F(GivenDisplay, NothingIsMappedBeforeTheFirstPicture) {
  screen.FillWhite(window);

  EXPECT_TRUE(Shows(10, 10, kWhite));
  EXPECT_EQ(screen.ChildrenOf(window).size(), 1u);
}

TEST_F(GivenDisplay, PictureFollowsTheWindowsSize) {
  ShowUntilSeen(folder.WritePng("quarters.png", 640, 480, Quarters(640, 480, kRed, kGreen, kBlue, kWhite)));

  screen.Resize(window, 160, 240);

  // Fitted again: 160 x 120 in the middle.
  EXPECT_TRUE(ShowsEventually(80, 50, kBlack));
  EXPECT_TRUE(ShowsEventually(4, 64, kRed));
  EXPECT_TRUE(ShowsEventually(155, 175, kWhite));
  EXPECT_TRUE(ShowsEventually(80, 190, kBlack));
}

TEST_F(GivenDisplay, PictureFollowsTheSizeAlsoAfterItWasDestroyed) {
  ShowUntilSeen(folder.WritePng("red.png", 640, 480, Solid(kRed)));
  DestroyPicture();

  screen.Resize(window, 640, 240);

  // 320 x 240 in the middle of 640 columns.
  EXPECT_TRUE(ShowsEventually(150, 120, kBlack));
  EXPECT_TRUE(ShowsEventually(170, 120, kRed));
  EXPECT_TRUE(ShowsEventually(500, 120, kBlack));
}

TEST_F(GivenDisplay, WindowOfAnotherSizeThanExpectedGetsItsOwnPicture) {
  const auto path = folder.WritePng("red.png", 64, 48, Solid(kRed));
  ASSERT_EQ(lumaview_create_from_url(path.c_str(), &picture), 0);
  Window other = screen.MakeWindow(200, 400);
  ASSERT_EQ(lumaview_init_display(&other), 0);
  ASSERT_EQ(lumaview_set_window(picture, other), 0);
  lumaview_add_event_callback(picture, LUMAVIEW_EVENT_DECODE, Reports::Callback);

  ASSERT_EQ(lumaview_decode(picture, 0), 0);

  EXPECT_EQ(Reports::Get().Next(), (Report{picture, 1, 3}));
  EXPECT_TRUE(SameColour(screen.PixelAt(other, 100, 100), kBlack));
  EXPECT_TRUE(SameColour(screen.PixelAt(other, 100, 200), kRed));
  EXPECT_EQ(lumaview_destroy_display(&other), 0);
}

TEST_F(GivenDisplay, FileThatIsNoPictureFailsToParse) {
  StartShowing(folder.WriteBytes("text.jpg", "this is not a picture"));

  EXPECT_EQ(Reports::Get().Next(), (Report{picture, 0, 1}));
}

TEST_F(GivenDisplay, TruncatedPictureFailsToDecodeAndTheNextOneIsShown) {
  const auto whole = folder.WriteJpeg("whole.jpg", 640, 480, Quarters(640, 480, kRed, kGreen, kBlue, kWhite));
  ASSERT_EQ(truncate(whole.c_str(), 2000), 0);
  StartShowing(whole);
  EXPECT_EQ(Reports::Get().Next(), (Report{picture, 0, 0}));
  EXPECT_EQ(Reports::Get().Next(), (Report{picture, 1, 4}));
  DestroyPicture();

  ShowUntilSeen(folder.WritePng("green.png", 32, 24, Solid(kGreen)));

  EXPECT_TRUE(Shows(100, 100, kGreen));
}

TEST_F(GivenDisplay, WindowThatDiesIsOnlyAnErrorReport) {
  Window doomed = screen.MakeWindow(kWidth, kHeight);
  ASSERT_EQ(lumaview_init_display(&doomed), 0);
  screen.Destroy(doomed);
  const auto path = folder.WritePng("red.png", 32, 24, Solid(kRed));
  ASSERT_EQ(lumaview_create_from_url(path.c_str(), &picture), 0);
  lumaview_set_window(picture, doomed);
  lumaview_add_event_callback(picture, LUMAVIEW_EVENT_DECODE, Reports::Callback);

  ASSERT_EQ(lumaview_decode(picture, 0), 0);

  EXPECT_EQ(Reports::Get().Next(), (Report{picture, 1, 4}));
  EXPECT_EQ(lumaview_destroy_display(&doomed), 0);
  DestroyPicture();
  ShowUntilSeen(path);
  EXPECT_TRUE(Shows(100, 100, kRed)) << "the other window goes on";
}

}  // namespace
}  // namespace lumaview_test
