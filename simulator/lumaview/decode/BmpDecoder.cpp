// SPDX-License-Identifier: Apache-2.0
/// Bitmap files. Rows that run upwards are delivered as they stand, and an orientation turns them round, so that
/// memory is a row whatever the coding.
#include "simulator/lumaview/decode/BmpHeader.h"
#include "simulator/lumaview/decode/ByteReader.h"
#include "simulator/lumaview/decode/PlainDecoders.h"

namespace sim::lumaview {
namespace {

using Pixel = std::array<uint8_t, 4>;
constexpr Orientation kUpsideDown = 4;

/// Delivers rows of one coding, one after the other.
class RowReader {
 public:
  RowReader(Source& source, const BmpHeader& header) : m_header(header), m_reader(source, header.data) {}
  virtual ~RowReader() = default;
  virtual void Next(std::vector<Pixel>& row) = 0;
  /// Whether the file has ended before what was asked for.
  virtual Status Check() const { return m_reader.CheckEnd(); }

 protected:
  Pixel FromPalette(size_t index) const {
    return index < m_header.palette.size() ? m_header.palette[index] : Pixel{0, 0, 0, 255};
  }

  const BmpHeader& m_header;
  ByteReader m_reader;
};

class PlainRows : public RowReader {
 public:
  PlainRows(Source& source, const BmpHeader& header)
      : RowReader(source, header),
        m_bytes((static_cast<size_t>(header.size.width) * static_cast<size_t>(header.bits) + 31) / 32 * 4) {}

  void Next(std::vector<Pixel>& row) override {
    m_reader.Read(std::span(m_bytes).first(BytesWithoutPadding()));
    m_reader.Skip(m_bytes.size() - BytesWithoutPadding());
    for (size_t x = 0; x < row.size(); ++x) {
      row[x] = At(x);
    }
  }

 private:
  /// Some writers leave the padding of the last row away.
  size_t BytesWithoutPadding() const {
    return (static_cast<size_t>(m_header.size.width) * static_cast<size_t>(m_header.bits) + 7) / 8;
  }

  Pixel At(size_t x) const {
    switch (m_header.bits) {
      case 16:
        return FromMasks(LittleEndian16(&m_bytes[2 * x]));
      case 24:
        return {m_bytes[3 * x], m_bytes[3 * x + 1], m_bytes[3 * x + 2], 255};
      case 32:
        return FromMasks(LittleEndian32(&m_bytes[4 * x]));
      default: {
        const auto bits = static_cast<size_t>(m_header.bits);
        const size_t per_byte = 8 / bits;
        const size_t shift = 8 - bits - x % per_byte * bits;
        return FromPalette(m_bytes[x / per_byte] >> shift & ((1u << bits) - 1));
      }
    }
  }

  Pixel FromMasks(uint32_t value) const {
    const auto& masks = m_header.masks;
    return {masks[2].Get(value, 0), masks[1].Get(value, 0), masks[0].Get(value, 0), masks[3].Get(value, 255)};
  }

  std::vector<uint8_t> m_bytes;
};

/// Run-length coded rows. Pixels that the file skips get the first colour of the palette.
class PackedRows : public RowReader {
 public:
  using RowReader::RowReader;

  void Next(std::vector<Pixel>& row) override {
    std::fill(row.begin(), row.end(), m_header.palette.empty() ? Pixel{0, 0, 0, 255} : FromPalette(0));
    if (m_rows_to_skip > 0) {
      --m_rows_to_skip;
      if (m_rows_to_skip > 0) {
        return;
      }
    } else {
      m_x = 0;
    }
    while (!m_is_over && !m_reader.IsAtEnd() && Step(row)) {
    }
  }

  /// A picture may end early by its own code; the rest is then skipped pixels.
  Status Check() const override { return m_is_over ? Ok() : RowReader::Check(); }

 private:
  /// One code; false when the row is over.
  bool Step(std::vector<Pixel>& row) {
    const uint8_t count = m_reader.Get();
    if (count > 0) {
      Run(row, count);
      return true;
    }
    const uint8_t code = m_reader.Get();
    switch (code) {
      case 0:
        return false;
      case 1:
        m_is_over = true;
        return false;
      case 2:
        m_x += m_reader.Get();
        m_rows_to_skip = m_reader.Get();
        return m_rows_to_skip == 0;
      default:
        Literal(row, code);
        return true;
    }
  }

  void Run(std::vector<Pixel>& row, size_t count) {
    if (m_header.coding == BmpHeader::Coding::kRle4) {
      const uint8_t both = m_reader.Get();
      for (size_t i = 0; i < count; ++i) {
        Put(row, FromPalette(i % 2 == 0 ? both >> 4 : both & 15));
      }
      return;
    }
    const Pixel pixel = ReadPixel();
    for (size_t i = 0; i < count; ++i) {
      Put(row, pixel);
    }
  }

  /// Literal pixels are filled up to a multiple of two bytes.
  void Literal(std::vector<Pixel>& row, size_t count) {
    size_t bytes = m_header.coding == BmpHeader::Coding::kRle24 ? 3 * count : count;
    if (m_header.coding == BmpHeader::Coding::kRle4) {
      bytes = (count + 1) / 2;
      for (size_t i = 0; i < count; i += 2) {
        const uint8_t both = m_reader.Get();
        Put(row, FromPalette(both >> 4));
        if (i + 1 < count) {
          Put(row, FromPalette(both & 15));
        }
      }
    } else {
      for (size_t i = 0; i < count; ++i) {
        Put(row, ReadPixel());
      }
    }
    m_reader.Skip(bytes % 2);
  }

  Pixel ReadPixel() {
    if (m_header.coding != BmpHeader::Coding::kRle24) {
      return FromPalette(m_reader.Get());
    }
    Pixel pixel{0, 0, 0, 255};
    m_reader.Read(std::span(pixel).first(3));
    return pixel;
  }

  void Put(std::vector<Pixel>& row, const Pixel& pixel) {
    if (m_x < row.size()) {
      row[m_x++] = pixel;
    }
  }

  size_t m_x = 0;
  int m_rows_to_skip = 0;
  bool m_is_over = false;
};

class BmpDecoder : public Decoder {
 public:
  BmpDecoder(Source& source, BmpHeader header) : m_source(source), m_header(std::move(header)) {
    m_info.type = LUMAVIEW_TYPE_BMP;
    m_info.stored = m_header.size;
    m_info.orientation = m_header.is_top_down ? Orientation{1} : kUpsideDown;
  }

  const PictureInfo& GetInfo() const override { return m_info; }

  Status Decode(Size, RowSink& sink) override {
    m_source.RestartClock();
    const PixelLayout layout = m_header.has_alpha ? PixelLayout::kBgra : PixelLayout::kBgrx;
    SIM_TRY(sink.Begin({m_header.size, layout, m_header.icc}));
    const std::unique_ptr<RowReader> rows = MakeReader();
    std::vector<Pixel> row(static_cast<size_t>(m_header.size.width));
    for (int y = 0; y < m_header.size.height; ++y) {
      SIM_TRY(m_source.CheckRunning());
      rows->Next(row);
      SIM_TRY(rows->Check());
      SIM_TRY(sink.Row(y, row[0].data()));
    }
    return Ok();
  }

 private:
  std::unique_ptr<RowReader> MakeReader() {
    if (m_header.coding == BmpHeader::Coding::kPlain) {
      return std::make_unique<PlainRows>(m_source, m_header);
    }
    return std::make_unique<PackedRows>(m_source, m_header);
  }

  Source& m_source;
  const BmpHeader m_header;
  PictureInfo m_info;
};

}  // namespace

bool IsBmp(Bytes head) {
  return head.size() >= 18 && HasText(head, 0, "BM");
}

Result<std::unique_ptr<Decoder>> OpenBmp(Source& source) {
  Result<BmpHeader> header = ReadBmpHeader(source);
  if (!header) {
    return header.error();
  }
  return std::unique_ptr<Decoder>(std::make_unique<BmpDecoder>(source, std::move(*header)));
}

}  // namespace sim::lumaview
