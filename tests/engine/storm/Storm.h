// SPDX-License-Identifier: Apache-2.0
/// Long random runs of the whole engine against the doubles, with GLib's real main loop: what the ordered tests cannot
/// meet, because it needs two threads at one moment.
#ifndef TESTS_ENGINE_STORM_STORM_H
#define TESTS_ENGINE_STORM_STORM_H

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <random>
#include <string>
#include <thread>

#include "host/CEmpEnginePicture.h"

namespace storm {

using Random = std::minstd_rand;

/// Counts and prints what must not be; a storm goes on after it.
bool Check(bool holds, const std::string& what);
size_t FailedChecks();

/// Each storm runs until it is through; false when a check failed or a rule of the outside was broken.
bool Rounds(size_t rounds, unsigned int seed);
bool Crossfire(size_t operations, unsigned int seed);
bool SharedWindow(size_t operations, unsigned int seed);

/// A number below `limit`.
inline unsigned int Pick(Random& random, unsigned int limit) {
  return std::uniform_int_distribution<unsigned int>(0, limit - 1)(random);
}

/// Sends one command as the framework does. The result; empty when the command is not known.
std::string Send(olm::CEmpEnginePicture& engine, const std::string& command, const std::string& param1 = {},
                 const std::string& param2 = {}, const std::string& param3 = {}, const std::string& param4 = {});

/// Ends the process when nothing has happened for two minutes: a deadlock.
class Watchdog {
 public:
  explicit Watchdog(const char* storm);
  ~Watchdog();
  void Progress() { m_steps.fetch_add(1, std::memory_order_relaxed); }

 private:
  void Watch();

  const char* const m_storm;
  std::atomic<size_t> m_steps{0};
  std::mutex m_mutex;
  std::condition_variable m_ends;
  bool m_over = false;
  std::thread m_thread;
};

}  // namespace storm

#endif
