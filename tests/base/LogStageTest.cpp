// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/LogStage.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <map>
#include <string>
#include <thread>
#include <vector>

#include "simulator/base/Log.h"
#include "tests/base/TemporaryFolder.h"

namespace sim {
namespace {

class GivenStage : public testing::Test {
 protected:
  void Add(std::string_view line) { m_stage->Add(line, m_write); }

  const UniqueFd m_memory = std::move(*LogStage::MakeMemory());
  const std::unique_ptr<LogStage> m_stage = std::move(*LogStage::Open(m_memory.Get()));
  std::vector<std::string> m_written;
  const LogStage::Writer m_write = [this](std::string_view lines) { m_written.emplace_back(lines); };
};

TEST_F(GivenStage, LinesAreWrittenAtOnceWhereNobodyHoldsThem) {
  Add("one\n");
  Add("two\n");
  EXPECT_EQ(m_written, (std::vector<std::string>{"one\n", "two\n"}));
}

TEST_F(GivenStage, HeldLinesAreWrittenTogether) {
  m_stage->Hold();
  Add("one\n");
  Add("two\n");
  EXPECT_TRUE(m_written.empty());
  m_stage->Release(m_write);
  Add("three\n");
  EXPECT_EQ(m_written, (std::vector<std::string>{"one\ntwo\n", "three\n"}));
}

TEST_F(GivenStage, LinesThatAreFlushedStayHeldAfterThat) {
  m_stage->Hold();
  Add("one\n");
  m_stage->Flush(m_write);
  Add("two\n");
  EXPECT_EQ(m_written, (std::vector<std::string>{"one\n"}));
}

TEST_F(GivenStage, LinesOfAnotherThreadAreWrittenBehindThoseThatAreHeld) {
  m_stage->Hold();
  Add("one\n");
  std::thread([this] { Add("two\n"); }).join();
  EXPECT_EQ(m_written, (std::vector<std::string>{"one\n", "two\n"}));
  Add("three\n");
  Add("four\n");
  m_stage->Release(m_write);
  EXPECT_EQ(m_written, (std::vector<std::string>{"one\n", "two\n", "three\nfour\n"}));
}

TEST_F(GivenStage, LinesThatDoNotFitKeepTheirOrder) {
  const std::string longLine = std::string(40 << 10, 'a') + '\n', hugeLine = std::string(100 << 10, 'b') + '\n';
  m_stage->Hold();
  Add("one\n");
  Add(longLine);
  Add(longLine);
  Add(hugeLine);
  Add("two\n");
  m_stage->Release(m_write);
  EXPECT_EQ(m_written, (std::vector<std::string>{"one\n" + longLine, longLine, hugeLine, "two\n"}));
}

TEST_F(GivenStage, LinesOfManyThreadsStayWhole) {
  constexpr int kLines = 1000;
  std::vector<std::thread> threads;
  const auto add_all = [this](char name) {
    for (int i = 0; i < kLines; ++i) {
      Add(std::string(95, name) + std::to_string(1000 + i) + '\n');
    }
  };
  m_stage->Hold();
  for (char name = 'a'; name < 'e'; ++name) {
    threads.emplace_back(add_all, name);
  }
  add_all('h');
  for (std::thread& thread : threads) {
    thread.join();
  }
  m_stage->Release(m_write);
  std::string all;
  for (const std::string& lines : m_written) {
    all += lines;
  }
  std::map<char, int> counts;
  for (size_t line = 0; line < all.size(); line += 100) {
    const char name = all[line];
    EXPECT_EQ(all.substr(line, 100), std::string(95, name) + std::to_string(1000 + counts[name]++) + '\n');
  }
  EXPECT_EQ(counts, (std::map<char, int>{{'a', kLines}, {'b', kLines}, {'c', kLines}, {'d', kLines}, {'h', kLines}}));
}

TEST_F(GivenStage, OtherDescriptorsAreRefused) {
  const UniqueFd nothing(open("/dev/null", O_RDWR | O_CLOEXEC));
  EXPECT_FALSE(LogStage::Open(nothing.Get()));
  EXPECT_FALSE(LogStage::Open(-1));
}

/// The environment is read at a process's first line, so each case logs in a process of its own.
class GivenLoggingProcess : public GivenStage {
 protected:
  /// The log's file when the process has ended, and what waits by then.
  template <typename Work>
  void RunProcess(Work work) {
    const pid_t pid = fork();
    if (pid == 0) {
      setenv("OLM_LOG_FILE", (m_folder / "log").c_str(), 1);
      setenv("OLM_LOG_STAGE", std::to_string(m_memory.Get()).c_str(), 1);
      work();
      _exit(0);
    }
    waitpid(pid, nullptr, 0);
    m_logged = ReadFile(m_folder / "log");
    m_stage->Flush(m_write);
  }

  const TemporaryFolder m_folder;
  std::string m_logged;
};

TEST_F(GivenLoggingProcess, LinesOfACommandAreInTheFileWhenItEnds) {
  RunProcess([] {
    const HeldLog held;
    WriteLogLine(LogLevel::kInfo, "one\n");
  });
  EXPECT_EQ(m_logged, "one\n");
  EXPECT_TRUE(m_written.empty());
}

TEST_F(GivenLoggingProcess, WhoStartedAProcessHasTheLinesOfOneThatWasKilled) {
  RunProcess([] {
    const HeldLog held;
    WriteLogLine(LogLevel::kInfo, "one\n");
    WriteLogLine(LogLevel::kInfo, "two\n");
    kill(getpid(), SIGKILL);
  });
  EXPECT_EQ(m_logged, "");
  EXPECT_EQ(m_written, (std::vector<std::string>{"one\ntwo\n"}));
}

TEST_F(GivenLoggingProcess, LinesBeforeAnEventAreInTheFile) {
  RunProcess([] {
    const HeldLog held;
    WriteLogLine(LogLevel::kInfo, "one\n");
    FlushLog();
    kill(getpid(), SIGKILL);
  });
  EXPECT_EQ(m_logged, "one\n");
}

TEST_F(GivenLoggingProcess, AForkedProcessWritesForItself) {
  RunProcess([] {
    WriteLogLine(LogLevel::kInfo, "before\n");
    const HeldLog held;
    if (const pid_t pid = fork(); pid == 0) {
      WriteLogLine(LogLevel::kInfo, "decoder\n");
      _exit(0);
    } else {
      waitpid(pid, nullptr, 0);
    }
    kill(getpid(), SIGKILL);
  });
  EXPECT_EQ(m_logged, "before\ndecoder\n");
}

}  // namespace
}  // namespace sim
