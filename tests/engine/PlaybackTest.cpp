// SPDX-License-Identifier: Apache-2.0
/// StartPlayback and Play.
#include "tests/engine/AdapterGiven.h"

namespace {

using olm::CPictureAdapter;

TEST_F(GivenAdapter, StartPlaybackBeforeInitPlayerFails) {
  EXPECT_EQ(StartPlayback(), 0);
  kit::ExpectGolden("StartPlayback", "no picture");
}

TEST_F(GivenPreparedAdapter, StartPlaybackInitialisesTheDisplayAndParses) {
  adapter->m_pPicture->flag = 0;
  EXPECT_EQ(StartPlayback(5), 1);
  kit::ExpectGolden("StartPlayback", "first time");
  EXPECT_TRUE(adapter->m_bInitDisplay);
  EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, 1);
  EXPECT_EQ(adapter->m_pPicture->user_data, adapter);
}

TEST_F(GivenPlayingAdapter, StartPlaybackAgainParsesAgain) {
  EXPECT_EQ(StartPlayback(4294967295U), 1);
  kit::ExpectGolden("StartPlayback", "second time");
}

TEST_F(GivenPreparedAdapter, StartPlaybackUsesTheDisplayOfAnotherAdapter) {
  CPictureAdapter::lumaviewInitFlag = 1;
  EXPECT_EQ(StartPlayback(0), 1);
  kit::ExpectGolden("StartPlayback", "another adapter has initialised the display");
  EXPECT_FALSE(adapter->m_bInitDisplay);

  EXPECT_EQ(adapter->Stop(), 1);
  EXPECT_EQ(kit::CallCount("lumaview_destroy_display"), 0U) << "not this adapter's";
  EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, 1);
}

TEST_F(GivenPlayingAdapter, StartPlaybackTrustsItsOwnFlagAlone) {
  CPictureAdapter::lumaviewInitFlag = 0;
  EXPECT_EQ(StartPlayback(0), 1);
  kit::ExpectGolden("StartPlayback", "its own flag is set, the process's is not");
  EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, 0);
}

TEST_F(GivenPreparedAdapter, StartPlaybackFailsWithTheDisplay) {
  kit::FailNext("lumaview_init_display", 7);
  EXPECT_EQ(StartPlayback(), 0);
  kit::ExpectGolden("StartPlayback", "the display cannot be initialised");
  EXPECT_FALSE(adapter->m_bInitDisplay);
  EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, 0);
  EXPECT_EQ(adapter->m_pPicture->user_data, nullptr);
}

TEST_F(GivenPreparedAdapter, StartPlaybackAppliesAWaiting3DSettingOnce) {
  ASSERT_EQ(adapter->SetPlayerProperty(2, "", 2), 1);
  kit::Begin();
  EXPECT_EQ(StartPlayback(), 1);
  kit::ExpectGolden("StartPlayback", "a 3D setting waits");
  EXPECT_FALSE(adapter->m_b3DSettingChanged);
  EXPECT_EQ(adapter->m_i3DSetting, 2);
  EXPECT_EQ(adapter->StartPlayback(0), 1);
  EXPECT_EQ(kit::CallCount("lumaview_set_3d_mode"), 1U);
}

TEST_F(GivenPreparedAdapter, StartPlaybackLooksAtNoOtherResult) {
  ASSERT_EQ(adapter->SetPlayerProperty(2, "", 2), 1);
  kit::Begin();
  kit::FailNext("lumaview_set_window", 3);
  kit::FailNext("lumaview_set_3d_mode", 4);
  kit::FailNext("lumaview_add_event_callback", 5);
  EXPECT_EQ(StartPlayback(), 1);
  kit::ExpectGolden("StartPlayback", "refusals that nobody looks at");
  EXPECT_FALSE(adapter->m_b3DSettingChanged);
}

TEST_F(GivenPreparedAdapter, StartPlaybackKeepsPictureAndDisplayWhenParsingCannotStart) {
  kit::FailNext("lumaview_parse", -6);
  EXPECT_EQ(StartPlayback(), 0);
  kit::ExpectGolden("StartPlayback", "parsing cannot be started");
  EXPECT_NE(adapter->m_pPicture, nullptr);
  EXPECT_TRUE(adapter->m_bInitDisplay);
}

/// A window made by SetDisplayArea's first call.
struct GivenWindow : GivenAdapter {
  void SetUp() override {
    GivenAdapter::SetUp();
    ASSERT_EQ(adapter->InitWindow(0, 0, 1920, 1080), 1);
    kit::Begin();
  }
};

TEST_F(GivenAdapter, PlayRefusesNull) {
  EXPECT_EQ(Play(nullptr), 0);
  kit::ExpectGolden("Play", "null path");
}

TEST_F(GivenWindow, PlayPassesAndStoresTheUrlAsGiven) {
  EXPECT_EQ(Play("file:///pictures/a.jpg", 3), 1);
  kit::ExpectGolden("Play", "a window and no picture");
  EXPECT_STREQ(adapter->m_cURL, "file:///pictures/a.jpg");
  EXPECT_TRUE(adapter->m_bInitDisplay);
  EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, 1);
  EXPECT_FALSE(adapter->m_bInitWindow || adapter->m_bVconfRegistered);
  EXPECT_EQ(adapter->m_thread_id, pthread_t{});
  EXPECT_EQ(adapter->m_pTransitionEffect, nullptr);
}

TEST_F(GivenPreparedAdapter, PlayKeepsThePreparedPictureAndTakesThePath) {
  const _lumaview_s* prepared = adapter->m_pPicture;
  adapter->m_pPicture->flag = 0;
  EXPECT_EQ(Play("/pictures/b.jpg"), 1);
  kit::ExpectGolden("Play", "the prepared picture is kept");
  EXPECT_EQ(adapter->m_pPicture, prepared);
  EXPECT_STREQ(adapter->m_cURL, "/pictures/b.jpg");
}

TEST_F(GivenPlayingAdapter, PlayAgainParsesAgain) {
  EXPECT_EQ(Play("/pictures/b.jpg", 4294967295U), 1);
  kit::ExpectGolden("Play", "second time");
}

TEST_F(GivenPreparedAdapter, PlayUsesTheDisplayOfAnotherAdapter) {
  CPictureAdapter::lumaviewInitFlag = 1;
  EXPECT_EQ(Play("/pictures/b.jpg"), 1);
  kit::ExpectGolden("Play", "another adapter has initialised the display");
  EXPECT_FALSE(adapter->m_bInitDisplay);
}

TEST_F(GivenAdapter, PlayMakesNoWindow) {
  EXPECT_EQ(Play("/pictures/a.jpg"), 1);
  kit::ExpectGolden("Play", "no window");
  EXPECT_EQ(adapter->m_cWin, olm::kNoWindow);
  EXPECT_EQ(adapter->m_pDisplay, nullptr);
}

TEST_F(GivenPreparedAdapter, PlayFailsWithTheDisplayAndKeepsThePath) {
  kit::FailNext("lumaview_init_display", 7);
  EXPECT_EQ(Play("/pictures/b.jpg"), 0);
  kit::ExpectGolden("Play", "the display cannot be initialised");
  EXPECT_STREQ(adapter->m_cURL, "/pictures/a.jpg");
  EXPECT_FALSE(adapter->m_bInitDisplay);
  EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, 0);
}

TEST_F(GivenWindow, PlayFailsWithThePictureAndKeepsTheDisplay) {
  kit::FailNext("lumaview_create_from_url", -4);
  EXPECT_EQ(Play("/pictures/a.jpg"), 0);
  kit::ExpectGolden("Play", "the picture cannot be made");
  EXPECT_STREQ(adapter->m_cURL, "");
  EXPECT_TRUE(adapter->m_bInitDisplay);
}

TEST_F(GivenPreparedAdapter, PlayAppliesNo3DSettingAndLooksAtNoOtherResult) {
  ASSERT_EQ(adapter->SetPlayerProperty(2, "", 2), 1);
  kit::Begin();
  kit::FailNext("lumaview_set_window", 3);
  kit::FailNext("lumaview_add_event_callback", 5);
  EXPECT_EQ(Play("/pictures/b.jpg"), 1);
  kit::ExpectGolden("Play", "refusals that nobody looks at");
  EXPECT_TRUE(adapter->m_b3DSettingChanged);
}

TEST_F(GivenPreparedAdapter, PlayKeepsPictureAndPathWhenParsingCannotStart) {
  kit::FailNext("lumaview_parse", -6);
  EXPECT_EQ(Play("/pictures/b.jpg"), 0);
  kit::ExpectGolden("Play", "parsing cannot be started");
  EXPECT_NE(adapter->m_pPicture, nullptr);
  EXPECT_STREQ(adapter->m_cURL, "/pictures/b.jpg");
}

}  // namespace
