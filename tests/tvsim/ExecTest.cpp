// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include "tests/tvsim/TvsimFixture.h"

namespace sim::tvsim {
namespace {

using testing::HasSubstr;
using testing::Not;

/// Scenarios on an engine that answers 1 and sends the events 10 and 8.
class GivenScenario : public TvsimFixture {
 protected:
  Outcome Play(const std::string& text) { return Run({"exec", FileWith("scenario", text)}); }
};

TEST_F(GivenScenario, ThatIsMetItEndsWithZero) {
  const Outcome outcome = Play(R"(# two commands
InitPlayer /pictures/a.jpg    # the first
expect 1
StartPlayback
expect-event 10 within 10s
expect-event 8 within 10s
expect-no-event 6 within 50ms
GetPictureSize
expect 640*480
play
expect-error -32601
state pause
)");

  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_THAT(outcome.output, HasSubstr("11 steps done"));
}

TEST_F(GivenScenario, WithAnUnexpectedResultItStopsThere) {
  const Outcome outcome = Play("InitPlayer /pictures/missing.jpg\nexpect 1\nStop\n");

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors, HasSubstr(":2: expected 1, the command answers 0"));
  EXPECT_THAT(outcome.output, Not(HasSubstr("Stop")));
}

TEST_F(GivenScenario, WithAnEventThatDoesNotComeItNamesThoseThatCame) {
  const Outcome outcome = Play("InitPlayer /pictures/broken.jpg\nStartPlayback\nexpect-event 8 within 200ms\n");

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors, HasSubstr("no event 8 within 200ms; there came 6"));
}

TEST_F(GivenScenario, WithAnEventThatMustNotComeItFails) {
  const Outcome outcome = Play("InitPlayer /pictures/broken.jpg\nStartPlayback\nexpect-no-event 6 within 5s\n");

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors, HasSubstr("event 6 came"));
}

TEST_F(GivenScenario, ScreenshotsAreComparedByLikeness) {
  const std::string shot = PathOf("shot.png");

  const Outcome same = Play("screenshot " + shot + "\nexpect-screenshot " + shot + " 60dB\n");
  const Outcome none = Play("expect-screenshot " + PathOf("none.png") + " 35dB\n");

  EXPECT_EQ(same.status, 0) << same.errors;
  EXPECT_EQ(none.status, 1);
}

TEST_F(GivenScenario, WithACrashingEngineTheCommandAnswersWhy) {
  const Outcome outcome =
      Play("InitPlayer /pictures/crash.jpg\nexpect-error -32000\nInitPlayer /pictures/a.jpg\nexpect 1\n");

  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_THAT(outcome.output, HasSubstr("the engine has ended: signal 11"));
}

TEST_F(GivenScenario, ARecordingPlaysTheSameAgain) {
  const std::string odd = PictureNamed("a \"b\" ${c} #d.jpg");
  const Outcome recorded = Run({"run", "--interval=0", "--record", PathOf("record"), odd, PictureNamed("broken.jpg")});
  const std::string first_log = EngineLog();

  const Outcome played = Run({"exec", PathOf("record")});

  EXPECT_EQ(recorded.status, 1);
  EXPECT_EQ(played.status, 0) << played.errors << ContentsOf(PathOf("record"));
  const std::string both_logs = EngineLog();
  EXPECT_EQ(both_logs.substr(first_log.size()), first_log);
}

TEST_F(GivenScenario, ThatIsWrittenWronglyNothingIsPlayed) {
  const char* const wrong[] = {
      "InitPlayer a\nexpect-event 8 2s\n", "expect-event 8 within soon\n", "state sleep\n", "InitPlayer \"a\n",
      "InitPlayer ${SURELY_NOT_SET}\n",    "Command 1 2 3 4 5\n"};
  for (const char* text : wrong) {
    EXPECT_EQ(Play(text).status, 2) << text;
  }
  EXPECT_EQ(EngineLog(), "");
}

}  // namespace
}  // namespace sim::tvsim
