// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_ANIMATE_TRANSITIONTIMELINE_H
#define SIMULATOR_LUMAVIEW_ANIMATE_TRANSITIONTIMELINE_H

#include <optional>
#include <string>

#include "simulator/lumaview/animate/Clock.h"

namespace sim::lumaview {

inline constexpr int kFramesPerSecond = 60;

/// Which frame of a transition is due when: 60 a second by the clock. A frame whose time is over is skipped, never
/// queued; the last one, progress 1, always comes.
class TransitionTimeline {
 public:
  struct Step {
    float progress = 0;  ///< 0 excluded to 1 included
    bool last = false;
  };
  struct Statistics {
    int shown = 0;
    int skipped = 0;
    Duration worst_gap{0};  ///< between two frames that were shown
  };

  /// `duration`: 0 or more; 0 has the last frame only.
  TransitionTimeline(Time start, Duration duration);

  /// The frame to show at `now`, each at most once; none when the next one's time has not come.
  std::optional<Step> Next(Time now);
  /// When the next frame is due.
  Time GetNextTime() const { return TimeOf(m_frame + 1); }
  const Statistics& GetStatistics() const { return m_statistics; }

 private:
  Time TimeOf(int frame) const { return m_start + m_duration * frame / m_frames; }

  const Time m_start;
  const Duration m_duration;
  const int m_frames;
  int m_frame = 0;  ///< shown last; 0 is the old picture
  Time m_shown_at;
  Statistics m_statistics;
};

/// "60 frames shown, 1 skipped, worst gap 34 ms", as it stands in the log.
std::string TextOf(const TransitionTimeline::Statistics& statistics);

}  // namespace sim::lumaview

#endif
