// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/screen/PixelFormat.h"

#include <bit>
#include <string>

#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {
namespace {

const xcb_visualtype_t* FindVisual(const xcb_setup_t& setup, xcb_visualid_t visual) {
  for (auto screen = xcb_setup_roots_iterator(&setup); screen.rem > 0; xcb_screen_next(&screen)) {
    for (auto depth = xcb_screen_allowed_depths_iterator(screen.data); depth.rem > 0; xcb_depth_next(&depth)) {
      for (auto type = xcb_depth_visuals_iterator(depth.data); type.rem > 0; xcb_visualtype_next(&type)) {
        if (type.data->visual_id == visual) {
          return type.data;
        }
      }
    }
  }
  return nullptr;
}

const xcb_format_t* FindFormat(const xcb_setup_t& setup, uint8_t depth) {
  for (auto format = xcb_setup_pixmap_formats_iterator(&setup); format.rem > 0; xcb_format_next(&format)) {
    if (format.data->depth == depth) {
      return format.data;
    }
  }
  return nullptr;
}

constexpr uint8_t kOwnByteOrder =
    std::endian::native == std::endian::little ? XCB_IMAGE_ORDER_LSB_FIRST : XCB_IMAGE_ORDER_MSB_FIRST;

}  // namespace

PixelFormat::Channel PixelFormat::Channel::FromMask(uint32_t mask) {
  return {std::countr_zero(mask), std::popcount(mask)};
}

uint32_t PixelFormat::Channel::Place(uint32_t value) const {
  const uint32_t scaled = bits <= 8 ? value >> (8 - bits) : (value << (bits - 8)) | (value >> (16 - bits));
  return scaled << shift;
}

Result<PixelFormat> PixelFormat::Find(const xcb_setup_t& setup, xcb_visualid_t visual, uint8_t depth) {
  const xcb_visualtype_t* type = FindVisual(setup, visual);
  const xcb_format_t* layout = FindFormat(setup, depth);
  const bool known = type != nullptr && layout != nullptr && type->_class == XCB_VISUAL_CLASS_TRUE_COLOR &&
                     (layout->bits_per_pixel == 16 || layout->bits_per_pixel == 32) &&
                     setup.image_byte_order == kOwnByteOrder;
  if (!known) {
    return Error{kDisplayFailed, "the window's pixels (depth " + std::to_string(depth) +
                                     ") are neither 16 nor 32 bits of true colour; use a screen of depth 16, 24 or 32"};
  }
  PixelFormat format;
  format.m_bits_per_pixel = layout->bits_per_pixel;
  format.m_row_pad_bits = layout->scanline_pad;
  format.m_red = Channel::FromMask(type->red_mask);
  format.m_green = Channel::FromMask(type->green_mask);
  format.m_blue = Channel::FromMask(type->blue_mask);
  return format;
}

bool PixelFormat::IsNative() const {
  const auto stands_at = [](const Channel& channel, int shift) { return channel.shift == shift && channel.bits == 8; };
  return m_bits_per_pixel == 32 && stands_at(m_red, 16) && stands_at(m_green, 8) && stands_at(m_blue, 0);
}

size_t PixelFormat::GetStride(int width) const {
  const auto pad = static_cast<size_t>(m_row_pad_bits);
  const size_t bits = static_cast<size_t>(width) * static_cast<size_t>(m_bits_per_pixel);
  return (bits + pad - 1) / pad * pad / 8;
}

void PixelFormat::Convert(ConstImageView source, uint8_t* target) const {
  const auto convert = [this](uint32_t pixel) {
    return m_red.Place(pixel >> 16 & 0xFF) | m_green.Place(pixel >> 8 & 0xFF) | m_blue.Place(pixel & 0xFF);
  };
  const size_t stride = GetStride(source.width);
  for (int y = 0; y < source.height; ++y, target += stride) {
    const uint32_t* row = source.Row(y);
    if (m_bits_per_pixel == 16) {
      auto* out = reinterpret_cast<uint16_t*>(target);
      for (int x = 0; x < source.width; ++x) {
        out[x] = static_cast<uint16_t>(convert(row[x]));
      }
    } else {
      auto* out = reinterpret_cast<uint32_t*>(target);
      for (int x = 0; x < source.width; ++x) {
        out[x] = convert(row[x]);
      }
    }
  }
}

}  // namespace sim::lumaview
