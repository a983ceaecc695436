// SPDX-License-Identifier: Apache-2.0
/// WebP by libwebp, which scales while it decodes; animations by its demultiplexer's player.
#include <webp/decode.h>
#include <webp/demux.h>

#include <algorithm>

#include "simulator/base/CHandle.h"
#include "simulator/lumaview/decode/Exif.h"
#include "simulator/lumaview/decode/Module.h"

namespace sim::lumaview {
namespace {

using Demuxer = CHandle<WebPDemuxer, WebPDemuxDelete>;
using Player = CHandle<WebPAnimDecoder, WebPAnimDecoderDelete>;
using StillDecoder = CHandle<WebPIDecoder, WebPIDelete>;

Error Damaged(const char* what) {
  return {kDamaged, what};
}

/// The decoder is fed this much at a time, so that it can be stopped in between.
constexpr size_t kStepBytes = 64 * 1024;

/// libwebp's scaler averages areas. It leaves twice the wanted size, so that the better filter has the last word.
constexpr int64_t kOversampling = 2;

std::vector<uint8_t> GetChunk(const WebPDemuxer* demuxer, const char* name) {
  WebPChunkIterator chunk{};
  std::vector<uint8_t> bytes;
  if (WebPDemuxGetChunk(demuxer, name, 1, &chunk) != 0) {
    bytes.assign(chunk.chunk.bytes, chunk.chunk.bytes + chunk.chunk.size);
  }
  WebPDemuxReleaseChunkIterator(&chunk);
  return bytes;
}

/// libwebp's output buffer, freed with the object.
class Config {
 public:
  Config() { WebPInitDecoderConfig(&m_config); }
  ~Config() { WebPFreeDecBuffer(&m_config.output); }
  Config(const Config&) = delete;
  Config& operator=(const Config&) = delete;
  WebPDecoderConfig* operator->() { return &m_config; }
  WebPDecoderConfig* Get() { return &m_config; }

 private:
  WebPDecoderConfig m_config{};
};

class WebpDecoder : public Decoder {
 public:
  static Result<std::unique_ptr<Decoder>> Open(Source& source) {
    Result<std::vector<uint8_t>> file = source.ReadAll();
    if (!file) {
      return file.error();
    }
    auto decoder = std::unique_ptr<WebpDecoder>(new WebpDecoder(source, std::move(*file)));
    SIM_TRY(decoder->ReadInfo());
    return std::unique_ptr<Decoder>(std::move(decoder));
  }

  const PictureInfo& GetInfo() const override { return m_info; }
  int GetFrameMilliseconds() const override { return m_frame_ms; }
  std::vector<uint8_t> GetExifThumbnail() const override { return m_thumbnail; }

  Status Decode(Size ideal, RowSink& sink) override {
    m_source.RestartClock();
    return m_info.frames > 1 ? DecodeFrame(sink) : DecodeStill(ideal, sink);
  }

 private:
  WebpDecoder(Source& source, std::vector<uint8_t> file) : m_source(source), m_file(std::move(file)) {}

  WebPData Data() const { return {m_file.data(), m_file.size()}; }

  Status ReadInfo() {
    const WebPData data = Data();
    const Demuxer demuxer(WebPDemux(&data));
    if (!demuxer) {
      return Damaged("WebP: the file is damaged or cut off");
    }
    const uint32_t width = WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_WIDTH);
    const uint32_t height = WebPDemuxGetI(demuxer.get(), WEBP_FF_CANVAS_HEIGHT);
    const uint32_t frames = WebPDemuxGetI(demuxer.get(), WEBP_FF_FRAME_COUNT);
    SIM_TRY(CheckWholeSize(width, height, m_source.GetLimits()));
    if (frames == 0) {
      return Damaged("WebP: no frame");
    }
    if (frames > m_source.GetLimits().frames) {
      return Error{kOverLimit,
                   "the animation has more than " + std::to_string(m_source.GetLimits().frames) + " frames"};
    }
    m_info.type = LUMAVIEW_TYPE_WEBP;
    m_info.stored = {static_cast<int>(width), static_cast<int>(height)};
    m_info.frames = static_cast<int>(frames);
    m_info.loops = frames > 1 ? static_cast<int>(WebPDemuxGetI(demuxer.get(), WEBP_FF_LOOP_COUNT)) : 1;
    m_icc = GetChunk(demuxer.get(), "ICCP");
    ReadExif(GetChunk(demuxer.get(), "EXIF"));
    WebPIterator frame{};
    if (frames == 1 && WebPDemuxGetFrame(demuxer.get(), 1, &frame) != 0) {
      m_still = {frame.fragment.bytes, frame.fragment.size};
    }
    WebPDemuxReleaseIterator(&frame);
    return Ok();
  }

  /// Some writers keep the leading name that JPEG files have.
  void ReadExif(std::span<const uint8_t> bytes) {
    constexpr size_t kNameBytes = 6;
    if (bytes.size() > kNameBytes && bytes[0] == 'E') {
      bytes = bytes.subspan(kNameBytes);
    }
    Exif exif = ParseExif(bytes);
    m_info.orientation = exif.orientation;
    m_thumbnail = std::move(exif.thumbnail);
  }

  Status DecodeFrame(RowSink& sink) {
    if (!m_player) {
      WebPAnimDecoderOptions options{};
      WebPAnimDecoderOptionsInit(&options);
      options.color_mode = MODE_BGRA;
      const WebPData data = Data();
      m_player.reset(WebPAnimDecoderNew(&data, &options));
      m_shown_until_ms = 0;
    }
    uint8_t* pixels = nullptr;
    int until_ms = 0;
    if (!m_player || WebPAnimDecoderGetNext(m_player.get(), &pixels, &until_ms) == 0) {
      m_player.reset();
      return Damaged("WebP: a damaged frame");
    }
    m_frame_ms = std::max(until_ms - m_shown_until_ms, 0);
    m_shown_until_ms = until_ms;
    const Status delivered = Deliver(m_info.stored, PixelLayout::kBgra, pixels, m_info.stored.width * 4, sink);
    if (WebPAnimDecoderHasMoreFrames(m_player.get()) == 0) {
      WebPAnimDecoderReset(m_player.get());
      m_shown_until_ms = 0;
    }
    return delivered;
  }

  Status DecodeStill(Size ideal, RowSink& sink) {
    Config config;
    if (WebPGetFeatures(m_still.data(), m_still.size(), &config->input) != VP8_STATUS_OK) {
      return Damaged("WebP: the picture's header is damaged");
    }
    const Size stored{config->input.width, config->input.height};
    if (stored != m_info.stored) {
      return Damaged("WebP: the picture does not fill its canvas");
    }
    const Size size = ChooseSize(stored, ideal);
    config->options.use_scaling = size == stored ? 0 : 1;
    config->options.scaled_width = size.width;
    config->options.scaled_height = size.height;
    config->options.use_threads = 1;
    config->output.colorspace = MODE_BGRA;
    const StillDecoder decoder(WebPIDecode(nullptr, 0, config.Get()));
    SIM_TRY(Feed(decoder.get()));
    const WebPRGBABuffer& out = config->output.u.RGBA;
    const PixelLayout layout = config->input.has_alpha != 0 ? PixelLayout::kBgra : PixelLayout::kBgrx;
    return Deliver(size, layout, out.rgba, out.stride, sink);
  }

  static Size ChooseSize(Size stored, Size ideal) {
    const auto choose = [](int length, int wanted) {
      return static_cast<int>(std::min<int64_t>(length, kOversampling * wanted));
    };
    return {choose(stored.width, ideal.width), choose(stored.height, ideal.height)};
  }

  Status Feed(WebPIDecoder* decoder) const {
    VP8StatusCode status = VP8_STATUS_SUSPENDED;
    for (size_t given = 0; status == VP8_STATUS_SUSPENDED && given < m_still.size();) {
      SIM_TRY(m_source.CheckRunning());
      given = std::min(given + kStepBytes, m_still.size());
      status = decoder != nullptr ? WebPIUpdate(decoder, m_still.data(), given) : VP8_STATUS_OUT_OF_MEMORY;
    }
    if (status == VP8_STATUS_OUT_OF_MEMORY) {
      return Error{kOutOfMemory, "WebP: no memory"};
    }
    return status == VP8_STATUS_OK ? Ok() : Status(Damaged("WebP: the picture is damaged or cut off"));
  }

  Status Deliver(Size size, PixelLayout layout, const uint8_t* pixels, int stride, RowSink& sink) const {
    SIM_TRY(sink.Begin({size, layout, m_icc}));
    for (int y = 0; y < size.height; ++y) {
      SIM_TRY(sink.Row(y, pixels + static_cast<ptrdiff_t>(y) * stride));
    }
    return Ok();
  }

  Source& m_source;
  const std::vector<uint8_t> m_file;
  std::span<const uint8_t> m_still;  ///< the only frame's stream, in the file
  PictureInfo m_info;
  std::vector<uint8_t> m_icc;
  std::vector<uint8_t> m_thumbnail;
  Player m_player;
  int m_shown_until_ms = 0;
  int m_frame_ms = 0;
};

}  // namespace
}  // namespace sim::lumaview

LUMAVIEW_DECODER_MODULE(sim::lumaview::WebpDecoder::Open);
