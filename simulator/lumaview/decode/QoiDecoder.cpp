// SPDX-License-Identifier: Apache-2.0
#include <array>

#include "simulator/lumaview/decode/ByteReader.h"
#include "simulator/lumaview/decode/PlainDecoders.h"

namespace sim::lumaview {
namespace {

constexpr size_t kHeaderBytes = 14;

struct Pixel {
  uint8_t red = 0;
  uint8_t green = 0;
  uint8_t blue = 0;
  uint8_t alpha = 0;
};

/// The stream's state: the last pixel, how often it still repeats, and the pixels seen before by their hash.
class PixelStream {
 public:
  explicit PixelStream(ByteReader& reader) : m_reader(reader) {}

  Pixel Next() {
    if (m_repeats > 0) {
      --m_repeats;
      return m_pixel;
    }
    Step(m_reader.Get());
    m_seen[Hash(m_pixel)] = m_pixel;
    return m_pixel;
  }

 private:
  static size_t Hash(const Pixel& p) { return (p.red * 3u + p.green * 5u + p.blue * 7u + p.alpha * 11u) % 64; }

  void Step(uint8_t code) {
    if (code == 0xFE || code == 0xFF) {
      m_pixel.red = m_reader.Get();
      m_pixel.green = m_reader.Get();
      m_pixel.blue = m_reader.Get();
      m_pixel.alpha = code == 0xFF ? m_reader.Get() : m_pixel.alpha;
      return;
    }
    switch (code >> 6) {
      case 0:
        m_pixel = m_seen[code];
        break;
      case 1:
        Add((code >> 4 & 3) - 2, (code >> 2 & 3) - 2, (code & 3) - 2);
        break;
      case 2: {
        const int green = (code & 0x3F) - 32;
        const uint8_t others = m_reader.Get();
        Add(green - 8 + (others >> 4), green, green - 8 + (others & 15));
        break;
      }
      default:
        m_repeats = code & 0x3F;
        break;
    }
  }

  /// Differences wrap around.
  void Add(int red, int green, int blue) {
    m_pixel.red = static_cast<uint8_t>(m_pixel.red + red);
    m_pixel.green = static_cast<uint8_t>(m_pixel.green + green);
    m_pixel.blue = static_cast<uint8_t>(m_pixel.blue + blue);
  }

  ByteReader& m_reader;
  Pixel m_pixel{0, 0, 0, 255};
  int m_repeats = 0;
  std::array<Pixel, 64> m_seen{};
};

class QoiDecoder : public Decoder {
 public:
  QoiDecoder(Source& source, Size size, bool has_alpha) : m_source(source), m_has_alpha(has_alpha) {
    m_info.stored = size;
  }

  const PictureInfo& GetInfo() const override { return m_info; }

  Status Decode(Size, RowSink& sink) override {
    m_source.RestartClock();
    const Size size = m_info.stored;
    SIM_TRY(sink.Begin({size, m_has_alpha ? PixelLayout::kBgra : PixelLayout::kBgrx, {}}));
    ByteReader reader(m_source, kHeaderBytes);
    PixelStream stream(reader);
    std::vector<uint8_t> row(static_cast<size_t>(size.width) * 4);
    for (int y = 0; y < size.height; ++y) {
      SIM_TRY(m_source.CheckRunning());
      for (uint8_t* to = row.data(); to != row.data() + row.size(); to += 4) {
        const Pixel pixel = stream.Next();
        to[0] = pixel.blue;
        to[1] = pixel.green;
        to[2] = pixel.red;
        to[3] = pixel.alpha;
      }
      SIM_TRY(reader.CheckEnd());
      SIM_TRY(sink.Row(y, row.data()));
    }
    return Ok();
  }

 private:
  Source& m_source;
  const bool m_has_alpha;
  PictureInfo m_info;
};

}  // namespace

bool IsQoi(Bytes head) {
  return head.size() >= kHeaderBytes && HasText(head, 0, "qoif");
}

Result<std::unique_ptr<Decoder>> OpenQoi(Source& source) {
  std::array<uint8_t, kHeaderBytes> header{};
  if (source.Read(header) != header.size()) {
    return Error{kDamaged, "QOI: the file ends in its header"};
  }
  const uint32_t width = BigEndian32(&header[4]);
  const uint32_t height = BigEndian32(&header[8]);
  const uint8_t channels = header[12];
  SIM_TRY(CheckSize(width, height, source.GetLimits()));
  if (channels != 3 && channels != 4) {
    return Error{kDamaged, "QOI: " + std::to_string(channels) + " channels"};
  }
  const Size size{static_cast<int>(width), static_cast<int>(height)};
  return std::unique_ptr<Decoder>(std::make_unique<QoiDecoder>(source, size, channels == 4));
}

}  // namespace sim::lumaview
