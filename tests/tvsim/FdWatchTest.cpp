// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/engine/FdWatch.h"

#include <glib.h>
#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <optional>
#include <thread>

#include "simulator/base/UniqueFd.h"

namespace sim::tvsim {
namespace {

using Clock = std::chrono::steady_clock;

/// Runs the loop until `end` has come or `enough` is true.
void RunUntil(Clock::time_point end, const std::function<bool()>& enough) {
  while (!enough() && Clock::now() < end) {
    g_main_context_iteration(nullptr, FALSE);
  }
}

/// False when what has to come does not.
bool Await(const std::function<bool()>& condition) {
  RunUntil(Clock::now() + std::chrono::seconds(20), condition);
  return condition();
}

/// A thousand times as long as it takes to be told of a descriptor, for what must not come.
void Linger() {
  RunUntil(Clock::now() + std::chrono::milliseconds(50), [] { return false; });
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
  Linger();
  EXPECT_EQ(calls, 0);

  Fill(m_event);
  EXPECT_TRUE(Await([&] { return calls == 3; }));
  Linger();
  EXPECT_EQ(calls, 3);
}

TEST_F(GivenDescriptor, WakesALoopThatSleeps) {
  int calls = 0;
  const FdWatch watch(m_event.Get(), FdWatch::For::kInput, [&] {
    ++calls;
    Empty(m_event);
  });
  Linger();
  std::thread peer([this] {
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    Fill(m_event);
  });

  // Something else wakes it in the end, so that a watch that does not is found out.
  const guint end = g_timeout_add_seconds(
      20, [](gpointer) -> gboolean { return G_SOURCE_CONTINUE; }, nullptr);
  const auto start = Clock::now();
  while (calls == 0) {
    g_main_context_iteration(nullptr, TRUE);
  }
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(15));
  g_source_remove(end);
  peer.join();
}

TEST_F(GivenDescriptor, TellsNothingAfterItsEnd) {
  int calls = 0;
  std::optional<FdWatch> watch;
  watch.emplace(m_event.Get(), FdWatch::For::kInput, [&] { ++calls; });
  Fill(m_event);
  watch.reset();

  Linger();
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

  EXPECT_TRUE(Await([&] { return calls == 1; }));
  Linger();
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

  EXPECT_TRUE(Await([&] { return calls == 1; }));
  Linger();
  EXPECT_EQ(calls, 1);
}

TEST_F(GivenDescriptor, OthersAreToldWhileACallRunsTheLoopButItselfIsNot) {
  const UniqueFd other = MakeEvent();
  int calls = 0, depth = 0, deepest = 0, calls_of_other = 0;
  const FdWatch watch(m_event.Get(), FdWatch::For::kInput, [&] {
    deepest = std::max(deepest, ++depth);
    Fill(other);
    Await([&] { return calls_of_other == calls + 1; });
    Linger();
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

  EXPECT_TRUE(Await([&] { return calls == 2; }));
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
  Linger();
  EXPECT_EQ(calls, 0);

  theirs.Reset();
  EXPECT_TRUE(Await([&] { return calls == 1; }));
}

}  // namespace
}  // namespace sim::tvsim
