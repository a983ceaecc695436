// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/ApngFrames.h"

#include <zlib.h>

#include <algorithm>
#include <array>

#include "simulator/lumaview/decode/Bytes.h"

namespace sim::lumaview {
namespace {

using namespace std::string_view_literals;

constexpr auto kSignature = "\x89PNG\r\n\x1A\n"sv;
constexpr size_t kHeaderBytes = 13;
constexpr size_t kControlBytes = 26;

struct Chunk {
  std::array<char, 4> name{};
  uint64_t position = 0;  ///< of its data
  uint32_t length = 0;

  bool Is(std::string_view other) const { return std::string_view(name.data(), 4) == other; }
};

bool ReadChunkHead(Source& source, Chunk& chunk) {
  std::array<uint8_t, 8> head{};
  if (source.Read(head) != head.size()) {
    return false;
  }
  chunk.length = BigEndian32(head.data());
  std::copy(head.begin() + 4, head.end(), chunk.name.begin());
  chunk.position = source.GetPosition();
  return true;
}

std::vector<uint8_t> ReadBytes(Source& source, uint64_t position, size_t length) {
  std::vector<uint8_t> bytes(length);
  source.Seek(position);
  bytes.resize(source.Read(bytes));
  return bytes;
}

/// A delay without a denominator counts in hundredths of a second.
int DelayMs(uint32_t numerator, uint32_t denominator) {
  return static_cast<int>(numerator * 1000 / (denominator == 0 ? 100 : denominator));
}

/// False when the frame does not lie inside the picture.
bool ReadControl(Bytes bytes, Size canvas, ApngFrame& frame) {
  if (bytes.size() != kControlBytes) {
    return false;
  }
  const uint64_t width = BigEndian32(&bytes[4]);
  const uint64_t height = BigEndian32(&bytes[8]);
  const uint64_t x = BigEndian32(&bytes[12]);
  const uint64_t y = BigEndian32(&bytes[16]);
  if (width == 0 || height == 0 || x + width > static_cast<uint64_t>(canvas.width) ||
      y + height > static_cast<uint64_t>(canvas.height) || bytes[24] > 2) {
    return false;
  }
  frame.area = {static_cast<int>(x), static_cast<int>(y), static_cast<int>(width), static_cast<int>(height)};
  frame.delay_ms = DelayMs(BigEndian16(&bytes[20]), BigEndian16(&bytes[22]));
  frame.disposal = static_cast<ApngFrame::Disposal>(bytes[24]);
  frame.blend = bytes[25] == 1;
  return true;
}

/// Walks through the chunks of a file.
class ApngReader {
 public:
  explicit ApngReader(Source& source) : m_source(source) {}

  Result<Apng> Run() {
    m_source.Seek(kSignature.size());
    Chunk chunk;
    while (ReadChunkHead(m_source, chunk) && !chunk.Is("IEND")) {
      SIM_TRY(m_source.CheckRunning());
      SIM_TRY(Take(chunk));
      if (!m_is_animated && chunk.Is("IDAT")) {
        break;
      }
      m_source.Seek(chunk.position + chunk.length + 4);
    }
    DropUnfinishedFrames();
    return std::move(m_apng);
  }

 private:
  Status Take(const Chunk& chunk) {
    if (chunk.Is("IHDR")) {
      m_apng.header = ReadBytes(m_source, chunk.position, std::min<size_t>(chunk.length, kHeaderBytes));
    } else if (chunk.Is("acTL")) {
      const std::vector<uint8_t> control = ReadBytes(m_source, chunk.position, std::min<size_t>(chunk.length, 8));
      m_is_animated = control.size() == 8 && BigEndian32(control.data()) > 0 && m_apng.header.size() == kHeaderBytes;
      m_apng.loops = m_is_animated ? static_cast<int>(std::min(BigEndian32(&control[4]), 0x7FFFFFFFu)) : 0;
    } else if (chunk.Is("fcTL") && m_is_animated) {
      return AddFrame(chunk);
    } else if (chunk.Is("IDAT") || chunk.Is("fdAT")) {
      AddData(chunk);
    } else if (chunk.Is("PLTE") || chunk.Is("tRNS")) {
      KeepShared(chunk);
    }
    return Ok();
  }

  Status AddFrame(const Chunk& chunk) {
    if (m_apng.frames.size() >= m_source.GetLimits().frames) {
      return Error{kOverLimit,
                   "the animation has more than " + std::to_string(m_source.GetLimits().frames) + " frames"};
    }
    const Size canvas{static_cast<int>(BigEndian32(&m_apng.header[0]) & 0x7FFFFFFF),
                      static_cast<int>(BigEndian32(&m_apng.header[4]) & 0x7FFFFFFF)};
    ApngFrame frame;
    const std::vector<uint8_t> bytes =
        ReadBytes(m_source, chunk.position, std::min<size_t>(chunk.length, kControlBytes));
    if (!m_is_damaged && ReadControl(bytes, canvas, frame)) {
      m_apng.frames.push_back(std::move(frame));
    } else {
      m_is_damaged = true;
    }
    return Ok();
  }

  /// Data in front of the first control chunk is the picture for programs that do not know animations.
  void AddData(const Chunk& chunk) {
    constexpr uint32_t kSequenceBytes = 4;
    const uint32_t front = chunk.Is("fdAT") ? kSequenceBytes : 0;
    const bool is_complete = chunk.position + chunk.length <= m_source.GetSize();
    if (!m_apng.frames.empty() && !m_is_damaged && is_complete && chunk.length >= front) {
      m_apng.frames.back().data.push_back({chunk.position + front, chunk.length - front});
    }
  }

  void KeepShared(const Chunk& chunk) {
    constexpr size_t kLongestShared = 1024;  // a palette has 768 bytes
    constexpr size_t kFrameBytes = 12;
    if (chunk.length <= kLongestShared && m_apng.shared.size() <= 4 * kLongestShared) {
      const std::vector<uint8_t> bytes = ReadBytes(m_source, chunk.position - 8, chunk.length + kFrameBytes);
      m_apng.shared.insert(m_apng.shared.end(), bytes.begin(), bytes.end());
    }
  }

  void DropUnfinishedFrames() {
    while (!m_apng.frames.empty() && m_apng.frames.back().data.empty()) {
      m_apng.frames.pop_back();
    }
  }

  Source& m_source;
  Apng m_apng;
  bool m_is_animated = false;
  bool m_is_damaged = false;
};

void AppendBigEndian32(std::vector<uint8_t>& bytes, uint32_t value) {
  for (const int shift : {24, 16, 8, 0}) {
    bytes.push_back(static_cast<uint8_t>(value >> shift));
  }
}

}  // namespace

Result<Apng> ReadApng(Source& source) {
  return ApngReader(source).Run();
}

ApngFrameStream::ApngFrameStream(Source& source, const Apng& apng, const ApngFrame& frame)
    : m_source(source), m_frame(frame) {
  m_ready.assign(kSignature.begin(), kSignature.end());
  std::vector<uint8_t> header;
  AppendBigEndian32(header, static_cast<uint32_t>(frame.area.width));
  AppendBigEndian32(header, static_cast<uint32_t>(frame.area.height));
  header.insert(header.end(), apng.header.begin() + 8, apng.header.end());
  AppendChunk("IHDR", header);
  m_ready.insert(m_ready.end(), apng.shared.begin(), apng.shared.end());
}

size_t ApngFrameStream::Read(std::span<uint8_t> to) {
  size_t done = 0;
  while (done < to.size() && (m_taken < m_ready.size() || FillNext())) {
    const size_t count = std::min(to.size() - done, m_ready.size() - m_taken);
    std::copy_n(m_ready.begin() + static_cast<ptrdiff_t>(m_taken), count, to.begin() + static_cast<ptrdiff_t>(done));
    m_taken += count;
    done += count;
  }
  return done;
}

void ApngFrameStream::AppendChunk(const char* name, std::span<const uint8_t> data) {
  AppendBigEndian32(m_ready, static_cast<uint32_t>(data.size()));
  const size_t begin = m_ready.size();
  m_ready.insert(m_ready.end(), name, name + 4);
  m_ready.insert(m_ready.end(), data.begin(), data.end());
  const uLong checksum = crc32(0, &m_ready[begin], static_cast<uInt>(m_ready.size() - begin));
  AppendBigEndian32(m_ready, static_cast<uint32_t>(checksum));
}

bool ApngFrameStream::FillNext() {
  m_ready.clear();
  m_taken = 0;
  if (m_next_data < m_frame.data.size()) {
    const ApngFrame::Data& data = m_frame.data[m_next_data++];
    AppendChunk("IDAT", ReadBytes(m_source, data.position, data.length));
    return true;
  }
  if (!std::exchange(m_is_ended, true)) {
    AppendChunk("IEND", {});
    return true;
  }
  return false;
}

}  // namespace sim::lumaview
