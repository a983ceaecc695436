// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/engine/WaitReport.h"

#include <gmock/gmock.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <functional>
#include <mutex>
#include <thread>

#include "tests/tvsim/TvsimFixture.h"

namespace sim::tvsim {
namespace {

using testing::HasSubstr;

/// A process of one test that does one thing for ever.
class GivenProcess : public TvsimFixture {
 protected:
  ~GivenProcess() override {
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
  }

  void ThatDoes(const std::function<void()>& work) {
    m_pid = fork();
    if (m_pid == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      prctl(PR_SET_NAME, "player");
      work();
      _exit(1);
    }
  }
  void AwaitReport(const std::string& text) const {
    Await(text, [&] { return WhatItWaitsFor(m_pid).find(text) != std::string::npos; });
  }

  pid_t m_pid = -1;
};

TEST_F(GivenProcess, ALockIsNamed) {
  ThatDoes([] {
    std::timed_mutex mutex;
    mutex.lock();
    std::thread([&mutex] { mutex.lock(); }).join();
  });
  AwaitReport("player waits for a lock");
}

TEST_F(GivenProcess, TheSourceOfInputIsNamed) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ThatDoes([&ends] {
    char byte;
    (void)!read(ends[0], &byte, 1);
  });
  AwaitReport("player waits for input from pipe:[");
  close(ends[0]);
  close(ends[1]);
}

TEST_F(GivenProcess, ThreadsThatDoTheSameAreCounted) {
  ThatDoes([] {
    std::thread([] { pause(); }).detach();
    pause();
  });
  AwaitReport("player sleeps (2 times)");
}

TEST_F(GivenProcess, OneThatIsBusyRuns) {
  ThatDoes([] {
    for (volatile bool busy = true; busy;) {
    }
  });
  AwaitReport("player runs");
}

TEST(WaitReport, OfAProcessThatHasGoneIsEmpty) {
  const pid_t pid = fork();
  if (pid == 0) {
    _exit(0);
  }
  waitpid(pid, nullptr, 0);
  EXPECT_EQ(WhatItWaitsFor(pid), "");
}

TEST_F(TvsimFixture, TheLogTellsWhatAnEngineThatDoesNotAnswerWaitsFor) {
  Run({"run", "--answer-limit=2500", "--quick-restarts=0", PictureNamed("hang.jpg")});

  EXPECT_THAT(EngineLog(), HasSubstr("\n[tvsim] the engine has not answered for 2000 ms; fake-engine sleeps\n"));
}

}  // namespace
}  // namespace sim::tvsim
