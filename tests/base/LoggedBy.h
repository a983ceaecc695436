// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_BASE_LOGGEDBY_H
#define TESTS_BASE_LOGGEDBY_H

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "tests/base/TemporaryFolder.h"

namespace sim {

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

}  // namespace sim

#endif
