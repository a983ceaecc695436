// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/Log.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "tests/base/TemporaryFolder.h"

namespace sim {
namespace {

/// The environment is read at a process's first line, so each case logs in a process of its own.
class GivenLogInAFile : public testing::Test {
 protected:
  template <typename Work>
  std::string LoggedBy(Work work) const {
    const pid_t pid = fork();
    if (pid == 0) {
      setenv("OLM_LOG_FILE", (m_folder / "log").c_str(), 1);
      work();
      _exit(0);
    }
    waitpid(pid, nullptr, 0);
    return ReadFile(m_folder / "log");
  }

  const TemporaryFolder m_folder;
};

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
