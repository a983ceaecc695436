// SPDX-License-Identifier: Apache-2.0
/// GIF: giflib reads the records and unpacks the lines; putting frames on the canvas is done here.
#include <gif_lib.h>

#include <algorithm>
#include <optional>

#include "simulator/base/CHandle.h"
#include "simulator/lumaview/decode/Canvas.h"
#include "simulator/lumaview/decode/Module.h"

namespace sim::lumaview {
namespace {

/// Delays below this are as good as none said: browsers agree on the other number.
constexpr int kShortestDelayMs = 20;
constexpr int kUsualDelayMs = 100;

void CloseGif(GifFileType* gif) {
  DGifCloseFile(gif, nullptr);
}
using GifHandle = CHandle<GifFileType, CloseGif>;

Error Damaged(int code) {
  const char* text = GifErrorString(code);
  return {kDamaged, std::string("GIF: ") + (text != nullptr ? text : "damaged")};
}

/// What the blocks in front of a frame say about it.
struct FrameControl {
  int delay_ms = 0;
  int disposal = DISPOSAL_UNSPECIFIED;
  int transparent = NO_TRANSPARENT_COLOR;
};

/// The records of a file in order.
class GifReader {
 public:
  static Result<std::unique_ptr<GifReader>> Open(Source& source) {
    auto reader = std::unique_ptr<GifReader>(new GifReader(source));
    source.Seek(0);
    int code = 0;
    reader->m_gif.reset(DGifOpen(reader.get(), OnRead, &code));
    if (!reader->m_gif) {
      return Damaged(code);
    }
    return reader;
  }

  GifFileType& Gif() { return *m_gif; }
  const FrameControl& GetControl() const { return m_control; }
  std::optional<int> GetLoops() const { return m_loops; }

  /// Goes to the next frame's description; false at the end of the file.
  Result<bool> NextFrame() {
    m_control = {};
    GifRecordType record = UNDEFINED_RECORD_TYPE;
    while (Check(DGifGetRecordType(m_gif.get(), &record))) {
      if (record == TERMINATE_RECORD_TYPE) {
        return false;
      }
      if (record == IMAGE_DESC_RECORD_TYPE) {
        ForgetEarlierFrames();
        return Check(DGifGetImageDesc(m_gif.get())) ? Result<bool>(true) : GetError();
      }
      if (record == EXTENSION_RECORD_TYPE && !ReadExtension()) {
        break;
      }
    }
    return GetError();
  }

  /// Passes over the frame's pixels; false when they are not all there.
  bool SkipPixels() {
    int code_size = 0;
    GifByteType* block = nullptr;
    bool good = Check(DGifGetCode(m_gif.get(), &code_size, &block));
    while (good && block != nullptr) {
      good = Check(DGifGetCodeNext(m_gif.get(), &block)) && !m_source.IsCancelled();
    }
    return good;
  }

  Error GetError() const { return Damaged(m_gif->Error); }

 private:
  explicit GifReader(Source& source) : m_source(source) {}

  static bool Check(int result) { return result == GIF_OK; }

  /// giflib keeps a record of every frame that it has met.
  void ForgetEarlierFrames() {
    if (m_gif->SavedImages != nullptr) {
      GifFreeSavedImages(m_gif.get());
      m_gif->SavedImages = nullptr;
      m_gif->ImageCount = 0;
    }
  }

  bool ReadExtension() {
    int code = 0;
    GifByteType* block = nullptr;
    if (!Check(DGifGetExtension(m_gif.get(), &code, &block))) {
      return false;
    }
    bool is_loop_count = false;
    while (block != nullptr) {
      const std::span<const GifByteType> data(block + 1, block[0]);
      GraphicsControlBlock control{};
      if (code == GRAPHICS_EXT_FUNC_CODE && Check(DGifExtensionToGCB(data.size(), data.data(), &control))) {
        m_control = {control.DelayTime * 10, control.DisposalMode, control.TransparentColor};
      }
      if (is_loop_count && data.size() >= 3 && data[0] == 1) {
        m_loops = data[1] | data[2] << 8;
      }
      const std::string_view text(reinterpret_cast<const char*>(data.data()), data.size());
      is_loop_count = code == APPLICATION_EXT_FUNC_CODE && (text == "NETSCAPE2.0" || text == "ANIMEXTS1.0");
      if (!Check(DGifGetExtensionNext(m_gif.get(), &block))) {
        return false;
      }
    }
    return true;
  }

  static int OnRead(GifFileType* gif, GifByteType* bytes, int length) {
    auto& self = *static_cast<GifReader*>(gif->UserData);
    return static_cast<int>(self.m_source.Read({bytes, static_cast<size_t>(length)}));
  }

  Source& m_source;
  GifHandle m_gif;
  FrameControl m_control;
  std::optional<int> m_loops;
};

class GifDecoder : public Decoder {
 public:
  static Result<std::unique_ptr<Decoder>> Open(Source& source) {
    auto decoder = std::unique_ptr<GifDecoder>(new GifDecoder(source));
    SIM_TRY(decoder->ReadInfo());
    return std::unique_ptr<Decoder>(std::move(decoder));
  }

  const PictureInfo& GetInfo() const override { return m_info; }
  int GetFrameMilliseconds() const override { return m_info.frames > 1 ? m_delay_ms : 0; }

  Status Decode(Size, RowSink& sink) override {
    m_source.RestartClock();
    if (m_next_frame == 0) {
      SIM_TRY(Rewind());
    }
    Dispose();
    SIM_TRY(DrawFrame());
    m_next_frame = (m_next_frame + 1) % m_info.frames;
    return m_canvas->Deliver({}, sink);
  }

 private:
  explicit GifDecoder(Source& source) : m_source(source) {}

  /// Counts the frames; those behind a damage are left out, and a file with a good first frame is a picture.
  Status ReadInfo() {
    Result<std::unique_ptr<GifReader>> reader = GifReader::Open(m_source);
    if (!reader) {
      return reader.error();
    }
    GifReader& frames = **reader;
    Size canvas{frames.Gif().SWidth, frames.Gif().SHeight};
    m_info.frames = 0;
    Result<bool> found = frames.NextFrame();
    while (found && *found) {
      const GifImageDesc& image = frames.Gif().Image;
      if (m_info.frames == 0) {
        // Screens that do not hold their first frame grow to it.
        canvas = {std::max(canvas.width, image.Left + image.Width), std::max(canvas.height, image.Top + image.Height)};
      }
      if (!frames.SkipPixels() && m_info.frames > 0) {
        break;
      }
      if (static_cast<uint64_t>(++m_info.frames) > m_source.GetLimits().frames) {
        return Error{kOverLimit,
                     "the animation has more than " + std::to_string(m_source.GetLimits().frames) + " frames"};
      }
      SIM_TRY(m_source.CheckRunning());
      found = frames.NextFrame();
    }
    if (m_info.frames == 0) {
      return found ? Error{kDamaged, "GIF: no frame"} : found.error();
    }
    m_info.type = LUMAVIEW_TYPE_GIF;
    m_info.stored = canvas;
    // The file says how often it repeats; a number of repeats is one less than that of plays.
    m_info.loops = !frames.GetLoops() ? 1 : *frames.GetLoops() == 0 ? 0 : *frames.GetLoops() + 1;
    return CheckWholeSize(static_cast<uint64_t>(canvas.width), static_cast<uint64_t>(canvas.height),
                          m_source.GetLimits());
  }

  Status Rewind() {
    Result<std::unique_ptr<GifReader>> reader = GifReader::Open(m_source);
    if (!reader) {
      return reader.error();
    }
    m_reader = std::move(*reader);
    m_canvas.emplace(m_info.stored);
    m_disposal = DISPOSAL_UNSPECIFIED;
    return Ok();
  }

  /// What the frame before asked for is done when the next one comes.
  void Dispose() {
    if (m_disposal == DISPOSE_BACKGROUND) {
      m_canvas->Clear(m_area);
    } else if (m_disposal == DISPOSE_PREVIOUS) {
      m_canvas->Restore(m_area, m_saved);
    }
  }

  Status DrawFrame() {
    const Result<bool> found = m_reader->NextFrame();
    if (!found || !*found) {
      return found ? Error{kDamaged, "the file changed while it was read"} : found.error();
    }
    const GifImageDesc& image = m_reader->Gif().Image;
    const FrameControl control = m_reader->GetControl();
    m_area = m_canvas->Clip({image.Left, image.Top, image.Width, image.Height});
    m_disposal = control.disposal;
    m_delay_ms = control.delay_ms < kShortestDelayMs ? kUsualDelayMs : control.delay_ms;
    m_saved = m_disposal == DISPOSE_PREVIOUS ? m_canvas->Save(m_area) : std::vector<Canvas::Pixel>();
    const ColorMapObject* colours = image.ColorMap != nullptr ? image.ColorMap : m_reader->Gif().SColorMap;
    if (image.Width <= 0 || image.Height <= 0 || colours == nullptr) {
      return Error{kDamaged, "GIF: a frame without pixels or colours"};
    }
    return DrawLines(image, *colours, control.transparent);
  }

  Status DrawLines(const GifImageDesc& image, const ColorMapObject& colours, int transparent) {
    struct Pass {
      int first;
      int step;
    };
    constexpr Pass kInterlaced[] = {{0, 8}, {4, 8}, {2, 4}, {1, 2}};
    constexpr Pass kPlain[] = {{0, 1}};
    std::vector<GifPixelType> line(static_cast<size_t>(image.Width));
    for (const Pass& pass : image.Interlace ? std::span<const Pass>(kInterlaced) : std::span<const Pass>(kPlain)) {
      for (int y = pass.first; y < image.Height; y += pass.step) {
        SIM_TRY(m_source.CheckRunning());
        if (DGifGetLine(&m_reader->Gif(), line.data(), image.Width) != GIF_OK) {
          return m_reader->GetError();
        }
        DrawLine(image.Top + y, line, colours, transparent);
      }
    }
    return Ok();
  }

  void DrawLine(int y, const std::vector<GifPixelType>& line, const ColorMapObject& colours, int transparent) {
    if (y >= m_area.y + m_area.height) {
      return;
    }
    Canvas::Pixel* to = m_canvas->Row(y) + m_area.x;
    for (int x = 0; x < m_area.width; ++x) {
      const int index = line[static_cast<size_t>(x)];
      if (index != transparent && index < colours.ColorCount) {
        const GifColorType& colour = colours.Colors[index];
        to[x] = {colour.Blue, colour.Green, colour.Red, 255};
      }
    }
  }

  Source& m_source;
  PictureInfo m_info;
  std::unique_ptr<GifReader> m_reader;
  std::optional<Canvas> m_canvas;
  int m_next_frame = 0;
  int m_delay_ms = 0;
  int m_disposal = DISPOSAL_UNSPECIFIED;
  Rect m_area;                         ///< of the frame drawn last
  std::vector<Canvas::Pixel> m_saved;  ///< what was under it, where it is to come back
};

}  // namespace
}  // namespace sim::lumaview

LUMAVIEW_DECODER_MODULE(sim::lumaview::GifDecoder::Open);
