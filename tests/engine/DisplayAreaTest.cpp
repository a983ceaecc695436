// SPDX-License-Identifier: Apache-2.0
#include "tests/engine/DisplayGivens.h"

namespace {

using kit::FailAt;
using kit::FailNext;
using olm::CPictureAdapter;

struct Layout {
  int x, y, width, height;
};

int SetDisplayArea(CPictureAdapter& adapter, const Layout& layout, int baseRes = 540, bool autoResume = true) {
  return kit::Run(
      [&] { return adapter.SetDisplayArea(layout.x, layout.y, layout.width, layout.height, baseRes, autoResume); });
}

void ExpectPath(const char* path) {
  kit::ExpectGolden("SetDisplayArea", path);
}

/// The adapter is made when the test has decided about the screen.
struct GivenScreenToBeMeasured : given::FreshAdapter {
  void SetUp() override { EngineTest::SetUp(); }

  CPictureAdapter& AdapterOnScreen(int width, int height) {
    kit::world().screenWidth = width;
    kit::world().screenHeight = height;
    adapter = &MakeAdapter();
    kit::Begin();
    return *adapter;
  }
  CPictureAdapter& AdapterWithoutScreen() {
    FailNext("XOpenDisplay");
    adapter = &MakeAdapter();
    kit::Begin();
    return *adapter;
  }
};

TEST_F(GivenScreenToBeMeasured, FirstSetDisplayAreaMakesTheWindow) {
  EXPECT_EQ(SetDisplayArea(AdapterOnScreen(1920, 1080), {0, 0, 960, 540}), 1);

  ExpectPath("first call");
  EXPECT_TRUE(adapter->m_bInitWindow);
  EXPECT_FALSE(adapter->m_bInitDisplay);
  EXPECT_EQ(adapter->m_pImage, nullptr);
  EXPECT_EQ(CPictureAdapter::winNum, 1);
}

TEST_F(GivenScreenToBeMeasured, SetDisplayAreaFailsWithTheWindow) {
  AdapterOnScreen(1920, 1080);
  FailNext("XOpenDisplay");

  EXPECT_EQ(SetDisplayArea(*adapter, {0, 0, 960, 540}), 0);

  ExpectPath("InitWindow fails");
  EXPECT_FALSE(adapter->m_bInitWindow);
}

TEST_F(GivenScreenToBeMeasured, NarrowScreenHas720Lines) {
  EXPECT_EQ(SetDisplayArea(AdapterOnScreen(1280, 720), {100, 50, 640, 360}), 1);

  ExpectPath("screen 1280 wide");
}

TEST_F(GivenScreenToBeMeasured, ScreenOfNoClassIsWarnedAbout) {
  EXPECT_EQ(SetDisplayArea(AdapterOnScreen(3840, 2160), {100, 50, 640, 360}), 1);

  ExpectPath("screen of no class");
}

TEST_F(GivenScreenToBeMeasured, ScreenWithoutAWidthIsMeasuredAgain) {
  EXPECT_EQ(SetDisplayArea(AdapterOnScreen(0, 0), {100, 50, 640, 360}), 1);

  ExpectPath("screen without a width");
}

TEST_F(GivenScreenToBeMeasured, ScreenWithoutAWidthGivesNoFullScreen) {
  EXPECT_EQ(SetDisplayArea(AdapterOnScreen(0, 0), {100, 50, 0, 360}), 1);

  ExpectPath("screen without a width, full screen");
}

TEST_F(GivenScreenToBeMeasured, SetDisplayAreaFailsWithoutAServer) {
  AdapterWithoutScreen();
  FailAt("XOpenDisplay", 1);
  FailAt("XOpenDisplay", 2);

  EXPECT_EQ(SetDisplayArea(*adapter, {100, 50, 640, 360}), 0);

  ExpectPath("no server");
  EXPECT_EQ(adapter->m_iScreenWidth, 0);
  EXPECT_EQ(adapter->m_iScreenHeight, 0);
}

TEST_F(GivenScreenToBeMeasured, ServerThatComesUpLateIsMeasured) {
  EXPECT_EQ(SetDisplayArea(AdapterWithoutScreen(), {100, 50, 640, 360}), 1);

  ExpectPath("server comes up late");
  EXPECT_EQ(adapter->m_iScreenWidth, 1920);
  EXPECT_EQ(adapter->m_iScreenHeight, 1080);
}

TEST_F(GivenScreenToBeMeasured, FullScreenOfAnUnknownScreenIsFullHd) {
  AdapterWithoutScreen();
  FailAt("XOpenDisplay", 1);
  FailAt("XOpenDisplay", 2);

  EXPECT_EQ(SetDisplayArea(*adapter, {100, 50, 0, 0}), 1);

  ExpectPath("no screen size, full screen");
}

TEST_F(GivenScreenToBeMeasured, FullScreenMeasuresOnceMore) {
  AdapterWithoutScreen();
  FailNext("XOpenDisplay");

  EXPECT_EQ(SetDisplayArea(*adapter, {100, 50, 0, 0}), 1);

  ExpectPath("screen size at the second try, full screen");
}

TEST_F(GivenScreenToBeMeasured, AllZeroIsTheWholeScreen) {
  EXPECT_EQ(SetDisplayArea(AdapterOnScreen(1920, 1080), {0, 0, 0, 0}, 720), 1);

  ExpectPath("all zero");
}

TEST_F(GivenScreenToBeMeasured, AreaScaledToNothingMakesNoWindow) {
  EXPECT_EQ(SetDisplayArea(AdapterOnScreen(1920, 1080), {1, 1, 1, 1}, 2160), 1);

  ExpectPath("scaled to nothing");
  EXPECT_TRUE(adapter->m_bInitWindow);
  EXPECT_EQ(adapter->m_cWin, olm::kNoWindow);
}

/// The window stands, full-screen, on 1920 x 1080.
struct GivenPlacedWindow : given::FreshAdapter {
  void SetUp() override {
    FreshAdapter::SetUp();
    ASSERT_EQ(adapter->SetDisplayArea(0, 0, 0, 0, 540, true), 1);
    kit::Begin();
  }
};

TEST_F(GivenPlacedWindow, LaterSetDisplayAreaMovesAndResizes) {
  EXPECT_EQ(SetDisplayArea(*adapter, {100, 50, 640, 360}, 720, false), 1);

  ExpectPath("later call");
}

TEST_F(GivenPlacedWindow, SetDisplayAreaAfterItWasLetGoMakesAnother) {
  adapter->DestroyDisplayWin();
  adapter->CloseDisplay();
  adapter->m_bInitWindow = false;
  kit::Begin();

  EXPECT_EQ(SetDisplayArea(*adapter, {0, 0, 960, 540}), 1);

  ExpectPath("after the window was let go");
}

TEST_F(GivenPlacedWindow, BaseResolutionIs1080WhenItIsZero) {
  EXPECT_EQ(SetDisplayArea(*adapter, {100, 50, 640, 360}, 0), 1);

  ExpectPath("base resolution 0");
}

TEST_F(GivenPlacedWindow, BaseResolutionIs1080WhenItIsNegative) {
  EXPECT_EQ(SetDisplayArea(*adapter, {100, 50, 640, 360}, -5), 1);

  ExpectPath("negative base resolution");
}

TEST_F(GivenPlacedWindow, AreaWithoutAWidthIsTheWholeScreen) {
  EXPECT_EQ(SetDisplayArea(*adapter, {100, 50, 0, 500}, 1080), 1);

  ExpectPath("width 0");
}

TEST_F(GivenPlacedWindow, AreaWithoutAHeightIsTheWholeScreen) {
  EXPECT_EQ(SetDisplayArea(*adapter, {100, 50, 500, -1}, 1080), 1);

  ExpectPath("negative height");
}

TEST_F(GivenPlacedWindow, AreaTooWideIsCutInBothDirections) {
  EXPECT_EQ(SetDisplayArea(*adapter, {100, 0, 2000, 500}, 1080), 1);

  ExpectPath("too wide");
}

TEST_F(GivenPlacedWindow, AreaTooHighIsCutInBothDirections) {
  EXPECT_EQ(SetDisplayArea(*adapter, {0, 100, 500, 1081}, 1080), 1);

  ExpectPath("too high");
}

TEST_F(GivenPlacedWindow, AreaAsLargeAsTheScreenIsNotCut) {
  EXPECT_EQ(SetDisplayArea(*adapter, {10, 20, 1920, 1080}, 1080), 1);

  ExpectPath("as large as the screen");
}

TEST_F(GivenPlacedWindow, AreaBeyondTheScreenInPlaceIsNotCut) {
  EXPECT_EQ(SetDisplayArea(*adapter, {1900, 1000, 500, 500}, 1080), 1);

  ExpectPath("beyond the screen in place only");
}

TEST_F(GivenPlacedWindow, NothingIsLeftOfAnAreaOutside) {
  EXPECT_EQ(SetDisplayArea(*adapter, {2000, 0, 2000, 500}, 1080), 1);

  ExpectPath("too wide and outside");
}

TEST_F(GivenPlacedWindow, ScaledValuesLoseTheirFraction) {
  EXPECT_EQ(SetDisplayArea(*adapter, {1, -1, 3, 5}, 720), 1);

  ExpectPath("truncated");
}

TEST_F(GivenPlacedWindow, AreaScaledToNothingMovesNothing) {
  EXPECT_EQ(SetDisplayArea(*adapter, {1, 1, 1, 1}, 2160), 1);

  ExpectPath("scaled to nothing later");
}

TEST_F(GivenPlacedWindow, ScaledValuesEndAtTheLargestNumbers) {
  EXPECT_EQ(SetDisplayArea(*adapter, {2147483647, -2147483647 - 1, 2147483647, 300}), 1);

  ExpectPath("beyond the largest number");
}

}  // namespace
