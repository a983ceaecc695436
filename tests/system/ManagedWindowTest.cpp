// SPDX-License-Identifier: Apache-2.0
/// The window in a whole session: a window manager places and stacks it, a compositor redirects it, and an application
/// covers the screen.
#include <algorithm>
#include <cstdio>

#include "tests/system/GivenAdapter.h"

namespace {

class GivenSessionWithApplication : public GivenAdapter {
 protected:
  void SetUp() override {
    application = screen.MakeNormalWindow({0, 0, screen.Screen().width_in_pixels, screen.Screen().height_in_pixels});
    ASSERT_TRUE(screen.Await([this] { return screen.IsOnScreen(application) && screen.Focused() == application; }));
  }
  /// Returns when the window manager has forgotten both windows. The next test's connections get the same numbers
  /// from the server, and so do its windows: a window manager that is behind would clear the state of the new ones.
  void TearDown() override {
    const xcb_window_t frames[] = {screen.TopLevelOf(application), screen.TopLevelOf(Window())};
    screen.Destroy(application);
    adapter.reset();
    for (const xcb_window_t frame : frames) {
      ASSERT_TRUE(screen.Await([this, frame] { return !screen.Exists(frame); }));
    }
  }

  xcb_window_t application = XCB_NONE;
};

TEST_F(GivenSessionWithApplication, WindowComesUpThoughItIsCovered) {
  MakeWindow();

  EXPECT_TRUE(screen.IsOnScreen(Window()));
}

TEST_F(GivenSessionWithApplication, WindowStandsBelowTheApplication) {
  MakeWindow();

  EXPECT_TRUE(screen.Await([this] { return screen.IsBelow(Window(), application); }));
}

TEST_F(GivenSessionWithApplication, WindowStaysBelowALaterWindow) {
  MakeWindow();

  const xcb_window_t later = screen.MakeNormalWindow({10, 10, 50, 50});

  ASSERT_TRUE(screen.Await([this, later] { return screen.IsOnScreen(later); }));
  EXPECT_TRUE(screen.Await([this, later] { return screen.IsBelow(Window(), later); }));
  EXPECT_TRUE(screen.IsBelow(Window(), application));
  screen.Destroy(later);
}

TEST_F(GivenSessionWithApplication, WindowManagerKeepsTheState) {
  MakeWindow();

  const xcb_atom_t below = screen.Atom("_NET_WM_STATE_BELOW");
  EXPECT_TRUE(screen.Await([this, below] {
    const auto state = screen.PropertyOf(Window(), "_NET_WM_STATE");
    if (!state) return false;
    const auto items = state->Items();
    return std::find(items.begin(), items.end(), below) != items.end();
  }));
}

TEST_F(GivenSessionWithApplication, FocusedApplicationIsTheLaunchParent) {
  MakeWindow();

  const auto hint = screen.PropertyOf(Window(), "_E_WINDOW_AUX_HINT");
  ASSERT_TRUE(hint);
  char parent[32];
  std::snprintf(parent, sizeof parent, "launch.parent:%x,", application);
  EXPECT_NE(hint->Text().find(parent), std::string::npos) << hint->Text();
}

TEST_F(GivenSessionWithApplication, DisplayAreaIsThePlaceOnTheScreen) {
  MakeWindow();

  ASSERT_EQ(adapter->SetDisplayArea(100, 50, 640, 360, 720, true), 1);

  EXPECT_TRUE(screen.Await([this] { return screen.PlaceOf(Window()) == Place{150, 75, 960, 540}; }));
}

TEST_F(GivenSessionWithApplication, EveryDisplayAreaArrives) {
  MakeWindow();

  for (int step = 1; step <= 20; ++step) {
    const Place place = {step * 7, step * 3, 200 + step, 100 + step};
    ASSERT_EQ(adapter->SetDisplayArea(place.x, place.y, place.width, place.height, 1080, true), 1);
    ASSERT_TRUE(screen.Await([this, place] { return screen.PlaceOf(Window()) == place; })) << step;
  }
}

TEST_F(GivenSessionWithApplication, FullScreenIsTheWholeScreen) {
  MakeWindow();
  ASSERT_EQ(adapter->SetDisplayArea(100, 50, 640, 360, 720, true), 1);

  ASSERT_EQ(adapter->SetDisplayArea(0, 0, 0, 0, 540, true), 1);

  EXPECT_TRUE(screen.Await([this] { return screen.PlaceOf(Window()) == Place{0, 0, 1920, 1080}; }));
}

}  // namespace
