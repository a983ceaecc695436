// SPDX-License-Identifier: Apache-2.0
/// The engine's commands on a whole television, as scenarios.
#include <gmock/gmock.h>

#include "tests/system/GivenTelevision.h"

namespace sim::tvsim {
namespace {

using testing::HasSubstr;
using testing::Not;

class GivenPlayback : public GivenTelevision {
 protected:
  void ExpectPlays(const std::string& scenario) {
    const Outcome outcome = Play(scenario);
    EXPECT_EQ(outcome.status, 0) << outcome.output << outcome.errors << EngineLog();
  }

  /// Steps that show a white picture of the screen's shape.
  std::string ShowWhite() {
    return "InitPlayer " + Plain("white", 1600, 900) + "\nexpect 1\nSetDisplayArea 0 0 0 0\nexpect 1\n" + kStart +
           "expect-screenshot " + WhiteOn(kScreen) + " 99dB\n";
  }

  static constexpr const char* kStart =
      "StartPlayback\nexpect 1\nexpect-event 10 within 20s\nexpect-event 8 within 20s\n";
};

TEST_F(GivenPlayback, AMissingFileIsRefusedAndTheLogNamesTheReason) {
  ExpectPlays("InitPlayer " + PathOf("nowhere.jpg") + "\nexpect 0\nexpect-log nowhere.jpg within 5s\n");

  EXPECT_THAT(EngineLog(), testing::ContainsRegex("\\[lumaview\\][^\n]*nowhere.jpg[^\n]*No such file"));
}

TEST_F(GivenPlayback, WhatIsNoPictureIsEventSixAndTheNextOnePlays) {
  ExpectPlays("InitPlayer " + FileWith("words.jpg", "These are words, not a picture.") +
              "\nexpect 1\nStartPlayback\nexpect 1\nexpect-event 6 within 20s\nChangePlayingURL " +
              Plain("white", 1600, 900) + "\nexpect 1\n" + kStart + "expect-no-event 6 within 100ms\n");
}

TEST_F(GivenPlayback, APictureCutInItsHeaderIsEventSixAndTheNextOnePlays) {
  const std::string whole = ContentsOf(Photograph(900, 600));
  const std::string cut = FileWith("cut.jpg", whole.substr(0, 200));

  ExpectPlays("InitPlayer " + cut +
              "\nexpect 1\nStartPlayback\nexpect 1\nexpect-event 6 within 20s\nChangePlayingURL " +
              Plain("white", 1600, 900) + "\nexpect 1\n" + kStart);
}

TEST_F(GivenPlayback, InitPlayerStripsTheFileScheme) {
  ExpectPlays("InitPlayer file://" + Plain("white", 1600, 900) + "\nexpect 1\n" + kStart + "expect-screenshot " +
              WhiteOn(kScreen) + " 99dB\n");
}

TEST_F(GivenPlayback, PlayTakesThePathAsItIs) {
  const std::string picture = Plain("white", 1600, 900);

  ExpectPlays("SetDisplayArea 0 0 0 0\nexpect 1\nPlay file://" + picture + "\nexpect 0\nPlay " + picture +
              "\nexpect 1\nexpect-event 10 within 20s\nexpect-event 8 within 20s\n");
}

TEST_F(GivenPlayback, TheDisplayAreaIsPlacedToThePixel) {
  ExpectPlays(ShowWhite() + "SetDisplayArea 240 60 480 270\nexpect 1\nexpect-screenshot " +
              WhiteOn({480, 120, 960, 540}) + " 99dB\nSetDisplayArea 1 1 480 270\nexpect 1\nexpect-screenshot " +
              WhiteOn({2, 2, 960, 540}) + " 99dB\n");
}

TEST_F(GivenPlayback, TheParameterListPlacesInItsOwnBaseResolution) {
  ExpectPlays(ShowWhite() + "with-list SetDisplayArea 100 50 640 360 720\nexpect-screenshot " +
              WhiteOn({150, 75, 960, 540}) + " 99dB\n");
}

TEST_F(GivenPlayback, ClearScreenTakesThePictureOffAndLeavesTheWindow) {
  ExpectPlays(ShowWhite() + "ClearScreen\nexpect 1\nexpect-screenshot " + BlackScreen() + " 99dB\n" + kStart +
              "expect-screenshot " + WhiteOn(kScreen) + " 99dB\n");

  const std::string log = EngineLog(), made = "create window ID";
  EXPECT_EQ(log.find(made), log.rfind(made)) << "the window was made again";
}

TEST_F(GivenPlayback, StopTakesThePictureOff) {
  ExpectPlays(ShowWhite() + "Stop\nexpect 1\nexpect-screenshot " + BlackScreen() + " 99dB\n");
}

TEST_F(GivenPlayback, PauseTakesThePictureOffAndResumeBringsItBackAtFullSize) {
  ExpectPlays(ShowWhite() + "SetDisplayArea 240 60 480 270\nexpect 1\nstate pause\n" +
              "expect-log \"receive app pause notify\" within 10s\nexpect-screenshot " + BlackScreen() +
              " 99dB\nstate resume\nexpect-event 10 within 20s\nexpect-event 8 within 20s\nexpect-screenshot " +
              WhiteOn(kScreen) + " 99dB\n");

  EXPECT_THAT(EngineLog(), HasSubstr("AppResume succeed"));
}

TEST_F(GivenPlayback, AfterDestroyEveryCommandAnswersZero) {
  ExpectPlays(ShowWhite() + "state destroy\nexpect-log \"AppDestroy succeed\" within 10s\nexpect-screenshot " +
              BlackScreen() + " 99dB\nInitPlayer " + Plain("white", 1600, 900) +
              "\nexpect 0\nStop\nexpect 0\nGetVideoResolution\nexpect 0\nnonsense\nexpect 0\n");
}

TEST_F(GivenPlayback, ASlideShowWithTransitionsEndsOnEachPicture) {
  const std::string next = Photograph(1920, 1080);

  const Outcome outcome = Run({"run", "--interval=0", "--duration=200", "--effect=36", "--screenshots", PathOf("shots"),
                               Plain("white", 1600, 900), next});

  EXPECT_EQ(outcome.status, 0) << outcome.output << outcome.errors << EngineLog();
  const Result<Picture> shot = ReadPng(PathOf("shots/002-photograph-1920x1080-1.png"));
  ASSERT_TRUE(shot);
  ExpectShown(*shot, next, kScreen);
}

}  // namespace
}  // namespace sim::tvsim
