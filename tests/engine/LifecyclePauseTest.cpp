// SPDX-License-Identifier: Apache-2.0
#include "tests/engine/DisplayGivens.h"

namespace {

using kit::FailNext;
using olm::CPictureAdapter;
using olm::kNoWindow;

int Pause(CPictureAdapter& adapter) {
  return kit::Run([&] { return adapter.AppPause(); });
}

void ExpectPath(const char* path) {
  kit::ExpectGolden("AppPause", path);
}

void ExpectReleased(const CPictureAdapter& adapter) {
  EXPECT_EQ(adapter.m_pPicture, nullptr);
  EXPECT_EQ(adapter.m_pTransitionEffect, nullptr);
  EXPECT_EQ(adapter.m_pDisplay, nullptr);
  EXPECT_FALSE(adapter.m_bInitWindow);
}

struct GivenIdleAdapterToPause : given::FreshAdapter {};

TEST_F(GivenIdleAdapterToPause, AppPauseFindsNothing) {
  EXPECT_EQ(Pause(*adapter), 1);

  ExpectPath("nothing shown");
}

TEST_F(GivenIdleAdapterToPause, AppPauseLetsAWindowWithoutAPictureGo) {
  ASSERT_EQ(adapter->SetDisplayArea(0, 0, 0, 0, 540, true), 1);
  kit::Begin();

  EXPECT_EQ(Pause(*adapter), 1);

  ExpectPath("window and no picture");
  ExpectReleased(*adapter);
}

struct GivenPreparedPictureToPause : given::PreparedPicture {};

TEST_F(GivenPreparedPictureToPause, AppPauseLeavesTheLibrarysDisplayOut) {
  EXPECT_EQ(Pause(*adapter), 1);

  ExpectPath("prepared, not started");
  ExpectReleased(*adapter);
}

struct GivenShownPictureToPause : given::ShownPicture {};

TEST_F(GivenShownPictureToPause, AppPauseReleasesTheScreenAndKeepsTheRest) {
  EXPECT_EQ(Pause(*adapter), 1);

  ExpectPath("picture shown");
  ExpectReleased(*adapter);
  EXPECT_EQ(adapter->m_cWin, kNoWindow);
  EXPECT_FALSE(adapter->m_bInitDisplay);
  EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, 0);
  EXPECT_STREQ(adapter->m_cURL, given::kPicture);
  EXPECT_NE(adapter->m_thread_id, pthread_t{});
  EXPECT_NE(adapter->m_pMainLoop, nullptr);
  EXPECT_TRUE(adapter->m_bVconfRegistered);
}

TEST_F(GivenShownPictureToPause, AppPauseReleasesTheImageOfAResize) {
  ASSERT_EQ(adapter->SetDisplayArea(0, 0, 480, 270, 540, true), 1);
  kit::Begin();

  EXPECT_EQ(Pause(*adapter), 1);

  ExpectPath("picture shown, window resized");
}

TEST_F(GivenShownPictureToPause, SecondAppPauseFindsNothing) {
  adapter->AppPause();
  kit::Begin();

  EXPECT_EQ(Pause(*adapter), 1);

  ExpectPath("again");
}

TEST_F(GivenShownPictureToPause, AppPauseLeavesTheWindowToAnotherAdapter) {
  InitFullScreen(MakeOther());
  kit::Begin();

  EXPECT_EQ(Pause(*adapter), 1);

  ExpectPath("another adapter holds the window");
  EXPECT_EQ(CPictureAdapter::window_id, other->m_cWin);
  EXPECT_EQ(CPictureAdapter::winNum, 1);
}

TEST_F(GivenShownPictureToPause, AppPauseForgetsAPictureThatTheLibraryKeeps) {
  FailNext("lumaview_destroy", 3);

  EXPECT_EQ(Pause(*adapter), 1);

  ExpectPath("the library keeps the picture");
  ExpectReleased(*adapter);
}

TEST_F(GivenShownPictureToPause, AppPauseForgetsAnEffectThatTheLibraryKeeps) {
  FailNext("lumaview_destroy_transition_effect", 4);

  EXPECT_EQ(Pause(*adapter), 1);

  ExpectPath("the library keeps the effect");
  ExpectReleased(*adapter);
}

TEST_F(GivenShownPictureToPause, AppPauseLetsTheWindowGoThoughTheLibraryKeepsItsDisplay) {
  FailNext("lumaview_destroy_display", 5);

  EXPECT_EQ(Pause(*adapter), 1);

  ExpectPath("the library keeps its display");
  ExpectReleased(*adapter);
  EXPECT_TRUE(adapter->m_bInitDisplay);
  EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, 1);
}

TEST_F(GivenShownPictureToPause, AppPauseAfterAnEffectFindsNoPicture) {
  ASSERT_EQ(adapter->EffectShow(static_cast<effect_type_e>(3)), 1);
  kit::Begin();

  EXPECT_EQ(Pause(*adapter), 1);

  ExpectPath("after an effect");
}

}  // namespace
