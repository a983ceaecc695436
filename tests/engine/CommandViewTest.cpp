// SPDX-License-Identifier: Apache-2.0
/// The rows of the effects and of the view.
#include "tests/engine/CommandGiven.h"

namespace {

using ViewCommands = GivenEngine;
using ViewCommandsOfAPicture = GivenPreparedPicture;

TEST_F(ViewCommandsOfAPicture, SetZoomMovePans) {
  ExpectRow("SetZoomMove", {"2"}, "accepted");
}

TEST_F(ViewCommandsOfAPicture, SetZoomMoveFails) {
  kit::FailNext("lumaview_set_zoom_move", 4);
  ExpectRow("SetZoomMove", {"3"}, "refused");
}

TEST_F(ViewCommands, SetZoomMoveNeedsAPictureAndADirection) {
  ExpectRow("SetZoomMove", {"1"}, "no picture");
  ExpectRow("SetZoomMove", {"", "1"}, "empty parameter");
}

TEST_F(ViewCommandsOfAPicture, SetZoomRatioAlwaysSucceeds) {
  ExpectRow("SetZoomRatio", {"2"}, "accepted");
  kit::FailNext("lumaview_set_display_param", -1);
  ExpectRow("SetZoomRatio", {"99"}, "refused");
}

TEST_F(ViewCommandsOfAPicture, SetZoomRatioReadsItsNumberLeniently) {
  ExpectRow("SetZoomRatio", {"12abc"}, "trailing text");
  ExpectRow("SetZoomRatio", {"abc"}, "no digit");
}

TEST_F(ViewCommands, SetZoomRatioNeedsAPictureAndARatio) {
  ExpectRow("SetZoomRatio", {"2"}, "no picture");
  ExpectRow("SetZoomRatio", {}, "empty parameter");
}

TEST_F(ViewCommandsOfAPicture, SetRotationTurns) {
  ExpectRow("SetRotation", {"90"}, "accepted");
}

TEST_F(ViewCommandsOfAPicture, SetRotationFails) {
  kit::FailNext("lumaview_set_display_param", -1);
  ExpectRow("SetRotation", {"45"}, "refused");
}

TEST_F(ViewCommands, SetRotationNeedsAPictureAndAnAngle) {
  ExpectRow("SetRotation", {"90"}, "no picture");
  ExpectRow("SetRotation", {}, "empty parameter");
}

TEST_F(ViewCommandsOfAPicture, SetDisplayLockTakesAnyOtherNumberThanZeroForTrue) {
  ExpectRow("SetDisplayLock", {"5"}, "5 locks");
  ExpectRow("SetDisplayLock", {"0"}, "0 releases");
}

TEST_F(ViewCommandsOfAPicture, SetDisplayLockFails) {
  kit::FailNext("lumaview_set_display_lock", 6);
  ExpectRow("SetDisplayLock", {"1"}, "refused");
}

TEST_F(ViewCommands, SetDisplayLockNeedsAPictureAndANumber) {
  ExpectRow("SetDisplayLock", {"1"}, "no picture");
  ExpectRow("SetDisplayLock", {}, "empty parameter");
}

TEST_F(ViewCommands, SetPlayerPropertyKeepsThe3DSetting) {
  ExpectRow("SetPlayerProperty", {"2", "mode", "3"}, "3D setting");
  EXPECT_EQ(Adapter().m_i3DSetting, 3);
  EXPECT_TRUE(Adapter().m_b3DSettingChanged);
}

TEST_F(ViewCommands, SetPlayerPropertyTakesZeroForAMissingValue) {
  ExpectRow("SetPlayerProperty", {"2"}, "no name and no value");
  ExpectRow("SetPlayerProperty", {"2", "mode", "x"}, "value without digits");
  EXPECT_EQ(Adapter().m_i3DSetting, 0);
  EXPECT_TRUE(Adapter().m_b3DSettingChanged);
}

TEST_F(ViewCommands, SetPlayerPropertyIgnoresOtherTypes) {
  ExpectRow("SetPlayerProperty", {"5", "mode", "1"}, "other type");
  EXPECT_FALSE(Adapter().m_b3DSettingChanged);
}

TEST_F(ViewCommands, SetPlayerPropertyRefusesANegativeValueAndAnEmptyType) {
  ExpectRow("SetPlayerProperty", {"2", "mode", "-1"}, "negative value");
  ExpectRow("SetPlayerProperty", {"", "mode", "1"}, "empty parameter");
  EXPECT_FALSE(Adapter().m_b3DSettingChanged);
}

TEST_F(ViewCommandsOfAPicture, EffectShowRuns) {
  ExpectRow("EffectShow", {"3"}, "started");
}

TEST_F(ViewCommandsOfAPicture, EffectShowFails) {
  kit::FailNext("lumaview_run_transition_effect", 8);
  ExpectRow("EffectShow", {"3"}, "run refused");
}

TEST_F(ViewCommands, EffectShowNeedsAPathAndAnEffect) {
  ExpectRow("EffectShow", {"3"}, "no path");
  ExpectRow("EffectShow", {}, "empty parameter");
}

TEST_F(ViewCommandsOfAPicture, SetTransitionEffectLeavesTheChoiceToTheLibrary) {
  ExpectRow("SetTransitionEffect", {"-2"}, "-2 stands for 36");
}

TEST_F(ViewCommandsOfAPicture, SetTransitionEffectFails) {
  kit::FailNext("lumaview_run_transition_effect", 8);
  ExpectRow("SetTransitionEffect", {"3"}, "run refused");
}

TEST_F(ViewCommands, SetTransitionEffectNeedsAPathAndAnEffect) {
  ExpectRow("SetTransitionEffect", {"3"}, "no path");
  ExpectRow("SetTransitionEffect", {}, "empty parameter");
}

TEST_F(ViewCommandsOfAPicture, IsTransitionEffectAvailableAnswersATextOrAnInteger) {
  ExpectRow("IsTransitionEffectAvailable", {}, "available");
  kit::FailNext("lumaview_is_transition_effect_available", 1);
  ExpectRow("IsTransitionEffectAvailable", {}, "not available");
}

TEST_F(ViewCommands, IsTransitionEffectAvailableNeedsAPicture) {
  ExpectRow("IsTransitionEffectAvailable", {}, "no picture");
}

TEST_F(ViewCommands, SetSlideShowStatusTakesAnyOtherNumberThanZeroForTrue) {
  ExpectRow("SetSlideShowStatus", {"0"}, "0 is off");
  ExpectRow("SetSlideShowStatus", {"x"}, "x is off");
  EXPECT_FALSE(Adapter().m_bSlideShow);
  ExpectRow("SetSlideShowStatus", {"2"}, "2 is on");
  EXPECT_TRUE(Adapter().m_bSlideShow);
}

TEST_F(ViewCommands, SetSlideShowStatusTakesANegativeNumberForTrue) {
  ExpectRow("SetSlideShowStatus", {"-1"}, "-1 is on");
  ExpectRow("SetSlideShowStatus", {}, "empty parameter");
  EXPECT_TRUE(Adapter().m_bSlideShow);
}

TEST_F(ViewCommands, AddEventCallbackStoresTheTextsAddress) {
  const std::string text = "12345";
  std::string result;
  kit::Begin();
  kit::Run([&] { return Engine().Execute(result, "AddEventCallback", text, "", "", ""); });
  kit::ExpectGolden("Execute-AddEventCallback", "stored");
  EXPECT_EQ(reinterpret_cast<const char*>(Adapter().m_pEventCallback), text.c_str());
}

TEST_F(ViewCommands, AddEventCallbackNeedsATextAndNoNumber) {
  ExpectRow("AddEventCallback", {"onEvent"}, "text without a number");
  ExpectRow("AddEventCallback", {}, "empty parameter");
}

}  // namespace
