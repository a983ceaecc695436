// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_IMAGE_PREVIEW_H
#define SIMULATOR_LUMAVIEW_IMAGE_PREVIEW_H

#include "simulator/lumaview/image/Render.h"

namespace sim::lumaview {

/// Draws the picture as small as `target`, whose proportions are the upright picture's: from the preview that the file
/// carries where that serves, else from the picture itself. Errors: those of `RenderFrame`.
Status RenderPreview(Decoder& decoder, const Limits& limits, ImageView target);

}  // namespace sim::lumaview

#endif
