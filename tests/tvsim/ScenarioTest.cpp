// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/scenario/Scenario.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <sstream>

namespace sim::tvsim {
namespace {

using testing::ElementsAre;
using Words = std::vector<std::string>;

Result<std::vector<Step>> Parsed(const std::string& text) {
  std::istringstream stream(text);
  return ParseScenario(stream);
}

Words WordsOf(const std::string& line) {
  const auto steps = Parsed(line);
  return steps && steps->size() == 1 ? steps->front().words : Words{"not one step"};
}

TEST(GivenScenarioText, LinesBecomeStepsWithTheirNumbers) {
  const auto steps = Parsed("\n# comment\n  InitPlayer a\n\nStop # comment\n");

  ASSERT_TRUE(steps);
  ASSERT_EQ(steps->size(), 2u);
  EXPECT_EQ((*steps)[0].line, 3u);
  EXPECT_EQ((*steps)[1].line, 5u);
  EXPECT_THAT((*steps)[1].words, ElementsAre("Stop"));
}

TEST(GivenScenarioText, QuotesHoldWordsTogether) {
  EXPECT_THAT(WordsOf(R"(InitPlayer "/my pictures/a \"b\" \\.jpg" "" c)"),
              ElementsAre("InitPlayer", R"(/my pictures/a "b" \.jpg)", "", "c"));
  EXPECT_THAT(WordsOf("InitPlayer /a#b"), ElementsAre("InitPlayer", "/a#b"));
}

TEST(GivenScenarioText, VariablesAreTheEnvironments) {
  setenv("SCENARIO_TEST", "a b", 1);

  EXPECT_THAT(WordsOf("InitPlayer ${SCENARIO_TEST}/c"), ElementsAre("InitPlayer", "a b/c"));
}

TEST(GivenScenarioText, WhatIsNotClosedOrNotSetIsNamedWithItsLine) {
  EXPECT_EQ(Parsed("Stop\nInitPlayer \"a").error().reason, "2: a quote is not closed");
  EXPECT_EQ(Parsed("InitPlayer ${SURELY_NOT_SET}").error().reason, "1: the variable SURELY_NOT_SET is not set");
  EXPECT_EQ(Parsed("InitPlayer ${A").error().reason, "1: a \"${\" has no \"}\"");
}

TEST(GivenDuration, UnitsAreNeeded) {
  using std::chrono::milliseconds;
  EXPECT_EQ(ParseDuration("250ms"), milliseconds(250));
  EXPECT_EQ(ParseDuration("1.5s"), milliseconds(1500));
  for (const char* wrong : {"", "2", "s", "-1s", "2h", "2s ", "infs", "nanms", "4000s", "1e9s"}) {
    EXPECT_EQ(ParseDuration(wrong), std::nullopt) << wrong;
  }
}

TEST(GivenDecibels, UnitIsNeeded) {
  EXPECT_EQ(ParseDecibels("35dB"), 35.0);
  EXPECT_EQ(ParseDecibels("35"), std::nullopt);
}

}  // namespace
}  // namespace sim::tvsim
