// SPDX-License-Identifier: Apache-2.0
/// Sizes, rectangles and views of pixels, shared by decoders, scaling, drawing and effects.
#ifndef SIMULATOR_LUMAVIEW_IMAGE_IMAGE_H
#define SIMULATOR_LUMAVIEW_IMAGE_IMAGE_H

#include <cstddef>
#include <cstdint>

namespace sim::lumaview {

/// Pixels; 0 x 0 is empty, both are never negative.
struct Size {
  int width = 0;
  int height = 0;
  bool operator==(const Size&) const = default;
};

/// In the coordinates of what contains it; right and bottom excluded.
struct Rect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const Rect&) const = default;
};

/// Borrowed pixels: 0xAARRGGBB in the machine's byte order (B, G, R, A bytes on little-endian), as the X server reads
/// them. Rows lie `stride` pixels apart. On screen alpha is not looked at; what is drawn has alpha 0xFF.
template <typename Pixel>
struct BasicImageView {
  Pixel* pixels = nullptr;
  int width = 0;
  int height = 0;
  ptrdiff_t stride = 0;

  Pixel* Row(int y) const { return pixels + y * stride; }
  Size GetSize() const { return {width, height}; }
};
using ImageView = BasicImageView<uint32_t>;
using ConstImageView = BasicImageView<const uint32_t>;

inline ConstImageView AsConst(const ImageView& view) {
  return {view.pixels, view.width, view.height, view.stride};
}

}  // namespace sim::lumaview

#endif
