// SPDX-License-Identifier: Apache-2.0
/// A clock hand with a soft edge uncovers `to`, clockwise from twelve o'clock.
#include <array>
#include <numbers>

#include "simulator/lumaview/effect/SoftEdge.h"

namespace sim::lumaview {
namespace {

/// Part of a whole turn that the edge covers, 0..1.
constexpr float kSoftness = 0.08F;

/// In one quarter of the picture every row meets the soft edge in one stretch: from `inner` to `outer` times the row's
/// distance from the middle. Quarters are counted clockwise from twelve o'clock.
struct Quarter {
  float inner;
  float outer;
  bool to_lies_inside;  ///< nearer to the upright middle line than the edge
};

/// Where the hand at `turn`, limited to the quarter, crosses rows: columns from the middle for each row from there.
float Crossing(int quarter, float turn) {
  const double begin = 0.25 * quarter;
  const double passed = std::clamp(static_cast<double>(turn) - begin, 0.0, 0.25);
  const bool begins_upright = quarter % 2 == 0;
  return static_cast<float>(std::tan(2.0 * std::numbers::pi * (begins_upright ? passed : 0.25 - passed)));
}

Quarter MakeQuarter(int quarter, Edge edge) {
  const float begin = Crossing(quarter, edge.Position(0.0F));
  const float end = Crossing(quarter, edge.Position(1.0F));
  return {std::min(begin, end), std::max(begin, end), quarter % 2 == 0};
}

class Dial {
 public:
  Dial(const Frame& frame, Edge edge)
      : m_frame(frame),
        m_edge(edge),
        m_middle(0.5F * static_cast<float>(frame.GetWidth())),
        m_quarters{MakeQuarter(0, edge), MakeQuarter(1, edge), MakeQuarter(2, edge), MakeQuarter(3, edge)} {}

  void DrawRow(int y) const {
    const Span row = m_frame.GetRow(y);
    const float up = 0.5F * static_cast<float>(m_frame.GetHeight()) - 0.5F - static_cast<float>(y);
    if (up == 0.0F) {  // the hand lies along the row
      DrawSoft(row, up, 0, row.count);
      return;
    }
    const bool above = up > 0.0F;
    const float distance = std::abs(up);
    const int half = row.count / 2;
    const Quarter& left = m_quarters[above ? 3 : 2];
    const Quarter& right = m_quarters[above ? 0 : 1];
    DrawHalf(row, up, {0, half}, Enclose(m_middle - left.outer * distance, m_middle - left.inner * distance, row.count),
             !left.to_lies_inside);
    DrawHalf(row, up, {half, row.count},
             Enclose(m_middle + right.inner * distance, m_middle + right.outer * distance, row.count),
             right.to_lies_inside);
  }

 private:
  void DrawHalf(const Span& row, float up, Range half, Range edge, bool to_lies_left) const {
    const int first = std::clamp(edge.first, half.first, half.last);
    const int last = std::clamp(edge.last, first, half.last);
    (to_lies_left ? CopyTo : CopyFrom)(m_frame.kernels, Part(row, half.first, first));
    DrawSoft(row, up, first, last);
    (to_lies_left ? CopyFrom : CopyTo)(m_frame.kernels, Part(row, last, half.last));
  }

  void DrawSoft(const Span& row, float up, int first, int last) const {
    if (first < last) {
      m_frame.kernels.mix_sweep(Part(row, first, last), m_edge, 0.5F - m_middle + static_cast<float>(first), up);
    }
  }

  const Frame& m_frame;
  const Edge m_edge;
  const float m_middle;
  const std::array<Quarter, 4> m_quarters;
};

}  // namespace

void DrawRadial(const Frame& frame) {
  const Dial dial(frame, AdvancingEdge(frame.progress, kSoftness, 1.0F));
  for (int y = frame.first_row; y < frame.last_row; ++y) {
    dial.DrawRow(y);
  }
}

}  // namespace sim::lumaview
