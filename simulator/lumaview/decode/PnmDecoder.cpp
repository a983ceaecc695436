// SPDX-License-Identifier: Apache-2.0
/// The portable anymap family: P1 to P6, and P7 with its header of lines.
#include "simulator/lumaview/decode/ByteReader.h"
#include "simulator/lumaview/decode/PlainDecoders.h"

namespace sim::lumaview {
namespace {

bool IsDigit(int c) {
  return c >= '0' && c <= '9';
}
bool IsSpace(int c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

struct Header {
  int kind = 0;  ///< the digit behind the P
  uint64_t width = 0;
  uint64_t height = 0;
  uint32_t most = 1;  ///< the value that stands for full brightness
  int samples = 1;    ///< per pixel: grey, grey and alpha, colours, colours and alpha
  uint64_t data = 0;  ///< where the pixels begin

  bool IsText() const { return kind <= 3; }
  bool IsBits() const { return kind == 1 || kind == 4; }
  bool HasAlpha() const { return samples == 2 || samples == 4; }
};

/// Reads a header's words and counts the bytes.
class HeaderReader {
 public:
  explicit HeaderReader(Source& source) : m_reader(source, 2) {}

  uint64_t GetPosition() const { return m_position; }
  bool IsGood() const { return m_is_good && !m_reader.IsAtEnd(); }

  /// The next word; the one byte behind it is taken too, as the format has it. Comments are skipped.
  std::string Word() {
    uint8_t c = Get();
    while (IsGood() && (IsSpace(c) || c == '#')) {
      c = c == '#' ? SkipLine() : Get();
    }
    std::string word;
    while (IsGood() && !IsSpace(c) && word.size() < 20) {
      word += static_cast<char>(c);
      c = Get();
    }
    m_is_good = m_is_good && IsSpace(c);
    return word;
  }

  uint64_t Number() {
    const std::string word = Word();
    uint64_t number = 0;
    for (const char c : word) {
      m_is_good = m_is_good && IsDigit(c) && number < 1'000'000'000;
      number = number * 10 + static_cast<uint64_t>(c - '0');
    }
    m_is_good = m_is_good && !word.empty();
    return number;
  }

  uint8_t SkipLine() {
    uint8_t c = Get();
    while (IsGood() && c != '\n' && c != '\r') {
      c = Get();
    }
    return c;
  }

 private:
  uint8_t Get() {
    ++m_position;
    return m_reader.Get();
  }

  ByteReader m_reader;
  uint64_t m_position = 2;
  bool m_is_good = true;
};

void ReadLinesOfP7(HeaderReader& words, Header& header) {
  constexpr int kMostWords = 100;
  for (int i = 0; i < kMostWords && words.IsGood(); ++i) {
    const std::string word = words.Word();
    if (word == "WIDTH") {
      header.width = words.Number();
    } else if (word == "HEIGHT") {
      header.height = words.Number();
    } else if (word == "DEPTH") {
      header.samples = static_cast<int>(words.Number());
    } else if (word == "MAXVAL") {
      header.most = static_cast<uint32_t>(words.Number());
    } else if (word == "ENDHDR") {
      return;
    }
  }
}

Result<Header> ReadHeader(Source& source, int kind) {
  HeaderReader words(source);
  Header header;
  header.kind = kind;
  if (kind == 7) {
    ReadLinesOfP7(words, header);
  } else {
    header.width = words.Number();
    header.height = words.Number();
    header.most = header.IsBits() ? 1 : static_cast<uint32_t>(words.Number());
    header.samples = kind == 3 || kind == 6 ? 3 : 1;
  }
  header.data = words.GetPosition();
  const bool is_known = header.samples >= 1 && header.samples <= 4 && header.most >= 1 && header.most <= 65535;
  if (!words.IsGood() || !is_known) {
    return Error{kDamaged, "PNM: the header makes no sense"};
  }
  return header;
}

/// Reads samples one by one and gives them as bytes.
class SampleReader {
 public:
  SampleReader(Source& source, const Header& header) : m_reader(source, header.data), m_header(header) {}

  Status Check() const {
    SIM_TRY(m_reader.CheckEnd());
    return m_is_good ? Ok() : Status(Error{kDamaged, "PNM: something that is no number among the pixels"});
  }

  void BeginRow() { m_bits_left = 0; }

  uint8_t Next() {
    if (m_header.kind == 1) {
      return NextDigit() ? 0 : 255;
    }
    if (m_header.kind == 4) {
      return NextBit() ? 0 : 255;
    }
    const uint32_t value = m_header.IsText() ? NextNumber() : NextBinary();
    return static_cast<uint8_t>((std::min(value, m_header.most) * 255 + m_header.most / 2) / m_header.most);
  }

 private:
  /// The first byte behind spaces and comments; -1 at the end.
  int SkipSpace() {
    bool in_comment = false;
    int c = m_reader.TryGet();
    while (c >= 0 && (in_comment || c == '#' || IsSpace(c))) {
      in_comment = (in_comment || c == '#') && c != '\n' && c != '\r';
      c = m_reader.TryGet();
    }
    return c;
  }

  uint32_t NextNumber() {
    int c = SkipSpace();
    m_is_good = m_is_good && IsDigit(c);
    uint32_t value = 0;
    for (; IsDigit(c) && value <= 65535; c = m_reader.TryGet()) {
      value = value * 10 + static_cast<uint32_t>(c - '0');
    }
    m_is_good = m_is_good && (c < 0 || IsSpace(c));
    return value;
  }

  /// Digits of a P1 file need no space between them.
  bool NextDigit() {
    const int c = SkipSpace();
    m_is_good = m_is_good && (c == '0' || c == '1');
    return c == '1';
  }

  uint32_t NextBinary() {
    const uint32_t high = m_reader.Get();
    return m_header.most > 255 ? high << 8 | m_reader.Get() : high;
  }

  bool NextBit() {
    if (m_bits_left == 0) {
      m_bits = m_reader.Get();
      m_bits_left = 8;
    }
    return (m_bits >> --m_bits_left & 1) != 0;
  }

  ByteReader m_reader;
  const Header& m_header;
  uint8_t m_bits = 0;
  int m_bits_left = 0;
  bool m_is_good = true;
};

class PnmDecoder : public Decoder {
 public:
  PnmDecoder(Source& source, const Header& header) : m_source(source), m_header(header) {
    m_info.type = LUMAVIEW_TYPE_PNM;
    m_info.stored = {static_cast<int>(header.width), static_cast<int>(header.height)};
  }

  const PictureInfo& GetInfo() const override { return m_info; }

  Status Decode(Size, RowSink& sink) override {
    m_source.RestartClock();
    const Size size = m_info.stored;
    const PixelLayout layout = GetLayout();
    SIM_TRY(sink.Begin({size, layout, {}}));
    SampleReader samples(m_source, m_header);
    std::vector<uint8_t> row(static_cast<size_t>(size.width) * static_cast<size_t>(BytesPerPixel(layout)));
    for (int y = 0; y < size.height; ++y) {
      SIM_TRY(m_source.CheckRunning());
      samples.BeginRow();
      for (uint8_t* to = row.data(); to != row.data() + row.size(); to += BytesPerPixel(layout)) {
        ReadPixel(samples, to);
      }
      SIM_TRY(samples.Check());
      SIM_TRY(sink.Row(y, row.data()));
    }
    return Ok();
  }

 private:
  PixelLayout GetLayout() const {
    if (m_header.samples == 1) {
      return PixelLayout::kGray;
    }
    return m_header.HasAlpha() ? PixelLayout::kBgra : PixelLayout::kBgrx;
  }

  void ReadPixel(SampleReader& samples, uint8_t* to) const {
    if (m_header.samples == 1) {
      *to = samples.Next();
      return;
    }
    to[2] = samples.Next();
    to[1] = m_header.samples >= 3 ? samples.Next() : to[2];
    to[0] = m_header.samples >= 3 ? samples.Next() : to[2];
    to[3] = m_header.HasAlpha() ? samples.Next() : uint8_t{255};
  }

  Source& m_source;
  const Header m_header;
  PictureInfo m_info;
};

}  // namespace

bool IsPnm(Bytes head) {
  return head.size() >= 8 && head[0] == 'P' && head[1] >= '1' && head[1] <= '7' && (IsSpace(head[2]) || head[2] == '#');
}

Result<std::unique_ptr<Decoder>> OpenPnm(Source& source) {
  std::array<uint8_t, 2> magic{};
  source.Read(magic);
  const Result<Header> header = ReadHeader(source, magic[1] - '0');
  if (!header) {
    return header.error();
  }
  SIM_TRY(CheckSize(header->width, header->height, source.GetLimits()));
  return std::unique_ptr<Decoder>(std::make_unique<PnmDecoder>(source, *header));
}

}  // namespace sim::lumaview
