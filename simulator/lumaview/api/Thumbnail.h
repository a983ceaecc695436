// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_API_THUMBNAIL_H
#define SIMULATOR_LUMAVIEW_API_THUMBNAIL_H

#include <optional>

#include "platform/lumaview.h"
#include "simulator/base/Result.h"
#include "simulator/lumaview/picture/Rendering.h"

namespace sim::lumaview {

/// A thumbnail fits into this.
inline constexpr int kThumbnailWidth = 160;
inline constexpr int kThumbnailHeight = 90;

/// Makes a small upright picture: of `whole`, what the window shows, where that is all of it; else from the preview
/// that the file carries or by decoding it, while the caller waits. The pixels stay valid until the next call.
/// Thread-safe.
Status FillThumbnail(const PictureFilePtr& file, const std::optional<Rendered>& whole,
                     _lumaview_thumbnail_s& thumbnail);

}  // namespace sim::lumaview

#endif
