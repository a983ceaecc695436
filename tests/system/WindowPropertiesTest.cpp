// SPDX-License-Identifier: Apache-2.0
/// The window as another client of a server without a window manager sees it: nobody has changed what the engine made.
#include <memory>

#include "tests/system/GivenAdapter.h"

// Last: its macros have names that GoogleTest uses.
#include <X11/Xlib.h>

namespace {

using olm::CPictureAdapter;

class GivenBareScreen : public GivenAdapter {};

TEST_F(GivenBareScreen, WindowIsAPlainChildOfTheFirstScreensRoot) {
  MakeWindow();

  const auto attributes = screen.Attributes(Window());
  const auto geometry = screen.Geometry(Window());
  ASSERT_TRUE(attributes && geometry);
  EXPECT_EQ(screen.ParentOf(Window()), screen.Screen().root);
  EXPECT_EQ(attributes->_class, XCB_WINDOW_CLASS_INPUT_OUTPUT);
  EXPECT_EQ(attributes->visual, screen.Screen().root_visual);
  EXPECT_EQ(geometry->depth, screen.Screen().root_depth);
  EXPECT_EQ(geometry->border_width, 0);
}

TEST_F(GivenBareScreen, WindowStandsWhereItWasAskedFor) {
  ASSERT_EQ(adapter->InitWindow(100, 50, 640, 360), 1);

  EXPECT_EQ(screen.PlaceOf(Window()), (Place{100, 50, 640, 360}));
}

TEST_F(GivenBareScreen, WindowIsLeftToTheWindowManager) {
  MakeWindow();

  EXPECT_EQ(screen.Attributes(Window())->override_redirect, 0);
}

TEST_F(GivenBareScreen, OnlyExposuresAreAskedFor) {
  MakeWindow();

  EXPECT_EQ(screen.Attributes(Window())->all_event_masks, static_cast<uint32_t>(XCB_EVENT_MASK_EXPOSURE));
}

TEST_F(GivenBareScreen, BackgroundIsBlack) {
  MakeWindow();

  EXPECT_EQ(screen.BackgroundPixel(Window()), screen.Screen().black_pixel);
}

TEST_F(GivenBareScreen, StateIsBelowAndNothingElse) {
  MakeWindow();

  const auto state = screen.PropertyOf(Window(), "_NET_WM_STATE");
  ASSERT_TRUE(state);
  EXPECT_EQ(state->type, static_cast<xcb_atom_t>(XCB_ATOM_ATOM));
  EXPECT_EQ(state->format, 32);
  EXPECT_EQ(state->Items(), std::vector<uint32_t>{screen.Atom("_NET_WM_STATE_BELOW")});
}

TEST_F(GivenBareScreen, HintsAreAnnounced) {
  MakeWindow();

  const auto support = screen.PropertyOf(Window(), "_E_WINDOW_AUX_HINT_SUPPORT");
  ASSERT_TRUE(support);
  EXPECT_EQ(support->type, static_cast<xcb_atom_t>(XCB_ATOM_CARDINAL));
  EXPECT_EQ(support->format, 32);
  EXPECT_EQ(support->Items(), std::vector<uint32_t>{1});
}

TEST_F(GivenBareScreen, HintTextEndsWithAZero) {
  adapter->m_taskID = 0x1A2B3C;

  MakeWindow();

  const auto hint = screen.PropertyOf(Window(), "_E_WINDOW_AUX_HINT");
  ASSERT_TRUE(hint);
  const std::string text = "0:wm.policy.win.zone.desk.layout.launch.parent:1a2b3c,1:wm.policy.win.user.geometry:1";
  EXPECT_EQ(hint->type, static_cast<xcb_atom_t>(XCB_ATOM_STRING));
  EXPECT_EQ(hint->format, 8);
  EXPECT_EQ(hint->Text(), text + '\0');
}

TEST_F(GivenBareScreen, WindowIsMadeUnderAllOthers) {
  const xcb_window_t other = screen.MakeNormalWindow({0, 0, 100, 100});

  MakeWindow();

  EXPECT_TRUE(screen.IsBelow(Window(), other));
  screen.Destroy(other);
}

TEST_F(GivenBareScreen, DisplayAreaIsThePlaceOnTheScreen) {
  MakeWindow();

  ASSERT_EQ(adapter->SetDisplayArea(100, 50, 640, 360, 720, true), 1);

  EXPECT_EQ(screen.PlaceOf(Window()), (Place{150, 75, 960, 540}));
}

TEST_F(GivenBareScreen, ScreenIsMeasured) {
  EXPECT_EQ(adapter->m_iScreenWidth, screen.Screen().width_in_pixels);
  EXPECT_EQ(adapter->m_iScreenHeight, screen.Screen().height_in_pixels);
}

TEST_F(GivenBareScreen, WindowGoesWithItsLastHolder) {
  MakeWindow();
  const xcb_window_t window = Window();

  ASSERT_EQ(adapter->DestroyDisplayWin(), 1);

  EXPECT_FALSE(screen.Exists(window));
}

class GivenTwoAdapters : public GivenBareScreen {
 protected:
  GivenTwoAdapters() : other(std::make_unique<CPictureAdapter>(nullptr)) {}
  ~GivenTwoAdapters() override { other.reset(); }

  /// Lets go and closes, and waits until the server has seen the connection's end: only then can a window that hung on
  /// it be gone.
  void LetGo(CPictureAdapter& holder) {
    XSetSelectionOwner(holder.m_pDisplay, screen.Atom("CONNECTION_LIVES"), holder.m_cWin, CurrentTime);
    XSync(holder.m_pDisplay, False);
    ASSERT_NE(screen.OwnerOf("CONNECTION_LIVES"), static_cast<xcb_window_t>(XCB_NONE));
    ASSERT_EQ(holder.DestroyDisplayWin(), 1);
    ASSERT_EQ(holder.CloseDisplay(), 1);
    ASSERT_TRUE(screen.Await([this] { return screen.OwnerOf("CONNECTION_LIVES") == XCB_NONE; }));
  }

  std::unique_ptr<CPictureAdapter> other;
};

TEST_F(GivenTwoAdapters, WindowOutlivesTheConnectionThatMadeIt) {
  MakeWindow();
  ASSERT_EQ(other->InitWindow(0, 0, 10, 10), 1);
  const xcb_window_t window = Window();
  ASSERT_EQ(other->m_cWin, window);

  LetGo(*adapter);

  EXPECT_TRUE(screen.IsOnScreen(window));
  ASSERT_EQ(other->ResizeWindow(10, 20, 300, 200), 1);
  EXPECT_EQ(screen.PlaceOf(window), (Place{10, 20, 300, 200}));
  ASSERT_EQ(other->DestroyDisplayWin(), 1);
  EXPECT_FALSE(screen.Exists(window));
}

TEST_F(GivenTwoAdapters, WindowOutlivesTheOtherConnection) {
  MakeWindow();
  ASSERT_EQ(other->InitWindow(0, 0, 10, 10), 1);
  const xcb_window_t window = Window();

  LetGo(*other);

  EXPECT_TRUE(screen.IsOnScreen(window));
  ASSERT_EQ(adapter->DestroyDisplayWin(), 1);
  EXPECT_FALSE(screen.Exists(window));
}

}  // namespace
