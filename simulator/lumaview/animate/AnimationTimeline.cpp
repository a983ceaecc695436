// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/animate/AnimationTimeline.h"

namespace sim::lumaview {
namespace {

/// Files that say "no time" or 10 ms were made for programs that could not show them any faster than this.
constexpr int kShortestMilliseconds = 20;
constexpr int kInsteadMilliseconds = 100;

Duration ShownFor(int milliseconds) {
  return std::chrono::milliseconds(milliseconds < kShortestMilliseconds ? kInsteadMilliseconds : milliseconds);
}

}  // namespace

AnimationTimeline::AnimationTimeline(Time now, int milliseconds, int frames, int loops)
    : m_endless(loops == 0), m_left(static_cast<long long>(frames) * loops - 1), m_next(now + ShownFor(milliseconds)) {}

void AnimationTimeline::Advance(Time now, int milliseconds) {
  --m_left;
  m_next += ShownFor(milliseconds);
  if (m_next <= now) {
    m_next = now + ShownFor(milliseconds);
  }
}

}  // namespace sim::lumaview
