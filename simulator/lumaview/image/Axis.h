// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_IMAGE_AXIS_H
#define SIMULATOR_LUMAVIEW_IMAGE_AXIS_H

#include <cstddef>
#include <cstdint>
#include <vector>

namespace sim::lumaview {

/// What one direction of a scaling does: which samples make each visible target pixel, and how much of each.
/// The filter is Catmull-Rom, as wide as a target pixel where the picture shrinks, so that nothing aliases; pixel
/// centres are mapped to pixel centres, so that nothing shifts. A scale of 1 gives one tap of weight 1: a copy.
class Axis {
 public:
  /// Weights add up to this; 14 bits leave room for the overshoot in 16-bit arithmetic.
  static constexpr int kOne = 1 << 14;

  /// Samples [source_begin, source_begin + source_size) are stretched over `target_size` pixels, of which those in
  /// [visible_begin, visible_end) are wanted. All sizes at least 1.
  struct Range {
    int source_begin = 0;
    int source_size = 1;
    int target_size = 1;
    int visible_begin = 0;
    int visible_end = 1;
  };
  explicit Axis(const Range& range);

  int GetCount() const { return static_cast<int>(m_first.size()); }
  /// Weights per target pixel, an even number except 1; pixels that need fewer have zeros in front or at the end.
  int GetTaps() const { return m_taps; }
  /// The sample of visible pixel `i`'s first weight. The samples of the others follow; at most one, its weight zero,
  /// lies behind the source range.
  int First(int i) const { return m_first[static_cast<size_t>(i)]; }
  /// The last sample of visible pixel `i` whose weight is not padding.
  int Last(int i) const { return m_last[static_cast<size_t>(i)]; }
  const int16_t* Weights(int i) const { return &m_weights[static_cast<size_t>(i) * static_cast<size_t>(m_taps)]; }
  /// Whether a pixel behind the source range is read.
  bool ReadsBehind() const { return m_reads_behind; }
  bool IsCopy() const { return m_taps == 1; }

 private:
  void AddPixel(double centre, double widening, const Range& range);

  int m_taps = 1;
  bool m_reads_behind = false;
  std::vector<int32_t> m_first;
  std::vector<int32_t> m_last;
  std::vector<int16_t> m_weights;
};

}  // namespace sim::lumaview

#endif
