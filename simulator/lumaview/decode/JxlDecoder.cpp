// SPDX-License-Identifier: Apache-2.0
/// JPEG XL by libjxl, which turns the picture as its own header says. Of an animation the first frame is shown.
#include <jxl/decode.h>
#include <jxl/thread_parallel_runner.h>

#include <algorithm>

#include "simulator/base/CHandle.h"
#include "simulator/lumaview/decode/Module.h"

namespace sim::lumaview {
namespace {

using DecoderHandle = CHandle<JxlDecoder, JxlDecoderDestroy>;
using RunnerHandle = CHandle<void, JxlThreadParallelRunnerDestroy>;

/// Both cores of a small machine.
constexpr size_t kThreads = 2;

/// The decoder is fed in about so many pieces, so that it can be stopped in between. (It cannot be stopped from inside:
/// where its threads refuse a task, it ends the process in some places.)
constexpr size_t kSteps = 64;
constexpr size_t kLeastStepBytes = 16 * 1024;

Error Damaged(const char* what) {
  return {kDamaged, std::string("JPEG XL: ") + what};
}

/// One run of libjxl over the file, fed piece by piece.
class JxlSession {
 public:
  JxlSession(const Source& source, std::span<const uint8_t> file, int events)
      : m_source(source),
        m_file(file),
        m_runner(JxlThreadParallelRunnerCreate(nullptr, kThreads)),
        m_decoder(JxlDecoderCreate(nullptr)) {
    JxlDecoderSetParallelRunner(Get(), JxlThreadParallelRunner, m_runner.get());
    JxlDecoderSubscribeEvents(Get(), events);
  }

  JxlDecoder* Get() { return m_decoder.get(); }

  /// Runs on to the next event; kDamaged also when the file ends before it.
  Result<JxlDecoderStatus> Next() {
    for (;;) {
      SIM_TRY(m_source.CheckRunning());
      const JxlDecoderStatus status = JxlDecoderProcessInput(Get());
      if (status == JXL_DEC_ERROR) {
        return Damaged("the file is damaged");
      }
      if (status != JXL_DEC_NEED_MORE_INPUT) {
        return status;
      }
      m_taken -= JxlDecoderReleaseInput(Get());
      if (m_given == m_file.size()) {
        return Damaged("the file ends in the middle of the picture");
      }
      Feed();
    }
  }

 private:
  void Feed() {
    m_given = std::min(m_given + std::max(m_file.size() / kSteps, kLeastStepBytes), m_file.size());
    JxlDecoderSetInput(Get(), m_file.data() + m_taken, m_given - m_taken);
    m_taken = m_given;
    if (m_given == m_file.size()) {
      JxlDecoderCloseInput(Get());
    }
  }

  const Source& m_source;
  const std::span<const uint8_t> m_file;
  RunnerHandle m_runner;
  DecoderHandle m_decoder;
  size_t m_given = 0;  ///< bytes shown to the decoder
  size_t m_taken = 0;  ///< of these, those it does not want to see again
};

class JxlPictureDecoder : public Decoder {
 public:
  static Result<std::unique_ptr<Decoder>> Open(Source& source) {
    Result<std::vector<uint8_t>> file = source.ReadAll();
    if (!file) {
      return file.error();
    }
    auto decoder = std::unique_ptr<JxlPictureDecoder>(new JxlPictureDecoder(source, std::move(*file)));
    SIM_TRY(decoder->ReadInfo());
    return std::unique_ptr<Decoder>(std::move(decoder));
  }

  const PictureInfo& GetInfo() const override { return m_info; }

  Status Decode(Size, RowSink& sink) override {
    m_source.RestartClock();
    JxlSession session(m_source, m_file, JXL_DEC_COLOR_ENCODING | JXL_DEC_FULL_IMAGE);
    std::vector<uint8_t> pixels;
    std::vector<uint8_t> icc;
    for (;;) {
      const Result<JxlDecoderStatus> event = session.Next();
      if (!event) {
        return event.error();
      }
      if (*event == JXL_DEC_COLOR_ENCODING) {
        icc = ChooseColours(session.Get());
      } else if (*event == JXL_DEC_NEED_IMAGE_OUT_BUFFER) {
        pixels.resize(PixelBytes());
        JxlDecoderSetImageOutBuffer(session.Get(), &m_format, pixels.data(), pixels.size());
      } else if (*event == JXL_DEC_FULL_IMAGE) {
        return Deliver(pixels, icc, sink);
      } else if (*event == JXL_DEC_SUCCESS) {
        return Damaged("no picture");
      }
    }
  }

 private:
  JxlPictureDecoder(Source& source, std::vector<uint8_t> file) : m_source(source), m_file(std::move(file)) {}

  Status ReadInfo() {
    JxlSession session(m_source, m_file, JXL_DEC_BASIC_INFO);
    const Result<JxlDecoderStatus> event = session.Next();
    if (!event) {
      return event.error();
    }
    JxlBasicInfo info{};
    if (*event != JXL_DEC_BASIC_INFO || JxlDecoderGetBasicInfo(session.Get(), &info) != JXL_DEC_SUCCESS) {
      return Damaged("no header");
    }
    // After the turn that libjxl makes, as it delivers the rows.
    SIM_TRY(CheckWholeSize(info.xsize, info.ysize, m_source.GetLimits()));
    m_info.type = LUMAVIEW_TYPE_JXL;
    m_info.stored = {static_cast<int>(info.xsize), static_cast<int>(info.ysize)};
    m_has_alpha = info.alpha_bits > 0;
    m_is_premultiplied = info.alpha_premultiplied != 0;
    m_is_grey = info.num_color_channels == 1 && !m_has_alpha;
    m_format = {m_is_grey ? 1u : 4u, JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN, 0};
    return Ok();
  }

  size_t PixelBytes() const {
    return static_cast<size_t>(m_info.stored.width) * static_cast<size_t>(m_info.stored.height) * m_format.num_channels;
  }

  /// Pictures in libjxl's own colour space come out as sRGB; others keep theirs and bring their profile.
  std::vector<uint8_t> ChooseColours(JxlDecoder* decoder) const {
    JxlColorEncoding srgb{};
    srgb.color_space = m_is_grey ? JXL_COLOR_SPACE_GRAY : JXL_COLOR_SPACE_RGB;
    srgb.white_point = JXL_WHITE_POINT_D65;
    srgb.primaries = JXL_PRIMARIES_SRGB;
    srgb.transfer_function = JXL_TRANSFER_FUNCTION_SRGB;
    srgb.rendering_intent = JXL_RENDERING_INTENT_PERCEPTUAL;
    JxlDecoderSetPreferredColorProfile(decoder, &srgb);
    size_t size = 0;
    std::vector<uint8_t> icc;
    if (JxlDecoderGetICCProfileSize(decoder, &m_format, JXL_COLOR_PROFILE_TARGET_DATA, &size) == JXL_DEC_SUCCESS &&
        size <= m_source.GetLimits().metadata_bytes) {
      icc.resize(size);
      JxlDecoderGetColorAsICCProfile(decoder, &m_format, JXL_COLOR_PROFILE_TARGET_DATA, icc.data(), icc.size());
    }
    return icc;
  }

  PixelLayout GetLayout() const {
    if (m_is_grey) {
      return PixelLayout::kGray;
    }
    // Multiplied alpha over black leaves the colours as they are.
    return m_has_alpha && !m_is_premultiplied ? PixelLayout::kBgra : PixelLayout::kBgrx;
  }

  Status Deliver(std::vector<uint8_t>& pixels, std::span<const uint8_t> icc, RowSink& sink) const {
    SIM_TRY(sink.Begin({m_info.stored, GetLayout(), icc}));
    const size_t row_bytes = static_cast<size_t>(m_info.stored.width) * m_format.num_channels;
    for (int y = 0; y < m_info.stored.height; ++y) {
      SIM_TRY(m_source.CheckRunning());
      uint8_t* row = &pixels[static_cast<size_t>(y) * row_bytes];
      for (size_t i = 0; !m_is_grey && i < row_bytes; i += 4) {
        std::swap(row[i], row[i + 2]);
      }
      SIM_TRY(sink.Row(y, row));
    }
    return Ok();
  }

  Source& m_source;
  const std::vector<uint8_t> m_file;
  PictureInfo m_info;
  JxlPixelFormat m_format{};
  bool m_has_alpha = false;
  bool m_is_premultiplied = false;
  bool m_is_grey = false;
};

}  // namespace
}  // namespace sim::lumaview

LUMAVIEW_DECODER_MODULE(sim::lumaview::JxlPictureDecoder::Open);
