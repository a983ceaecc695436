// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/effect/Resample.h"

#include <algorithm>
#include <cmath>

namespace sim::lumaview {
namespace {

/// Picture pixels that one call may need side by side; 8 KiB, so that they stay in the nearest cache.
constexpr int kSourceColumns = 2048;

/// As many target columns as need no more than kSourceColumns, with two to spare on either side.
int ColumnsFor(double step) {
  return static_cast<int>(std::min(1.0 + (kSourceColumns - 4) / step, 1.0 * Resampler::kColumns));
}

}  // namespace

Between Locate(double position, int count) {
  const auto fixed = std::clamp<int64_t>(ToFixed(position), 0, int64_t{count - 1} * kOnePixel);
  const auto first = static_cast<int>(fixed / kOnePixel);
  return {first, std::min(first + 1, count - 1), static_cast<int>(fixed % kOnePixel) >> 8};
}

int32_t ToFixed(double pixels) {
  return static_cast<int32_t>(std::lround(pixels * kOnePixel));
}

Resampler::Resampler(const Kernels& kernels, ConstImageView picture, const Area& area, Size target)
    : m_kernels(kernels),
      m_picture(picture),
      m_area(area),
      m_step_x(area.width / target.width),
      m_step_y(area.height / target.height),
      m_columns(ColumnsFor(m_step_x)) {}

void Resampler::DrawWith(StretchKernel stretch, int y, int first, int count, uint32_t* pixels) const {
  uint32_t mixed[kSourceColumns];
  const Between rows = Locate(m_area.y + (y + 0.5) * m_step_y - 0.5, m_picture.height);
  const double left = m_area.x + (first + 0.5) * m_step_x - 0.5;
  const int begin = std::clamp(static_cast<int>(std::floor(left)), 0, m_picture.width - 1);
  const int end = std::clamp(static_cast<int>(left + (count - 1) * m_step_x) + 2, begin + 1, m_picture.width);
  const Span sources{mixed, m_picture.Row(rows.first) + begin, m_picture.Row(rows.second) + begin, end - begin};
  const bool between_rows = rows.weight != 0;
  if (between_rows) {
    m_kernels.mix_near(sources, rows.weight);
  }
  stretch(pixels, count, {between_rows ? mixed : sources.from, end - begin, ToFixed(left - begin), ToFixed(m_step_x)});
}

}  // namespace sim::lumaview
