// SPDX-License-Identifier: Apache-2.0
/// JPEG, and the multi-picture files that are JPEG streams one behind the other: baseline, extended and progressive,
/// grey, colour and ink. What libjpeg cannot do (12 bits, lossless) is refused with its words.
#include <algorithm>
#include <array>
#include <thread>

#include "simulator/lumaview/decode/Bytes.h"
#include "simulator/lumaview/decode/Exif.h"
#include "simulator/lumaview/decode/JpegSegments.h"
#include "simulator/lumaview/decode/JpegSession.h"
#include "simulator/lumaview/decode/Module.h"

namespace sim::lumaview {
namespace {

/// Rows read in one go, where libjpeg has as many.
constexpr size_t kRowsAtOnce = 8;

/// Two pictures of the index that are the views of one scene begin with this in their attributes.
constexpr uint32_t kMpfTypeMask = 0x00FFFFFF;
constexpr uint32_t kMpfStereo = 0x00020002;
constexpr uint32_t kMpfMultiViewMask = 0x00FF0000;
constexpr uint32_t kMpfMultiView = 0x00020000;

void InvertInk(uint8_t* row, size_t bytes) {
  std::transform(row, row + bytes, row, [](uint8_t value) { return static_cast<uint8_t>(255 - value); });
}

class JpegDecoder : public Decoder {
 public:
  static Result<std::unique_ptr<Decoder>> Open(Source& source) {
    JpegSession session(source, 0);
    SIM_TRY(session.ReadHeader());
    auto decoder = std::unique_ptr<JpegDecoder>(new JpegDecoder(source));
    decoder->m_info.type = LUMAVIEW_TYPE_JPEG;
    decoder->m_info.stored = session.GetStoredSize();
    decoder->ReadSegments();
    return std::unique_ptr<Decoder>(std::move(decoder));
  }

  const PictureInfo& GetInfo() const override { return m_info; }
  std::vector<uint8_t> GetExifThumbnail() const override { return m_thumbnail; }

  Status Decode(Size ideal, RowSink& sink) override { return DecodeStream(0, m_icc, ideal, sink); }

  Status DecodeRightView(Size ideal, RowSink& sink) override {
    if (!m_info.stereo) {
      return Decoder::DecodeRightView(ideal, sink);
    }
    return DecodeStream(m_right_position, ReadJpegSegments(m_source, m_right_position).icc, ideal, sink);
  }

 private:
  explicit JpegDecoder(Source& source) : m_source(source) {}

  void ReadSegments() {
    JpegSegments segments = ReadJpegSegments(m_source, 0);
    Exif exif = ParseExif(segments.exif);
    m_info.orientation = exif.orientation;
    m_thumbnail = std::move(exif.thumbnail);
    m_icc = std::move(segments.icc);
    const std::vector<MpfPicture> pictures = ReadMpfIndex(segments, 0);
    if (pictures.size() >= 2 && (pictures[1].attributes & kMpfMultiViewMask) == kMpfMultiView) {
      m_info.type = LUMAVIEW_TYPE_MPO;
      m_info.stereo = (pictures[1].attributes & kMpfTypeMask) == kMpfStereo;
      m_right_position = pictures[1].position;
    }
  }

  Status DecodeStream(uint64_t start, Bytes icc, Size ideal, RowSink& sink) {
    m_source.RestartClock();
    JpegSession session(m_source, start);
    SIM_TRY(session.ReadHeader());
    const Size stored = session.GetStoredSize();
    SIM_TRY(CheckSize(static_cast<uint64_t>(stored.width), static_cast<uint64_t>(stored.height), m_source.GetLimits()));
    const bool has_two_cores = std::thread::hardware_concurrency() > 1;
    SIM_TRY(session.Start(ideal, has_two_cores ? JpegSession::Threads::kTwo : JpegSession::Threads::kOne));
    SIM_TRY(sink.Begin({session.GetOutputSize(), session.GetLayout(), icc, session.GetThreads()}));
    int delivered = 0;
    const Status status = DeliverRows(session, sink, delivered);
    if (session.IsStuck()) {
      return DecodeRest(start, ideal, sink, delivered);
    }
    SIM_TRY(status);
    return session.Finish();
  }

  /// Behind `delivered` rows, which are not decoded otherwise but thrown away.
  Status DecodeRest(uint64_t start, Size ideal, RowSink& sink, int delivered) {
    JpegSession session(m_source, start);
    SIM_TRY(session.ReadHeader());
    SIM_TRY(session.Start(ideal, JpegSession::Threads::kOne));
    SIM_TRY(DeliverRows(session, sink, delivered));
    return session.Finish();
  }

  /// `delivered`: rows that `sink` has had, before and after.
  static Status DeliverRows(JpegSession& session, RowSink& sink, int& delivered) {
    const Size size = session.GetOutputSize();
    const PixelLayout layout = session.GetLayout();
    const size_t row_bytes = static_cast<size_t>(size.width) * static_cast<size_t>(BytesPerPixel(layout));
    std::vector<uint8_t> own(row_bytes * kRowsAtOnce);
    std::array<JSAMPROW, kRowsAtOnce> rows;
    for (int y = 0; y < size.height;) {
      const std::span<uint8_t> room = y < delivered ? std::span<uint8_t>() : sink.GetRoom();
      const std::span<uint8_t> pixels = room.empty() ? std::span(own) : room;
      const size_t wanted = y < delivered ? static_cast<size_t>(delivered - y) : kRowsAtOnce;
      const size_t count = std::min({kRowsAtOnce, wanted, pixels.size() / row_bytes});
      for (size_t i = 0; i < count; ++i) {
        rows[i] = &pixels[i * row_bytes];
      }
      const Result<int> read = session.ReadRows(std::span(rows).first(count));
      if (!read) {
        return read.error();
      }
      for (size_t i = 0; i < static_cast<size_t>(*read); ++i, ++y) {
        if (y < delivered) {
          continue;
        }
        if (layout == PixelLayout::kCmyk && session.IsInkInverted()) {
          InvertInk(rows[i], row_bytes);
        }
        SIM_TRY(sink.Row(y, rows[i]));
        delivered = y + 1;
      }
    }
    return Ok();
  }

  Source& m_source;
  PictureInfo m_info;
  std::vector<uint8_t> m_icc;
  std::vector<uint8_t> m_thumbnail;
  uint64_t m_right_position = 0;
};

}  // namespace
}  // namespace sim::lumaview

LUMAVIEW_DECODER_MODULE(sim::lumaview::JpegDecoder::Open);
