// SPDX-License-Identifier: Apache-2.0
/// What ffmpeg's xfade filter takes for the same transition, when ffmpeg is installed.
#ifndef BENCH_EFFECTS_XFADE_H
#define BENCH_EFFECTS_XFADE_H

#include <optional>
#include <string>

#include "simulator/lumaview/image/Image.h"

namespace bench {

class Xfade {
 public:
  /// Measures what the graph costs around the filter. Not comparable when ffmpeg cannot be run.
  explicit Xfade(sim::lumaview::Size size);

  bool IsComparable() const { return m_around.has_value(); }
  /// Milliseconds of processor time a frame, one thread, planar 8-bit pixels; nothing where the filter has no
  /// transition of that name.
  std::optional<double> Measure(const std::string& transition) const;

 private:
  const sim::lumaview::Size m_size;
  const std::optional<double> m_around;
};

}  // namespace bench

#endif
