// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <iterator>

#include "simulator/tvsim/screen/Picture.h"
#include "tests/tvsim/TvsimFixture.h"

namespace sim::tvsim {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using GivenAnEngine = TvsimFixture;

TEST_F(GivenAnEngine, RunDrivesItAsAnApplicationDoes) {
  const std::string one = PictureNamed("one.jpg"), two = PictureNamed("two.jpg");

  const Outcome outcome = Run({"run", "--interval=0", one, two});

  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_THAT(
      CommandsIn(EngineLog()),
      testing::ElementsAre("InitPlayer(" + one + ")", "SetDisplayArea(0,0,0,0)", "StartPlayback()", "GetPictureSize()",
                           "ChangePlayingURL(" + two + ")", "StartPlayback()", "GetPictureSize()", "Stop()"));
  EXPECT_THAT(EngineLog(), ContainsRegex("app.open.*org.example.slideshow(.|\n)*app.close"));
}

TEST_F(GivenAnEngine, RunReportsEachPictureThatIsNotShownAndPlaysTheOthers) {
  const Outcome outcome = Run({"run", "--interval=0", PictureNamed("broken.jpg"), PictureNamed("missing.jpg"),
                               PictureNamed("disordered.jpg"), PictureNamed("good.jpg")});

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, ContainsRegex("1/4.*broken.jpg  NOT SHOWN: the engine reports event 6"));
  EXPECT_THAT(outcome.output, ContainsRegex("2/4.*missing.jpg  NOT SHOWN: ChangePlayingURL answers 0"));
  EXPECT_THAT(outcome.output, ContainsRegex("3/4.*disordered.jpg  NOT SHOWN: event 8 came without event 10"));
  EXPECT_THAT(outcome.output, ContainsRegex("4/4.*good.jpg  shown in [0-9]+ ms"));
}

TEST_F(GivenAnEngine, RunDoesNotWaitForTheEventOfAnEngineThatHasEnded) {
  const Outcome outcome = Run({"run", "--interval=0", PictureNamed("collapse.jpg"), PictureNamed("good.jpg")});

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, ContainsRegex("1/2.*collapse.jpg  NOT SHOWN: the engine has ended"));
  EXPECT_THAT(outcome.output, ContainsRegex("2/2.*good.jpg  shown in [0-9]+ ms"));
}

TEST_F(GivenAnEngine, RunBeginsWithAnotherWindowAfterTwoPicturesThatCouldNotBeShown) {
  const std::string good = PictureNamed("good.jpg");

  const Outcome outcome = Run({"run", "--interval=0", PictureNamed("broken1.jpg"), PictureNamed("broken2.jpg"), good});

  EXPECT_EQ(outcome.status, 1);
  const std::vector<std::string> commands = CommandsIn(EngineLog());
  const auto again = std::ranges::find(commands, "InitPlayer(" + good + ")");
  ASSERT_NE(again, commands.end());
  EXPECT_EQ(*std::prev(again), "Stop()");
}

TEST_F(GivenAnEngine, RunGoesOnWithAnotherXServerAndLosesNoPicture) {
  const ChildProcess tvsim = Start({"run", "--loop", "--interval=0.02", PictureNamed("a.jpg"), PictureNamed("b.jpg")});
  const auto shown = [&] {
    const std::string output = ContentsOf(PathOf("output"));
    return std::ranges::count(output, '\n');
  };
  Await("the first pictures", [&] { return shown() > 5; });

  const pid_t server = ProcessNamed("Xvfb");
  ASSERT_GT(server, 0) << ContentsOf(PathOf("output")) << ContentsOf(PathOf("errors"));
  kill(server, SIGKILL);

  Await("another screen",
        [&] { return ContentsOf(PathOf("errors")).find("there is a screen again") != std::string::npos; });
  const auto before = shown();
  Await("more pictures", [&] { return shown() > before + 5; });
  EXPECT_THAT(ContentsOf(PathOf("output")), testing::Not(HasSubstr("NOT SHOWN")));
}

TEST_F(GivenAnEngine, RunWithAnEffectNamesItByItsPlaceInTheEnginesList) {
  const Outcome outcome =
      Run({"run", "--interval=0", "--effect=dissolve", PictureNamed("a.png"), PictureNamed("b.png")});

  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_THAT(CommandsIn(EngineLog()), testing::Contains("SetTransitionEffect(1)"));
}

TEST_F(GivenAnEngine, RunWithRandomEffectsLeavesTheChoiceToIt) {
  const Outcome outcome = Run({"run", "--interval=0", "--effect=random", PictureNamed("a.png"), PictureNamed("b.png")});

  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_THAT(CommandsIn(EngineLog()), testing::Contains("SetTransitionEffect(36)"));
}

TEST_F(GivenAnEngine, RunTellsInTheEndHowTheFramesCame) {
  const std::vector<std::string> pictures = {PictureNamed("a.png"), PictureNamed("b.png"), PictureNamed("c.png")};

  const Outcome people = Run({"run", "--interval=0", "--effect=dissolve", pictures[0], pictures[1], pictures[2]});
  const Outcome programs =
      Run({"run", "--interval=0", "--effect=dissolve", "--json", pictures[0], pictures[1], pictures[2]});
  const Outcome without = Run({"run", "--interval=0", pictures[0], pictures[1]});

  EXPECT_THAT(people.output, HasSubstr("\nFrames: 118 shown, 2 skipped (98.33 % on time), worst gap 34 ms\n"));
  EXPECT_THAT(programs.output,
              testing::EndsWith("\n{\"framesShown\":118,\"framesSkipped\":2,\"worstGapMilliseconds\":34}\n"));
  EXPECT_THAT(without.output, Not(HasSubstr("Frames")));
}

TEST_F(GivenAnEngine, RunNamesThePictureWhoseTransitionFailed) {
  const Outcome outcome = Run({"run", "--interval=0", "--effect=dissolve", PictureNamed("a.png"),
                               PictureNamed("unfading.png"), PictureNamed("c.png")});

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, ContainsRegex("2/3.*unfading.png  NOT SHOWN: the picture is damaged\n"));
  EXPECT_THAT(outcome.output, ContainsRegex("3/3.*c.png  shown"));
}

TEST_F(GivenAnEngine, RunGivesItsLibraryTheWayToShow) {
  const std::string picture = PictureNamed("a.png");
  const auto environment_with = [&](const std::vector<std::string>& options) {
    std::vector<std::string> arguments = {"run", "--interval=0.5", picture};
    arguments.insert(arguments.end(), options.begin(), options.end());
    EXPECT_EQ(Run(arguments).status, 0);
    return ContentsOf(PathOf("engine.log.environment"));
  };

  EXPECT_THAT(environment_with({}), testing::Eq("1000 - -"));
  EXPECT_THAT(environment_with({"--fit", "--duration=200"}), testing::Eq("200 fit -"));
  EXPECT_THAT(environment_with({"--fill"}), testing::Eq("1000 fill -"));
  EXPECT_THAT(environment_with({"--ken-burns"}), testing::Eq("1000 - 2500"));
  EXPECT_EQ(Run({"run", "--fit", "--fill", picture}).status, 2);
}

TEST_F(GivenAnEngine, RunWithAnUnknownEffectNamesTheOnesThatThereAre) {
  const Outcome outcome = Run({"run", "--interval=0", "--effect=sparkle", PictureNamed("a.png")});

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("there is no effect 'sparkle'; there are fade,dissolve,wipeleft"));
}

TEST_F(GivenAnEngine, RunReplacesOneThatCrashesAndGoesOn) {
  const Outcome outcome =
      Run({"run", "--interval=0", PictureNamed("first.jpg"), PictureNamed("crash.jpg"), PictureNamed("good.jpg")});

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, ContainsRegex("crash.jpg  NOT SHOWN: .*signal 11"));
  EXPECT_THAT(outcome.output, ContainsRegex("good.jpg  shown"));
  EXPECT_THAT(outcome.errors, HasSubstr("about to crash"));  // the last lines of its log
  EXPECT_THAT(CommandsIn(EngineLog()), testing::IsSupersetOf({"InitPlayer(" + PathOf("good.jpg") + ")"}));
}

TEST_F(GivenAnEngine, RunReplacesOneThatHangs) {
  const Outcome outcome =
      Run({"run", "--interval=0", "--answer-limit=3000", PictureNamed("hang.jpg"), PictureNamed("good.jpg")});

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, ContainsRegex("hang.jpg  NOT SHOWN: .*not answered within 3000 ms"));
  EXPECT_THAT(outcome.output, ContainsRegex("good.jpg  shown"));
}

TEST_F(GivenAnEngine, RunLeavesAScreenshotPerPicture) {
  const Outcome outcome =
      Run({"run", "--interval=0", "--screenshots", PathOf("shots"), PictureNamed("a.jpg"), PictureNamed("b.jpg")});

  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  for (const char* name : {"shots/001-a.png", "shots/002-b.png"}) {
    const Result<Picture> shot = ReadPng(PathOf(name));
    ASSERT_TRUE(shot) << name;
    EXPECT_EQ(shot->width, 640);
    EXPECT_EQ(shot->height, 360);
  }
  EXPECT_THAT(outcome.output, HasSubstr("Screenshots: " + PathOf("shots")));
}

TEST_F(GivenAnEngine, RunWithJsonWritesNothingElse) {
  const Outcome outcome = Run({"run", "--interval=0", "--json", PictureNamed("a.jpg"), PictureNamed("broken.jpg")});

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output,
              ContainsRegex("^\\{\"picture\":\"[^\"]*a.jpg\",\"number\":1,\"shown\":true,\"milliseconds\":"
                            "[0-9]+,\"size\":\"640\\*480\"\\}\n\\{[^\n]*\"shown\":false[^\n]*\\}\n$"));
}

TEST_F(GivenAnEngine, RunPassesFileNamesAsTheyAre) {
  const std::string odd = PictureNamed("a \"b\" \xFF\xFE %s.jpg");

  const Outcome outcome = Run({"run", "--interval=0", odd});

  EXPECT_EQ(outcome.status, 0) << outcome.output << outcome.errors;
  EXPECT_THAT(EngineLog(), HasSubstr("\xFF\xFE %s.jpg"));
}

TEST_F(GivenAnEngine, RunRefusesWhatIsNotThere) {
  const Outcome nowhere = Run({"run", PathOf("nowhere.jpg")});
  const Outcome no_engine = Run({"run", "--engine=/nowhere/engine", PictureNamed("a.jpg")});

  EXPECT_EQ(nowhere.status, 2);
  EXPECT_THAT(nowhere.errors, HasSubstr("there is no " + PathOf("nowhere.jpg")));
  EXPECT_EQ(no_engine.status, 2);
  EXPECT_THAT(EngineLog(), IsEmpty());
}

TEST_F(GivenAnEngine, RunDoesNotSendAPathThatWouldEndIt) {
  std::string folder = PathOf(std::string(200, 'd'));
  std::filesystem::create_directories(folder += "/" + std::string(200, 'e'));
  std::filesystem::create_directories(folder += "/" + std::string(100, 'f'));
  std::ofstream(folder + "/a.jpg") << "picture";

  const Outcome outcome = Run({"run", "--interval=0", folder + "/a.jpg"});

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.output, HasSubstr("its path is longer than 499 bytes"));
  EXPECT_THAT(outcome.errors, Not(HasSubstr("has ended")));
}

}  // namespace
}  // namespace sim::tvsim
