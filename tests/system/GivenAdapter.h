// SPDX-License-Identifier: Apache-2.0
/// An adapter whose window stands on a real screen, and another client that looks at it.
#ifndef TESTS_SYSTEM_GIVENADAPTER_H
#define TESTS_SYSTEM_GIVENADAPTER_H

#include <gtest/gtest.h>

#include <memory>

#include "adapter/CPictureAdapter.h"
#include "tests/system/ScreenObserver.h"

class GivenAdapter : public testing::Test {
 protected:
  GivenAdapter() : adapter(std::make_unique<olm::CPictureAdapter>(nullptr)) {}
  ~GivenAdapter() override {
    adapter.reset();
    EXPECT_EQ(olm::CPictureAdapter::window_id, olm::kNoWindow);
    EXPECT_EQ(olm::CPictureAdapter::winNum, 0);
  }

  /// Makes the window of the size of the screen and waits until it is there to be seen.
  void MakeWindow() {
    ASSERT_EQ(adapter->InitWindow(0, 0, screen.Screen().width_in_pixels, screen.Screen().height_in_pixels), 1);
    adapter->m_bInitWindow = true;
    ASSERT_TRUE(screen.Await([this] { return screen.IsOnScreen(Window()); }));
  }

  xcb_window_t Window() const { return static_cast<xcb_window_t>(adapter->m_cWin); }

  ScreenObserver screen;
  std::unique_ptr<olm::CPictureAdapter> adapter;
};

#endif
