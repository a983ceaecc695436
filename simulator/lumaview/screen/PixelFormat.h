// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_SCREEN_PIXELFORMAT_H
#define SIMULATOR_LUMAVIEW_SCREEN_PIXELFORMAT_H

#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>

#include "simulator/base/Result.h"
#include "simulator/lumaview/image/Image.h"

namespace sim::lumaview {

/// How a window wants its pixels.
class PixelFormat {
 public:
  /// Of a window with `visual` and `depth` on the server behind `setup`.
  /// Errors: kDisplayFailed for what is neither 16 nor 32 bits of true colour in this machine's byte order.
  static Result<PixelFormat> Find(const xcb_setup_t& setup, xcb_visualid_t visual, uint8_t depth);

  /// True when a frame's own pixels are what the window wants.
  bool IsNative() const;
  /// Bytes from row to row, as the server expects them.
  size_t GetStride(int width) const;
  /// Writes `source` to `target`, rows `GetStride` bytes apart.
  void Convert(ConstImageView source, uint8_t* target) const;

 private:
  /// Where one colour stands in a pixel.
  struct Channel {
    int shift = 0;
    int bits = 0;
    static Channel FromMask(uint32_t mask);
    uint32_t Place(uint32_t value) const;
  };

  int m_bits_per_pixel = 32;
  int m_row_pad_bits = 32;
  Channel m_red;
  Channel m_green;
  Channel m_blue;
};

}  // namespace sim::lumaview

#endif
