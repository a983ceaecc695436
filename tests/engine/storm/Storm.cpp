// SPDX-License-Identifier: Apache-2.0
/// What the storms share.
#include "tests/engine/storm/Storm.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>

namespace storm {
namespace {

constexpr std::chrono::seconds kDeadlock{120};
std::atomic<size_t> g_failedChecks{0};

}  // namespace

bool Check(bool holds, const std::string& what) {
  if (!holds) {
    ++g_failedChecks;
    std::fprintf(stderr, "storm: %s\n", what.c_str());
  }
  return holds;
}

size_t FailedChecks() {
  return g_failedChecks;
}

std::string Send(olm::CEmpEnginePicture& engine, const std::string& command, const std::string& param1,
                 const std::string& param2, const std::string& param3, const std::string& param4) {
  std::string result;
  engine.Execute(result, command, param1, param2, param3, param4);
  return result;
}

Watchdog::Watchdog(const char* storm) : m_storm(storm), m_thread([this] { Watch(); }) {}

Watchdog::~Watchdog() {
  {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_over = true;
  }
  m_ends.notify_all();
  m_thread.join();
}

void Watchdog::Watch() {
  std::unique_lock<std::mutex> lock(m_mutex);
  size_t seen = 0;
  while (!m_ends.wait_for(lock, kDeadlock, [this] { return m_over; })) {
    const size_t steps = m_steps;
    if (steps == seen) {
      std::fprintf(stderr, "storm: %s hangs after %zu steps\n", m_storm, steps);
      std::abort();
    }
    seen = steps;
  }
}

}  // namespace storm
