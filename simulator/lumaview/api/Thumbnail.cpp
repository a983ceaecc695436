// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/api/Thumbnail.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

#include "simulator/lumaview/picture/FrameStream.h"

namespace sim::lumaview {
namespace {

CancelFlag NeverCancelled() {
  return std::make_shared<std::atomic<bool>>(false);
}

/// The largest size of these proportions that fits; both sides at least 1.
Size FitThumbnail(Size upright) {
  const Rect place = PlaceInWindow(upright, View{}, {kThumbnailWidth, kThumbnailHeight});
  return {std::clamp(place.width, 1, kThumbnailWidth), std::clamp(place.height, 1, kThumbnailHeight)};
}

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

UniqueFd FileOf(const std::vector<uint8_t>& bytes) {
  UniqueFd fd(memfd_create("lumaview-preview", MFD_CLOEXEC));
  if (fd && write(fd.Get(), bytes.data(), bytes.size()) != static_cast<ssize_t>(bytes.size())) {
    fd.Reset();
  }
  return fd;
}

/// False when there is no preview, or none that serves.
bool RenderPreview(FrameStream& stream, ImageView target) {
  const std::vector<uint8_t> bytes = stream.GetDecoder().GetExifThumbnail();
  const UniqueFd fd = bytes.empty() ? UniqueFd() : FileOf(bytes);
  if (!fd) {
    return false;
  }
  const CancelFlag cancelled = NeverCancelled();
  Source source(fd.Get(), GetLimits(), *cancelled);
  const auto preview = OpenPicture(source);
  if (!preview || !HasProportionsOf((*preview)->GetInfo().stored, stream.GetInfo().stored)) {
    return false;
  }
  TurnedDecoder turned(**preview, stream.GetInfo().orientation);
  return static_cast<bool>(RenderFrame(turned, View{}, target));
}

}  // namespace

Status FillThumbnail(const PictureFilePtr& file, _lumaview_thumbnail_s& thumbnail) {
  static std::mutex mutex;
  static std::vector<uint32_t> pixels;
  const std::lock_guard lock(mutex);
  auto stream = FrameStream::Open(file, NeverCancelled());
  if (!stream) {
    return stream.error();
  }
  const Size size = FitThumbnail(UprightSize((*stream)->GetInfo()));
  pixels.assign(static_cast<size_t>(size.width) * static_cast<size_t>(size.height), 0);
  const ImageView target{pixels.data(), size.width, size.height, size.width};
  if (!RenderPreview(**stream, target)) {
    SIM_TRY(RenderFrame((*stream)->GetDecoder(), View{}, target));
  }
  thumbnail.width = size.width;
  thumbnail.height = size.height;
  thumbnail.stride = size.width * static_cast<int>(sizeof(uint32_t));
  thumbnail.format = 0;
  thumbnail.pixels = pixels.data();
  return Ok();
}

}  // namespace sim::lumaview
