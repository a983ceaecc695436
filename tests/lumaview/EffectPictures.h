// SPDX-License-Identifier: Apache-2.0
/// Pictures for the tests of effects, with rows longer than what they show, so that a pixel written outside is seen.
#ifndef TESTS_LUMAVIEW_EFFECTPICTURES_H
#define TESTS_LUMAVIEW_EFFECTPICTURES_H

#include <algorithm>
#include <cstdint>
#include <vector>

#include "simulator/lumaview/image/Image.h"

namespace sim::lumaview {

class TestPicture {
 public:
  /// Filled with `colour`, borders included. `shift`: where rows begin, in pixels, so that they are not aligned.
  TestPicture(Size size, uint32_t colour, int shift = 0)
      : m_size(size),
        m_stride(size.width + kBorder),
        m_begin(kBorder / 2 + shift),
        m_pixels(static_cast<size_t>(m_stride) * static_cast<size_t>(size.height) + kBorder * 2, colour) {}

  /// Opaque noise, the same for the same `seed`.
  static TestPicture Noise(Size size, uint32_t seed, int shift = 0) {
    TestPicture picture(size, 0, shift);
    uint32_t state = seed * 2654435761U + 1;
    for (uint32_t& pixel : picture.m_pixels) {
      state = state * 1664525U + 1013904223U;
      pixel = 0xFF000000U | (state >> 8);
    }
    return picture;
  }

  ImageView View() { return {m_pixels.data() + m_begin, m_size.width, m_size.height, m_stride}; }
  ConstImageView View() const { return {m_pixels.data() + m_begin, m_size.width, m_size.height, m_stride}; }
  uint32_t At(int x, int y) const { return View().Row(y)[x]; }

  /// Borders included.
  bool operator==(const TestPicture&) const = default;

  /// Whether what is shown is alike.
  bool Shows(const TestPicture& other) const {
    for (int y = 0; y < m_size.height; ++y) {
      if (!std::equal(View().Row(y), View().Row(y) + m_size.width, other.View().Row(y))) {
        return false;
      }
    }
    return m_size == other.m_size;
  }

 private:
  static constexpr int kBorder = 70;

  Size m_size;
  int m_stride;
  int m_begin;
  std::vector<uint32_t> m_pixels;
};

/// Red, green or blue of a pixel: `shift` is 16, 8 or 0.
inline int Channel(uint32_t pixel, int shift) {
  return static_cast<int>((pixel >> shift) & 0xFF);
}

}  // namespace sim::lumaview

#endif
