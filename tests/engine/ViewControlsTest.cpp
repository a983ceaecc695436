// SPDX-License-Identifier: Apache-2.0
/// Panning, zooming, rotating, locking and the 3D setting: numbers go to the library as they are.
#include "tests/engine/CommandGiven.h"

namespace {

lumaview_key_direction_e Direction(int number) {
  return static_cast<lumaview_key_direction_e>(number);
}

using ViewOfNoPicture = GivenEngine;
using ViewOfAPicture = GivenPreparedPicture;

TEST_F(ViewOfNoPicture, CannotBeChanged) {
  ExpectOperation("SetZoomMove", "no picture", [&] { return Adapter().SetZoomMove(Direction(0)); });
  ExpectOperation("SetZoomRatio", "no picture", [&] { return Adapter().SetZoomRatio(2); });
  ExpectOperation("SetRotation", "no picture", [&] { return Adapter().SetRotation(90, false); });
  ExpectOperation("SetDisplayLock", "no picture", [&] { return Adapter().SetDisplayLock(true); });
}

TEST_F(ViewOfAPicture, CannotBeChangedAfterAnEffect) {
  ASSERT_EQ(Adapter().EffectShow(LUMAVIEW_EFFECT_CHOOSE), 1);
  ExpectOperation("SetZoomMove", "no picture", [&] { return Adapter().SetZoomMove(Direction(0)); });
  ExpectOperation("SetZoomRatio", "no picture", [&] { return Adapter().SetZoomRatio(2); });
  ExpectOperation("SetRotation", "no picture", [&] { return Adapter().SetRotation(90, false); });
  ExpectOperation("SetDisplayLock", "no picture", [&] { return Adapter().SetDisplayLock(true); });
}

TEST_F(ViewOfAPicture, IsPanned) {
  ExpectOperation("SetZoomMove", "accepted", [&] { return Adapter().SetZoomMove(Direction(2)); });
}

TEST_F(ViewOfAPicture, IsNotPannedWhereTheLibraryRefuses) {
  kit::FailNext("lumaview_set_zoom_move", 4);
  ExpectOperation("SetZoomMove", "refused", [&] { return Adapter().SetZoomMove(Direction(3)); });
}

TEST_F(ViewOfAPicture, IsPannedInAnyDirectionThatTheLibraryTakes) {
  ExpectOperation("SetZoomMove", "number out of range", [&] { return Adapter().SetZoomMove(Direction(7)); });
  kit::FailNext("lumaview_set_zoom_move", 1);
  ExpectOperation("SetZoomMove", "negative number", [&] { return Adapter().SetZoomMove(Direction(-3)); });
}

TEST_F(ViewOfAPicture, IsZoomedWithoutRotation) {
  ExpectOperation("SetZoomRatio", "accepted", [&] { return Adapter().SetZoomRatio(2); });
}

TEST_F(ViewOfAPicture, CountsAsZoomedWhereTheLibraryRefuses) {
  kit::FailNext("lumaview_set_display_param", -1);
  ExpectOperation("SetZoomRatio", "refused", [&] { return Adapter().SetZoomRatio(99); });
}

TEST_F(ViewOfAPicture, IsRotatedWithZoomRatioOne) {
  ExpectOperation("SetRotation", "accepted", [&] { return Adapter().SetRotation(90, false); });
  ExpectOperation("SetRotation", "flag set", [&] { return Adapter().SetRotation(90, true); });
}

TEST_F(ViewOfAPicture, IsNotRotatedWhereTheLibraryRefuses) {
  kit::FailNext("lumaview_set_display_param", -1);
  ExpectOperation("SetRotation", "refused", [&] { return Adapter().SetRotation(45, false); });
}

TEST_F(ViewOfAPicture, IsLockedAndReleased) {
  ExpectOperation("SetDisplayLock", "accepted", [&] { return Adapter().SetDisplayLock(true); });
  ExpectOperation("SetDisplayLock", "released", [&] { return Adapter().SetDisplayLock(false); });
}

TEST_F(ViewOfAPicture, IsNotLockedWhereTheLibraryRefuses) {
  kit::FailNext("lumaview_set_display_lock", 6);
  ExpectOperation("SetDisplayLock", "refused", [&] { return Adapter().SetDisplayLock(true); });
}

TEST_F(ViewOfNoPicture, IsLockedOnNoWindow) {
  ASSERT_EQ(Adapter().Play(kPicture, 0), 1);
  ExpectOperation("SetDisplayLock", "no window", [&] { return Adapter().SetDisplayLock(true); });
}

class PlayerProperty : public GivenEngine {
 protected:
  void SetUp() override {
    GivenEngine::SetUp();
    Adapter().m_i3DSetting = kEarlier;
  }
  void ExpectProperty(int type, const char* text, int value, const char* path) {
    ExpectOperation("SetPlayerProperty", path, [&] { return Adapter().SetPlayerProperty(type, text, value); });
  }
  void ExpectSetting(int value, bool pending) {
    EXPECT_EQ(Adapter().m_i3DSetting, value);
    EXPECT_EQ(Adapter().m_b3DSettingChanged, pending);
  }
  static constexpr int kEarlier = 7;
};

TEST_F(PlayerProperty, TwoIsThe3DSettingOfTheNextShowing) {
  ExpectProperty(2, "mode", 3, "3D setting");
  ExpectSetting(3, true);
}

TEST_F(PlayerProperty, MayHaveAnEmptyText) {
  ExpectProperty(2, "", 0, "empty text and 0");
  ExpectSetting(0, true);
}

TEST_F(PlayerProperty, IsOverwrittenByTheLast) {
  ASSERT_EQ(Adapter().SetPlayerProperty(2, "mode", 1), 1);
  ExpectProperty(2, "mode", 3, "3D setting");
  ExpectSetting(3, true);
}

TEST_F(PlayerProperty, IsRefusedWithoutAText) {
  ExpectProperty(2, nullptr, 1, "null text");
  ExpectSetting(kEarlier, false);
}

TEST_F(PlayerProperty, IsRefusedWithANegativeValue) {
  ExpectProperty(2, "mode", -1, "negative value");
  ExpectProperty(5, "mode", -1, "other type, negative value");
  ExpectSetting(kEarlier, false);
}

TEST_F(PlayerProperty, OfAnotherTypeIsIgnored) {
  ExpectProperty(5, "mode", 1, "other type");
  ExpectSetting(kEarlier, false);
}

}  // namespace
