// SPDX-License-Identifier: Apache-2.0
/// States in which the tests of the window and of the application's life begin. Each leaves an empty journal.
#ifndef TESTS_ENGINE_DISPLAYGIVENS_H
#define TESTS_ENGINE_DISPLAYGIVENS_H

#include <string>

#include "tests/kit/Kit.h"

namespace given {

inline constexpr const char* kPicture = "/pictures/a.jpg";
inline constexpr const char* kWidget = "abcd1234.Viewer";

/// A fresh adapter without an engine.
struct FreshAdapter : kit::EngineTest {
  void SetUp() override {
    EngineTest::SetUp();
    adapter = &MakeAdapter();
    kit::Begin();
  }

  void TearDown() override {
    for (olm::CPictureAdapter* one : {adapter, other}) {
      if (one == nullptr) continue;
      // A destructor leaves a connection without a window alone.
      if (one->m_pDisplay != nullptr && one->m_cWin == olm::kNoWindow) one->CloseDisplay();
      DeleteAdapter(*one);
    }
    EXPECT_EQ(kit::PendingFailures(), 0U) << "a scripted failure did not happen";
    EngineTest::TearDown();
  }

  olm::CPictureAdapter& MakeOther() {
    other = &MakeAdapter();
    kit::Begin();
    return *other;
  }

  static void InitFullScreen(olm::CPictureAdapter& one) { ASSERT_EQ(one.InitWindow(0, 0, 1920, 1080), 1); }

  /// "InitPlayer", as the command does it.
  static void Prepare(olm::CPictureAdapter& one) {
    one.SetAppID(0, "app", kWidget);
    ASSERT_EQ(one.InitPlayer(kPicture), 1);
  }

  static void Show(olm::CPictureAdapter& one) {
    Prepare(one);
    ASSERT_EQ(one.StartPlayback(0), 1);
  }

  olm::CPictureAdapter* adapter = nullptr;
  olm::CPictureAdapter* other = nullptr;
};

/// The adapter has made the window.
struct AdapterWithWindow : FreshAdapter {
  void SetUp() override {
    FreshAdapter::SetUp();
    InitFullScreen(*adapter);
    kit::Begin();
  }
};

/// "InitPlayer" has run.
struct PreparedPicture : FreshAdapter {
  void SetUp() override {
    FreshAdapter::SetUp();
    Prepare(*adapter);
    kit::Begin();
  }
};

/// "StartPlayback" has run, too.
struct ShownPicture : FreshAdapter {
  void SetUp() override {
    FreshAdapter::SetUp();
    Show(*adapter);
    kit::Begin();
  }
};

}  // namespace given

#endif
