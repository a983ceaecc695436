// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_ANIMATE_CLOCK_H
#define SIMULATOR_LUMAVIEW_ANIMATE_CLOCK_H

#include <chrono>

namespace sim::lumaview {

using Time = std::chrono::time_point<std::chrono::steady_clock, std::chrono::nanoseconds>;
using Duration = std::chrono::nanoseconds;

/// What the animator goes by. Thread-safe.
class Clock {
 public:
  virtual ~Clock() = default;
  /// Never goes back.
  virtual Time Now() const = 0;
};

class SteadyClock : public Clock {
 public:
  Time Now() const override { return std::chrono::steady_clock::now(); }
};

}  // namespace sim::lumaview

#endif
