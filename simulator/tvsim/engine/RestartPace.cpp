// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/engine/RestartPace.h"

#include <algorithm>

namespace sim::tvsim {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::seconds kWindow(60);
constexpr std::chrono::milliseconds kFirstBackOff(1000), kLongestBackOff(30000);

}  // namespace

bool RestartPace::MayStartNow() {
  const auto now = Clock::now();
  while (!m_recent.empty() && now - m_recent.front() > kWindow) {
    m_recent.pop_front();
  }
  return m_recent.size() < static_cast<size_t>(m_quick_restarts);
}

std::chrono::milliseconds RestartPace::NextWait() {
  m_back_off = std::clamp(m_back_off * 2, kFirstBackOff, kLongestBackOff);
  return m_back_off;
}

void RestartPace::StartedNow() {
  m_recent.push_back(Clock::now());
  m_back_off = std::chrono::milliseconds(0);
}

void RestartPace::StartedLate() {
  m_recent.push_back(Clock::now());
}

}  // namespace sim::tvsim
