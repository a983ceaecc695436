// SPDX-License-Identifier: Apache-2.0
/// AVIF by libavif, stills and sequences. The turn and the mirror of its boxes become an orientation; an EXIF
/// orientation does not count there.
#include <avif/avif.h>

#include <algorithm>
#include <cmath>

#include "simulator/base/CHandle.h"
#include "simulator/lumaview/decode/AvifLoops.h"
#include "simulator/lumaview/decode/Module.h"
#include "simulator/lumaview/image/Turn.h"

namespace sim::lumaview {
namespace {

using DecoderHandle = CHandle<avifDecoder, avifDecoderDestroy>;

/// Both cores of a small machine; more threads only cost memory.
constexpr int kThreads = 2;

Error Damaged(avifResult result) {
  return {result == AVIF_RESULT_OUT_OF_MEMORY ? kOutOfMemory : kDamaged,
          std::string("AVIF: ") + avifResultToString(result)};
}

/// First a turn to the left by quarters, then a mirror.
Orientation GetOrientation(const avifImage& image) {
  constexpr int kDegreesRight[] = {0, 270, 180, 90};
  Turn turn;
  if ((image.transformFlags & AVIF_TRANSFORM_IROT) != 0) {
    turn = turn.Rotated(kDegreesRight[image.irot.angle & 3]);
  }
  if ((image.transformFlags & AVIF_TRANSFORM_IMIR) != 0) {
    bool& mirror = image.imir.mode == 0 ? turn.mirror_y : turn.mirror_x;
    mirror = !mirror;
  }
  return static_cast<Orientation>(turn.ToOrientation());
}

/// The part that the clean-aperture box leaves; all of it where that box makes no sense.
Rect GetAperture(const avifImage& image) {
  const Rect all{0, 0, static_cast<int>(image.width), static_cast<int>(image.height)};
  avifCropRect crop{};
  avifDiagnostics diagnostics{};
  if ((image.transformFlags & AVIF_TRANSFORM_CLAP) == 0 ||
      avifCropRectConvertCleanApertureBox(&crop, &image.clap, image.width, image.height, image.yuvFormat,
                                          &diagnostics) == AVIF_FALSE) {
    return all;
  }
  return {static_cast<int>(crop.x), static_cast<int>(crop.y), static_cast<int>(crop.width),
          static_cast<int>(crop.height)};
}

class AvifDecoder : public Decoder {
 public:
  static Result<std::unique_ptr<Decoder>> Open(Source& source) {
    Result<std::vector<uint8_t>> file = source.ReadAll();
    if (!file) {
      return file.error();
    }
    auto decoder = std::unique_ptr<AvifDecoder>(new AvifDecoder(source, std::move(*file)));
    SIM_TRY(decoder->ReadInfo());
    return std::unique_ptr<Decoder>(std::move(decoder));
  }

  const PictureInfo& GetInfo() const override { return m_info; }
  int GetFrameMilliseconds() const override { return m_frame_ms; }

  Status Decode(Size, RowSink& sink) override {
    m_source.RestartClock();
    const avifResult result = avifDecoderNthImage(m_decoder.get(), static_cast<uint32_t>(m_next_frame));
    SIM_TRY(m_source.CheckRunning());
    if (result != AVIF_RESULT_OK) {
      return Damaged(result);
    }
    m_frame_ms = m_info.frames > 1 ? static_cast<int>(std::lround(m_decoder->imageTiming.duration * 1000)) : 0;
    m_next_frame = (m_next_frame + 1) % m_info.frames;
    return Deliver(*m_decoder->image, sink);
  }

 private:
  AvifDecoder(Source& source, std::vector<uint8_t> file)
      : m_source(source), m_file(std::move(file)), m_decoder(avifDecoderCreate()) {}

  Status ReadInfo() {
    const Limits& limits = m_source.GetLimits();
    avifDecoder& decoder = *m_decoder;
    decoder.maxThreads = kThreads;
    decoder.imageSizeLimit =
        static_cast<uint32_t>(std::min<uint64_t>(limits.whole_pixels, AVIF_DEFAULT_IMAGE_SIZE_LIMIT));
    decoder.imageCountLimit = static_cast<uint32_t>(limits.frames);
    decoder.ignoreExif = AVIF_TRUE;
    decoder.ignoreXMP = AVIF_TRUE;
    // Old encoders left boxes away that a picture can be shown without.
    decoder.strictFlags = AVIF_STRICT_DISABLED;
    avifResult result = avifDecoderSetIOMemory(&decoder, m_file.data(), m_file.size());
    if (result == AVIF_RESULT_OK) {
      result = avifDecoderParse(&decoder);
    }
    if (result == AVIF_RESULT_BMFF_PARSE_FAILED) {
      // Files with sound beside the pictures are beyond this library; the one for HEIC shows them.
      return Error{kUnknownFormat, std::string("AVIF: ") + avifResultToString(result)};
    }
    if (result != AVIF_RESULT_OK) {
      return Damaged(result);
    }
    const avifImage& image = *decoder.image;
    m_info.type = LUMAVIEW_TYPE_AVIF;
    m_whole = {static_cast<int>(image.width), static_cast<int>(image.height)};
    m_aperture = GetAperture(image);
    m_info.stored = {m_aperture.width, m_aperture.height};
    m_info.frames = std::max(decoder.imageCount, 1);
    m_info.loops = m_info.frames > 1 ? ReadAvifLoops(m_file) : 1;
    m_info.orientation = GetOrientation(image);
    return CheckWholeSize(image.width, image.height, limits);
  }

  Status Deliver(const avifImage& image, RowSink& sink) const {
    if (static_cast<int>(image.width) != m_whole.width || static_cast<int>(image.height) != m_whole.height) {
      return Error{kDamaged, "AVIF: a frame of another size"};
    }
    const bool has_alpha = image.alphaPlane != nullptr;
    const size_t row_bytes = size_t{image.width} * 4;
    std::vector<uint8_t> pixels(row_bytes * image.height);
    avifRGBImage rgb{};
    avifRGBImageSetDefaults(&rgb, &image);
    rgb.format = AVIF_RGB_FORMAT_BGRA;
    rgb.depth = 8;
    rgb.pixels = pixels.data();
    rgb.rowBytes = static_cast<uint32_t>(row_bytes);
    const avifResult result = avifImageYUVToRGB(&image, &rgb);
    if (result != AVIF_RESULT_OK) {
      return Damaged(result);
    }
    const std::span<const uint8_t> icc(image.icc.data, image.icc.size);
    SIM_TRY(sink.Begin({m_info.stored, has_alpha ? PixelLayout::kBgra : PixelLayout::kBgrx, icc}));
    for (int y = 0; y < m_info.stored.height; ++y) {
      SIM_TRY(m_source.CheckRunning());
      const uint8_t* row = &pixels[static_cast<size_t>(m_aperture.y + y) * row_bytes];
      SIM_TRY(sink.Row(y, row + ptrdiff_t{m_aperture.x} * 4));
    }
    return Ok();
  }

  Source& m_source;
  const std::vector<uint8_t> m_file;
  DecoderHandle m_decoder;
  Size m_whole;     ///< of the coded picture
  Rect m_aperture;  ///< the part of it that is shown
  PictureInfo m_info;
  int m_next_frame = 0;
  int m_frame_ms = 0;
};

}  // namespace
}  // namespace sim::lumaview

LUMAVIEW_DECODER_MODULE(sim::lumaview::AvifDecoder::Open);
