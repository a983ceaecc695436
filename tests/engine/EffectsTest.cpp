// SPDX-License-Identifier: Apache-2.0
/// Transition effects and the slide-show status: sequences, results, and what each leaves in the fields.
#include <algorithm>
#include <array>

#include "tests/engine/CommandGiven.h"

namespace {

effect_type_e Effect(int type) {
  return static_cast<effect_type_e>(type);
}

class EffectsOfAPreparedPicture : public GivenPreparedPicture {
 protected:
  void ExpectEffect(int type, const char* path) {
    ExpectOperation("EffectShow", path, [&] { return Adapter().EffectShow(Effect(type)); });
  }
  /// What an effect that was started leaves behind.
  void ExpectRunning() {
    EXPECT_EQ(Adapter().m_pPicture, nullptr);
    EXPECT_NE(Adapter().m_pTransitionEffect, nullptr);
    EXPECT_FALSE(Adapter().m_b3DSettingChanged);
    EXPECT_EQ(olm::CPictureAdapter::lumaviewInitFlag, 1);
  }
  /// What a step that failed before the picture gives way leaves behind.
  void ExpectUntouched() {
    EXPECT_NE(Adapter().m_pPicture, nullptr);
    EXPECT_EQ(Adapter().m_b3DSettingChanged, m_pending3D);
  }
  void Set3D(int mode) {
    Adapter().m_i3DSetting = mode;
    Adapter().m_b3DSettingChanged = m_pending3D = true;
  }
  bool m_pending3D = false;
};

class EffectsOfAShownPicture : public EffectsOfAPreparedPicture {
 protected:
  void SetUp() override {
    EffectsOfAPreparedPicture::SetUp();
    ASSERT_EQ(Adapter().StartPlayback(0), 1);
  }
};

using EffectsOfAnEngine = GivenEngine;

TEST_F(EffectsOfAnEngine, NeedAPath) {
  ExpectOperation("EffectShow", "empty path", [&] { return Adapter().EffectShow(Effect(3)); });
  EXPECT_EQ(Adapter().m_pTransitionEffect, nullptr);
}

TEST_F(EffectsOfAnEngine, TakeAPathOfOneCharacter) {
  ASSERT_EQ(Adapter().InitPlayer("a"), 1);
  EXPECT_EQ(Adapter().EffectShow(Effect(3)), 1);
}

TEST_F(EffectsOfAPreparedPicture, InitialiseTheDisplayAndRun) {
  ExpectEffect(3, "first effect of a prepared picture");
  ExpectRunning();
  EXPECT_TRUE(Adapter().m_bInitDisplay);
}

TEST_F(EffectsOfAShownPicture, LeaveTheDisplayAsItIs) {
  ExpectEffect(0, "display initialised by this adapter");
  ExpectRunning();
  EXPECT_TRUE(Adapter().m_bInitDisplay);
}

TEST_F(EffectsOfAPreparedPicture, LeaveAnotherAdaptersDisplayAsItIs) {
  olm::CPictureAdapter::lumaviewInitFlag = 1;
  ExpectEffect(5, "display initialised by another adapter");
  ExpectRunning();
  EXPECT_FALSE(Adapter().m_bInitDisplay);
}

TEST_F(EffectsOfAnEngine, MakeTheEffectObjectThatPlayDoesNot) {
  ASSERT_EQ(Adapter().SetDisplayArea(0, 0, 0, 0, 540, true), 1);
  ASSERT_EQ(Adapter().Play(kPicture, 0), 1);
  ExpectOperation("EffectShow", "no effect object yet", [&] { return Adapter().EffectShow(Effect(7)); });
  EXPECT_NE(Adapter().m_pTransitionEffect, nullptr);
}

TEST_F(EffectsOfAnEngine, FailWithoutTheEffectObject) {
  ASSERT_EQ(Adapter().SetDisplayArea(0, 0, 0, 0, 540, true), 1);
  ASSERT_EQ(Adapter().Play(kPicture, 0), 1);
  kit::FailNext("lumaview_create_transition_effect", -3);
  ExpectOperation("EffectShow", "effect object cannot be made", [&] { return Adapter().EffectShow(Effect(7)); });
  EXPECT_EQ(Adapter().m_pTransitionEffect, nullptr);
  EXPECT_NE(Adapter().m_pPicture, nullptr);
}

TEST_F(EffectsOfAPreparedPicture, RunWithoutAWindowAfterAPause) {
  ASSERT_EQ(Adapter().AppPause(), 1);
  ExpectEffect(36, "after a pause");
  ExpectRunning();
}

TEST_F(EffectsOfAPreparedPicture, StopWhereTheDisplayCannotBeInitialised) {
  Set3D(1);
  kit::FailNext("lumaview_init_display", -7);
  ExpectEffect(3, "display cannot be initialised");
  ExpectUntouched();
  EXPECT_FALSE(Adapter().m_bInitDisplay);
  EXPECT_EQ(olm::CPictureAdapter::lumaviewInitFlag, 0);
}

TEST_F(EffectsOfAPreparedPicture, StopWhereTheWindowIsRefused) {
  Set3D(1);
  kit::FailNext("lumaview_set_effect_window_handle", 5);
  ExpectEffect(3, "effect window refused");
  ExpectUntouched();
  EXPECT_TRUE(Adapter().m_bInitDisplay);
}

TEST_F(EffectsOfAPreparedPicture, GoOnWhereAnIgnoredStepFails) {
  Set3D(1);
  kit::FailNext("lumaview_set_window", 11);
  kit::FailNext("lumaview_set_3d_mode", 12);
  kit::FailNext("lumaview_destroy", 13);
  kit::FailNext("lumaview_set_effect_type", 14);
  ExpectEffect(3, "ignored results fail");
  ExpectRunning();
}

TEST_F(EffectsOfAPreparedPicture, ApplyAPending3DSettingOnce) {
  Set3D(26);
  ExpectEffect(3, "pending 3D setting");
  ExpectRunning();
  EXPECT_EQ(Adapter().m_i3DSetting, 26);
}

TEST_F(EffectsOfAPreparedPicture, RunAgainWithoutAPicture) {
  ASSERT_EQ(Adapter().EffectShow(Effect(3)), 1);
  ExpectEffect(4, "second effect");
  ExpectRunning();
}

TEST_F(EffectsOfAPreparedPicture, ApplyA3DSettingToNoPicture) {
  ASSERT_EQ(Adapter().EffectShow(Effect(3)), 1);
  Set3D(2);
  ExpectEffect(4, "pending 3D setting without a picture");
  ExpectRunning();
}

TEST_F(EffectsOfAPreparedPicture, FailWithoutTheCallbackAfterThePictureHasGone) {
  kit::FailNext("lumaview_add_event_callback", 9);
  ExpectEffect(3, "callback refused");
  ExpectRunning();
}

TEST_F(EffectsOfAPreparedPicture, FailToRunAfterThePictureHasGone) {
  kit::FailNext("lumaview_run_transition_effect", -1);
  ExpectEffect(99, "run refused");
  ExpectRunning();
  EXPECT_TRUE(kit::FireEffect(LUMAVIEW_RESULT_EFFECT_OK)) << "the callback is registered all the same";
}

TEST_F(EffectsOfAPreparedPicture, EndInTheEventsOfTheCallback) {
  ASSERT_EQ(Adapter().EffectShow(Effect(3)), 1);
  kit::Begin();
  EXPECT_TRUE(kit::FireEffect(LUMAVIEW_RESULT_EFFECT_OK));
  EXPECT_EQ(kit::Count("event 10 "), 1U);
  EXPECT_EQ(kit::Count("event 8 "), 1U);
}

class ChosenEffects : public GivenPreparedPicture {
 protected:
  void ExpectChoice(int type, const char* path) {
    ExpectOperation("SetTransitionEffect", path, [&] { return Adapter().SetTransitionEffect(type); });
  }
};

TEST_F(ChosenEffects, TakeMinusTwoForTheLibrarysChoice) {
  ExpectChoice(-2, "-2 stands for 36");
}
TEST_F(ChosenEffects, PassMinusOne) {
  ExpectChoice(-1, "-1 passes");
}
TEST_F(ChosenEffects, PassAnyNumber) {
  ExpectChoice(1000, "any number passes");
}

TEST_F(ChosenEffects, ReportARefusal) {
  kit::FailNext("lumaview_run_transition_effect", 8);
  ExpectChoice(3, "run refused");
}

TEST_F(EffectsOfAnEngine, CannotBeChosenWithoutAPath) {
  ExpectOperation("SetTransitionEffect", "empty path", [&] { return Adapter().SetTransitionEffect(-2); });
}

class EffectAvailability : public GivenPreparedPicture {
 protected:
  void ExpectAnswer(const char* path) {
    ExpectOperation("IsTransitionEffectAvailable", path, [&] { return Adapter().IsTransitionEffectAvailable(); });
  }
};

TEST_F(EffectAvailability, IsTheLibrarysZero) {
  ExpectAnswer("available");
}

TEST_F(EffectAvailability, IsDeniedByOne) {
  kit::FailNext("lumaview_is_transition_effect_available", 1);
  ExpectAnswer("code 1");
}

TEST_F(EffectAvailability, IsDeniedByMinusOne) {
  kit::FailNext("lumaview_is_transition_effect_available", -1);
  ExpectAnswer("code -1");
}

TEST_F(EffectsOfAnEngine, AreNotAvailableWithoutAPicture) {
  ExpectOperation("IsTransitionEffectAvailable", "no picture", [&] { return Adapter().IsTransitionEffectAvailable(); });
}

TEST_F(EffectsOfAnEngine, MayBeAvailableWithoutAnEffectObject) {
  ASSERT_EQ(Adapter().SetDisplayArea(0, 0, 0, 0, 540, true), 1);
  ASSERT_EQ(Adapter().Play(kPicture, 0), 1);
  ExpectOperation("IsTransitionEffectAvailable", "no effect object",
                  [&] { return Adapter().IsTransitionEffectAvailable(); });
}

class EffectList : public GivenPreparedPicture {
 protected:
  void ExpectList(const char* path) {
    m_buffer.fill('#');
    char* list = m_buffer.data();
    ExpectOperation("GetTransitionEffectList", path, [&] { return Adapter().GetTransitionEffectList(&list); });
    EXPECT_EQ(list, m_buffer.data()) << "the caller's buffer is kept";
  }
  /// The text, then zeros up to 400 bytes, and nothing behind them.
  void ExpectBuffer(const std::string& text) {
    std::array<char, kBytes + 1> expected{};
    std::copy(text.begin(), text.end(), expected.begin());
    expected[kBytes] = '#';
    EXPECT_TRUE(m_buffer == expected) << std::string(m_buffer.data(), m_buffer.size());
  }
  static constexpr size_t kBytes = 400;
  std::array<char, kBytes + 1> m_buffer{};
};

TEST_F(EffectList, IsCopiedAndPaddedWithZeros) {
  kit::world().effectList = "fade\nwipe\nslide";
  ExpectList("three names");
  ExpectBuffer("fade\nwipe\nslide");
}

TEST_F(EffectList, MayBeEmpty) {
  kit::world().effectList.clear();
  ExpectList("empty list");
  ExpectBuffer("");
}

TEST_F(EffectList, OfFourHundredCharactersHasNoTerminator) {
  kit::world().effectList = std::string(kBytes, 'x');
  ExpectList("400 characters");
  ExpectBuffer(std::string(kBytes, 'x'));
}

TEST_F(EffectList, IsLeftAloneByAFailure) {
  kit::FailNext("lumaview_get_transition_effect_list", 3);
  ExpectList("library failure");
  EXPECT_EQ(std::count(m_buffer.begin(), m_buffer.end(), '#'), static_cast<long>(m_buffer.size()));
}

TEST_F(EffectsOfAnEngine, AreNotListedWithoutAPicture) {
  ExpectOperation("GetTransitionEffectList", "no picture", [&] { return Adapter().GetTransitionEffectList(nullptr); });
}

class SlideShowStatus : public GivenEngine {
 protected:
  void ExpectSwitch(bool on, const char* path) {
    ExpectOperation("SetSlideShowStatus", path, [&] { return Adapter().SetSlideShowStatus(on); });
    EXPECT_EQ(Adapter().m_bSlideShow, on);
  }
};

TEST_F(SlideShowStatus, IsRecorded) {
  ExpectSwitch(true, "switched on");
}
TEST_F(SlideShowStatus, IsOffAtFirst) {
  ExpectSwitch(false, "off already");
}

TEST_F(SlideShowStatus, StaysOn) {
  ASSERT_EQ(Adapter().SetSlideShowStatus(true), 1);
  ExpectSwitch(true, "on already");
}

TEST_F(SlideShowStatus, CanBeSwitchedOff) {
  ASSERT_EQ(Adapter().SetSlideShowStatus(true), 1);
  ExpectSwitch(false, "switched off");
}

}  // namespace
