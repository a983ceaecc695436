// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/api/Thumbnail.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <utility>

#include "simulator/lumaview/picture/FrameStream.h"

namespace sim::lumaview {
namespace {

/// The largest size of these proportions that fits; both sides at least 1.
Size FitThumbnail(Size upright) {
  const Rect place = PlaceInWindow(upright, View{}, {kThumbnailWidth, kThumbnailHeight});
  return {std::clamp(place.width, 1, kThumbnailWidth), std::clamp(place.height, 1, kThumbnailHeight)};
}

}  // namespace

Status FillThumbnail(const PictureFilePtr& file, _lumaview_thumbnail_s& thumbnail) {
  static std::mutex mutex;
  static FramePtr last;
  const std::lock_guard lock(mutex);
  auto stream = FrameStream::Open(file, std::make_shared<Cancellation>());
  if (!stream) {
    return stream.error();
  }
  const Size size = FitThumbnail(UprightSize((*stream)->GetInfo()));
  auto frame = (*stream)->RenderPreview(size);
  if (!frame) {
    return frame.error();
  }
  last = std::move(*frame);
  thumbnail.width = size.width;
  thumbnail.height = size.height;
  thumbnail.stride = size.width * static_cast<int>(sizeof(uint32_t));
  thumbnail.format = 0;
  thumbnail.pixels = last->GetPixels().pixels;
  return Ok();
}

}  // namespace sim::lumaview
