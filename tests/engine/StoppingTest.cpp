// SPDX-License-Identifier: Apache-2.0
/// Stop and ChangePlayingURL.
#include "tests/engine/AdapterGiven.h"

namespace {

using olm::CPictureAdapter;

struct GivenStoppable : GivenPlayingAdapter {
  void ExpectAllReleased() const {
    EXPECT_EQ(adapter->m_pPicture, nullptr);
    EXPECT_EQ(adapter->m_pTransitionEffect, nullptr);
    EXPECT_EQ(adapter->m_thread_id, pthread_t{});
    EXPECT_EQ(adapter->m_pMainLoop, nullptr);
    EXPECT_TRUE(kit::IsZero(adapter->m_cURL, sizeof adapter->m_cURL));
    EXPECT_FALSE(adapter->m_bVconfRegistered || adapter->m_bInitWindow);
    ExpectNoWindow();
  }
  void ExpectNoWindow() const {
    EXPECT_EQ(adapter->m_pDisplay, nullptr);
    EXPECT_EQ(adapter->m_cWin, olm::kNoWindow);
    EXPECT_EQ(CPictureAdapter::window_id, olm::kNoWindow);
    EXPECT_EQ(CPictureAdapter::winNum, 0);
  }
  /// As after a picture that could not be made: everything else is there.
  void LosePicture() {
    kit::FailNext("lumaview_create_from_url", -4);
    ASSERT_EQ(adapter->ChangePlayingURL("/pictures/none.jpg"), 0);
    ASSERT_EQ(adapter->m_pPicture, nullptr);
    kit::Begin();
  }
};

TEST_F(GivenStoppable, StopReleasesEverythingInOrder) {
  EXPECT_EQ(Stop(), 1);
  kit::ExpectGolden("Stop", "playing");
  ExpectAllReleased();
  EXPECT_FALSE(adapter->m_bInitDisplay);
  EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, 0);
  EXPECT_EQ(adapter->m_strVconfKey, "db/KestWebApp/abcd1234") << "was followed last";
}

TEST_F(GivenStoppable, StopLetsTheWorkerEndByItself) {
  ASSERT_EQ(Stop(), 1);
  EXPECT_TRUE(kit::AwaitWorkers());
  EXPECT_EQ(kit::CallCount("pthread_join"), 0U);
}

TEST_F(GivenPreparedAdapter, StopLeavesTheLibraryDisplayOut) {
  EXPECT_EQ(Stop(), 1);
  kit::ExpectGolden("Stop", "prepared, not played");
}

TEST_F(GivenStoppable, StopWithoutAPictureLeavesWindowAndDisplayUp) {
  LosePicture();
  EXPECT_EQ(Stop(), 1);
  kit::ExpectGolden("Stop", "no picture, but all the rest");
  EXPECT_TRUE(adapter->m_bInitDisplay);
  EXPECT_TRUE(adapter->m_bInitWindow);
  EXPECT_EQ(adapter->m_cWin, 0x400001U);
  EXPECT_NE(adapter->m_pDisplay, nullptr);
  EXPECT_EQ(adapter->m_thread_id, pthread_t{});
  EXPECT_TRUE(kit::IsZero(adapter->m_cURL, sizeof adapter->m_cURL));
}

TEST_F(GivenStoppable, ASecondStopFindsNothingAndSucceeds) {
  LosePicture();
  ASSERT_EQ(adapter->Stop(), 1);
  kit::Begin();
  EXPECT_EQ(Stop(), 1);
  kit::ExpectGolden("Stop", "nothing at all");
}

TEST_F(GivenAdapter, StopBeforeAnythingSucceeds) {
  EXPECT_EQ(Stop(), 1);
  kit::ExpectGolden("Stop", "nothing at all");
}

TEST_F(GivenAdapter, StopOfAPictureWithoutWindowKeepsTheDisplaysFlags) {
  ASSERT_EQ(adapter->Play("/pictures/a.jpg", 0), 1);
  kit::Begin();
  EXPECT_EQ(Stop(), 1);
  kit::ExpectGolden("Stop", "a picture but no window");
  EXPECT_TRUE(adapter->m_bInitDisplay);
  EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, 1);
}

TEST_F(GivenStoppable, StopFailsWithThePictureAndReleasesNothingAfterIt) {
  kit::FailNext("lumaview_destroy", 6);
  EXPECT_EQ(Stop(), 0);
  kit::ExpectGolden("Stop", "the picture cannot be destroyed");
  EXPECT_NE(adapter->m_pPicture, nullptr);
  EXPECT_TRUE(adapter->m_bInitDisplay);
  EXPECT_TRUE(adapter->m_bInitWindow);
  EXPECT_EQ(adapter->m_cWin, 0x400001U);
  EXPECT_EQ(adapter->m_pTransitionEffect, nullptr);
}

TEST_F(GivenStoppable, StopSucceedsWhenTheDisplayCannotBeShutDown) {
  kit::FailNext("lumaview_destroy_display", 5);
  EXPECT_EQ(Stop(), 1);
  kit::ExpectGolden("Stop", "the display cannot be shut down");
  ExpectAllReleased();
  EXPECT_TRUE(adapter->m_bInitDisplay);
  EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, 1);
}

TEST_F(GivenPreparedAdapter, StopLooksAtNoOtherResult) {
  kit::FailNext("lumaview_destroy_transition_effect", 4);
  kit::FailNext("vconf_ignore_key_changed", 2);
  EXPECT_EQ(Stop(), 1);
  kit::ExpectGolden("Stop", "refusals that nobody looks at");
  EXPECT_EQ(adapter->m_pTransitionEffect, nullptr);
  EXPECT_FALSE(adapter->m_bVconfRegistered);
}

TEST_F(GivenPlayingAdapter, ChangePlayingURLRefusesNullThoughAPictureIsLoaded) {
  EXPECT_EQ(ChangePlayingURL(nullptr), 0);
  kit::ExpectGolden("ChangePlayingURL", "null path");
  EXPECT_NE(adapter->m_pPicture, nullptr);
  EXPECT_STREQ(adapter->m_cURL, "/pictures/a.jpg");
}

TEST_F(GivenPlayingAdapter, ChangePlayingURLReplacesThePictureAlone) {
  const auto* effect = adapter->m_pTransitionEffect;
  const pthread_t worker = adapter->m_thread_id;
  EXPECT_EQ(ChangePlayingURL("file:///pictures/b.jpg"), 1);
  kit::ExpectGolden("ChangePlayingURL", "a picture is loaded");
  EXPECT_STREQ(adapter->m_cURL, "/pictures/b.jpg");
  EXPECT_EQ(adapter->m_pTransitionEffect, effect);
  EXPECT_EQ(adapter->m_thread_id, worker);
  EXPECT_TRUE(adapter->m_bInitDisplay);
  EXPECT_EQ(adapter->m_pPicture->flag, 1);
}

TEST_F(GivenAdapter, ChangePlayingURLWithoutAPictureIsInitPlayer) {
  EXPECT_EQ(ChangePlayingURL("/pictures/a.jpg"), 1);
  kit::ExpectGolden("ChangePlayingURL", "nothing at all before");
  EXPECT_STREQ(adapter->m_cURL, "/pictures/a.jpg");
}

TEST_F(GivenPlayingAdapter, ChangePlayingURLFailsWithTheOldPictureAndKeepsIt) {
  kit::FailNext("lumaview_destroy", 6);
  EXPECT_EQ(ChangePlayingURL("file:///pictures/b.jpg"), 0);
  kit::ExpectGolden("ChangePlayingURL", "the old picture cannot be destroyed");
  EXPECT_NE(adapter->m_pPicture, nullptr);
  EXPECT_STREQ(adapter->m_cURL, "/pictures/a.jpg");
}

TEST_F(GivenPlayingAdapter, ChangePlayingURLFailsWithTheNewPictureAndHasNone) {
  kit::FailNext("lumaview_create_from_url", -4);
  EXPECT_EQ(ChangePlayingURL("/pictures/none.jpg"), 0);
  kit::ExpectGolden("ChangePlayingURL", "the new picture cannot be made");
  EXPECT_EQ(adapter->m_pPicture, nullptr);
  EXPECT_STREQ(adapter->m_cURL, "/pictures/a.jpg");
}

}  // namespace
