// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/EagerPoll.h"

#include <sched.h>

#include <thread>

#include "tests/rpc/LoopFixture.h"

namespace sim::rpc {
namespace {

using std::chrono_literals::operator""us;

/// A loop that waits for something which is ready at a time, on a clock that goes on by a microsecond a look.
class GivenWaitingLoop : public testing::Test {
 protected:
  /// Waits for what is ready after `time`.
  void WaitFor(Eagerness::Duration time) {
    const Eagerness::Duration ready_at = m_now + time;
    m_looks = m_sleeps = 0;
    const auto look = [&] {
      ++m_looks;
      m_now += 1us;
      return m_now >= ready_at ? 1 : 0;
    };
    const auto sleep = [&] {
      ++m_sleeps;
      m_now = std::max(m_now, ready_at);
      return 1;
    };
    EXPECT_EQ(m_eagerness.Wait(look, sleep, [&] { return m_now; }), 1);
  }

  int m_looks = 0, m_sleeps = 0;

 private:
  Eagerness m_eagerness;
  Eagerness::Duration m_now{0};
};

TEST_F(GivenWaitingLoop, FirstWaitSleepsAtOnce) {
  WaitFor(50us);
  EXPECT_EQ(m_looks, 0);
  EXPECT_EQ(m_sleeps, 1);
}

TEST_F(GivenWaitingLoop, AfterAShortSleepWhatComesSoonIsSeenWithoutOne) {
  WaitFor(50us);
  for (int i = 0; i < 3; ++i) {
    WaitFor(50us);
    EXPECT_EQ(m_looks, 50);
    EXPECT_EQ(m_sleeps, 0);
  }
}

TEST_F(GivenWaitingLoop, AfterALongSleepItSleepsAtOnce) {
  WaitFor(50us);
  WaitFor(2 * Eagerness::kMoment);
  EXPECT_EQ(m_sleeps, 1);
  WaitFor(50us);
  EXPECT_EQ(m_looks, 0);
}

TEST_F(GivenWaitingLoop, WhatDoesNotComeWithinAMomentIsSleptFor) {
  WaitFor(50us);
  WaitFor(2 * Eagerness::kMoment);
  EXPECT_EQ(m_looks, Eagerness::kMoment / 1us);
  EXPECT_EQ(m_sleeps, 1);
}

class GivenContext : public LoopFixture {
 protected:
  /// Asks a context that may use one processor of this process's for its poll function.
  GPollFunc PollFunctionOnOneProcessor() {
    std::thread([this] {
      cpu_set_t all, one;
      sched_getaffinity(0, sizeof all, &all);
      CPU_ZERO(&one);
      int first = 0;
      while (!CPU_ISSET(first, &all)) {
        ++first;
      }
      CPU_SET(first, &one);
      ASSERT_EQ(sched_setaffinity(0, sizeof one, &one), 0);
      PollEagerly(Context());
    }).join();
    return g_main_context_get_poll_func(Context());
  }
};

TEST_F(GivenContext, OnOneProcessorItSleepsAsEver) {
  EXPECT_EQ(PollFunctionOnOneProcessor(), &g_poll);
}

TEST_F(GivenContext, OnSeveralProcessorsItLooksFirst) {
  if (std::thread::hardware_concurrency() < 2) {
    GTEST_SKIP() << "this process may use one processor only";
  }
  PollEagerly(Context());
  EXPECT_NE(g_main_context_get_poll_func(Context()), &g_poll);
}

TEST_F(GivenContext, MessagesThatComeQuicklyAreHandledOneByOne) {
  PollEagerly(Context());
  auto [ours, theirs] = MakeSockets();
  const auto transport = Connect(std::move(ours));
  transport->Start({.onMessage = [&](std::string_view message) { transport->Send(message); },
                    .onOversized = [] {},
                    .onClosed = [](const CloseReason&) {}});
  bool done = false;
  std::thread peer([&, &socket = theirs] {
    for (int i = 0; i < 1000; ++i) {
      char echo[3] = {};
      EXPECT_EQ(write(socket.Get(), "hi\n", 3), 3);
      EXPECT_EQ(recv(socket.Get(), echo, sizeof echo, MSG_WAITALL), 3);
      EXPECT_EQ(std::string_view(echo, 3), "hi\n");
    }
    const CHandle<GSource, g_source_unref> end(g_idle_source_new());
    g_source_set_callback(
        end.get(),
        [](gpointer flag) -> gboolean {
          *static_cast<bool*>(flag) = true;
          return G_SOURCE_REMOVE;
        },
        &done, nullptr);
    g_source_attach(end.get(), Context());
  });
  RunUntil([&] { return done; });
  peer.join();
  transport->Close();
}

}  // namespace
}  // namespace sim::rpc
