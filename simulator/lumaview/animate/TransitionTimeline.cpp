// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/animate/TransitionTimeline.h"

#include <algorithm>

namespace sim::lumaview {
namespace {

int CountFrames(Duration duration) {
  constexpr Duration kSecond = std::chrono::seconds(1);
  return std::max(1, static_cast<int>((duration * kFramesPerSecond + kSecond / 2) / kSecond));
}

}  // namespace

TransitionTimeline::TransitionTimeline(Time start, Duration duration)
    : m_start(start), m_duration(duration), m_frames(CountFrames(duration)), m_shown_at(start) {}

std::optional<TransitionTimeline::Step> TransitionTimeline::Next(Time now) {
  if (m_frame == m_frames || now < GetNextTime()) {
    return std::nullopt;
  }
  int due = m_frame + 1;
  while (due < m_frames && TimeOf(due + 1) <= now) {
    ++due;
  }
  m_statistics.skipped += due - m_frame - 1;
  m_statistics.shown += 1;
  m_statistics.worst_gap = std::max(m_statistics.worst_gap, Duration(now - m_shown_at));
  m_shown_at = now;
  m_frame = due;
  return Step{static_cast<float>(due) / static_cast<float>(m_frames), due == m_frames};
}

std::string TextOf(const TransitionTimeline::Statistics& statistics) {
  const auto worst = std::chrono::duration_cast<std::chrono::milliseconds>(statistics.worst_gap).count();
  return std::to_string(statistics.shown) + " frames shown, " + std::to_string(statistics.skipped) +
         " skipped, worst gap " + std::to_string(worst) + " ms";
}

}  // namespace sim::lumaview
