// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/Canvas.h"

#include <algorithm>

namespace sim::lumaview {

Rect Canvas::Clip(const Rect& rect) const {
  const int64_t right = std::min<int64_t>(int64_t{rect.x} + rect.width, m_size.width);
  const int64_t bottom = std::min<int64_t>(int64_t{rect.y} + rect.height, m_size.height);
  if (rect.x >= right || rect.y >= bottom) {
    return {};
  }
  return {rect.x, rect.y, static_cast<int>(right) - rect.x, static_cast<int>(bottom) - rect.y};
}

void Canvas::Clear(const Rect& rect) {
  for (int y = rect.y; y < rect.y + rect.height; ++y) {
    std::fill_n(Row(y) + rect.x, rect.width, Pixel{});
  }
}

std::vector<Canvas::Pixel> Canvas::Save(const Rect& rect) const {
  std::vector<Pixel> saved;
  saved.reserve(static_cast<size_t>(rect.width) * static_cast<size_t>(rect.height));
  for (int y = rect.y; y < rect.y + rect.height; ++y) {
    const Pixel* row = m_pixels.data() + static_cast<ptrdiff_t>(y) * m_size.width + rect.x;
    saved.insert(saved.end(), row, row + rect.width);
  }
  return saved;
}

void Canvas::Restore(const Rect& rect, const std::vector<Pixel>& saved) {
  for (int y = 0; y < rect.height; ++y) {
    std::copy_n(saved.begin() + static_cast<ptrdiff_t>(y) * rect.width, rect.width, Row(rect.y + y) + rect.x);
  }
}

Canvas::Pixel Canvas::Blend(const Pixel& over, const Pixel& under) {
  const uint32_t top = over[3];
  if (top == 255 || under[3] == 0) {
    return over;
  }
  // Weights of the two colours in parts of 255 * 255.
  const uint32_t over_part = top * 255;
  const uint32_t under_part = under[3] * (255 - top);
  const uint32_t whole = over_part + under_part;
  Pixel pixel{};
  for (size_t channel = 0; channel < 3; ++channel) {
    pixel[channel] =
        static_cast<uint8_t>((over[channel] * over_part + under[channel] * under_part + whole / 2) / whole);
  }
  pixel[3] = static_cast<uint8_t>((whole + 127) / 255);
  return pixel;
}

Status Canvas::Deliver(std::span<const uint8_t> icc, RowSink& sink) const {
  SIM_TRY(sink.Begin({m_size, PixelLayout::kBgra, icc}));
  for (int y = 0; y < m_size.height; ++y) {
    SIM_TRY(sink.Row(y, m_pixels[static_cast<size_t>(y) * static_cast<size_t>(m_size.width)].data()));
  }
  return Ok();
}

}  // namespace sim::lumaview
