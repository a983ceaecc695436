// SPDX-License-Identifier: Apache-2.0
#include "tests/engine/DisplayGivens.h"

// Last: its macros have names that GoogleTest uses.
#include <X11/Xlib.h>

namespace {

using kit::FailAt;
using kit::FailNext;
using olm::CPictureAdapter;
using olm::kNoWindow;

constexpr Window kFirstWindow = 0x400001;

struct GivenFreshAdapter : given::FreshAdapter {
  int InitWindow(int x = 0, int y = 0, int width = 1920, int height = 1080) {
    return kit::Run([&] { return adapter->InitWindow(x, y, width, height); });
  }
  static void ExpectPath(const char* path) { kit::ExpectGolden("InitWindow", path); }
};

TEST_F(GivenFreshAdapter, InitWindowMakesTheFirstWindow) {
  EXPECT_EQ(InitWindow(), 1);

  ExpectPath("first window of the process");
  EXPECT_EQ(adapter->m_cWin, kFirstWindow);
  EXPECT_EQ(CPictureAdapter::window_id, kFirstWindow);
  EXPECT_EQ(CPictureAdapter::winNum, 1);
  EXPECT_NE(adapter->m_pDisplay, nullptr);
  EXPECT_NE(adapter->m_GC, nullptr);
  EXPECT_EQ(adapter->m_pImage, nullptr);
  EXPECT_FALSE(adapter->m_bInitWindow);
  EXPECT_EQ(CPictureAdapter::pDisplay, nullptr);
  EXPECT_EQ(CPictureAdapter::displayNum, 0);
}

TEST_F(GivenFreshAdapter, InitWindowPassesPlaceAndSizeOn) {
  EXPECT_EQ(InitWindow(-10, 20, 300, 200), 1);

  ExpectPath("place and size of the caller");
}

TEST_F(GivenFreshAdapter, InitWindowTakesTheFirstScreensRootAndTheDefaultScreensColours) {
  kit::world().defaultScreen = 1;

  EXPECT_EQ(InitWindow(), 1);

  ExpectPath("second screen is the default one");
}

TEST_F(GivenFreshAdapter, InitWindowAgainMapsAndCountsAgain) {
  InitFullScreen(*adapter);
  kit::Begin();

  EXPECT_EQ(InitWindow(10, 20, 300, 200), 1);

  ExpectPath("again on the same adapter");
  EXPECT_EQ(CPictureAdapter::winNum, 2);
  CPictureAdapter::winNum = 1;
}

TEST_F(GivenFreshAdapter, InitWindowOfAnotherAdapterMapsTheSharedWindow) {
  InitFullScreen(*adapter);
  CPictureAdapter& second = MakeOther();

  EXPECT_EQ(kit::Run([&] { return second.InitWindow(5, 6, 7, 8); }), 1);

  ExpectPath("window of another adapter");
  EXPECT_EQ(second.m_cWin, adapter->m_cWin);
  EXPECT_NE(second.m_pDisplay, adapter->m_pDisplay);
  EXPECT_EQ(CPictureAdapter::winNum, 2);
}

TEST_F(GivenFreshAdapter, InitWindowAfterTheConnectionWasClosedOpensAnother) {
  InitFullScreen(*adapter);
  adapter->DestroyDisplayWin();
  adapter->CloseDisplay();
  kit::Begin();

  EXPECT_EQ(InitWindow(), 1);

  ExpectPath("again after the connection was closed");
}

TEST_F(GivenFreshAdapter, InitWindowGivesUpWithoutThreadsInXlib) {
  FailNext("XInitThreads");

  EXPECT_EQ(InitWindow(), 0);

  ExpectPath("XInitThreads fails");
  EXPECT_EQ(adapter->m_pDisplay, nullptr);
  EXPECT_EQ(adapter->m_cWin, kNoWindow);
}

TEST_F(GivenFreshAdapter, InitWindowGivesUpWithoutAConnection) {
  FailNext("XOpenDisplay");

  EXPECT_EQ(InitWindow(), 0);

  ExpectPath("XOpenDisplay fails");
  EXPECT_EQ(adapter->m_pDisplay, nullptr);
  EXPECT_EQ(CPictureAdapter::winNum, 0);
}

TEST_F(GivenFreshAdapter, TaskIsTheLaunchParent) {
  adapter->m_taskID = 0x1A2B3C;

  EXPECT_EQ(InitWindow(), 1);

  ExpectPath("the task is the launch parent");
}

TEST_F(GivenFreshAdapter, NegativeTaskIsALaunchParentToo) {
  adapter->m_taskID = -2;

  EXPECT_EQ(InitWindow(), 1);

  ExpectPath("negative task");
}

TEST_F(GivenFreshAdapter, WithoutEcoreTheLaunchParentIsZero) {
  FailNext("ecore_x_init");

  EXPECT_EQ(InitWindow(), 1);

  ExpectPath("no connection of ecore");
}

TEST_F(GivenFreshAdapter, WithoutEcoreTheTaskIsStillTheLaunchParent) {
  adapter->m_taskID = 0x1A2B3C;
  FailNext("ecore_x_init");

  EXPECT_EQ(InitWindow(), 1);

  ExpectPath("no connection of ecore, but a task");
}

TEST_F(GivenFreshAdapter, WithoutAFocusedWindowTheLaunchParentIsZero) {
  kit::world().focusedWindow = 0;

  EXPECT_EQ(InitWindow(), 1);

  ExpectPath("no focused window");
}

TEST_F(GivenFreshAdapter, MissingAtomsAreUsedAllTheSame) {
  const char* const names[] = {"_NET_WM_STATE", "_NET_WM_STATE_BELOW", "_E_WINDOW_AUX_HINT_SUPPORT",
                               "_E_WINDOW_AUX_HINT"};
  for (size_t i = 0; i < std::size(names); ++i) {
    FailAt("XInternAtom", i + 1);

    EXPECT_EQ(InitWindow(), 1);

    ExpectPath((std::string("no atom ") + names[i]).c_str());
    adapter->DestroyDisplayWin();
    adapter->CloseDisplay();
    kit::Begin();
  }
}

TEST_F(GivenFreshAdapter, WindowOfIdZeroIsKept) {
  ExpectViolations();  // the server has no such window to destroy
  FailNext("XCreateSimpleWindow");

  EXPECT_EQ(InitWindow(), 1);

  ExpectPath("window of id 0");
  EXPECT_EQ(adapter->m_cWin, 0U);
  EXPECT_EQ(CPictureAdapter::winNum, 1);
}

TEST_F(GivenFreshAdapter, WithoutAHintBufferTheWindowIsForgotten) {
  FailNext("malloc");

  EXPECT_EQ(InitWindow(), 1);

  ExpectPath("no hint buffer");
  EXPECT_EQ(adapter->m_cWin, kNoWindow);
  EXPECT_EQ(CPictureAdapter::window_id, kNoWindow);
  EXPECT_EQ(CPictureAdapter::winNum, 0);

  kit::Begin();
  EXPECT_EQ(InitWindow(), 1);

  ExpectPath("again after there was no hint buffer");
  EXPECT_EQ(CPictureAdapter::winNum, 1);
}

TEST_F(GivenFreshAdapter, WithoutAGraphicsContextNothingIsFilled) {
  FailAt("XCreateGC", 1);

  EXPECT_EQ(InitWindow(), 1);

  ExpectPath("no graphics context for the first fill");
}

TEST_F(GivenFreshAdapter, OtherEventsFillNothing) {
  kit::world().firstEvent = MapNotify;

  EXPECT_EQ(InitWindow(), 1);

  ExpectPath("first event is no exposure");
}

TEST_F(GivenFreshAdapter, WithoutItsGraphicsContextTheWindowStands) {
  FailAt("XCreateGC", 2);

  EXPECT_EQ(InitWindow(), 1);

  ExpectPath("no graphics context of the window");
  EXPECT_EQ(adapter->m_GC, nullptr);
  EXPECT_EQ(CPictureAdapter::winNum, 1);
}

TEST_F(GivenFreshAdapter, WithoutASizeThereIsNoWindow) {
  EXPECT_EQ(InitWindow(0, 0, 0, 1080), 1);

  ExpectPath("width 0");
  EXPECT_EQ(adapter->m_cWin, kNoWindow);

  adapter->CloseDisplay();
  kit::Begin();
  EXPECT_EQ(InitWindow(0, 0, 1920, -5), 1);

  ExpectPath("height -5");
  EXPECT_EQ(adapter->m_cWin, kNoWindow);
  EXPECT_EQ(CPictureAdapter::winNum, 0);
}

struct GivenConnection : given::FreshAdapter {
  void SetUp() override {
    FreshAdapter::SetUp();
    adapter->m_pDisplay = XOpenDisplay(nullptr);
    kit::Begin();
  }
  int CreateWindow(int width) {
    return kit::Run([&] { return adapter->CreateWindow(adapter->m_pDisplay, 10, 20, width, 200); });
  }
};

TEST_F(GivenConnection, CreateWindowStoresTheWindow) {
  EXPECT_EQ(CreateWindow(300), 1);

  kit::ExpectGolden("CreateWindow", "plain path");
  EXPECT_EQ(adapter->m_cWin, kFirstWindow);
  EXPECT_EQ(CPictureAdapter::window_id, kNoWindow);
  CPictureAdapter::winNum = 1;
  CPictureAdapter::window_id = kFirstWindow;
}

TEST_F(GivenConnection, CreateWindowFailsWithoutAHintBuffer) {
  FailNext("malloc");

  EXPECT_EQ(CreateWindow(300), 0);

  kit::ExpectGolden("CreateWindow", "no hint buffer");
  EXPECT_EQ(adapter->m_cWin, kNoWindow);
}

TEST_F(GivenConnection, CreateWindowWithoutASizeMakesNone) {
  EXPECT_EQ(CreateWindow(0), 1);

  kit::ExpectGolden("CreateWindow", "width 0");
  EXPECT_EQ(adapter->m_cWin, kNoWindow);
}

}  // namespace
