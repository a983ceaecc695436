// SPDX-License-Identifier: Apache-2.0
/// Finished colours from scaled rows. The conversion of embedded profiles stands in a module of its own and is loaded
/// with the first picture that has a profile.
#ifndef SIMULATOR_LUMAVIEW_IMAGE_COLOUR_H
#define SIMULATOR_LUMAVIEW_IMAGE_COLOUR_H

#include <memory>
#include <span>

#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {

/// From the colours of one embedded profile to sRGB. One thread at a time.
class ColourTransform {
 public:
  virtual ~ColourTransform() = default;
  /// Converts `count` pixels of the layout that the transform was made for to 0xFFRRGGBB.
  virtual void Convert(const uint8_t* in, uint32_t* out, int count) = 0;
};

/// Makes a transform; null when the profile is damaged or does not fit the layout.
using ColourTransformFactory = std::unique_ptr<ColourTransform> (*)(std::span<const uint8_t> icc, PixelLayout layout);

/// As `ColourTransformFactory`, by the module; null also where this installation has no such module, as a picture with
/// slightly wrong colours is better than none.
std::unique_ptr<ColourTransform> CreateColourTransform(std::span<const uint8_t> icc, PixelLayout layout);

inline constexpr char kColourModule[] = "colour";
/// The module's exported object: its `ColourTransformFactory`.
inline constexpr char kColourSymbol[] = "lumaview_module_colour";

/// Multiplies alpha in; rounded to the nearest. In place allowed.
void PremultiplyRow(const uint8_t* in, uint8_t* out, int count);

/// One row as it leaves the scaler, to 0xFFRRGGBB. Rows with alpha come premultiplied, which is what lies over black.
void FinishRow(const uint8_t* in, PixelLayout layout, ColourTransform* transform, uint32_t* out, int count);

}  // namespace sim::lumaview

#endif
