// SPDX-License-Identifier: Apache-2.0
/// From a decoder's rows to finished window pixels: scaled, upright, in sRGB, over black.
#ifndef SIMULATOR_LUMAVIEW_IMAGE_RENDER_H
#define SIMULATOR_LUMAVIEW_IMAGE_RENDER_H

#include "simulator/base/Result.h"
#include "simulator/lumaview/decode/Decoder.h"
#include "simulator/lumaview/image/Image.h"

namespace sim::lumaview {

enum class StereoMode : int { kOff = 0, kSideBySide = 1, kTopAndBottom = 2, kAnaglyph = 3 };

/// How a picture is looked at. On a screen without a third dimension the packed modes show the left view: that of a
/// picture which is stereo by its format; of any other picture the left or the upper half, stretched to the whole, as
/// such pictures are packed. The anaglyph of a picture without a second view is the picture.
struct View {
  int zoom = 1;      ///< times the fit, 1..16
  int pan_x = 0;     ///< window pixels that the picture is moved to the right; see `ClampPan`
  int pan_y = 0;     ///< likewise down
  int rotation = 0;  ///< degrees clockwise: 0, 90, 180 or 270
  StereoMode stereo = StereoMode::kOff;
  bool fill = false;  ///< cover the window and cut what sticks out, instead of fitting into it
  bool operator==(const View&) const = default;
};

/// A fit of extreme proportions with fill and zoom ends here; coordinates stay well inside an int.
inline constexpr int kLongestPlacedSide = 1 << 28;

/// The size of the picture after its orientation (as "GetPictureSize" reports it).
Size UprightSize(const PictureInfo& info);

/// Where the whole picture lies in the window: centred, aspect kept, moved by the pan; it may exceed the window. Each
/// side is at least 1 and rounded to the nearest pixel.
Rect PlaceInWindow(Size upright, const View& view, Size window);

/// `view` with its pan limited so that the picture leaves no gap that centring would not leave.
View ClampPan(Size upright, View view, Size window);

/// Decodes `decoder`'s next frame and draws it into `target`, the whole of which is written: what the picture does not
/// cover becomes 0xFF000000. On an error the content of `target` is undefined.
/// Memory: bounded by the target and the decoder's own, not by the picture.
Status RenderFrame(Decoder& decoder, const View& view, ImageView target);

}  // namespace sim::lumaview

#endif
