// SPDX-License-Identifier: Apache-2.0
/// How the window and the connections go, and who of two adapters takes the window with him.
#include "tests/engine/DisplayGivens.h"

namespace {

using olm::CPictureAdapter;
using olm::kNoWindow;

constexpr Window kFirstWindow = 0x400001;

int DestroyDisplayWin(CPictureAdapter& adapter) {
  return kit::Run([&] { return adapter.DestroyDisplayWin(); });
}

int CloseDisplay(CPictureAdapter& adapter) {
  return kit::Run([&] { return adapter.CloseDisplay(); });
}

void ExpectDestroyPath(const char* path) {
  kit::ExpectGolden("DestroyDisplayWin", path);
}

void ExpectClosePath(const char* path) {
  kit::ExpectGolden("CloseDisplay", path);
}

void ExpectShared(Window window, int holders) {
  EXPECT_EQ(CPictureAdapter::window_id, window);
  EXPECT_EQ(CPictureAdapter::winNum, holders);
}

struct GivenAdapterWithoutWindow : given::FreshAdapter {};

TEST_F(GivenAdapterWithoutWindow, DestroyDisplayWinFailsWithoutAConnection) {
  EXPECT_EQ(DestroyDisplayWin(*adapter), 0);

  ExpectDestroyPath("no connection");
  ExpectShared(kNoWindow, 0);
}

TEST_F(GivenAdapterWithoutWindow, DestroyDisplayWinFailsWithoutAWindow) {
  kit::FailNext("malloc");
  InitFullScreen(*adapter);
  kit::Begin();

  EXPECT_EQ(DestroyDisplayWin(*adapter), 0);

  ExpectDestroyPath("a connection and no window");
  ExpectShared(kNoWindow, 0);
}

TEST_F(GivenAdapterWithoutWindow, CloseDisplayFailsWithoutAConnection) {
  EXPECT_EQ(CloseDisplay(*adapter), 0);

  ExpectClosePath("no connection");
}

struct GivenHolderOfTheWindow : given::AdapterWithWindow {};

TEST_F(GivenHolderOfTheWindow, DestroyDisplayWinOfTheLastHolderDestroys) {
  EXPECT_EQ(DestroyDisplayWin(*adapter), 1);

  ExpectDestroyPath("last holder");
  EXPECT_EQ(adapter->m_cWin, kNoWindow);
  ExpectShared(kNoWindow, 0);
}

TEST_F(GivenHolderOfTheWindow, WindowCountedTwiceStands) {
  InitFullScreen(*adapter);
  kit::Begin();

  EXPECT_EQ(DestroyDisplayWin(*adapter), 1);

  ExpectDestroyPath("counted twice");
  ExpectShared(kFirstWindow, 1);
}

TEST_F(GivenHolderOfTheWindow, CloseDisplayFreesTheGraphicsContext) {
  adapter->DestroyDisplayWin();
  kit::Begin();

  EXPECT_EQ(CloseDisplay(*adapter), 1);

  ExpectClosePath("window destroyed");
  EXPECT_EQ(adapter->m_pDisplay, nullptr);
}

TEST_F(GivenHolderOfTheWindow, CloseDisplayDestroysTheImage) {
  adapter->ResizeWindow(1, 2, 300, 200);
  adapter->DestroyDisplayWin();
  kit::Begin();

  EXPECT_EQ(CloseDisplay(*adapter), 1);

  ExpectClosePath("with an image");
}

TEST_F(GivenHolderOfTheWindow, SecondCloseDisplayFails) {
  adapter->DestroyDisplayWin();
  adapter->CloseDisplay();
  kit::Begin();

  EXPECT_EQ(CloseDisplay(*adapter), 0);

  ExpectClosePath("no connection");
}

struct GivenTwoHolders : given::AdapterWithWindow {
  void SetUp() override {
    AdapterWithWindow::SetUp();
    InitFullScreen(MakeOther());
    kit::Begin();
  }
};

TEST_F(GivenTwoHolders, DestroyDisplayWinOfTheFirstKeepsTheWindow) {
  EXPECT_EQ(DestroyDisplayWin(*adapter), 1);

  ExpectDestroyPath("another adapter holds the window");
  EXPECT_EQ(adapter->m_cWin, kFirstWindow);
  ExpectShared(kFirstWindow, 1);
}

TEST_F(GivenTwoHolders, DestroyDisplayWinOfTheSecondDestroysIt) {
  adapter->DestroyDisplayWin();
  kit::Begin();

  EXPECT_EQ(DestroyDisplayWin(*other), 1);

  ExpectDestroyPath("the other adapter let go before");
  ExpectShared(kNoWindow, 0);
}

TEST_F(GivenTwoHolders, WindowThatIsGoneIsNotDestroyedAgain) {
  other->DestroyDisplayWin();
  other->DestroyDisplayWin();
  kit::Begin();

  EXPECT_EQ(DestroyDisplayWin(*adapter), 1);

  ExpectDestroyPath("another adapter destroyed the window");
  ExpectShared(kNoWindow, -1);
  CPictureAdapter::winNum = 0;
}

TEST_F(GivenTwoHolders, ConnectionThatMadeTheWindowLeavesItToTheOther) {
  adapter->DestroyDisplayWin();
  kit::Begin();

  EXPECT_EQ(CloseDisplay(*adapter), 1);

  ExpectClosePath("another adapter holds the window that was made here");
}

TEST_F(GivenTwoHolders, ConnectionThatOnlyMappedTheWindowJustCloses) {
  other->DestroyDisplayWin();
  kit::Begin();

  EXPECT_EQ(CloseDisplay(*other), 1);

  ExpectClosePath("the maker holds the window");
}

TEST_F(GivenTwoHolders, NextConnectionOfTheMakerDidNotMakeTheWindow) {
  adapter->DestroyDisplayWin();
  adapter->CloseDisplay();
  InitFullScreen(*adapter);
  adapter->DestroyDisplayWin();
  kit::Begin();

  EXPECT_EQ(CloseDisplay(*adapter), 1);

  ExpectClosePath("made on an earlier connection");
}

struct GivenTwoAdapters : given::FreshAdapter {
  void SetUp() override {
    FreshAdapter::SetUp();
    MakeOther();
  }
  static void Place(CPictureAdapter& one, int width, int height) {
    ASSERT_EQ(one.SetDisplayArea(0, 0, width, height, 540, true), 1);
  }
  static void LetGo(CPictureAdapter& one) {
    ASSERT_EQ(one.DestroyDisplayWin(), 1);
    ASSERT_EQ(one.CloseDisplay(), 1);
    one.m_bInitWindow = false;
  }
};

TEST_F(GivenTwoAdapters, WindowLivesUntilTheSecondLetsGo) {
  Place(*adapter, 960, 540);
  Place(*other, 480, 270);
  ExpectShared(kFirstWindow, 2);
  LetGo(*adapter);
  ExpectShared(kFirstWindow, 1);
  Place(*other, 240, 135);
  LetGo(*other);

  kit::ExpectGolden("Display-TwoAdapters", "the maker lets go first");
  ExpectShared(kNoWindow, 0);
}

TEST_F(GivenTwoAdapters, WindowLivesUntilItsMakerLetsGo) {
  Place(*adapter, 960, 540);
  Place(*other, 480, 270);
  LetGo(*other);
  ExpectShared(kFirstWindow, 1);
  LetGo(*adapter);

  kit::ExpectGolden("Display-TwoAdapters", "the maker lets go last");
  ExpectShared(kNoWindow, 0);
}

TEST_F(GivenTwoAdapters, LibraryDisplayOfOneServesBoth) {
  Show(*adapter);
  Place(*other, 0, 0);
  kit::Begin();

  ASSERT_EQ(other->Play("/pictures/b.jpg", 0), 1);
  EXPECT_TRUE(adapter->m_bInitDisplay);
  EXPECT_FALSE(other->m_bInitDisplay);
  EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, 1);
  ASSERT_EQ(adapter->Stop(), 1);
  EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, 0);
  ASSERT_EQ(other->Stop(), 1);

  kit::ExpectGolden("Display-TwoAdapters", "the library display of one serves both");
  ExpectShared(kNoWindow, 0);
}

}  // namespace
