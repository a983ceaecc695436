// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_CANVAS_H
#define SIMULATOR_LUMAVIEW_DECODE_CANVAS_H

#include <array>
#include <vector>

#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {

/// What an animation's frames are drawn on: B, G, R, alpha (not multiplied in), transparent at first.
/// Sizes were checked against `Limits::whole_pixels` by the caller.
class Canvas {
 public:
  explicit Canvas(Size size)
      : m_size(size), m_pixels(static_cast<size_t>(size.width) * static_cast<size_t>(size.height)) {}

  using Pixel = std::array<uint8_t, 4>;

  Size GetSize() const { return m_size; }
  /// The part of `rect` that lies on the canvas; empty parts are 0 x 0.
  Rect Clip(const Rect& rect) const;
  Pixel* Row(int y) { return m_pixels.data() + static_cast<ptrdiff_t>(y) * m_size.width; }

  /// Both take clipped rectangles.
  void Clear(const Rect& rect);
  std::vector<Pixel> Save(const Rect& rect) const;
  void Restore(const Rect& rect, const std::vector<Pixel>& saved);

  /// Puts `over` on top of `under` by its alpha.
  static Pixel Blend(const Pixel& over, const Pixel& under);

  /// Gives the whole canvas to `sink` as one frame.
  Status Deliver(std::span<const uint8_t> icc, RowSink& sink) const;

 private:
  const Size m_size;
  std::vector<Pixel> m_pixels;
};

}  // namespace sim::lumaview

#endif
