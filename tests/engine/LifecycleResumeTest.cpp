// SPDX-License-Identifier: Apache-2.0
#include "tests/engine/DisplayGivens.h"

namespace {

using kit::FailNext;
using olm::CPictureAdapter;

int Resume(CPictureAdapter& adapter) {
  return kit::Run([&] { return adapter.AppResume(); });
}

void ExpectPath(const char* path) {
  kit::ExpectGolden("AppResume", path);
}

struct GivenIdleAdapterToResume : given::FreshAdapter {};

TEST_F(GivenIdleAdapterToResume, AppResumeHandsTheEmptyPathToTheLibrary) {
  EXPECT_EQ(Resume(*adapter), 1);

  ExpectPath("never used");
}

struct GivenPreparedPictureToResume : given::PreparedPicture {};

TEST_F(GivenPreparedPictureToResume, AppResumeStartsThePicture) {
  EXPECT_EQ(Resume(*adapter), 1);

  ExpectPath("prepared, not started");
  EXPECT_TRUE(adapter->m_bInitDisplay);
}

struct GivenShownPictureToResume : given::ShownPicture {};

TEST_F(GivenShownPictureToResume, AppResumeParsesThePictureAgain) {
  EXPECT_EQ(Resume(*adapter), 1);

  ExpectPath("without a pause");
  EXPECT_EQ(CPictureAdapter::winNum, 1);
}

TEST_F(GivenShownPictureToResume, AppResumeIsFullHdWhateverTheAreaWas) {
  ASSERT_EQ(adapter->SetDisplayArea(0, 0, 480, 270, 540, true), 1);
  adapter->AppPause();
  kit::Begin();

  EXPECT_EQ(Resume(*adapter), 1);

  ExpectPath("after a display area");
}

TEST_F(GivenShownPictureToResume, AppResumeAfterDestroyHandsTheEmptyPathOver) {
  adapter->AppDestroy();
  kit::Begin();

  EXPECT_EQ(Resume(*adapter), 1);

  ExpectPath("after destroy");
}

TEST_F(GivenShownPictureToResume, AppResumeSkipsADisplayThatTheLibraryKept) {
  FailNext("lumaview_destroy_display", 5);
  adapter->AppPause();
  kit::Begin();

  EXPECT_EQ(Resume(*adapter), 1);

  ExpectPath("after a pause that kept the display of the library");
}

/// The application went to the background.
struct GivenPausedPicture : given::ShownPicture {
  void SetUp() override {
    ShownPicture::SetUp();
    ASSERT_EQ(adapter->AppPause(), 1);
    kit::Begin();
  }

  void ExpectFailureOf(const char* call, int code, const char* path) {
    FailNext(call, code);
    EXPECT_EQ(Resume(*adapter), 0);
    ExpectPath(path);
  }
};

TEST_F(GivenPausedPicture, AppResumeMakesEverythingAgain) {
  EXPECT_EQ(Resume(*adapter), 1);

  ExpectPath("after a pause");
  EXPECT_TRUE(adapter->m_bInitWindow);
  EXPECT_TRUE(adapter->m_bInitDisplay);
  EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, 1);
  EXPECT_NE(adapter->m_pPicture, nullptr);
  EXPECT_NE(adapter->m_pTransitionEffect, nullptr);
  EXPECT_STREQ(adapter->m_cURL, given::kPicture);
}

TEST_F(GivenPausedPicture, AppResumeGivesUpWithoutAConnection) {
  ExpectFailureOf("XOpenDisplay", 0, "no connection");

  EXPECT_FALSE(adapter->m_bInitWindow);
}

TEST_F(GivenPausedPicture, AppResumeGivesUpWithoutThreadsInXlib) {
  ExpectFailureOf("XInitThreads", 0, "no threads in Xlib");

  EXPECT_FALSE(adapter->m_bInitWindow);
}

TEST_F(GivenPausedPicture, AppResumeRefusesAWindowOfIdZero) {
  ExpectViolations();  // the server has no such window to destroy

  ExpectFailureOf("XCreateSimpleWindow", 0, "window of id 0");

  EXPECT_TRUE(adapter->m_bInitWindow);
  EXPECT_EQ(adapter->m_pPicture, nullptr);
}

TEST_F(GivenPausedPicture, AppResumeGoesOnWithoutAWindow) {
  FailNext("malloc");

  EXPECT_EQ(Resume(*adapter), 1);

  ExpectPath("no hint buffer");
  EXPECT_EQ(adapter->m_cWin, olm::kNoWindow);
}

TEST_F(GivenPausedPicture, AppResumeGivesUpWithoutAPicture) {
  ExpectFailureOf("lumaview_create_from_url", -4, "no picture");

  EXPECT_TRUE(adapter->m_bInitWindow);
  EXPECT_EQ(adapter->m_pTransitionEffect, nullptr);
}

TEST_F(GivenPausedPicture, AppResumeGivesUpWithoutAnEffect) {
  ExpectFailureOf("lumaview_create_transition_effect", 6, "no effect");

  EXPECT_NE(adapter->m_pPicture, nullptr);
}

TEST_F(GivenPausedPicture, AppResumeGivesUpWithoutTheLibrarysDisplay) {
  ExpectFailureOf("lumaview_init_display", 7, "no display of the library");

  EXPECT_FALSE(adapter->m_bInitDisplay);
  EXPECT_EQ(CPictureAdapter::lumaviewInitFlag, 0);
}

TEST_F(GivenPausedPicture, AppResumeDoesNotLookAtTheWindowsAnswer) {
  FailNext("lumaview_set_window", 8);

  EXPECT_EQ(Resume(*adapter), 1);

  ExpectPath("the window is refused");
}

TEST_F(GivenPausedPicture, AppResumeDoesNotLookAtTheCallbacksAnswer) {
  FailNext("lumaview_add_event_callback", 9);

  EXPECT_EQ(Resume(*adapter), 1);

  ExpectPath("the callback is refused");
}

TEST_F(GivenPausedPicture, AppResumeFailsWithTheParsing) {
  ExpectFailureOf("lumaview_parse", -6, "parsing fails");

  EXPECT_NE(adapter->m_pPicture, nullptr);
  EXPECT_TRUE(adapter->m_bInitDisplay);
}

TEST_F(GivenPausedPicture, AppResumeUsesTheDisplayOfAnotherAdapter) {
  MakeOther();
  ASSERT_EQ(other->SetDisplayArea(0, 0, 0, 0, 540, true), 1);
  ASSERT_EQ(other->Play("/pictures/b.jpg", 0), 1);
  kit::Begin();

  EXPECT_EQ(Resume(*adapter), 1);

  ExpectPath("another adapter shows a picture");
  EXPECT_FALSE(adapter->m_bInitDisplay);
  EXPECT_EQ(adapter->m_cWin, other->m_cWin);
}

}  // namespace
