// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_API_THUMBNAIL_H
#define SIMULATOR_LUMAVIEW_API_THUMBNAIL_H

#include "platform/lumaview.h"
#include "simulator/base/Result.h"
#include "simulator/lumaview/picture/PictureFile.h"

namespace sim::lumaview {

/// A thumbnail fits into this.
inline constexpr int kThumbnailWidth = 160;
inline constexpr int kThumbnailHeight = 90;

/// Decodes a small upright picture of `file` on the calling thread, from the preview that the file carries where that
/// has the picture's proportions. The pixels stay valid until the next call. Thread-safe.
Status FillThumbnail(const PictureFilePtr& file, _lumaview_thumbnail_s& thumbnail);

}  // namespace sim::lumaview

#endif
