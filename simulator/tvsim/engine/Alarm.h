// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_ENGINE_ALARM_H
#define SIMULATOR_TVSIM_ENGINE_ALARM_H

#include <chrono>
#include <functional>
#include <memory>
#include <utility>

#include "simulator/base/Result.h"
#include "simulator/base/UniqueFd.h"
#include "simulator/tvsim/engine/FdWatch.h"

namespace sim::tvsim {

/// Calls a function after a time that is set anew for each call. On the default main context, which has no timeout from
/// it, unlike from `Timer`: with one each of its polls, two a command, sets up and ends a timer. Loop thread only.
class Alarm {
 public:
  /// Errors: no descriptor is left.
  static Result<std::unique_ptr<Alarm>> Create(std::function<void()> on_ring);
  Alarm(const Alarm&) = delete;
  Alarm& operator=(const Alarm&) = delete;

  /// In the place of a time that was set before; less than a millisecond is one.
  void RingAfter(std::chrono::milliseconds time);
  bool IsSet() const { return m_is_set; }

 private:
  Alarm(UniqueFd clock, std::function<void()> on_ring) : m_clock(std::move(clock)), m_on_ring(std::move(on_ring)) {}

  void OnTime();

  const UniqueFd m_clock;
  const std::function<void()> m_on_ring;
  const FdWatch m_watch{m_clock.Get(), FdWatch::For::kInput, [this] { OnTime(); }};
  bool m_is_set = false;
};

}  // namespace sim::tvsim

#endif
