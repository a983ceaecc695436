// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_ENGINE_RESTARTPACE_H
#define SIMULATOR_TVSIM_ENGINE_RESTARTPACE_H

#include <chrono>
#include <deque>

namespace sim::tvsim {

/// How soon what has ended is started again: at once, so many times within a minute; the next starts wait, each twice
/// as long as the one before, at most half a minute.
class RestartPace {
 public:
  explicit RestartPace(int quick_restarts) : m_quick_restarts(quick_restarts) {}

  /// False when it has to wait.
  bool MayStartNow();
  /// How long, from now. Asked once a wait.
  std::chrono::milliseconds NextWait();

  void StartedNow();
  void StartedLate();

 private:
  const int m_quick_restarts;
  std::deque<std::chrono::steady_clock::time_point> m_recent;
  std::chrono::milliseconds m_back_off{0};  ///< of the last start that waited; 0: it did not
};

}  // namespace sim::tvsim

#endif
