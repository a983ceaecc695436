// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/TiffSamples.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace sim::lumaview {
namespace {

template <typename Value>
Value Get(TIFF* tiff, uint32_t tag, Value missing) {
  Value value = missing;
  TIFFGetFieldDefaulted(tiff, tag, &value);
  return value;
}

/// A half-precision number.
double FromHalf(uint16_t half) {
  const int exponent = half >> 10 & 31;
  const int mantissa = half & 1023;
  const double magnitude = exponent == 0 ? std::ldexp(mantissa, -24) : std::ldexp(mantissa + 1024, exponent - 25);
  return (half & 0x8000) != 0 ? -magnitude : magnitude;
}

uint8_t FromUnit(double value) {
  // Written so that what is not a number becomes 0.
  return value > 0 ? static_cast<uint8_t>(std::lround(std::min(value, 1.0) * 255)) : uint8_t{0};
}

}  // namespace

TiffSamples::TiffSamples(TIFF* tiff, const Limits& limits)
    : m_tiff(tiff),
      m_is_tiled(TIFFIsTiled(tiff) != 0),
      m_is_planar(Get<uint16_t>(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) == PLANARCONFIG_SEPARATE),
      m_width(Get<uint32_t>(tiff, TIFFTAG_IMAGEWIDTH, 0)),
      m_height(Get<uint32_t>(tiff, TIFFTAG_IMAGELENGTH, 0)),
      m_unit_width(m_is_tiled ? Get<uint32_t>(tiff, TIFFTAG_TILEWIDTH, 0) : m_width),
      m_unit_height(m_is_tiled ? Get<uint32_t>(tiff, TIFFTAG_TILELENGTH, 0)
                               : std::min(Get<uint32_t>(tiff, TIFFTAG_ROWSPERSTRIP, m_height), m_height)),
      m_photometric(Get<uint16_t>(tiff, TIFFTAG_PHOTOMETRIC, 0xFFFF)),
      m_bits(Get<uint16_t>(tiff, TIFFTAG_BITSPERSAMPLE, 1)),
      m_samples(Get<uint16_t>(tiff, TIFFTAG_SAMPLESPERPIXEL, 1)) {
  const auto format = Get<uint16_t>(tiff, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT);
  m_kind = format == SAMPLEFORMAT_IEEEFP ? Kind::kFloat : Kind::kInteger;
  const bool is_integer = (format == SAMPLEFORMAT_UINT || format == SAMPLEFORMAT_VOID) &&
                          (m_bits <= 16 || m_bits == 24 || m_bits == 32 || m_bits == 64);
  const bool is_float = m_kind == Kind::kFloat && (m_bits == 16 || m_bits == 32 || m_bits == 64);
  const bool has_size = m_unit_width > 0 && m_unit_height > 0 && m_unit_width <= limits.side &&
                        m_unit_height <= limits.side && m_samples > 0 && m_samples <= kMostSamples && m_bits > 0;
  if (!has_size || (!is_integer && !is_float)) {
    return;
  }
  // In 64 bits, also where a size has 32. A band of tiles is as wide as the picture and as high as a tile, which may be
  // much larger than both.
  const uint64_t per_row = uint64_t{m_unit_width} * (m_is_planar ? 1u : m_samples);
  const uint64_t unit_row_bytes = (per_row * m_bits + 7) / 8;
  const uint64_t most_bytes = std::min<uint64_t>(limits.whole_pixels * 4, PTRDIFF_MAX);
  if (unit_row_bytes * m_unit_height <= most_bytes && uint64_t{m_width} * m_unit_height <= most_bytes / 4) {
    m_unit_row_bytes = static_cast<size_t>(unit_row_bytes);
    FindLayout();
  }
}

void TiffSamples::FindLayout() {
  switch (m_photometric) {
    case PHOTOMETRIC_MINISBLACK:
    case PHOTOMETRIC_MINISWHITE:
      m_colour_samples = 1;
      m_layout = PixelLayout::kGray;
      break;
    case PHOTOMETRIC_RGB:
      m_colour_samples = 3;
      m_layout = PixelLayout::kBgrx;
      break;
    case PHOTOMETRIC_PALETTE:
      m_colour_samples = 1;
      m_layout = PixelLayout::kBgrx;
      ReadPalette();
      break;
    case PHOTOMETRIC_SEPARATED:
      m_colour_samples = 4;
      m_layout = PixelLayout::kCmyk;
      break;
    default:
      return;
  }
  FindAlpha();
  const bool has_palette = m_photometric != PHOTOMETRIC_PALETTE || (!m_palette.empty() && m_kind == Kind::kInteger);
  const bool is_ink = m_photometric != PHOTOMETRIC_SEPARATED || Get<uint16_t>(m_tiff, TIFFTAG_INKSET, 1) == INKSET_CMYK;
  m_is_supported = m_samples >= m_colour_samples && has_palette && is_ink;
}

/// Multiplied alpha over black leaves the colours as they are: only the other kind is passed on.
void TiffSamples::FindAlpha() {
  uint16_t count = 0;
  const uint16_t* kinds = nullptr;
  TIFFGetFieldDefaulted(m_tiff, TIFFTAG_EXTRASAMPLES, &count, &kinds);
  m_has_alpha = count > 0 && kinds != nullptr && kinds[0] == EXTRASAMPLE_UNASSALPHA && m_samples > m_colour_samples &&
                m_layout != PixelLayout::kCmyk;
  if (m_has_alpha) {
    m_layout = PixelLayout::kBgra;
  }
}

void TiffSamples::ReadPalette() {
  const uint16_t* red = nullptr;
  const uint16_t* green = nullptr;
  const uint16_t* blue = nullptr;
  if (m_bits > 16 || TIFFGetField(m_tiff, TIFFTAG_COLORMAP, &red, &green, &blue) == 0) {
    return;
  }
  const size_t count = size_t{1} << m_bits;
  const auto is_byte = [](uint16_t value) { return value < 256; };
  // Some writers store bytes where the format has 16 bits.
  const bool are_bytes = std::all_of(red, red + count, is_byte) && std::all_of(green, green + count, is_byte) &&
                         std::all_of(blue, blue + count, is_byte);
  const int shift = are_bytes ? 0 : 8;
  for (size_t i = 0; i < count; ++i) {
    m_palette.push_back({static_cast<uint8_t>(red[i] >> shift), static_cast<uint8_t>(green[i] >> shift),
                         static_cast<uint8_t>(blue[i] >> shift)});
  }
}

bool TiffSamples::ReadBand(int first_row, std::vector<uint8_t>& out) {
  const uint16_t planes =
      m_is_planar ? std::min(m_samples, static_cast<uint16_t>(m_colour_samples + m_has_alpha)) : uint16_t{1};
  for (uint32_t x = 0; x < m_width; x += m_unit_width) {
    for (uint16_t plane = 0; plane < planes; ++plane) {
      if (!ReadUnit(x, static_cast<uint32_t>(first_row), plane)) {
        return false;
      }
      Unpack(x, plane, out);
    }
  }
  return true;
}

/// A last strip may be shorter, but never what is left of a tile.
bool TiffSamples::ReadUnit(uint32_t x, uint32_t y, uint16_t plane) {
  const uint32_t rows = m_is_tiled ? m_unit_height : std::min(m_unit_height, m_height - y);
  m_unit.resize(m_unit_row_bytes * m_unit_height);
  const auto wanted = static_cast<tmsize_t>(m_unit_row_bytes * rows);
  const tmsize_t read =
      m_is_tiled ? TIFFReadEncodedTile(m_tiff, TIFFComputeTile(m_tiff, x, y, 0, plane), m_unit.data(), wanted)
                 : TIFFReadEncodedStrip(m_tiff, TIFFComputeStrip(m_tiff, y, plane), m_unit.data(), wanted);
  return read == wanted;
}

void TiffSamples::Unpack(uint32_t x, uint16_t plane, std::vector<uint8_t>& out) const {
  const auto pixel_bytes = static_cast<size_t>(BytesPerPixel(m_layout));
  const uint32_t columns = std::min(m_unit_width, m_width - x);
  for (uint32_t y = 0; y < m_unit_height; ++y) {
    const uint8_t* row = &m_unit[y * m_unit_row_bytes];
    uint8_t* pixel = &out[(size_t{y} * m_width + x) * pixel_bytes];
    for (uint32_t column = 0; column < columns; ++column, pixel += pixel_bytes) {
      if (m_is_planar) {
        Put(pixel, plane, Sample(row, column));
        continue;
      }
      if (m_photometric == PHOTOMETRIC_PALETTE) {
        const auto& colour = m_palette[Integer(row, size_t{column} * m_samples) & (m_palette.size() - 1)];
        pixel[2] = colour[0];
        pixel[1] = colour[1];
        pixel[0] = colour[2];
      }
      const int first = m_photometric == PHOTOMETRIC_PALETTE ? 1 : 0;
      for (int sample = first; sample < m_colour_samples + m_has_alpha; ++sample) {
        Put(pixel, sample, Sample(row, size_t{column} * m_samples + static_cast<size_t>(sample)));
      }
    }
  }
}

/// Stores sample number `channel` of a pixel where the layout has it.
void TiffSamples::Put(uint8_t* pixel, int channel, uint8_t value) const {
  if (channel >= m_colour_samples) {
    pixel[3] = value;
    return;
  }
  if (m_photometric == PHOTOMETRIC_MINISWHITE) {
    value = static_cast<uint8_t>(255 - value);
  }
  if (m_layout == PixelLayout::kGray || m_layout == PixelLayout::kCmyk) {
    pixel[channel] = value;
  } else if (m_colour_samples == 1) {
    pixel[0] = pixel[1] = pixel[2] = value;
  } else {
    pixel[2 - channel] = value;
  }
}

uint8_t TiffSamples::Sample(const uint8_t* row, size_t index) const {
  if (m_kind == Kind::kFloat) {
    return FromUnit(Float(row, index));
  }
  const uint32_t value = Integer(row, index);
  const int bits = std::min<int>(m_bits, 16);
  const uint32_t most = (1u << bits) - 1;
  return m_bits == 8 ? static_cast<uint8_t>(value) : static_cast<uint8_t>((value * 255 + most / 2) / most);
}

/// Of wider samples the upper 16 bits. libtiff has brought whole bytes into the machine's order.
uint32_t TiffSamples::Integer(const uint8_t* row, size_t index) const {
  constexpr bool kLittle = std::endian::native == std::endian::little;
  switch (m_bits) {
    case 8:
      return row[index];
    case 16: {
      uint16_t value = 0;
      std::memcpy(&value, row + 2 * index, sizeof value);
      return value;
    }
    case 24:
    case 32:
    case 64: {
      const size_t bytes = m_bits / 8u;
      const uint8_t* sample = row + index * bytes;
      const uint8_t high = kLittle ? sample[bytes - 1] : sample[0];
      const uint8_t low = kLittle ? sample[bytes - 2] : sample[1];
      return static_cast<uint32_t>(high << 8 | low);
    }
    default: {
      uint32_t value = 0;
      for (size_t bit = index * m_bits; bit < (index + 1) * m_bits; ++bit) {
        value = value << 1 | (row[bit / 8] >> (7 - bit % 8) & 1u);
      }
      return value;
    }
  }
}

double TiffSamples::Float(const uint8_t* row, size_t index) const {
  if (m_bits == 16) {
    uint16_t half = 0;
    std::memcpy(&half, row + 2 * index, sizeof half);
    return FromHalf(half);
  }
  if (m_bits == 32) {
    float value = 0;
    std::memcpy(&value, row + 4 * index, sizeof value);
    return static_cast<double>(value);
  }
  double value = 0;
  std::memcpy(&value, row + 8 * index, sizeof value);
  return value;
}

}  // namespace sim::lumaview
