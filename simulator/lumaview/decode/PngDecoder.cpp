// SPDX-License-Identifier: Apache-2.0
#include <optional>

#include "simulator/lumaview/decode/ApngFrames.h"
#include "simulator/lumaview/decode/Canvas.h"
#include "simulator/lumaview/decode/Exif.h"
#include "simulator/lumaview/decode/Module.h"
#include "simulator/lumaview/decode/PngSession.h"

namespace sim::lumaview {
namespace {

PngSession::ReadFunction ReadFrom(Source& source) {
  source.Seek(0);
  return [&source](std::span<uint8_t> buffer) { return source.Read(buffer); };
}

class PngDecoder : public Decoder {
 public:
  static Result<std::unique_ptr<Decoder>> Open(Source& source) {
    PngSession session(source, ReadFrom(source));
    SIM_TRY(session.ReadHeader());
    auto decoder = std::unique_ptr<PngDecoder>(new PngDecoder(source));
    decoder->m_info.type = LUMAVIEW_TYPE_PNG;
    decoder->m_info.stored = session.GetSize();
    Exif exif = ParseExif(session.GetExif());
    decoder->m_info.orientation = exif.orientation;
    decoder->m_thumbnail = std::move(exif.thumbnail);
    decoder->m_icc = session.GetIcc();
    SIM_TRY(decoder->ReadAnimation());
    return std::unique_ptr<Decoder>(std::move(decoder));
  }

  const PictureInfo& GetInfo() const override { return m_info; }
  std::vector<uint8_t> GetExifThumbnail() const override { return m_thumbnail; }

  int GetFrameMilliseconds() const override { return m_delay_ms; }

  Status Decode(Size, RowSink& sink) override {
    m_source.RestartClock();
    return m_info.frames > 1 ? DecodeFrame(sink) : DecodeStill(sink);
  }

 private:
  explicit PngDecoder(Source& source) : m_source(source) {}

  Status ReadAnimation() {
    Result<Apng> apng = ReadApng(m_source);
    if (!apng) {
      return apng.error();
    }
    m_apng = std::move(*apng);
    if (m_apng.frames.size() > 1) {
      m_info.frames = static_cast<int>(m_apng.frames.size());
      m_info.loops = m_apng.loops;
      return CheckWholeSize(static_cast<uint64_t>(m_info.stored.width), static_cast<uint64_t>(m_info.stored.height),
                            m_source.GetLimits());
    }
    return Ok();
  }

  Status DecodeStill(RowSink& sink) {
    PngSession session(m_source, ReadFrom(m_source));
    SIM_TRY(session.ReadHeader());
    SIM_TRY(CheckSession(session));
    SIM_TRY(session.Start());
    SIM_TRY(sink.Begin({session.GetSize(), session.GetLayout(), m_icc}));
    SIM_TRY(session.DeliverRows([&sink](int y, const uint8_t* row) { return sink.Row(y, row); }));
    return session.Finish();
  }

  Status DecodeFrame(RowSink& sink) {
    if (m_next_frame == 0) {
      m_canvas.emplace(m_info.stored);
      m_before = nullptr;
    }
    Dispose();
    const ApngFrame& frame = m_apng.frames[m_next_frame];
    m_saved =
        frame.disposal == ApngFrame::Disposal::kPrevious ? m_canvas->Save(frame.area) : std::vector<Canvas::Pixel>();
    SIM_TRY(DrawFrame(frame));
    m_before = &frame;
    m_delay_ms = frame.delay_ms;
    m_next_frame = (m_next_frame + 1) % m_apng.frames.size();
    return m_canvas->Deliver(m_icc, sink);
  }

  /// What the frame before asked for is done when the next one comes.
  void Dispose() {
    if (m_before == nullptr || m_before->disposal == ApngFrame::Disposal::kKeep) {
      return;
    }
    if (m_before->disposal == ApngFrame::Disposal::kClear) {
      m_canvas->Clear(m_before->area);
    } else {
      m_canvas->Restore(m_before->area, m_saved);
    }
  }

  Status DrawFrame(const ApngFrame& frame) {
    ApngFrameStream stream(m_source, m_apng, frame);
    PngSession session(m_source, [&stream](std::span<uint8_t> to) { return stream.Read(to); });
    SIM_TRY(session.ReadHeader());
    SIM_TRY(session.Start());
    const PixelLayout layout = session.GetLayout();
    return session.DeliverRows([&](int y, const uint8_t* row) {
      Canvas::Pixel* to = m_canvas->Row(frame.area.y + y) + frame.area.x;
      for (int x = 0; x < frame.area.width; ++x) {
        const Canvas::Pixel pixel = ReadPixel(row + x * BytesPerPixel(layout), layout);
        to[x] = frame.blend ? Canvas::Blend(pixel, to[x]) : pixel;
      }
      return Ok();
    });
  }

  static Canvas::Pixel ReadPixel(const uint8_t* from, PixelLayout layout) {
    if (layout == PixelLayout::kGray) {
      return {from[0], from[0], from[0], 255};
    }
    return {from[0], from[1], from[2], from[3]};
  }

  /// The file may have changed since it was opened.
  Status CheckSession(const PngSession& session) const {
    if (session.GetSize() != m_info.stored) {
      return Error{kDamaged, "the file changed while it was read"};
    }
    const auto width = static_cast<uint64_t>(m_info.stored.width);
    const auto height = static_cast<uint64_t>(m_info.stored.height);
    return session.IsInterlaced() ? CheckWholeSize(width, height, m_source.GetLimits())
                                  : CheckSize(width, height, m_source.GetLimits());
  }

  Source& m_source;
  PictureInfo m_info;
  std::vector<uint8_t> m_icc;
  std::vector<uint8_t> m_thumbnail;
  Apng m_apng;
  size_t m_next_frame = 0;
  const ApngFrame* m_before = nullptr;
  int m_delay_ms = 0;
  std::optional<Canvas> m_canvas;
  std::vector<Canvas::Pixel> m_saved;  ///< what was under the frame, where it is to come back
};

}  // namespace
}  // namespace sim::lumaview

LUMAVIEW_DECODER_MODULE(sim::lumaview::PngDecoder::Open);
