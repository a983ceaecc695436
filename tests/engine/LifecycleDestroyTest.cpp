// SPDX-License-Identifier: Apache-2.0
#include "tests/engine/DisplayGivens.h"

namespace {

using kit::FailNext;
using olm::CPictureAdapter;

int Destroy(CPictureAdapter& adapter) {
  return kit::Run([&] { return adapter.AppDestroy(); });
}

void ExpectPath(const char* path) {
  kit::ExpectGolden("AppDestroy", path);
}

void ExpectReleased(const CPictureAdapter& adapter) {
  EXPECT_EQ(adapter.m_pPicture, nullptr);
  EXPECT_EQ(adapter.m_pTransitionEffect, nullptr);
  EXPECT_EQ(adapter.m_pDisplay, nullptr);
  EXPECT_FALSE(adapter.m_bInitWindow);
  EXPECT_FALSE(adapter.m_bVconfRegistered);
  EXPECT_EQ(adapter.m_thread_id, pthread_t{});
  EXPECT_EQ(adapter.m_pMainLoop, nullptr);
  EXPECT_TRUE(kit::IsZero(adapter.m_cURL, sizeof adapter.m_cURL));
}

struct GivenIdleAdapterToDestroy : given::FreshAdapter {};

TEST_F(GivenIdleAdapterToDestroy, AppDestroyFindsNothing) {
  EXPECT_EQ(Destroy(*adapter), 1);

  ExpectPath("nothing shown");
  ExpectReleased(*adapter);
}

struct GivenPreparedPictureToDestroy : given::PreparedPicture {};

TEST_F(GivenPreparedPictureToDestroy, AppDestroyLeavesTheLibrarysDisplayOut) {
  EXPECT_EQ(Destroy(*adapter), 1);

  ExpectPath("prepared, not started");
  ExpectReleased(*adapter);
}

struct GivenShownPictureToDestroy : given::ShownPicture {
  void ExpectReleaseAllTheSame(const char* call, int code, const char* path) {
    FailNext(call, code);
    EXPECT_EQ(Destroy(*adapter), 1);
    ExpectPath(path);
    ExpectReleased(*adapter);
  }
};

TEST_F(GivenShownPictureToDestroy, AppDestroyReleasesEverything) {
  EXPECT_EQ(Destroy(*adapter), 1);

  ExpectPath("picture shown");
  ExpectReleased(*adapter);
  EXPECT_FALSE(adapter->m_bInitDisplay);
  EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, 0);
  EXPECT_EQ(CPictureAdapter::winNum, 0);
}

TEST_F(GivenShownPictureToDestroy, AppDestroyReleasesTheImageOfAResize) {
  ASSERT_EQ(adapter->SetDisplayArea(0, 0, 480, 270, 540, true), 1);
  kit::Begin();

  EXPECT_EQ(Destroy(*adapter), 1);

  ExpectPath("after resizing");
}

TEST_F(GivenShownPictureToDestroy, SecondAppDestroyFindsNothing) {
  adapter->AppDestroy();
  kit::Begin();

  EXPECT_EQ(Destroy(*adapter), 1);

  ExpectPath("again");
}

TEST_F(GivenShownPictureToDestroy, AppDestroyWhilePausedEndsTheRest) {
  adapter->AppPause();
  kit::Begin();

  EXPECT_EQ(Destroy(*adapter), 1);

  ExpectPath("while paused");
  ExpectReleased(*adapter);
}

TEST_F(GivenShownPictureToDestroy, AppDestroyLeavesTheWindowToAnotherAdapter) {
  InitFullScreen(MakeOther());
  kit::Begin();

  EXPECT_EQ(Destroy(*adapter), 1);

  ExpectPath("another adapter holds the window");
  EXPECT_EQ(CPictureAdapter::winNum, 1);
}

TEST_F(GivenShownPictureToDestroy, AppDestroyAfterAnEffectFindsNoPicture) {
  ASSERT_EQ(adapter->EffectShow(static_cast<effect_type_e>(3)), 1);
  kit::Begin();

  EXPECT_EQ(Destroy(*adapter), 1);

  ExpectPath("after an effect");
}

TEST_F(GivenShownPictureToDestroy, AppDestroyForgetsAPictureThatTheLibraryKeeps) {
  ExpectReleaseAllTheSame("lumaview_destroy", 3, "the library keeps the picture");
}

TEST_F(GivenShownPictureToDestroy, AppDestroyForgetsAnEffectThatTheLibraryKeeps) {
  ExpectReleaseAllTheSame("lumaview_destroy_transition_effect", 4, "the library keeps the effect");
}

TEST_F(GivenShownPictureToDestroy, AppDestroyGoesOnThoughTheLibraryKeepsItsDisplay) {
  ExpectReleaseAllTheSame("lumaview_destroy_display", 5, "the library keeps its display");

  EXPECT_TRUE(adapter->m_bInitDisplay);
  EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, 1);
}

TEST_F(GivenShownPictureToDestroy, AppDestroyForgetsASubscriptionThatTheStoreKeeps) {
  ExpectReleaseAllTheSame("vconf_ignore_key_changed", -3, "the subscription is not let go");
}

TEST_F(GivenShownPictureToDestroy, AppDestroyForgetsAWorkerThatCannotBeDetached) {
  ExpectReleaseAllTheSame("pthread_detach", 22, "the worker cannot be detached");
}

}  // namespace
