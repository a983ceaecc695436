// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/image/Colour.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "simulator/lumaview/decode/Bytes.h"
#include "simulator/lumaview/decode/Module.h"

namespace sim::lumaview {
namespace {

constexpr uint32_t kOpaque = 0xFF000000;

/// `a * b / 255` to the nearest, for bytes.
constexpr uint32_t MultiplyBytes(uint32_t a, uint32_t b) {
  const uint32_t product = a * b + 128;
  return (product + (product >> 8)) >> 8;
}

constexpr uint32_t Pack(uint32_t red, uint32_t green, uint32_t blue) {
  return kOpaque | red << 16 | green << 8 | blue;
}

uint32_t FromCmyk(const uint8_t* ink) {
  const uint32_t light = 255u - ink[3];
  return Pack(MultiplyBytes(255u - ink[0], light), MultiplyBytes(255u - ink[1], light),
              MultiplyBytes(255u - ink[2], light));
}

/// Profiles are about plain colours: alpha is taken out for the conversion and multiplied in again.
void ConvertPremultiplied(const uint8_t* in, ColourTransform& transform, uint32_t* out, int count) {
  std::vector<uint8_t> plain(static_cast<size_t>(count) * 4);
  for (int i = 0; i < count; ++i) {
    const uint8_t* pixel = in + 4 * i;
    const uint32_t alpha = std::max<uint32_t>(pixel[3], 1);
    for (int channel = 0; channel < 3; ++channel) {
      plain[static_cast<size_t>(4 * i + channel)] =
          static_cast<uint8_t>(std::min<uint32_t>((pixel[channel] * 255u + alpha / 2) / alpha, 255));
    }
  }
  transform.Convert(plain.data(), out, count);
  for (int i = 0; i < count; ++i) {
    const uint32_t alpha = in[4 * i + 3];
    const uint32_t colour = out[i];
    out[i] = Pack(MultiplyBytes(colour >> 16 & 0xFF, alpha), MultiplyBytes(colour >> 8 & 0xFF, alpha),
                  MultiplyBytes(colour & 0xFF, alpha));
  }
}

}  // namespace

std::unique_ptr<ColourTransform> CreateColourTransform(std::span<const uint8_t> icc, PixelLayout layout) {
  if (icc.empty()) {
    return nullptr;
  }
  static const Result<const void*> factory = FindInModule(kColourModule, kColourSymbol);
  return factory ? (*static_cast<const ColourTransformFactory*>(*factory))(icc, layout) : nullptr;
}

void PremultiplyRow(const uint8_t* in, uint8_t* out, int count) {
  for (int i = 0; i < count; ++i, in += 4, out += 4) {
    const uint32_t alpha = in[3];
    if (alpha == 255) {
      std::memcpy(out, in, 4);
      continue;
    }
    out[0] = static_cast<uint8_t>(MultiplyBytes(in[0], alpha));
    out[1] = static_cast<uint8_t>(MultiplyBytes(in[1], alpha));
    out[2] = static_cast<uint8_t>(MultiplyBytes(in[2], alpha));
    out[3] = static_cast<uint8_t>(alpha);
  }
}

void FinishRow(const uint8_t* in, PixelLayout layout, ColourTransform* transform, uint32_t* out, int count) {
  if (transform != nullptr && layout == PixelLayout::kBgra) {
    ConvertPremultiplied(in, *transform, out, count);
    return;
  }
  if (transform != nullptr) {
    transform->Convert(in, out, count);
    return;
  }
  switch (layout) {
    case PixelLayout::kGray:
      std::transform(in, in + count, out, [](uint32_t grey) { return kOpaque | grey * 0x010101u; });
      break;
    case PixelLayout::kCmyk:
      for (int i = 0; i < count; ++i) {
        out[i] = FromCmyk(in + 4 * i);
      }
      break;
    case PixelLayout::kBgrx:
    case PixelLayout::kBgra:
      for (int i = 0; i < count; ++i) {
        out[i] = LittleEndian32(in + 4 * i) | kOpaque;
      }
      break;
  }
}

}  // namespace sim::lumaview
