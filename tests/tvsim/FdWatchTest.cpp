// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/engine/FdWatch.h"

#include <glib.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <optional>

#include "simulator/base/UniqueFd.h"

namespace sim::tvsim {
namespace {

/// Turns of the loop in which everything that is ready has been told, and what is told again and again is seen.
void RunReadyTurns() {
  for (int i = 0; i < 10; ++i) {
    g_main_context_iteration(nullptr, FALSE);
  }
}

class GivenDescriptor : public testing::Test {
 protected:
  static UniqueFd MakeEvent() { return UniqueFd(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)); }
  static void Fill(const UniqueFd& event) { ASSERT_EQ(eventfd_write(event.Get(), 1), 0); }
  static void Empty(const UniqueFd& event) {
    eventfd_t count = 0;
    ASSERT_EQ(eventfd_read(event.Get(), &count), 0);
  }

  const UniqueFd m_event = MakeEvent();
};

TEST_F(GivenDescriptor, TellsInputAgainUntilItIsTaken) {
  int calls = 0;
  const FdWatch watch(m_event.Get(), FdWatch::For::kInput, [&] {
    if (++calls == 3) {
      Empty(m_event);
    }
  });
  RunReadyTurns();
  EXPECT_EQ(calls, 0);

  Fill(m_event);
  RunReadyTurns();
  EXPECT_EQ(calls, 3);
}

TEST_F(GivenDescriptor, TellsNothingAfterItsEnd) {
  int calls = 0;
  std::optional<FdWatch> watch;
  watch.emplace(m_event.Get(), FdWatch::For::kInput, [&] { ++calls; });
  Fill(m_event);
  watch.reset();

  RunReadyTurns();
  EXPECT_EQ(calls, 0);
}

TEST_F(GivenDescriptor, MayEndWithinItsCall) {
  int calls = 0;
  std::optional<FdWatch> watch;
  watch.emplace(m_event.Get(), FdWatch::For::kInput, [&calls, &watch] {
    watch.reset();
    ++calls;  // what the call holds is still there
  });
  Fill(m_event);

  RunReadyTurns();
  EXPECT_EQ(calls, 1);
}

TEST_F(GivenDescriptor, IsTakenByTheNextWatchOfTheSameNumber) {
  int calls = 0;
  std::optional<FdWatch> watch;
  watch.emplace(m_event.Get(), FdWatch::For::kInput, [] {});
  watch.reset();
  watch.emplace(m_event.Get(), FdWatch::For::kInput, [&] {
    ++calls;
    Empty(m_event);
  });
  Fill(m_event);

  RunReadyTurns();
  EXPECT_EQ(calls, 1);
}

TEST_F(GivenDescriptor, OthersAreToldWhileACallRunsTheLoopButItselfIsNot) {
  const UniqueFd other = MakeEvent();
  int calls = 0, depth = 0, deepest = 0, calls_of_other = 0;
  const FdWatch watch(m_event.Get(), FdWatch::For::kInput, [&] {
    deepest = std::max(deepest, ++depth);
    Fill(other);
    RunReadyTurns();
    --depth;
    if (++calls == 2) {
      Empty(m_event);
    }
  });
  const FdWatch watch_of_other(other.Get(), FdWatch::For::kInput, [&] {
    ++calls_of_other;
    Empty(other);
  });
  Fill(m_event);

  RunReadyTurns();
  EXPECT_EQ(calls, 2);
  EXPECT_EQ(deepest, 1);
  EXPECT_EQ(calls_of_other, 2);
}

TEST_F(GivenDescriptor, AHangUpIsToldAndInputIsNotWhereOnlyThatIsAskedFor) {
  int ends[2];
  ASSERT_EQ(socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends), 0);
  const UniqueFd ours(ends[0]);
  UniqueFd theirs(ends[1]);
  int calls = 0;
  std::optional<FdWatch> watch;
  watch.emplace(ours.Get(), FdWatch::For::kHangUp, [&] {
    ++calls;
    watch.reset();
  });

  ASSERT_EQ(write(theirs.Get(), "x", 1), 1);
  RunReadyTurns();
  EXPECT_EQ(calls, 0);

  theirs.Reset();
  RunReadyTurns();
  EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace sim::tvsim
