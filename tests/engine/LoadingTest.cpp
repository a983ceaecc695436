// SPDX-License-Identifier: Apache-2.0
/// InitPlayer, and what it keeps on each failure.
#include "tests/engine/AdapterGiven.h"

namespace {

constexpr char kPath[] = "/pictures/a.jpg";

struct GivenNoPicture : GivenAdapter {
  void ExpectNoPicture() const {
    EXPECT_EQ(adapter->m_pPicture, nullptr);
    EXPECT_STREQ(adapter->m_cURL, "");
  }
  void ExpectWindow() const {
    EXPECT_TRUE(adapter->m_bInitWindow);
    EXPECT_EQ(adapter->m_cWin, 0x400001U);
    EXPECT_EQ(olm::CPictureAdapter::window_id, 0x400001U);
    EXPECT_EQ(olm::CPictureAdapter::winNum, 1);
  }
};

TEST_F(GivenNoPicture, InitPlayerPreparesWindowPictureKeyWorkerAndEffect) {
  EXPECT_EQ(InitPlayer(kPath), 1);
  kit::ExpectGolden("InitPlayer", "plain path, first time");
  ExpectWindow();
  EXPECT_NE(adapter->m_pPicture, nullptr);
  EXPECT_NE(adapter->m_pTransitionEffect, nullptr);
  EXPECT_NE(adapter->m_thread_id, pthread_t{});
  EXPECT_NE(adapter->m_pMainLoop, nullptr);
  EXPECT_TRUE(adapter->m_bVconfRegistered);
  EXPECT_EQ(adapter->m_strVconfKey, "db/KestWebApp/abcd1234");
  EXPECT_STREQ(adapter->m_cURL, kPath);
  EXPECT_EQ(adapter->m_pPicture->flag, 1);
  EXPECT_EQ(adapter->m_pPicture->user_data, nullptr) << "written by StartPlayback only";
  EXPECT_FALSE(adapter->m_bInitDisplay);
  EXPECT_EQ(olm::CPictureAdapter::lumaviewInitFlag, 0);
  EXPECT_EQ(kit::CallCount("lumaview_parse"), 0U);
}

TEST_F(GivenNoPicture, InitPlayerReturnsWhileTheWorkersLoopRuns) {
  ASSERT_EQ(InitPlayer(kPath), 1);
  EXPECT_TRUE(kit::LoopRuns(adapter->m_pMainLoop));
}

TEST_F(GivenNoPicture, InitPlayerStripsFilePrefix) {
  EXPECT_EQ(InitPlayer("file:///pictures/a.jpg"), 1);
  kit::ExpectGolden("InitPlayer", "file:// path, first time");
  EXPECT_STREQ(adapter->m_cURL, kPath);
}

TEST_F(GivenNoPicture, InitPlayerTakesAPrefixAloneAsAnEmptyPath) {
  EXPECT_EQ(InitPlayer("file://"), 1);
  kit::ExpectGolden("InitPlayer", "file:// alone");
  EXPECT_STREQ(adapter->m_cURL, "");
}

TEST_F(GivenNoPicture, InitPlayerStripsOnlyThatPrefixAndOnlyAtTheBeginning) {
  for (const char* path : {"FILE:///a.jpg", "file:/a.jpg", " file:///a.jpg", "/a/file://b.jpg", "file:/", ""}) {
    ASSERT_EQ(InitPlayer(path), 1);
    EXPECT_STREQ(adapter->m_cURL, path);
  }
}

TEST_F(GivenNoPicture, InitPlayerRefusesNull) {
  EXPECT_EQ(InitPlayer(nullptr), 0);
  kit::ExpectGolden("InitPlayer", "null path");
  EXPECT_FALSE(adapter->m_bInitWindow);
}

TEST_F(GivenNoPicture, InitPlayerFailsWithoutXServer) {
  kit::FailNext("XOpenDisplay");
  EXPECT_EQ(InitPlayer(kPath), 0);
  kit::ExpectGolden("InitPlayer", "no X server");
  EXPECT_FALSE(adapter->m_bInitWindow);
  EXPECT_EQ(adapter->m_pDisplay, nullptr);
  EXPECT_EQ(adapter->m_cWin, olm::kNoWindow);
  ExpectNoPicture();
}

TEST_F(GivenNoPicture, InitPlayerRefusesAWindowWithTheId0AndKeepsItsFlag) {
  olm::CPictureAdapter::window_id = 0;
  EXPECT_EQ(InitPlayer(kPath), 0);
  kit::ExpectGolden("InitPlayer", "the window's id is 0");
  EXPECT_TRUE(adapter->m_bInitWindow);
  ExpectNoPicture();
}

TEST_F(GivenNoPicture, InitPlayerFailsWithoutMemoryAndKeepsTheWindow) {
  kit::FailAt("malloc", 2);
  EXPECT_EQ(InitPlayer(kPath), 0);
  kit::ExpectGolden("InitPlayer", "no memory for the path");
  ExpectWindow();
  ExpectNoPicture();
}

TEST_F(GivenNoPicture, InitPlayerKeepsTheWindowWhenThePictureCannotBeMade) {
  kit::FailNext("lumaview_create_from_url", -4);
  EXPECT_EQ(InitPlayer(kPath), 0);
  kit::ExpectGolden("InitPlayer", "the picture cannot be made");
  ExpectWindow();
  ExpectNoPicture();
  EXPECT_FALSE(adapter->m_bVconfRegistered);
  EXPECT_EQ(adapter->m_thread_id, pthread_t{});
}

TEST_F(GivenNoPicture, InitPlayerGoesOnWithoutTheKey) {
  kit::FailNext("vconf_notify_key_changed", -1);
  EXPECT_EQ(InitPlayer(kPath), 1);
  kit::ExpectGolden("InitPlayer", "the key is refused");
  EXPECT_FALSE(adapter->m_bVconfRegistered);
  EXPECT_STREQ(adapter->m_cURL, kPath);
}

TEST_F(GivenNoPicture, InitPlayerGoesOnWithoutAWorker) {
  kit::FailNext("pthread_create", 11);
  EXPECT_EQ(InitPlayer(kPath), 1);
  kit::ExpectGolden("InitPlayer", "the worker cannot be made");
  EXPECT_EQ(adapter->m_thread_id, pthread_t{});
  EXPECT_EQ(adapter->m_pMainLoop, nullptr);
}

TEST_F(GivenNoPicture, InitPlayerKeepsWhatItMadeWhenTheEffectCannotBeMade) {
  kit::FailNext("lumaview_create_transition_effect", -3);
  EXPECT_EQ(InitPlayer(kPath), 0);
  kit::ExpectGolden("InitPlayer", "the effect cannot be made");
  ExpectWindow();
  EXPECT_NE(adapter->m_pPicture, nullptr);
  EXPECT_EQ(adapter->m_pPicture->flag, 0);
  EXPECT_TRUE(adapter->m_bVconfRegistered);
  EXPECT_NE(adapter->m_thread_id, pthread_t{});
  EXPECT_EQ(adapter->m_pTransitionEffect, nullptr);
  EXPECT_STREQ(adapter->m_cURL, "");
}

TEST_F(GivenPreparedAdapter, InitPlayerAgainKeepsThePictureAndTakesThePath) {
  const _lumaview_s* first = adapter->m_pPicture;
  adapter->m_pPicture->flag = 0;
  EXPECT_EQ(InitPlayer("/pictures/b.jpg"), 1);
  kit::ExpectGolden("InitPlayer", "second time without Stop");
  EXPECT_EQ(adapter->m_pPicture, first);
  EXPECT_EQ(adapter->m_pPicture->flag, 1);
  EXPECT_STREQ(adapter->m_cURL, "/pictures/b.jpg");
  EXPECT_EQ(olm::CPictureAdapter::winNum, 1);
}

TEST_F(GivenPreparedAdapter, InitPlayerAgainWithAShorterPathLeavesNothingOfTheLongerVisible) {
  EXPECT_EQ(InitPlayer("/b"), 1);
  EXPECT_STREQ(adapter->m_cURL, "/b");
}

TEST_F(GivenPreparedAdapter, InitPlayerAfterStopPreparesAllAgain) {
  ASSERT_EQ(adapter->Stop(), 1);
  kit::Begin();
  EXPECT_EQ(InitPlayer(kPath), 1);
  kit::ExpectGolden("InitPlayer", "plain path, first time");
}

TEST_F(GivenPreparedAdapter, InitPlayerAfterAStopWithoutPictureKeepsTheWindow) {
  kit::FailNext("lumaview_create_from_url", -4);
  ASSERT_EQ(adapter->ChangePlayingURL("/pictures/none.jpg"), 0);
  ASSERT_EQ(adapter->Stop(), 1);
  kit::Begin();
  EXPECT_EQ(InitPlayer("/pictures/c.jpg"), 1);
  kit::ExpectGolden("InitPlayer", "after a Stop that found no picture");
}

}  // namespace
