// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_TIFFSAMPLES_H
#define SIMULATOR_LUMAVIEW_DECODE_TIFFSAMPLES_H

#include <tiffio.h>

#include <array>
#include <vector>

#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {

/// Grey, palette, RGB and ink samples of any width, whole numbers or floating-point ones, in strips or tiles, together
/// or in planes: what libtiff unpacks but does not convert in all these forms, and what keeps ink and grey as they are
/// for their profile. Other colour spaces, and pieces above the limits, are left to libtiff's conversion.
class TiffSamples {
 public:
  TiffSamples(TIFF* tiff, const Limits& limits);

  bool IsSupported() const { return m_is_supported; }
  PixelLayout GetLayout() const { return m_layout; }
  /// Rows that lie in one piece of the file.
  int GetBandRows() const { return static_cast<int>(m_unit_height); }

  /// Bytes of a band in the layout.
  size_t GetBandBytes() const { return size_t{m_width} * m_unit_height * static_cast<size_t>(BytesPerPixel(m_layout)); }

  /// Unpacks the band that begins at `first_row`, a multiple of the band's rows, into `out`, which
  /// has `GetBandBytes()`. False: libtiff has complained.
  bool ReadBand(int first_row, std::vector<uint8_t>& out);

 private:
  enum class Kind { kInteger, kFloat };
  static constexpr int kMostSamples = 32;

  void FindLayout();
  void FindAlpha();
  void ReadPalette();
  bool ReadUnit(uint32_t x, uint32_t y, uint16_t plane);
  void Unpack(uint32_t x, uint16_t plane, std::vector<uint8_t>& out) const;
  uint8_t Sample(const uint8_t* row, size_t index) const;
  uint32_t Integer(const uint8_t* row, size_t index) const;
  double Float(const uint8_t* row, size_t index) const;
  void Put(uint8_t* pixel, int channel, uint8_t value) const;

  TIFF* const m_tiff;
  bool m_is_supported = false;
  bool m_is_tiled = false;
  bool m_is_planar = false;
  uint32_t m_width = 0;
  uint32_t m_height = 0;
  uint32_t m_unit_width = 0;   ///< of a tile, or the picture's
  uint32_t m_unit_height = 0;  ///< of a tile or strip
  uint16_t m_photometric = 0;
  uint16_t m_bits = 0;
  uint16_t m_samples = 0;
  uint16_t m_colour_samples = 0;
  bool m_has_alpha = false;
  Kind m_kind = Kind::kInteger;
  PixelLayout m_layout = PixelLayout::kGray;
  std::vector<std::array<uint8_t, 3>> m_palette;  ///< R, G, B
  std::vector<uint8_t> m_unit;
  size_t m_unit_row_bytes = 0;
};

}  // namespace sim::lumaview

#endif
