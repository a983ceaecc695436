// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/EndSignals.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/types.h>
#include <unistd.h>

#include <csignal>

namespace sim {
namespace {

bool IsReadable(int fd) {
  pollfd event{fd, POLLIN, 0};
  return poll(&event, 1, 0) == 1;
}

class EachEndSignal : public testing::TestWithParam<int> {};

TEST_P(EachEndSignal, IsToldOnceInsteadOfEndingTheProcess) {
  const EndSignals signals;
  EXPECT_FALSE(IsReadable(signals.Descriptor()));
  EXPECT_FALSE(signals.Take());

  kill(getpid(), GetParam());

  EXPECT_TRUE(IsReadable(signals.Descriptor()));
  EXPECT_TRUE(signals.Take());
  EXPECT_FALSE(signals.Take());
}

INSTANTIATE_TEST_SUITE_P(Signals, EachEndSignal, testing::Values(SIGTERM, SIGINT, SIGHUP));

}  // namespace
}  // namespace sim
