// SPDX-License-Identifier: Apache-2.0
/// `from` is squeezed away in front of `to`: squeezeh to the level line in the middle, squeezev to the upright one.
#include <algorithm>
#include <cmath>

#include "simulator/lumaview/effect/Frame.h"
#include "simulator/lumaview/effect/Resample.h"

namespace sim::lumaview {
namespace {

/// Which of `length` rows or columns the squeezed picture covers, and where in it they are read.
class Squeezed {
 public:
  Squeezed(float progress, int length)
      : m_covered(length * (1.0 - static_cast<double>(progress))),
        m_begin(0.5 * (length - m_covered)),
        // Less than one pixel may be left; a step of the whole picture is as good as a larger one.
        m_step(length / std::max(m_covered, 1.0)) {}

  int GetFirst() const { return static_cast<int>(std::ceil(m_begin - 0.5)); }
  int GetLast() const { return std::max(GetFirst(), static_cast<int>(std::ceil(m_begin + m_covered - 0.5))); }
  double GetStep() const { return m_step; }
  double SourceOf(int target) const { return (target + 0.5 - m_begin) * m_step - 0.5; }

 private:
  const double m_covered;
  const double m_begin;
  const double m_step;
};

}  // namespace

void DrawSqueezeH(const Frame& frame) {
  const Squeezed squeezed(frame.progress, frame.GetHeight());
  for (int y = frame.first_row; y < frame.last_row; ++y) {
    const Span row = frame.GetRow(y);
    if (y < squeezed.GetFirst() || y >= squeezed.GetLast()) {
      CopyTo(frame.kernels, row);
      continue;
    }
    const Between rows = Locate(squeezed.SourceOf(y), frame.GetHeight());
    frame.kernels.mix({row.target, frame.from.Row(rows.first), frame.from.Row(rows.second), row.count}, rows.weight);
  }
}

void DrawSqueezeV(const Frame& frame) {
  const Squeezed squeezed(frame.progress, frame.GetWidth());
  const int first = squeezed.GetFirst();
  const int last = squeezed.GetLast();
  const int32_t position = ToFixed(squeezed.SourceOf(first));
  const int32_t step = ToFixed(squeezed.GetStep());
  for (int y = frame.first_row; y < frame.last_row; ++y) {
    const Span row = frame.GetRow(y);
    CopyTo(frame.kernels, Part(row, 0, first));
    if (first < last) {
      frame.kernels.stretch(row.target + first, last - first, {row.from, row.count, position, step});
    }
    CopyTo(frame.kernels, Part(row, last, row.count));
  }
}

}  // namespace sim::lumaview
