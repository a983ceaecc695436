// SPDX-License-Identifier: Apache-2.0
/// HEIC by libheif, and the AVIF files that libavif does not read. libheif turns and mirrors as the file's own boxes
/// say; an EXIF orientation does not count there.
#include <libheif/heif.h>

#include <algorithm>
#include <array>

#include "simulator/base/CHandle.h"
#include "simulator/lumaview/decode/Bytes.h"
#include "simulator/lumaview/decode/Module.h"

namespace sim::lumaview {
namespace {

using ContextHandle = CHandle<heif_context, heif_context_free>;
using ImageHandle = CHandle<heif_image_handle, heif_image_handle_release>;
using PixelsHandle = CHandle<heif_image, heif_image_release>;

Error Damaged(const heif_error& error) {
  return {error.code == heif_error_Memory_allocation_error ? kOverLimit : kDamaged,
          std::string("HEIC: ") + (error.message != nullptr ? error.message : "damaged")};
}

int64_t GetPosition(void* user) {
  return static_cast<int64_t>(static_cast<Source*>(user)->GetPosition());
}

/// libheif ends the process when a read fails, so none does: what is not there, because the file has become shorter or
/// nobody wants the picture any more, is zeros, which is no picture. Cameras cut theirs into tiles and each is read
/// when its turn comes, so that zeros end the decode at the next one; a picture in one piece is decoded to its end.
int Read(void* data, size_t size, void* user) {
  auto& source = *static_cast<Source*>(user);
  auto* bytes = static_cast<uint8_t*>(data);
  const size_t read = source.IsCancelled() ? 0 : source.Read({bytes, size});
  std::fill(bytes + read, bytes + size, uint8_t{0});
  return 0;
}

int Seek(int64_t position, void* user) {
  static_cast<Source*>(user)->Seek(static_cast<uint64_t>(position));
  return 0;
}

heif_reader_grow_status WaitForSize(int64_t size, void* user) {
  return static_cast<uint64_t>(size) <= static_cast<Source*>(user)->GetSize() ? heif_reader_grow_status_size_reached
                                                                              : heif_reader_grow_status_size_beyond_eof;
}

constexpr heif_reader kReader = {1, GetPosition, Read, Seek, WaitForSize};

class HeicDecoder : public Decoder {
 public:
  static Result<std::unique_ptr<Decoder>> Open(Source& source) {
    auto decoder = std::unique_ptr<HeicDecoder>(new HeicDecoder(source));
    SIM_TRY(decoder->ReadInfo());
    return std::unique_ptr<Decoder>(std::move(decoder));
  }

  const PictureInfo& GetInfo() const override { return m_info; }

  Status Decode(Size, RowSink& sink) override {
    m_source.RestartClock();
    const bool has_alpha = heif_image_handle_has_alpha_channel(m_handle.get()) != 0;
    heif_image* image = nullptr;
    const heif_error error =
        heif_decode_image(m_handle.get(), &image, heif_colorspace_RGB, heif_chroma_interleaved_RGBA, nullptr);
    const PixelsHandle pixels(image);
    SIM_TRY(m_source.CheckRunning());
    if (error.code != heif_error_Ok) {
      return Damaged(error);
    }
    const Size size{heif_image_get_width(image, heif_channel_interleaved),
                    heif_image_get_height(image, heif_channel_interleaved)};
    int stride = 0;
    const uint8_t* first = heif_image_get_plane_readonly(image, heif_channel_interleaved, &stride);
    if (first == nullptr || size != m_info.stored) {
      return Error{kDamaged, "HEIC: the picture is not as large as it says"};
    }
    SIM_TRY(sink.Begin({size, has_alpha ? PixelLayout::kBgra : PixelLayout::kBgrx, m_icc}));
    return Deliver(size, first, stride, sink);
  }

 private:
  explicit HeicDecoder(Source& source) : m_source(source), m_context(heif_context_alloc()) {}

  Status ReadInfo() {
    const Limits& limits = m_source.GetLimits();
    heif_context_set_maximum_image_size_limit(m_context.get(),
                                              static_cast<int>(std::min<uint64_t>(limits.side, 65535)));
    heif_error error = heif_context_read_from_reader(m_context.get(), &kReader, &m_source, nullptr);
    if (error.code != heif_error_Ok) {
      return Damaged(error);
    }
    heif_image_handle* handle = nullptr;
    error = heif_context_get_primary_image_handle(m_context.get(), &handle);
    m_handle.reset(handle);
    if (error.code != heif_error_Ok) {
      return Damaged(error);
    }
    m_info.type = IsAvif() ? LUMAVIEW_TYPE_AVIF : LUMAVIEW_TYPE_HEIC;
    m_info.stored = {heif_image_handle_get_width(handle), heif_image_handle_get_height(handle)};
    const size_t profile_bytes = heif_image_handle_get_raw_color_profile_size(handle);
    if (profile_bytes > 0 && profile_bytes <= limits.metadata_bytes) {
      m_icc.resize(profile_bytes);
      heif_image_handle_get_raw_color_profile(handle, m_icc.data());
    }
    return CheckWholeSize(static_cast<uint64_t>(std::max(m_info.stored.width, 0)),
                          static_cast<uint64_t>(std::max(m_info.stored.height, 0)), limits);
  }

  bool IsAvif() const {
    std::array<uint8_t, 12> head{};
    m_source.Seek(0);
    m_source.Read(head);
    return HasText(head, 8, "avi");
  }

  Status Deliver(Size size, const uint8_t* first, int stride, RowSink& sink) const {
    std::vector<uint8_t> row(static_cast<size_t>(size.width) * 4);
    for (int y = 0; y < size.height; ++y) {
      SIM_TRY(m_source.CheckRunning());
      const uint8_t* from = first + static_cast<ptrdiff_t>(y) * stride;
      for (size_t i = 0; i < row.size(); i += 4) {
        row[i] = from[i + 2];
        row[i + 1] = from[i + 1];
        row[i + 2] = from[i];
        row[i + 3] = from[i + 3];
      }
      SIM_TRY(sink.Row(y, row.data()));
    }
    return Ok();
  }

  Source& m_source;
  ContextHandle m_context;
  ImageHandle m_handle;
  PictureInfo m_info;
  std::vector<uint8_t> m_icc;
};

}  // namespace
}  // namespace sim::lumaview

LUMAVIEW_DECODER_MODULE(sim::lumaview::HeicDecoder::Open);
