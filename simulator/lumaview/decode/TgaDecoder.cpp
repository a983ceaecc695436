// SPDX-License-Identifier: Apache-2.0
#include <array>

#include "simulator/lumaview/decode/ByteReader.h"
#include "simulator/lumaview/decode/PlainDecoders.h"

namespace sim::lumaview {
namespace {

constexpr size_t kHeaderBytes = 18;
constexpr int kPalette = 1;
constexpr int kColours = 2;
constexpr int kGrey = 3;

struct Header {
  explicit Header(const uint8_t* bytes)
      : has_palette(bytes[1] == 1),
        is_packed((bytes[2] & 8) != 0),
        kind(bytes[2] & ~8),
        palette_first(LittleEndian16(bytes + 3)),
        palette_count(LittleEndian16(bytes + 5)),
        palette_bits(bytes[7]),
        width(LittleEndian16(bytes + 12)),
        height(LittleEndian16(bytes + 14)),
        bits(bytes[16]),
        alpha_bits(bytes[17] & 15),
        descriptor(bytes[17]),
        data(kHeaderBytes + bytes[0]) {}

  bool MakesSense() const {
    const auto is_colour = [](int n) { return n == 15 || n == 16 || n == 24 || n == 32; };
    if (width == 0 || height == 0 || (descriptor & 0xC0) != 0) {
      return false;
    }
    switch (kind) {
      case kPalette:
        return has_palette && (bits == 8 || bits == 16) && is_colour(palette_bits) && palette_count > 0;
      case kColours:
        return is_colour(bits) && (!has_palette || is_colour(palette_bits));
      case kGrey:
        return (bits == 8 || bits == 16) && !has_palette;
      default:
        return false;
    }
  }

  /// Rows run upwards and pixels to the right unless the descriptor says otherwise.
  Orientation GetOrientation() const {
    const bool to_the_left = (descriptor & 0x10) != 0;
    const bool downwards = (descriptor & 0x20) != 0;
    return downwards ? (to_the_left ? 2 : 1) : (to_the_left ? 3 : 4);
  }

  bool has_palette;
  bool is_packed;
  int kind;
  int palette_first;
  int palette_count;
  int palette_bits;
  int width;
  int height;
  int bits;
  int alpha_bits;
  int descriptor;
  uint64_t data;  ///< where the palette or, without one, the pixels begin
};

using Pixel = std::array<uint8_t, 4>;

uint8_t FromFiveBits(int value) {
  return static_cast<uint8_t>((value & 31) * 255 / 31);
}

/// One colour as the file stores it, in `bits` bits.
Pixel ReadColour(ByteReader& reader, int bits) {
  std::array<uint8_t, 4> bytes{0, 0, 0, 255};
  reader.Read(std::span(bytes).first(static_cast<size_t>((bits + 7) / 8)));
  if (bits == 24 || bits == 32) {
    return bytes;
  }
  const int value = LittleEndian16(bytes.data());
  return {FromFiveBits(value), FromFiveBits(value >> 5), FromFiveBits(value >> 10), 255};
}

/// The pixels of a file one after the other, runs unpacked.
class PixelStream {
 public:
  PixelStream(Source& source, const Header& header) : m_reader(source, header.data), m_header(header) {
    for (int i = 0; header.has_palette && i < header.palette_count; ++i) {
      m_palette.push_back(ReadColour(m_reader, header.palette_bits));
    }
  }

  Status CheckEnd() const { return m_reader.CheckEnd(); }

  Pixel Next() {
    if (!m_header.is_packed) {
      return ReadPixel();
    }
    if (m_left == 0) {
      const uint8_t packet = m_reader.Get();
      m_left = (packet & 0x7F) + 1;
      m_is_run = (packet & 0x80) != 0;
      if (m_is_run) {
        m_pixel = ReadPixel();
      }
    }
    --m_left;
    return m_is_run ? m_pixel : ReadPixel();
  }

 private:
  Pixel ReadPixel() {
    if (m_header.kind == kColours) {
      return ReadColour(m_reader, m_header.bits);
    }
    std::array<uint8_t, 2> bytes{0, 255};
    m_reader.Read(std::span(bytes).first(static_cast<size_t>(m_header.bits / 8)));
    if (m_header.kind == kGrey) {
      return {bytes[0], bytes[0], bytes[0], bytes[1]};
    }
    const int value = m_header.bits == 16 ? LittleEndian16(bytes.data()) : bytes[0];
    const auto index = static_cast<size_t>(value - m_header.palette_first);
    return index < m_palette.size() ? m_palette[index] : Pixel{0, 0, 0, 255};
  }

  ByteReader m_reader;
  const Header& m_header;
  std::vector<Pixel> m_palette;
  Pixel m_pixel{};
  int m_left = 0;
  bool m_is_run = false;
};

class TgaDecoder : public Decoder {
 public:
  TgaDecoder(Source& source, const Header& header) : m_source(source), m_header(header) {
    m_info.stored = {header.width, header.height};
    m_info.orientation = header.GetOrientation();
  }

  const PictureInfo& GetInfo() const override { return m_info; }

  Status Decode(Size, RowSink& sink) override {
    m_source.RestartClock();
    const bool has_alpha = m_header.alpha_bits == 8;
    SIM_TRY(sink.Begin({m_info.stored, has_alpha ? PixelLayout::kBgra : PixelLayout::kBgrx, {}}));
    PixelStream stream(m_source, m_header);
    std::vector<Pixel> row(static_cast<size_t>(m_header.width));
    for (int y = 0; y < m_header.height; ++y) {
      SIM_TRY(m_source.CheckRunning());
      for (Pixel& pixel : row) {
        pixel = stream.Next();
      }
      SIM_TRY(stream.CheckEnd());
      SIM_TRY(sink.Row(y, row[0].data()));
    }
    return Ok();
  }

 private:
  Source& m_source;
  const Header m_header;
  PictureInfo m_info;
};

/// Without a signature in front, unpacked files must at least be as long as their header says.
bool IsLongEnough(const Header& header, uint64_t file_bytes) {
  const uint64_t palette =
      header.has_palette ? static_cast<uint64_t>(header.palette_count * ((header.palette_bits + 7) / 8)) : 0;
  const uint64_t pixels = static_cast<uint64_t>(header.width) * static_cast<uint64_t>(header.height);
  const uint64_t pixel_bytes = static_cast<uint64_t>((header.bits + 7) / 8);
  // A packet of two bytes or more stands for at most 128 pixels.
  const uint64_t least = header.is_packed ? pixels / 128 * (pixel_bytes + 1) : pixels * pixel_bytes;
  return file_bytes >= header.data + palette + least;
}

}  // namespace

bool IsTga(Bytes head) {
  return head.size() >= kHeaderBytes && head[1] <= 1 && Header(head.data()).MakesSense();
}

Result<std::unique_ptr<Decoder>> OpenTga(Source& source) {
  std::array<uint8_t, kHeaderBytes> bytes{};
  source.Read(bytes);
  const Header header(bytes.data());
  if (!IsLongEnough(header, source.GetSize())) {
    return Error{kUnknownFormat, "the file is not a picture of a known format"};
  }
  return std::unique_ptr<Decoder>(std::make_unique<TgaDecoder>(source, header));
}

}  // namespace sim::lumaview
