// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/Log.h"

#include <gtest/gtest.h>

#include <cstdlib>

#include "tests/base/LoggedBy.h"

namespace sim {
namespace {

TEST_F(GivenLogInAFile, LineNamesItsComponent) {
  EXPECT_EQ(LoggedBy([] { Log(LogLevel::kInfo, "lumaview", "no such file"); }), "[lumaview] no such file\n");
}

TEST_F(GivenLogInAFile, TextCannotForgeALine) {
  EXPECT_EQ(LoggedBy([] { Log(LogLevel::kInfo, "lumaview", "a\n[vconf]\tb\x1b[31m\x7f\xe9"); }),
            "[lumaview] a\\x0A[vconf]\tb\\x1B[31m\\x7F\xe9\n");
}

TEST_F(GivenLogInAFile, LineEndIsAddedWhereThereIsNone) {
  EXPECT_EQ(LoggedBy([] {
              WriteLogLine(LogLevel::kPlain, "one");
              WriteLogLine(LogLevel::kPlain, "two\n");
            }),
            "one\ntwo\n");
}

TEST_F(GivenLogInAFile, LevelsAboveTheWantedOneAreLeftOut) {
  EXPECT_EQ(LoggedBy([] {
              setenv("OLM_LOG_LEVEL", "1", 1);
              Log(LogLevel::kPlain, "c", "0");
              Log(LogLevel::kError, "c", "1");
              Log(LogLevel::kWarning, "c", "2");
              Log(LogLevel::kInfo, "c", "4");
            }),
            "[c] 0\n[c] 1\n");
}

}  // namespace
}  // namespace sim
