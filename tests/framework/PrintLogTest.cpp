// SPDX-License-Identifier: Apache-2.0
#include <gmock/gmock.h>

#include <cstdlib>
#include <thread>

#include "platform/olm_emp.h"
#include "tests/base/LoggedBy.h"

namespace sim::framework {
namespace {

using olm::COLMDebug;
using testing::ElementsAre;

/// The two calls that a line of an engine takes.
void LogLine(unsigned int level, const char* function, int line, const char* message) {
  COLMDebug::PrintLog(2, level, "[OLM][%s(%d)] ", function, line);
  COLMDebug::PrintLog(2, level, "\033[31m[Picture-EMP][%s (%d)] %s\033[0m", function, line, message);
}

class GivenLog : public GivenLogInAFile {
 protected:
  template <typename Work>
  std::vector<std::string> LinesOf(Work work) const {
    LoggedBy(work);
    return ReadLines(m_folder / "log");
  }
};

TEST_F(GivenLog, PrefixAndMessageAreOneLine) {
  EXPECT_THAT(LinesOf([] { LogLine(1, "Stop", 12, "text"); }),
              ElementsAre("[OLM][Stop(12)] \033[31m[Picture-EMP][Stop (12)] text\033[0m"));
}

TEST_F(GivenLog, LineEndsWhereTheMessageDoes) {
  EXPECT_THAT(LinesOf([] {
                LogLine(1, "Stop", 12, "text\n");
                COLMDebug::PrintLog(2, 0, "plain\n");
                COLMDebug::PrintLog(2, 0, "%s", "");
              }),
              ElementsAre("[OLM][Stop(12)] \033[31m[Picture-EMP][Stop (12)] text\033[0m", "plain", ""));
}

TEST_F(GivenLog, FormatsOfEveryKindAreWritten) {
  EXPECT_THAT(LinesOf([] {
                COLMDebug::PrintLog(2, 4, "%s %d %x %d%s", "text", -12, 0xFFu, 0, "");
                COLMDebug::PrintLog(2, 4, "%d%% of %5.1f, %-3s|%.2s|%ld|%c", 12, 2.25, "a", "bcd", 2000000000L, 'x');
                COLMDebug::PrintLog(2, 4, "%x %x %d", 0u, ~0u, -2147483647 - 1);
              }),
              ElementsAre("text -12 ff 0", "12% of   2.2, a  |bc|2000000000|x", "0 ffffffff -2147483648"));
}

TEST_F(GivenLog, ControlCharactersInParametersAreSpeltOut) {
  EXPECT_THAT(LinesOf([] { COLMDebug::PrintLog(2, 4, "\033[34m%s\n\033[0m", "a\nb\033[0mc"); }),
              ElementsAre("\033[34ma\\x0Ab\\x1B[0mc\033[0m"));
}

TEST_F(GivenLog, ForeignPrefixIsAnOrdinaryMessage) {
  EXPECT_THAT(LinesOf([] { COLMDebug::PrintLog(2, 1, "[OLM] %s", "x"); }), ElementsAre("[OLM] x"));
}

TEST_F(GivenLog, PrefixWithoutAMessageIsWrittenBeforeTheNext) {
  EXPECT_THAT(LinesOf([] {
                COLMDebug::PrintLog(2, 1, "[OLM][%s(%d)] ", "Lost", 1);
                LogLine(1, "Stop", 12, "text");
              }),
              ElementsAre("[OLM][Lost(1)] ", "[OLM][Stop(12)] \033[31m[Picture-EMP][Stop (12)] text\033[0m"));
}

TEST_F(GivenLog, LevelsAboveTheWantedOneAreLeftOut) {
  EXPECT_THAT(LinesOf([] {
                setenv("OLM_LOG_LEVEL", "1", 1);
                LogLine(4, "Info", 1, "text");
                LogLine(1, "Error", 2, "text");
                COLMDebug::PrintLog(2, 0, "plain");
              }),
              ElementsAre("[OLM][Error(2)] \033[31m[Picture-EMP][Error (2)] text\033[0m", "plain"));
}

TEST_F(GivenLog, ParameterOfAMegabyteStaysWhole) {
  const std::string text(1 << 20, 'x');
  const auto lines = LinesOf([&] { LogLine(1, "Play", 1, text.c_str()); });
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_THAT(lines[0], testing::HasSubstr(text));
}

TEST_F(GivenLog, ThreadsDoNotMixTheirLines) {
  constexpr int kThreads = 8;
  constexpr int kLines = 500;
  const auto lines = LinesOf([] {
    std::vector<std::thread> threads;
    for (int thread = 0; thread < kThreads; ++thread) {
      threads.emplace_back([thread] {
        const std::string text(static_cast<size_t>(10 + 200 * thread), static_cast<char>('a' + thread));
        for (int line = 0; line < kLines; ++line) {
          LogLine(1, "Run", thread, text.c_str());
        }
      });
    }
    for (std::thread& thread : threads) {
      thread.join();
    }
  });
  ASSERT_EQ(lines.size(), static_cast<size_t>(kThreads * kLines));
  std::vector<int> counts(kThreads);
  for (const std::string& line : lines) {
    const int thread = line.at(std::string("[OLM][Run(").size()) - '0';
    const std::string number = std::to_string(thread);
    const std::string text(static_cast<size_t>(10 + 200 * thread), static_cast<char>('a' + thread));
    ASSERT_EQ(line, "[OLM][Run(" + number + ")] \033[31m[Picture-EMP][Run (" + number + ")] " + text + "\033[0m");
    ++counts[static_cast<size_t>(thread)];
  }
  EXPECT_THAT(counts, testing::Each(kLines));
}

}  // namespace
}  // namespace sim::framework
