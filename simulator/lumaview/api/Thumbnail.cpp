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

/// A picture that was fitted into a frame, without the black around it.
class FrameDecoder : public Decoder {
 public:
  FrameDecoder(const Frame& frame, Size upright)
      : m_frame(frame), m_part(PlaceInWindow(upright, View{}, frame.GetSize())) {
    m_info.stored = {m_part.width, m_part.height};
  }
  const PictureInfo& GetInfo() const override { return m_info; }
  Status Decode(Size, RowSink& sink) override {
    SIM_TRY(sink.Begin({m_info.stored, PixelLayout::kBgrx, {}}));
    for (int y = 0; y < m_part.height; ++y) {
      const uint32_t* row = m_frame.GetPixels().Row(m_part.y + y) + m_part.x;
      SIM_TRY(sink.Row(y, reinterpret_cast<const uint8_t*>(row)));
    }
    return Ok();
  }

 private:
  const Frame& m_frame;
  const Rect m_part;
  PictureInfo m_info;
};

Result<FramePtr> Shrink(const Rendered& whole) {
  const Size upright = UprightSize(whole.info);
  auto frame = Frame::Create(FitThumbnail(upright));
  if (!frame) {
    return frame.error();
  }
  FrameDecoder decoder(*whole.frame, upright);
  SIM_TRY(RenderFrame(decoder, View{}, (*frame)->GetPixels()));
  return FramePtr(std::move(*frame));
}

Result<FramePtr> DecodeSmall(const PictureFilePtr& file) {
  const auto stream = FrameStream::Open(file, std::make_shared<Cancellation>());
  return stream ? (*stream)->RenderPreview(FitThumbnail(UprightSize((*stream)->GetInfo()))) : stream.error();
}

}  // namespace

Status FillThumbnail(const PictureFilePtr& file, const std::optional<Rendered>& whole,
                     _lumaview_thumbnail_s& thumbnail) {
  static std::mutex mutex;
  static FramePtr last;
  const std::lock_guard lock(mutex);
  auto frame = whole ? Shrink(*whole) : DecodeSmall(file);
  if (!frame) {
    return frame.error();
  }
  last = std::move(*frame);
  const Size size = last->GetSize();
  thumbnail.width = size.width;
  thumbnail.height = size.height;
  thumbnail.stride = size.width * static_cast<int>(sizeof(uint32_t));
  thumbnail.format = 0;
  thumbnail.pixels = last->GetPixels().pixels;
  return Ok();
}

}  // namespace sim::lumaview
