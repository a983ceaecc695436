// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/engine/Alarm.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>

namespace sim::tvsim {

Result<std::unique_ptr<Alarm>> Alarm::Create(std::function<void()> on_ring) {
  UniqueFd clock(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK));
  if (!clock) {
    return Error{errno, std::string("no alarm clock: ") + std::strerror(errno)};
  }
  return std::unique_ptr<Alarm>(new Alarm(std::move(clock), std::move(on_ring)));
}

void Alarm::RingAfter(std::chrono::milliseconds time) {
  const int64_t milliseconds = std::max<int64_t>(time.count(), 1);
  itimerspec when{};
  when.it_value.tv_sec = milliseconds / 1000;
  when.it_value.tv_nsec = milliseconds % 1000 * 1000000;
  timerfd_settime(m_clock.Get(), 0, &when, nullptr);
  m_is_set = true;
}

/// Where it was set anew since it had rung there is nothing to read.
void Alarm::OnTime() {
  uint64_t times = 0;
  if (read(m_clock.Get(), &times, sizeof times) > 0) {
    m_is_set = false;
    m_on_ring();
  }
}

}  // namespace sim::tvsim
