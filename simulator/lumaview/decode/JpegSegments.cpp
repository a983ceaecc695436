// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/JpegSegments.h"

#include <array>
#include <map>

#include "simulator/lumaview/decode/Bytes.h"

namespace sim::lumaview {
namespace {

using namespace std::string_view_literals;

constexpr auto kExifName = "Exif\0\0"sv;
constexpr auto kIccName = "ICC_PROFILE\0"sv;
constexpr auto kMpfName = "MPF\0"sv;

constexpr int kApp1 = 0xE1;
constexpr int kApp2 = 0xE2;
constexpr int kStartOfScan = 0xDA;
constexpr int kEndOfImage = 0xD9;

/// A file may hold any number of segments; nobody needs more than these to describe one picture.
constexpr int kMostSegments = 1000;

/// Profiles longer than a segment come in numbered parts.
class IccParts {
 public:
  void Add(Bytes segment, uint64_t limit) {
    if (segment.size() <= kIccName.size() + 2) {
      return;
    }
    const int number = segment[kIccName.size()];
    m_count = segment[kIccName.size() + 1];
    const Bytes data = segment.subspan(kIccName.size() + 2);
    if (m_bytes + data.size() <= limit && m_parts.try_emplace(number, data.begin(), data.end()).second) {
      m_bytes += data.size();
    }
  }

  std::vector<uint8_t> Join() const {
    std::vector<uint8_t> profile;
    for (int number = 1; number <= m_count; ++number) {
      const auto part = m_parts.find(number);
      if (part == m_parts.end()) {
        return {};
      }
      profile.insert(profile.end(), part->second.begin(), part->second.end());
    }
    return profile;
  }

 private:
  int m_count = 0;
  uint64_t m_bytes = 0;
  std::map<int, std::vector<uint8_t>> m_parts;
};

/// Finds the next marker, after any fill bytes; -1 at the end.
int NextMarker(Source& source) {
  std::array<uint8_t, 1> byte{};
  bool after_ff = false;
  while (source.Read(byte) == 1) {
    if (after_ff && byte[0] != 0xFF && byte[0] != 0) {
      return byte[0];
    }
    after_ff = byte[0] == 0xFF;
  }
  return -1;
}

bool HasNoLength(int marker) {
  return marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8);
}

std::vector<uint8_t> ReadSegment(Source& source, size_t length) {
  std::vector<uint8_t> segment(length);
  segment.resize(source.Read(segment));
  return segment;
}

void Assign(std::vector<uint8_t>& to, Bytes from) {
  to.assign(from.begin(), from.end());
}

}  // namespace

JpegSegments ReadJpegSegments(Source& source, uint64_t start) {
  JpegSegments segments;
  IccParts icc;
  source.Seek(start + 2);
  for (int i = 0; i < kMostSegments; ++i) {
    const int marker = NextMarker(source);
    if (HasNoLength(marker)) {
      continue;
    }
    std::array<uint8_t, 2> length{};
    if (marker < 0 || marker == kStartOfScan || marker == kEndOfImage || source.Read(length) != 2 ||
        BigEndian16(length.data()) < 2) {
      break;
    }
    const uint64_t begin = source.GetPosition();
    const uint64_t end = begin + BigEndian16(length.data()) - 2u;
    if (marker == kApp1 || marker == kApp2) {
      const std::vector<uint8_t> segment = ReadSegment(source, end - begin);
      if (HasText(segment, 0, kExifName) && segments.exif.empty()) {
        Assign(segments.exif, Bytes(segment).subspan(kExifName.size()));
      } else if (HasText(segment, 0, kIccName)) {
        icc.Add(segment, source.GetLimits().metadata_bytes);
      } else if (HasText(segment, 0, kMpfName) && segments.mpf.empty()) {
        Assign(segments.mpf, Bytes(segment).subspan(kMpfName.size()));
        segments.mpf_position = begin + kMpfName.size();
      }
    }
    source.Seek(end);
  }
  segments.icc = icc.Join();
  return segments;
}

std::vector<MpfPicture> ReadMpfIndex(const JpegSegments& segments, uint64_t start) {
  constexpr uint16_t kEntriesTag = 0xB002;
  constexpr size_t kEntryBytes = 16;
  constexpr size_t kMostPictures = 16;
  const Bytes bytes = segments.mpf;
  if (bytes.size() < 8) {
    return {};
  }
  const bool big = HasText(bytes, 0, "MM");
  const auto u16 = [&](size_t at) { return big ? BigEndian16(&bytes[at]) : LittleEndian16(&bytes[at]); };
  const auto u32 = [&](size_t at) { return big ? BigEndian32(&bytes[at]) : LittleEndian32(&bytes[at]); };
  const size_t directory = u32(4);
  if (directory > bytes.size() - 2) {
    return {};
  }
  std::vector<MpfPicture> pictures;
  for (size_t i = 0, at = directory + 2; i < u16(directory) && at + 12 <= bytes.size(); ++i, at += 12) {
    if (u16(at) != kEntriesTag) {
      continue;
    }
    size_t entry = u32(at + 8);
    const size_t count = std::min<size_t>(u32(at + 4) / kEntryBytes, kMostPictures);
    for (size_t n = 0; n < count && entry <= bytes.size() && bytes.size() - entry >= kEntryBytes; ++n) {
      const uint32_t offset = u32(entry + 8);
      pictures.push_back({u32(entry), offset == 0 ? start : segments.mpf_position + offset});
      entry += kEntryBytes;
    }
  }
  return pictures;
}

}  // namespace sim::lumaview
