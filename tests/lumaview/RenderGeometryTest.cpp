// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "simulator/lumaview/image/Render.h"
#include "simulator/lumaview/image/Turn.h"

namespace sim::lumaview {

static void PrintTo(const Rect& rect, std::ostream* out) {
  *out << rect.width << "x" << rect.height << "+" << rect.x << "+" << rect.y;
}

namespace {

constexpr Size kWindow{1920, 1080};

TEST(PlaceInWindow, WidePictureTouchesLeftAndRight) {
  EXPECT_EQ(PlaceInWindow({4000, 1000}, {}, kWindow), (Rect{0, 300, 1920, 480}));
}

TEST(PlaceInWindow, SmallPictureIsEnlargedAndCentred) {
  EXPECT_EQ(PlaceInWindow({10, 10}, {}, kWindow), (Rect{420, 0, 1080, 1080}));
}

TEST(PlaceInWindow, FillCoversTheWindow) {
  EXPECT_EQ(PlaceInWindow({10, 10}, {.fill = true}, kWindow), (Rect{0, -420, 1920, 1920}));
}

TEST(PlaceInWindow, ZoomMultipliesTheFit) {
  EXPECT_EQ(PlaceInWindow({1920, 1080}, {.zoom = 4}, kWindow), (Rect{-2880, -1620, 7680, 4320}));
}

TEST(PlaceInWindow, QuarterTurnSwapsTheSides) {
  EXPECT_EQ(PlaceInWindow({1000, 500}, {.rotation = 90}, kWindow), (Rect{690, 0, 540, 1080}));
}

TEST(PlaceInWindow, ThinPictureKeepsOnePixel) {
  EXPECT_EQ(PlaceInWindow({1'000'000, 1}, {}, kWindow), (Rect{0, 539, 1920, 1}));
  EXPECT_EQ(PlaceInWindow({1, 1'000'000}, {.zoom = 16}, kWindow).width, 1);
}

TEST(ClampPan, StopsAtThePicturesEdges) {
  const View right = ClampPan({1920, 1080}, {.zoom = 2, .pan_x = 99999, .pan_y = -99999}, kWindow);

  EXPECT_EQ(right.pan_x, 960);
  EXPECT_EQ(right.pan_y, -540);
  EXPECT_EQ(PlaceInWindow({1920, 1080}, right, kWindow), (Rect{0, -1080, 3840, 2160}));
}

TEST(ClampPan, PictureInsideTheWindowStaysCentred) {
  const View view = ClampPan({1920, 500}, {.pan_x = 5, .pan_y = 5}, kWindow);

  EXPECT_EQ(view.pan_x, 0);
  EXPECT_EQ(view.pan_y, 0);
}

TEST(ClampPan, OddOverhangReachesBothEdges) {
  for (const int pan : {-99999, 99999}) {
    const View view = ClampPan({1001, 1000}, {.zoom = 2, .pan_x = pan, .pan_y = pan}, {1000, 999});
    const Rect placed = PlaceInWindow({1001, 1000}, view, {1000, 999});
    EXPECT_TRUE(placed.y == 0 || placed.y + placed.height == 999);
    EXPECT_LE(placed.x, 0);
    EXPECT_GE(placed.x + placed.width, 1000);
  }
}

TEST(Turn, FourQuartersAreNone) {
  for (int orientation = 1; orientation <= 8; ++orientation) {
    const Turn turn = Turn::FromOrientation(orientation);
    EXPECT_EQ(turn.Rotated(180).Rotated(180), turn);
    EXPECT_EQ(turn.Rotated(90).Rotated(270), turn);
    EXPECT_EQ(turn.Rotated(90).Rotated(90), turn.Rotated(180));
  }
}

TEST(Turn, OrientationSixIsAQuarterClockwise) {
  EXPECT_EQ(Turn().Rotated(90), Turn::FromOrientation(6));
  EXPECT_EQ(Turn().Rotated(180), Turn::FromOrientation(3));
  EXPECT_EQ(Turn().Rotated(270), Turn::FromOrientation(8));
}

}  // namespace
}  // namespace sim::lumaview
