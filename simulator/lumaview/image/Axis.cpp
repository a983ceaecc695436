// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/image/Axis.h"

#include <algorithm>
#include <cassert>
#include <cmath>

namespace sim::lumaview {
namespace {

/// Samples on each side of the centre, before widening.
constexpr double kFilterReach = 2.0;

double CatmullRom(double x) {
  x = std::abs(x);
  if (x < 1.0) {
    return (1.5 * x - 2.5) * x * x + 1.0;
  }
  return x < 2.0 ? ((-0.5 * x + 2.5) * x - 4.0) * x + 2.0 : 0.0;
}

/// Rounds weights to parts of `Axis::kOne` so that they add up to it exactly: a plain area keeps its value.
std::vector<int16_t> Quantise(const std::vector<double>& weights) {
  double sum = 0;
  for (const double weight : weights) {
    sum += weight;
  }
  std::vector<int16_t> rounded;
  double exact = 0;
  int given = 0;
  for (const double weight : weights) {
    exact += weight / sum * Axis::kOne;
    const int part = static_cast<int>(std::lround(exact)) - given;
    rounded.push_back(static_cast<int16_t>(part));
    given += part;
  }
  return rounded;
}

}  // namespace

Axis::Axis(const Range& range) {
  assert(range.source_size >= 1 && range.target_size >= 1);
  const double step = static_cast<double>(range.source_size) / range.target_size;
  if (range.source_size != range.target_size) {
    const double reach = kFilterReach * std::max(step, 1.0);
    m_taps = (std::min(static_cast<int>(std::ceil(2 * reach)) + 1, range.source_size) + 1) & ~1;
  }
  m_reads_behind = m_taps > range.source_size;
  const int count = std::max(range.visible_end - range.visible_begin, 0);
  m_first.reserve(static_cast<size_t>(count));
  m_last.reserve(static_cast<size_t>(count));
  m_weights.reserve(static_cast<size_t>(count) * static_cast<size_t>(m_taps));
  for (int i = range.visible_begin; i < range.visible_end; ++i) {
    AddPixel((i + 0.5) * step - 0.5, std::max(step, 1.0), range);
  }
}

void Axis::AddPixel(double centre, double widening, const Range& range) {
  if (m_taps == 1) {
    m_first.push_back(range.source_begin + static_cast<int>(std::lround(centre)));
    m_last.push_back(m_first.back());
    m_weights.push_back(kOne);
    return;
  }
  const double reach = kFilterReach * widening;
  int first = std::max(static_cast<int>(std::ceil(centre - reach)), 0);
  int last = std::min(static_cast<int>(std::floor(centre + reach)), range.source_size - 1);
  last = std::min(last, first + m_taps - 1);
  std::vector<double> weights;
  for (int sample = first; sample <= last; ++sample) {
    weights.push_back(CatmullRom((sample - centre) / widening));
  }
  const std::vector<int16_t> rounded = Quantise(weights);
  // At the far end the padding goes to the front, so that no tap but the even count's own lies behind the range.
  const int shifted = std::clamp(range.source_size - m_taps, 0, first);
  const size_t front = static_cast<size_t>(first - shifted);
  m_first.push_back(range.source_begin + shifted);
  m_last.push_back(range.source_begin + last);
  m_weights.insert(m_weights.end(), front, 0);
  m_weights.insert(m_weights.end(), rounded.begin(), rounded.end());
  m_weights.insert(m_weights.end(), static_cast<size_t>(m_taps) - front - rounded.size(), 0);
}

}  // namespace sim::lumaview
