// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_ANIMATE_ANIMATIONTIMELINE_H
#define SIMULATOR_LUMAVIEW_ANIMATE_ANIMATIONTIMELINE_H

#include "simulator/lumaview/animate/Clock.h"

namespace sim::lumaview {

/// When the frames of an animated picture change.
class AnimationTimeline {
 public:
  /// The first frame, shown at `now` for `milliseconds`. `frames`: at least 1. `loops`: 0 = for ever.
  AnimationTimeline(Time now, int milliseconds, int frames, int loops);

  /// False once the last frame of the last loop is shown; it stays.
  bool HasNext() const { return m_endless || m_left > 0; }
  /// When the next frame is due.
  Time GetNextTime() const { return m_next; }
  /// The next frame is shown at `now` for `milliseconds`. A frame that came late does not hasten those after it.
  void Advance(Time now, int milliseconds);

 private:
  const bool m_endless;
  long long m_left = 0;  ///< frames still to come
  Time m_next;
};

}  // namespace sim::lumaview

#endif
