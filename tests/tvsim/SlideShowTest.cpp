// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <fstream>

#include "simulator/tvsim/screen/Picture.h"
#include "tests/tvsim/TvsimFixture.h"

namespace sim::tvsim {
namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

/// The commands in `log`, in order, as "Command(param,param)".
std::vector<std::string> CommandsIn(const std::string& log) {
  std::vector<std::string> commands;
  std::istringstream lines(log);
  const std::string before = "\"command\":\"", between = "\",\"params\":[";
  for (std::string line; std::getline(lines, line);) {
    const size_t begin = line.find(before), middle = line.find(between);
    if (begin == std::string::npos || middle == std::string::npos) {
      continue;
    }
    const size_t name = begin + before.size(), params = middle + between.size();
    std::string text =
        line.substr(name, middle - name) + "(" + line.substr(params, line.find(']', params) - params) + ")";
    std::erase(text, '"');
    commands.push_back(text);
  }
  return commands;
}

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

TEST_F(GivenAnEngine, RunWithAnEffectNamesItByItsPlaceInTheEnginesList) {
  const Outcome outcome =
      Run({"run", "--interval=0", "--effect=dissolve", PictureNamed("a.png"), PictureNamed("b.png")});

  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_THAT(CommandsIn(EngineLog()), testing::Contains("SetTransitionEffect(1)"));
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
