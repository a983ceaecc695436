// SPDX-License-Identifier: Apache-2.0
/// TIFF by libtiff, the first page, a strip or a row of tiles at a time.
#include <tiffio.h>

#include <algorithm>
#include <cstdio>

#include "simulator/base/CHandle.h"
#include "simulator/lumaview/decode/Module.h"
#include "simulator/lumaview/decode/TiffSamples.h"

namespace sim::lumaview {
namespace {

using TiffHandle = CHandle<TIFF, TIFFClose>;
using OptionsHandle = CHandle<TIFFOpenOptions, TIFFOpenOptionsFree>;

/// The first error keeps its words; later ones follow from it.
struct Complaint {
  Error error{kDamaged, ""};

  static int Take(TIFF*, void* self, const char*, const char* format, va_list arguments) {
    char text[300];
    std::vsnprintf(text, sizeof text, format, arguments);
    auto& reason = static_cast<Complaint*>(self)->error.reason;
    if (reason.empty()) {
      reason.append("TIFF: ").append(text);
    }
    return 1;
  }
  static int Ignore(TIFF*, void*, const char*, const char*, va_list) { return 1; }

  Error Get() const { return error.reason.empty() ? Error{kDamaged, "TIFF: damaged"} : error; }
};

tsize_t OnRead(thandle_t handle, tdata_t buffer, tsize_t length) {
  auto& source = *static_cast<Source*>(handle);
  return static_cast<tsize_t>(source.Read({static_cast<uint8_t*>(buffer), static_cast<size_t>(length)}));
}
tsize_t OnWrite(thandle_t, tdata_t, tsize_t) {
  return 0;
}
toff_t OnSeek(thandle_t handle, toff_t offset, int whence) {
  auto& source = *static_cast<Source*>(handle);
  const uint64_t base = whence == SEEK_CUR ? source.GetPosition() : whence == SEEK_END ? source.GetSize() : 0;
  source.Seek(base + offset);
  return source.GetPosition();
}
int OnClose(thandle_t) {
  return 0;
}
toff_t OnSize(thandle_t handle) {
  return static_cast<Source*>(handle)->GetSize();
}

TiffHandle OpenTiff(Source& source, Complaint& complaint) {
  const OptionsHandle options(TIFFOpenOptionsAlloc());
  const auto most = static_cast<tmsize_t>(std::min<uint64_t>(source.GetLimits().whole_pixels * 4, PTRDIFF_MAX));
  TIFFOpenOptionsSetMaxSingleMemAlloc(options.get(), most);
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), Complaint::Take, &complaint);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), Complaint::Ignore, nullptr);
  source.Seek(0);
  // "m": never mapped, the file may shrink meanwhile.
  return TiffHandle(TIFFClientOpenExt("picture", "rm", &source, OnRead, OnWrite, OnSeek, OnClose, OnSize, nullptr,
                                      nullptr, options.get()));
}

uint32_t GetNumber(TIFF* tiff, uint32_t tag, uint32_t missing) {
  uint32_t value = missing;
  TIFFGetField(tiff, tag, &value);
  return value;
}

uint16_t GetShort(TIFF* tiff, uint32_t tag) {
  uint16_t value = 0;
  TIFFGetFieldDefaulted(tiff, tag, &value);
  return value;
}

/// libtiff's own conversion to colours; freed with the object.
class RgbaReader {
 public:
  RgbaReader() = default;
  ~RgbaReader() {
    if (m_is_open) {
      TIFFRGBAImageEnd(&m_image);
    }
  }
  RgbaReader(const RgbaReader&) = delete;
  RgbaReader& operator=(const RgbaReader&) = delete;

  bool Open(TIFF* tiff) {
    char message[1024] = "";
    m_is_open = TIFFRGBAImageBegin(&m_image, tiff, 1, message) != 0;
    m_reason = message;
    if (m_is_open) {
      // Rows as they are stored: turning belongs to the caller.
      m_image.req_orientation = m_image.orientation;
    }
    return m_is_open;
  }
  const std::string& GetReason() const { return m_reason; }

  /// `pixels`: `rows` rows of 0xAABBGGRR, alpha multiplied in.
  bool Read(uint32_t* pixels, int first_row, int rows) {
    m_image.row_offset = first_row;
    m_image.col_offset = 0;
    return TIFFRGBAImageGet(&m_image, pixels, m_image.width, static_cast<uint32_t>(rows)) != 0;
  }

 private:
  TIFFRGBAImage m_image{};
  bool m_is_open = false;
  std::string m_reason;
};

class TiffDecoder : public Decoder {
 public:
  static Result<std::unique_ptr<Decoder>> Open(Source& source) {
    auto decoder = std::unique_ptr<TiffDecoder>(new TiffDecoder(source));
    decoder->m_tiff = OpenTiff(source, decoder->m_complaint);
    if (!decoder->m_tiff) {
      return decoder->m_complaint.Get();
    }
    SIM_TRY(decoder->ReadInfo());
    return std::unique_ptr<Decoder>(std::move(decoder));
  }

  const PictureInfo& GetInfo() const override { return m_info; }

  Status Decode(Size, RowSink& sink) override {
    m_source.RestartClock();
    m_complaint.error.reason.clear();
    TiffSamples samples(m_tiff.get(), m_source.GetLimits());
    return samples.IsSupported() ? DecodeSamples(samples, sink) : DecodeColours(sink);
  }

 private:
  explicit TiffDecoder(Source& source) : m_source(source) {}

  Status ReadInfo() {
    TIFF* tiff = m_tiff.get();
    const uint32_t width = GetNumber(tiff, TIFFTAG_IMAGEWIDTH, 0);
    const uint32_t height = GetNumber(tiff, TIFFTAG_IMAGELENGTH, 0);
    SIM_TRY(CheckSize(width, height, m_source.GetLimits()));
    m_info.type = LUMAVIEW_TYPE_TIFF;
    m_info.stored = {static_cast<int>(width), static_cast<int>(height)};
    const uint16_t orientation = GetShort(tiff, TIFFTAG_ORIENTATION);
    m_info.orientation = orientation >= 1 && orientation <= 8 ? static_cast<Orientation>(orientation) : Orientation{1};
    uint32_t length = 0;
    const uint8_t* profile = nullptr;
    if (TIFFGetField(tiff, TIFFTAG_ICCPROFILE, &length, &profile) != 0 &&
        length <= m_source.GetLimits().metadata_bytes) {
      m_icc.assign(profile, profile + length);
    }
    m_band_rows = BandRows();
    return CheckWholeSize(width, static_cast<uint64_t>(m_band_rows), m_source.GetLimits());
  }

  /// Rows that lie in one piece of the file.
  int BandRows() const {
    TIFF* tiff = m_tiff.get();
    const uint32_t height = static_cast<uint32_t>(m_info.stored.height);
    const uint32_t rows = TIFFIsTiled(tiff) != 0 ? GetNumber(tiff, TIFFTAG_TILELENGTH, height)
                                                 : GetNumber(tiff, TIFFTAG_ROWSPERSTRIP, height);
    return static_cast<int>(std::clamp(rows, 1u, height));
  }

  Status DecodeSamples(TiffSamples& samples, RowSink& sink) {
    const PixelLayout layout = samples.GetLayout();
    SIM_TRY(sink.Begin({m_info.stored, layout, m_icc}));
    const size_t row_bytes = static_cast<size_t>(m_info.stored.width) * static_cast<size_t>(BytesPerPixel(layout));
    std::vector<uint8_t> band(samples.GetBandBytes());
    for (int first = 0; first < m_info.stored.height; first += samples.GetBandRows()) {
      SIM_TRY(m_source.CheckRunning());
      if (!samples.ReadBand(first, band)) {
        return m_complaint.Get();
      }
      const int rows = std::min(samples.GetBandRows(), m_info.stored.height - first);
      for (int y = 0; y < rows; ++y) {
        SIM_TRY(sink.Row(first + y, &band[static_cast<size_t>(y) * row_bytes]));
      }
    }
    return Ok();
  }

  Status DecodeColours(RowSink& sink) {
    RgbaReader reader;
    if (!reader.Open(m_tiff.get())) {
      return Error{kDamaged, "TIFF: " + reader.GetReason()};
    }
    SIM_TRY(sink.Begin({m_info.stored, PixelLayout::kBgrx, m_icc}));
    const auto width = static_cast<size_t>(m_info.stored.width);
    std::vector<uint32_t> band(width * static_cast<size_t>(m_band_rows));
    for (int first = 0; first < m_info.stored.height; first += m_band_rows) {
      SIM_TRY(m_source.CheckRunning());
      const int rows = std::min(m_band_rows, m_info.stored.height - first);
      if (!reader.Read(band.data(), first, rows)) {
        return m_complaint.Get();
      }
      for (int y = 0; y < rows; ++y) {
        uint8_t* row = reinterpret_cast<uint8_t*>(&band[static_cast<size_t>(y) * width]);
        SwapRedAndBlue(row, width);
        SIM_TRY(sink.Row(first + y, row));
      }
    }
    return Ok();
  }

  static void SwapRedAndBlue(uint8_t* row, size_t pixels) {
    for (size_t i = 0; i < pixels; ++i, row += 4) {
      std::swap(row[0], row[2]);
    }
  }

  Source& m_source;
  Complaint m_complaint;
  TiffHandle m_tiff;
  PictureInfo m_info;
  int m_band_rows = 1;
  std::vector<uint8_t> m_icc;
};

}  // namespace
}  // namespace sim::lumaview

LUMAVIEW_DECODER_MODULE(sim::lumaview::TiffDecoder::Open);
