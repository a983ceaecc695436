// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/image/Preview.h"

#include <cstdlib>
#include <memory>
#include <vector>

namespace sim::lumaview {
namespace {

/// A preview, turned as the picture that it stands for: previews themselves say nothing about that.
class TurnedDecoder : public Decoder {
 public:
  TurnedDecoder(Decoder& decoder, Orientation orientation) : m_decoder(decoder), m_info(decoder.GetInfo()) {
    m_info.orientation = orientation;
  }
  const PictureInfo& GetInfo() const override { return m_info; }
  Status Decode(Size ideal, RowSink& sink) override { return m_decoder.Decode(ideal, sink); }

 private:
  Decoder& m_decoder;
  PictureInfo m_info;
};

/// Cameras put black bars around previews of other proportions; those are of no use.
bool HasProportionsOf(Size preview, Size picture) {
  const int64_t difference = int64_t{preview.width} * picture.height - int64_t{preview.height} * picture.width;
  constexpr int64_t kFiftieth = 50;
  return std::abs(difference) * kFiftieth <= int64_t{preview.height} * picture.width;
}

/// False when there is no preview, or none that serves.
bool RenderExifPreview(const Decoder& picture, const Limits& limits, ImageView target) {
  const std::vector<uint8_t> bytes = picture.GetExifThumbnail();
  if (bytes.empty()) {
    return false;
  }
  const std::atomic<bool> cancelled{false};
  Source source(bytes, limits, cancelled);
  const auto preview = OpenPicture(source);
  if (!preview || !HasProportionsOf((*preview)->GetInfo().stored, picture.GetInfo().stored)) {
    return false;
  }
  TurnedDecoder turned(**preview, picture.GetInfo().orientation);
  return static_cast<bool>(RenderFrame(turned, View{}, target));
}

}  // namespace

Status RenderPreview(Decoder& decoder, const Limits& limits, ImageView target) {
  return RenderExifPreview(decoder, limits, target) ? Ok() : RenderFrame(decoder, View{}, target);
}

}  // namespace sim::lumaview
