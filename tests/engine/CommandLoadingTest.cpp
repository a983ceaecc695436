// SPDX-License-Identifier: Apache-2.0
/// The rows that load, show, place and release a picture.
#include "tests/engine/CommandGiven.h"

namespace {

using LoadingCommands = GivenEngine;
using LoadingCommandsOfAPreparedPicture = GivenPreparedPicture;
using LoadingCommandsOfAShownPicture = GivenShownPicture;

TEST_F(LoadingCommands, InitPlayerMakesEverything) {
  ExpectRow("InitPlayer", {kPicture}, "first time");
  EXPECT_STREQ(Adapter().m_cURL, kPicture);
  EXPECT_EQ(Adapter().m_strAppID, "org.example.photos");
}

TEST_F(LoadingCommandsOfAPreparedPicture, InitPlayerKeepsWhatIsThere) {
  ExpectRow("InitPlayer", {"file:///b.png"}, "file URL on the present window");
  EXPECT_STREQ(Adapter().m_cURL, "/b.png");
}

TEST_F(LoadingCommands, InitPlayerFailsWithoutAServer) {
  kit::FailNext("XOpenDisplay");
  ExpectRow("InitPlayer", {kPicture}, "no server");
}

TEST_F(LoadingCommands, InitPlayerFailsWithoutThePicture) {
  kit::FailNext("lumaview_create_from_url", -4);
  ExpectRow("InitPlayer", {kPicture}, "picture missing");
}

TEST_F(LoadingCommands, InitPlayerSetsTheIdentityEvenWithoutAPath) {
  ExpectRow("InitPlayer", {}, "empty parameter");
  EXPECT_EQ(Adapter().m_strAppID, "org.example.photos");
  EXPECT_EQ(Adapter().m_strAppName, "abcd1234.Viewer");
  EXPECT_EQ(Adapter().m_taskID, 0);
}

TEST_F(LoadingCommandsOfAPreparedPicture, StartPlaybackParses) {
  ExpectRow("StartPlayback", {}, "started");
}

TEST_F(LoadingCommands, StartPlaybackNeedsAPicture) {
  ExpectRow("StartPlayback", {}, "no picture");
}

TEST_F(LoadingCommandsOfAPreparedPicture, StartPlaybackFailsToParse) {
  kit::FailNext("lumaview_parse", 7);
  ExpectRow("StartPlayback", {}, "parse refused");
}

TEST_F(LoadingCommandsOfAPreparedPicture, PlayTakesThePathAsItIs) {
  ExpectRow("Play", {"file:///b.png"}, "started");
  EXPECT_STREQ(Adapter().m_cURL, "file:///b.png");
}

TEST_F(LoadingCommandsOfAPreparedPicture, PlayFailsToParse) {
  kit::FailNext("lumaview_parse", 7);
  ExpectRow("Play", {kPicture, "x"}, "parse refused");
}

TEST_F(LoadingCommands, PlayNeedsItsFirstParameterAlone) {
  ExpectRow("Play", {}, "empty parameter");
  ExpectRow("Play", {"", "b"}, "second parameter alone");
}

TEST_F(LoadingCommandsOfAShownPicture, StopReleasesEverything) {
  ExpectRow("Stop", {}, "shown picture");
  EXPECT_EQ(Adapter().m_pPicture, nullptr);
  EXPECT_EQ(Adapter().m_cWin, olm::kNoWindow);
  EXPECT_TRUE(kit::IsZero(Adapter().m_cURL, olm::kUrlCapacity));
}

TEST_F(LoadingCommands, StopIsDoneWithoutAPicture) {
  ExpectRow("Stop", {}, "no picture");
}

TEST_F(LoadingCommands, StopLeavesAConnectionWithoutAWindowAlone) {
  kit::FailNext("malloc");  // the window's hints
  ASSERT_TRUE(Send("InitPlayer", {kPicture}));
  ASSERT_EQ(Adapter().m_cWin, olm::kNoWindow);
  ExpectRow("Stop", {}, "connection without a window");
  EXPECT_NE(Adapter().m_pDisplay, nullptr);
  EXPECT_TRUE(Adapter().m_bInitWindow);
  EXPECT_EQ(Adapter().CloseDisplay(), 1);  // the destructor would not, either
}

TEST_F(LoadingCommandsOfAPreparedPicture, StopFailsWhereThePictureStays) {
  kit::FailNext("lumaview_destroy", 7);
  ExpectRow("Stop", {}, "destroy refused");
}

TEST_F(LoadingCommandsOfAPreparedPicture, SetDisplayAreaScalesFrom540Lines) {
  ExpectRow("SetDisplayArea", {"10", "20", "100", "200"}, "window moved");
}

TEST_F(LoadingCommandsOfAPreparedPicture, SetDisplayAreaReadsNumbersLeniently) {
  ExpectRow("SetDisplayArea", {"+10px", " 20", "100.9", "0200"}, "numbers with blanks, signs and ends");
}

TEST_F(LoadingCommandsOfAPreparedPicture, SetDisplayAreaFitsTheSmallestScreen) {
  Adapter().m_iScreenWidth = Adapter().m_iScreenHeight = 1;
  ASSERT_TRUE(Send("SetDisplayArea", {"0", "0", "10", "10"}));
  EXPECT_EQ(kit::Count("x XMoveResizeWindow(display#1, 0x400001, 0, 0, 1, 1)"), 1U);
}

TEST_F(LoadingCommands, SetDisplayAreaFailsWithoutAServer) {
  kit::FailNext("XOpenDisplay");
  ExpectRow("SetDisplayArea", {"10", "20", "100", "200"}, "no server");
}

TEST_F(LoadingCommands, SetDisplayAreaNeedsAllFour) {
  ExpectRow("SetDisplayArea", {"", "2", "3", "4"}, "parameter 1 empty");
  ExpectRow("SetDisplayArea", {"1", "", "3", "4"}, "parameter 2 empty");
  ExpectRow("SetDisplayArea", {"1", "2", "", "4"}, "parameter 3 empty");
  ExpectRow("SetDisplayArea", {"1", "2", "3", ""}, "parameter 4 empty");
}

TEST_F(LoadingCommandsOfAPreparedPicture, ChangePlayingURLReusesTheWindow) {
  ExpectRow("ChangePlayingURL", {"/b.png"}, "next picture");
  EXPECT_STREQ(Adapter().m_cURL, "/b.png");
}

TEST_F(LoadingCommandsOfAPreparedPicture, ChangePlayingURLFailsWhereThePictureStays) {
  kit::FailNext("lumaview_destroy", 7);
  ExpectRow("ChangePlayingURL", {"/b.png"}, "destroy refused");
}

TEST_F(LoadingCommandsOfAPreparedPicture, ChangePlayingURLFailsWithoutThePicture) {
  kit::FailNext("lumaview_create_from_url", -4);
  ExpectRow("ChangePlayingURL", {"/b.png"}, "picture missing");
}

TEST_F(LoadingCommandsOfAPreparedPicture, ChangePlayingURLNeedsAPath) {
  ExpectRow("ChangePlayingURL", {}, "empty parameter");
}

/// The two commands that take the picture off the screen differ in their names and in one pair of markers.
class ClearingCommands : public GivenShownPicture, public testing::WithParamInterface<const char*> {};

TEST_P(ClearingCommands, EndTheLibrarysDisplay) {
  ExpectRow(GetParam(), {}, "shown picture");
  EXPECT_FALSE(Adapter().m_bInitDisplay);
  EXPECT_TRUE(Adapter().m_bInitWindow);
  ExpectRow(GetParam(), {}, "nothing shown");
}

TEST_P(ClearingCommands, FailInBlue) {
  kit::FailNext("lumaview_destroy_display", 5);
  ExpectRow(GetParam(), {}, "destroy refused");
  EXPECT_TRUE(Adapter().m_bInitDisplay);
}

INSTANTIATE_TEST_SUITE_P(Both, ClearingCommands, testing::Values("ClearScreen", "ClearScreenForImage"));

}  // namespace
