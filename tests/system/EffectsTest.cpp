// SPDX-License-Identifier: Apache-2.0
/// Transition effects through the engine's commands on a whole television: results, events, log and screen.
#include <gmock/gmock.h>

#include <cstdlib>

#include "simulator/tvsim/engine/LogTail.h"
#include "tests/system/GivenTelevision.h"

namespace sim::tvsim {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;

size_t CountIn(const std::string& text, const std::string& what) {
  size_t count = 0;
  for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) {
    ++count;
  }
  return count;
}

/// A television that shows a white picture; a black one is there to go to.
class GivenWhiteScreen : public GivenTelevision {
 protected:
  /// `effect_ms`: how long a transition takes.
  void ExpectPlays(const std::string& steps, int effect_ms = 50) {
    setenv("LUMAVIEW_EFFECT_MS", std::to_string(effect_ms).c_str(), 1);
    const Outcome outcome = Play(m_show_white + steps);
    unsetenv("LUMAVIEW_EFFECT_MS");
    EXPECT_EQ(outcome.status, 0) << outcome.output << outcome.errors << EngineLog();
  }

  /// What the engine said after the white picture was shown.
  std::string LogOfTheEffects() const {
    const std::string log = WithoutColours(EngineLog());
    return log.substr(log.find(kShown));
  }

  static std::string Expect(const std::string& screen) { return "expect-screenshot " + screen + " 99dB\n"; }
  static std::string ChangeTo(const std::string& picture) { return "ChangePlayingURL " + picture + "\nexpect 1\n"; }

  static constexpr const char* kShown = "Send RENDER_COMPLETED event";
  static constexpr const char* kDecoded = "Send DECODE_COMPLETED event";
  static constexpr const char* kEvents = "expect-event 10 within 20s\nexpect-event 8 within 20s\n";

  const std::string m_white = Plain("white", 1600, 900);
  const std::string m_black = Plain("black", 1600, 900);
  const std::string m_all_white = WhiteOn(kScreen);
  const std::string m_all_black = BlackScreen();

 private:
  const std::string m_show_white = "InitPlayer " + m_white +
                                   "\nexpect 1\nSetDisplayArea 0 0 0 0\nexpect 1\nStartPlayback\nexpect 1\n" + kEvents +
                                   Expect(m_all_white);
};

TEST_F(GivenWhiteScreen, EachOfTheLibrarysEffectsEndsOnItsPicture) {
  std::string steps;
  for (int effect = 0; effect < 24; ++effect) {
    const bool to_black = effect % 2 == 0;
    steps += ChangeTo(to_black ? m_black : m_white) + "EffectShow " + std::to_string(effect) + "\nexpect 1\n" +
             kEvents + "GetPictureSize\nexpect 0\n" + Expect(to_black ? m_all_black : m_all_white);
  }

  ExpectPlays(steps);

  const std::string log = LogOfTheEffects();
  for (int effect = 0; effect < 24; ++effect) {
    EXPECT_EQ(CountIn(log, "EffectShow: set effect_type to " + std::to_string(effect) + "\n"), 1u) << effect;
  }
  EXPECT_EQ(CountIn(log, "OnEffectEventCB event_type = 3, result_code = 8"), 24u);
  EXPECT_EQ(CountIn(log, kDecoded), 24u);
  EXPECT_EQ(CountIn(log, kShown), 24u + 1) << "the first is the white picture's";
}

TEST_F(GivenWhiteScreen, TheChoiceIsLeftToTheLibraryByTwoNumbers) {
  ExpectPlays(ChangeTo(m_black) + "SetTransitionEffect -2\nexpect 1\n" + kEvents + Expect(m_all_black) +
              ChangeTo(m_white) + "SetTransitionEffect 36\nexpect 1\n" + kEvents + Expect(m_all_white) +
              ChangeTo(m_black) + "EffectShow 36\nexpect 1\n" + kEvents + Expect(m_all_black));

  const std::string log = LogOfTheEffects();
  EXPECT_THAT(log, HasSubstr("SetTransitionEffect:effect_type = -2 effect show URL is '" + m_black + "'."));
  EXPECT_EQ(CountIn(log, "EffectShow: set effect_type to 36\n"), 3u);
  EXPECT_EQ(CountIn(log, "EffectShow: set effect_type to -2\n"), 0u);
}

TEST_F(GivenWhiteScreen, NumbersThatAreNoEffectAreRefusedAndThePictureStays) {
  std::string steps = ChangeTo(m_black);
  for (const char* command : {"EffectShow 24", "EffectShow -1", "EffectShow -2", "EffectShow 1000",
                              "SetTransitionEffect 24", "SetTransitionEffect -1", "SetTransitionEffect 37"}) {
    steps += std::string(command) + "\nexpect 0\n";
  }

  ExpectPlays(steps + "expect-no-event 8 within 100ms\n" + Expect(m_all_white));

  const std::string log = LogOfTheEffects();
  EXPECT_EQ(CountIn(log, "lumaview_run_transition_effect execute ERROR!!! iFunRet = -1\n"), 7u);
  EXPECT_EQ(CountIn(log, "Read to lumaview_destroy!!!"), 1u) << "only the first finds a picture";
  EXPECT_THAT(log, ContainsRegex("\\[lumaview\\][^\n]*there is no effect 24; there are 0 to 23, and 36"));
  EXPECT_THAT(log, Not(HasSubstr("OnEffectEventCB")));
}

TEST_F(GivenWhiteScreen, ATextWithoutDigitsIsTheFirstEffectAndNoTextIsNone) {
  ExpectPlays(ChangeTo(m_black) + "EffectShow \"\"\nexpect 0\nSetTransitionEffect\nexpect 0\n" +
              "expect-no-event 8 within 100ms\n" + Expect(m_all_white) + "EffectShow fade\nexpect 1\n" + kEvents +
              Expect(m_all_black));

  EXPECT_EQ(CountIn(LogOfTheEffects(), "EffectShow: set effect_type to 0\n"), 1u);
}

TEST_F(GivenWhiteScreen, ASecondEffectNeedsNoPictureOfItsOwn) {
  ExpectPlays(ChangeTo(m_black) + "EffectShow 0\nexpect 1\n" + kEvents + Expect(m_all_black) + "EffectShow 17\n" +
              "expect 1\n" + kEvents + Expect(m_all_black));

  const std::string log = LogOfTheEffects();
  EXPECT_EQ(CountIn(log, "OnEffectEventCB event_type = 3, result_code = 8"), 2u);
  const std::string second = log.substr(log.find("EffectShow: set effect_type to 0\n"));
  EXPECT_THAT(second, ContainsRegex("\\[lumaview\\] lumaview_set_window: the picture is null"));
  EXPECT_THAT(second, Not(HasSubstr("Read to lumaview_destroy!!!")));
}

TEST_F(GivenWhiteScreen, AnEffectDuringAnotherEndsItAndBothReport) {
  ExpectPlays(ChangeTo(m_black) + "EffectShow 0\nexpect 1\n" + ChangeTo(m_white) + "EffectShow 5\nexpect 1\n" +
                  kEvents + kEvents + Expect(m_all_white),
              1500);

  const std::string log = LogOfTheEffects();
  const size_t replaced = log.find("OnEffectEventCB event_type = 3, result_code = 9");
  const size_t ended = log.find("OnEffectEventCB event_type = 3, result_code = 8");
  ASSERT_NE(replaced, std::string::npos);
  ASSERT_NE(ended, std::string::npos);
  EXPECT_LT(replaced, ended);
  EXPECT_EQ(CountIn(log, kDecoded), 2u);
}

TEST_F(GivenWhiteScreen, APictureThatCannotBeDecodedEndsTheEffectAndTheOldOneStays) {
  ExpectPlays(ChangeTo(FileWith("words.jpg", "These are words, not a picture.")) + "SetTransitionEffect 0\nexpect 1\n" +
              kEvents + Expect(m_all_white) + "expect-no-event 6 within 100ms\n" + ChangeTo(m_black) +
              "SetTransitionEffect 0\nexpect 1\n" + kEvents + Expect(m_all_black));

  const std::string log = LogOfTheEffects();
  EXPECT_EQ(CountIn(log, "OnEffectEventCB event_type = 3, result_code = 9"), 1u);
  EXPECT_THAT(log, ContainsRegex("\\[lumaview\\] [^\n]*words.jpg: "));
}

TEST_F(GivenWhiteScreen, StopDuringAnEffectLeavesOneOfThePicturesAndNoEventFollows) {
  ExpectPlays(ChangeTo(m_black) +
                  "EffectShow 0\nexpect 1\nStop\nexpect 1\nexpect-no-event 8 within 300ms\nscreenshot " +
                  PathOf("stopped.png") + "\nInitPlayer " + m_white + "\nexpect 1\nStartPlayback\nexpect 1\n" +
                  kEvents + Expect(m_all_white),
              60000);

  // With a picture of its own it would have been taken off; an effect ends, or has not begun yet.
  const Result<Picture> stopped = ReadPng(PathOf("stopped.png"));
  ASSERT_TRUE(stopped);
  EXPECT_TRUE(*stopped == *ReadPng(m_all_black) || *stopped == *ReadPng(m_all_white)) << "something between the two";
  EXPECT_THAT(LogOfTheEffects(), Not(HasSubstr("OnEffectEventCB")));
}

TEST_F(GivenWhiteScreen, PauseDuringAnEffectTakesThePictureOffAndResumeShowsTheNewOne) {
  const std::string photograph = Photograph(1920, 1080);

  ExpectPlays(ChangeTo(photograph) + "EffectShow 0\nexpect 1\nstate pause\n" +
                  "expect-log \"receive app pause notify\" within 10s\n" + Expect(m_all_black) +
                  "state resume\nexpect-event 10 within 20s\nexpect-event 8 within 20s\nscreenshot " +
                  PathOf("resumed.png") + "\n",
              60000);

  const Result<Picture> resumed = ReadPng(PathOf("resumed.png"));
  ASSERT_TRUE(resumed);
  ExpectShown(*resumed, photograph, kScreen);
  EXPECT_THAT(LogOfTheEffects(), Not(HasSubstr("OnEffectEventCB")));
}

TEST_F(GivenTelevision, ASlideShowTellsItsFramesAndThePictureThatNoTransitionCouldShow) {
  const std::string words = FileWith("words.jpg", "These are words, not a picture.");

  const Outcome outcome = Run({"run", "--interval=0", "--duration=200", "--effect=random", Plain("white", 1600, 900),
                               words, Plain("navy", 1600, 900)});

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, ContainsRegex("2/3. [^\n]*words.jpg  NOT SHOWN: [^\n]*known"));
  EXPECT_THAT(outcome.output, ContainsRegex("3/3. [^\n]*navy.png  shown"));
  EXPECT_THAT(outcome.output, ContainsRegex("\nFrames: [0-9]+ shown, [0-9]+ skipped .* worst gap [0-9]+ ms\n"));
}

TEST_F(GivenTelevision, AnEffectWithoutAPathIsRefusedBeforeAnythingIsLocked) {
  const Outcome outcome = Play("EffectShow 0\nexpect 0\nSetTransitionEffect -2\nexpect 0\n");

  EXPECT_EQ(outcome.status, 0) << outcome.output << outcome.errors;
  EXPECT_EQ(CountIn(EngineLog(), "strlen m_cURL is 0!!! Please check the URL"), 2u);
  EXPECT_THAT(EngineLog(), Not(HasSubstr("m_AdapterMut")));
}

}  // namespace
}  // namespace sim::tvsim
