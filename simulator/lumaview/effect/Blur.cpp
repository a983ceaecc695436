// SPDX-License-Identifier: Apache-2.0
/// Both pictures go out of focus and back, and one fades into the other while they are blurred most.
///
/// The blur is the average of a square. Each column keeps the sum of its rows and slides down a row at a time; a row is
/// then the running sum of the means of its columns. All sums are whole numbers, so it does not matter at which row a
/// band begins.
#include <algorithm>
#include <cmath>

#include "simulator/lumaview/effect/Frame.h"
#include "simulator/lumaview/effect/Pixel.h"

namespace sim::lumaview {
namespace {

/// Half the side of the largest square: parts of the picture's height.
constexpr float kLargestPart = 36.0F;
/// The part of the time, 0..1, before which only `from` and after whose complement only `to` shows.
constexpr float kFadeStart = 0.25F;

/// From this radius on every second row stands for two: neighbouring rows of so large an average hardly differ.
constexpr int kPairRadius = 8;

/// Columns that are drawn at once; sums and means of so many stay near, and few are summed twice at the seams.
constexpr int kColumns = 2048;
/// Columns on either side that their averages need, in whole cache lines of 16 pixels.
constexpr int kLine = 16;
constexpr int kMargin = (kMaxBlurRadius + kLine) / kLine * kLine;

/// Draws columns [first, last) of all rows of the frame.
class ColumnBlur {
 public:
  ColumnBlur(const Frame& frame, int radius, int weight, int first, int last)
      : m_frame(frame),
        m_radius(radius),
        m_step(radius < kPairRadius ? 1 : 2),
        m_steps(radius / m_step),
        m_weight(weight),
        m_first(first),
        m_last(last),
        m_inner_first(std::max(0, (first - radius) / kLine * kLine)),
        m_inner_last(std::min(frame.GetWidth(), (last + radius + kLine - 1) / kLine * kLine)) {}

  void Draw() {
    const int first = m_frame.first_row / m_step;
    const int last = (m_frame.last_row + m_step - 1) / m_step;
    // One row above what the first row needs, which the first step takes away again.
    for (int step = first - m_steps - 1; step < first + m_steps; ++step) {
      m_frame.kernels.add_sums(m_sums, Source(step), m_weight);
    }
    for (int step = first; step < last; ++step) {
      m_frame.kernels.slide_sums(m_sums, MeansOf(m_inner_first), Source(step + m_steps), Source(step - m_steps - 1),
                                 m_weight, m_steps);
      RepeatBorders();
      DrawRows(std::max(step * m_step, m_frame.first_row), std::min((step + 1) * m_step, m_frame.last_row));
    }
  }

 private:
  /// Rows above and below the picture repeat its border.
  Span Source(int step) const {
    const Span row = m_frame.GetRow(std::clamp(step * m_step, 0, m_frame.GetHeight() - 1));
    return Part(row, m_inner_first, m_inner_last);
  }

  /// Columns from m_first - kMargin on, some of which may lie outside the picture.
  ColumnSum* MeansOf(int column) { return m_means + 4 * (column - (m_first - kMargin)); }

  /// Columns left and right of the picture repeat its border, too.
  void RepeatBorders() {
    for (int x = m_first - m_radius; x < m_inner_first; ++x) {
      std::copy_n(MeansOf(m_inner_first), 4, MeansOf(x));
    }
    for (int x = m_inner_last; x < m_last + m_radius; ++x) {
      std::copy_n(MeansOf(m_inner_last - 1), 4, MeansOf(x));
    }
  }

  /// Rows [first, last) are alike.
  void DrawRows(int first, int last) {
    uint32_t* drawn = m_frame.target.Row(first) + m_first;
    m_frame.kernels.box(drawn, m_last - m_first, MeansOf(m_first - m_radius), m_radius);
    for (int y = first + 1; y < last; ++y) {
      m_frame.kernels.copy(m_frame.target.Row(y) + m_first, drawn, m_last - m_first);
    }
  }

  const Frame& m_frame;
  const int m_radius;
  const int m_step;   ///< from row to row of what is averaged
  const int m_steps;  ///< radius in such steps
  const int m_weight;
  const int m_first;
  const int m_last;
  const int m_inner_first;  ///< columns of the picture that are summed
  const int m_inner_last;
  ColumnSum m_sums[4 * (kColumns + 2 * kMargin)] = {};
  ColumnSum m_means[4 * (kColumns + 2 * kMargin)];
};

int Radius(const Frame& frame) {
  const float focus = 4.0F * frame.progress * (1.0F - frame.progress);
  const float radius = static_cast<float>(frame.GetHeight()) / kLargestPart * focus;
  return std::min(static_cast<int>(radius + 0.5F), kMaxBlurRadius);
}

}  // namespace

void DrawBlur(const Frame& frame) {
  const int radius = Radius(frame);
  const int weight = SmoothWeight((frame.progress - kFadeStart) / (1.0F - 2.0F * kFadeStart));
  if (radius == 0) {
    for (int y = frame.first_row; y < frame.last_row; ++y) {
      frame.kernels.mix(frame.GetRow(y), weight);
    }
    return;
  }
  for (int x = 0; x < frame.GetWidth(); x += kColumns) {
    ColumnBlur(frame, radius, weight, x, std::min(x + kColumns, frame.GetWidth())).Draw();
  }
}

}  // namespace sim::lumaview
