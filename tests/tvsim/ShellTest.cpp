// SPDX-License-Identifier: Apache-2.0
#include "tests/tvsim/TvsimFixture.h"

#include <gmock/gmock.h>

#include "simulator/tvsim/engine/LogFilter.h"
#include "simulator/tvsim/shell/Completion.h"

namespace sim::tvsim {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

TEST(GivenBeginning, FirstWordsAreCommandsAndStatements) {
  EXPECT_THAT(FirstWords("SetD"), ElementsAre("SetDisplayArea", "SetDisplayLock"));
  EXPECT_THAT(FirstWords("expect-e"), ElementsAre("expect-error", "expect-event"));
  EXPECT_THAT(FirstWords("xyz"), testing::IsEmpty());
}

TEST(GivenLogLine, FiltersLookAtFunctionColourTraceAndText) {
  const std::string failure = "[OLM][Stop(12)] \033[31m[Picture-EMP][Stop (12)] lumaview_destroy error\033[0m";
  const std::string enter = "[OLM][Stop(9)] \033[34m[Picture-EMP] Stop ==========> Enter\033[0m";

  EXPECT_TRUE((LogFilter{"Stop", "destroy error", true, true}.Wants(failure)));
  EXPECT_FALSE((LogFilter{"Play", "", false, false}.Wants(failure)));
  EXPECT_FALSE((LogFilter{"", "other", false, false}.Wants(failure)));
  EXPECT_TRUE(LogFilter{}.Wants(enter));
  EXPECT_FALSE((LogFilter{"", "", true, false}.Wants(enter)));
  EXPECT_FALSE((LogFilter{"", "", false, true}.Wants(enter)));
}

using GivenTools = TvsimFixture;

TEST_F(GivenTools, ShellPlaysLinesAndShowsResultsAndEvents) {
  const Outcome outcome =
      Run({"shell"},
          "InitPlayer /pictures/a.jpg\nexpect 1\nStartPlayback\nexpect-event 8 within 10s\n\nhelp\nexit\nStop\n");

  EXPECT_EQ(outcome.status, 0) << outcome.errors;
  EXPECT_THAT(outcome.output, HasSubstr("event 10 DECODE_COMPLETED"));
  EXPECT_THAT(outcome.output, HasSubstr("expect-event NUMBER within TIME"));
  EXPECT_THAT(EngineLog(), testing::Not(HasSubstr("Stop")));
}

TEST_F(GivenTools, ShellGoesOnAfterALineThatFails) {
  const Outcome outcome = Run({"shell"}, "Stop\nexpect 0\nstate sleep\nStartPlayback\n");

  EXPECT_EQ(outcome.status, 1);
  EXPECT_THAT(outcome.errors, HasSubstr("expected 0, the command answers 1"));
  EXPECT_THAT(outcome.errors, HasSubstr("pause|resume|destroy"));
  EXPECT_THAT(EngineLog(), HasSubstr("StartPlayback"));
}

TEST_F(GivenTools, LogShowsTheChosenLinesOfAFileWithoutColours) {
  const std::string log = FileWith("a.log", "[OLM][Stop(1)] \033[31mred\033[0m\n[OLM][Play(2)] \033[34mblue\033[0m\n");

  const Outcome all = Run({"log", "--file", log});
  const Outcome red = Run({"log", "--file", log, "--failures", "--color=always"});

  EXPECT_EQ(all.output, "[OLM][Stop(1)] red\n[OLM][Play(2)] blue\n");
  EXPECT_EQ(red.output, "[OLM][Stop(1)] \033[31mred\033[0m\n");
  EXPECT_EQ(Run({"log", "--file", PathOf("none.log")}).status, 2);
}

TEST_F(GivenTools, DoctorNamesWhatASessionNeeds) {
  const Outcome outcome = Run({"doctor", "--engine=/nowhere/engine"});

  EXPECT_EQ(outcome.status, 2);
  EXPECT_THAT(outcome.output, HasSubstr("missing engine: no '/nowhere/engine'"));
  for (const char* what : {"X server", "Xvfb", "namespaces", "openbox", "decoders", "runtime folder", "limits"}) {
    EXPECT_THAT(outcome.output, HasSubstr(what));
  }
}

}  // namespace
}  // namespace sim::tvsim
