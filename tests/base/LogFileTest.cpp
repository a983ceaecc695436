// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/LogFile.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <filesystem>

#include "tests/base/TemporaryFolder.h"

namespace sim {
namespace {

constexpr size_t kLimit = 1000;
const std::string kLine = std::string(99, 'x') + '\n';

class GivenLogFile : public testing::Test {
 protected:
  size_t LinesIn(const std::filesystem::path& path) const {
    const std::vector<std::string> lines = ReadLines(path);
    for (const std::string& line : lines) {
      EXPECT_EQ(line.size(), 99u);
    }
    return lines.size();
  }

  const TemporaryFolder m_folder;
  const std::filesystem::path m_path = m_folder / "log";
  const std::filesystem::path m_old = m_folder / "log.1";
  LogFile m_log{m_path, kLimit};
};

TEST_F(GivenLogFile, LinesAreAppended) {
  m_log.Write("one\n");
  LogFile(m_path, kLimit).Write("two\n");
  m_log.Write("three\n");
  EXPECT_EQ(ReadFile(m_path), "one\ntwo\nthree\n");
}

TEST_F(GivenLogFile, FullFileIsPutAwayAndTheLineGoesToANewOne) {
  for (int i = 0; i < 10; ++i) {
    m_log.Write(kLine);
  }
  EXPECT_FALSE(std::filesystem::exists(m_old));
  m_log.Write(kLine);
  EXPECT_EQ(LinesIn(m_old), 10u);
  EXPECT_EQ(LinesIn(m_path), 1u);
}

TEST_F(GivenLogFile, OnlyOneOldFileIsKept) {
  for (int i = 0; i < 95; ++i) {
    m_log.Write(kLine);
  }
  EXPECT_EQ(LinesIn(m_old), 10u);
  EXPECT_EQ(LinesIn(m_path), 5u);
  EXPECT_FALSE(std::filesystem::exists(m_folder / "log.2"));
}

TEST_F(GivenLogFile, OthersFollowToTheNewFile) {
  LogFile other(m_path, kLimit);
  other.Write(kLine);
  for (int i = 0; i < 10; ++i) {
    m_log.Write(kLine);
  }
  other.Write(kLine);
  EXPECT_EQ(LinesIn(m_old), 10u);
  EXPECT_EQ(LinesIn(m_path), 2u);
}

TEST_F(GivenLogFile, ManyProcessesLoseNoLineWhereTheFileIsPutAwayOnce) {
  constexpr int kProcesses = 4;
  LogFile big(m_path, 40 * kLine.size());
  for (int process = 0; process < kProcesses; ++process) {
    if (fork() == 0) {
      LogFile log(m_path, 40 * kLine.size());
      for (int i = 0; i < 15; ++i) {
        log.Write(kLine);
      }
      _exit(0);
    }
  }
  for (int process = 0; process < kProcesses; ++process) {
    wait(nullptr);
  }
  EXPECT_EQ(LinesIn(m_old) + LinesIn(m_path), 60u);
}

TEST_F(GivenLogFile, MissingFolderMeansStandardError) {
  testing::internal::CaptureStderr();
  LogFile(m_folder / "nowhere" / "log", kLimit).Write("one\n");
  LogFile("", kLimit).Write("two\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "one\ntwo\n");
}

}  // namespace
}  // namespace sim
