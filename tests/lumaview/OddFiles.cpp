// SPDX-License-Identifier: Apache-2.0
#include "tests/lumaview/OddFiles.h"

#include <array>
#include <cmath>
#include <string>

namespace sim::lumaview::test {
namespace {

using Buffer = std::vector<uint8_t>;

void Add(Buffer& buffer, const std::string& text) {
  buffer.insert(buffer.end(), text.begin(), text.end());
}
void Add(Buffer& buffer, const Buffer& more) {
  buffer.insert(buffer.end(), more.begin(), more.end());
}
void Add16(Buffer& buffer, uint32_t number) {
  buffer.push_back(static_cast<uint8_t>(number >> 8));
  buffer.push_back(static_cast<uint8_t>(number));
}
void Add32(Buffer& buffer, uint32_t number) {
  Add16(buffer, number >> 16);
  Add16(buffer, number);
}

/// An entry of a TIFF directory: tag, type (4 = numbers of 32 bits, 7 = bytes), count, value or position.
void AddEntry(Buffer& buffer, uint32_t tag, uint32_t type, uint32_t count, uint32_t value) {
  Add16(buffer, tag);
  Add16(buffer, type);
  Add32(buffer, count);
  Add32(buffer, value);
}

struct Rgb {
  int red, green, blue;
  bool operator==(const Rgb&) const = default;
};

Rgb Split(uint32_t pixel) {
  return {static_cast<int>(pixel >> 16 & 0xFF), static_cast<int>(pixel >> 8 & 0xFF), static_cast<int>(pixel & 0xFF)};
}

int HashOf(const Rgb& pixel) {
  return (pixel.red * 3 + pixel.green * 5 + pixel.blue * 7 + 255 * 11) % 64;
}

/// Writes one pixel after the other in the shortest way that QOI has for an opaque picture.
class QoiWriter {
 public:
  explicit QoiWriter(Buffer& buffer) : m_buffer(buffer) {}

  void Write(const Rgb& pixel) {
    if (pixel == m_last) {
      if (++m_run == 62) {
        EndRun();
      }
      return;
    }
    EndRun();
    Rgb& known = m_known[static_cast<size_t>(HashOf(pixel))];
    const int green = pixel.green - m_last.green;
    const int red = pixel.red - m_last.red;
    const int blue = pixel.blue - m_last.blue;
    if (known == pixel) {
      Put(HashOf(pixel));
    } else if (Fits(red, 2) && Fits(green, 2) && Fits(blue, 2)) {
      Put(0x40 | (red + 2) << 4 | (green + 2) << 2 | (blue + 2));
    } else if (Fits(green, 32) && Fits(red - green, 8) && Fits(blue - green, 8)) {
      Put(0x80 | (green + 32));
      Put((red - green + 8) << 4 | (blue - green + 8));
    } else {
      for (const int byte : {0xFE, pixel.red, pixel.green, pixel.blue}) {
        Put(byte);
      }
    }
    known = m_last = pixel;
  }

  void EndRun() {
    if (m_run > 0) {
      Put(0xC0 | (m_run - 1));
      m_run = 0;
    }
  }

 private:
  static bool Fits(int difference, int half) { return difference >= -half && difference < half; }
  void Put(int byte) { m_buffer.push_back(static_cast<uint8_t>(byte)); }

  Buffer& m_buffer;
  Rgb m_last{0, 0, 0};
  std::array<Rgb, 64> m_known = [] {
    std::array<Rgb, 64> none{};
    none.fill({-1, -1, -1});
    return none;
  }();
  int m_run = 0;
};

/// A number with 16 bits behind the point.
uint32_t Fixed(double number) {
  return static_cast<uint32_t>(std::lround(number * 65536));
}

Buffer XyzTag(double x, double y, double z) {
  Buffer tag;
  Add(tag, "XYZ ");
  Add32(tag, 0);
  Add32(tag, Fixed(x));
  Add32(tag, Fixed(y));
  Add32(tag, Fixed(z));
  return tag;
}

/// The power 2.2, near enough to sRGB's curve.
Buffer CurveTag() {
  Buffer tag;
  Add(tag, "curv");
  Add32(tag, 0);
  Add32(tag, 1);
  Add16(tag, 0x0233);
  Add16(tag, 0);
  return tag;
}

}  // namespace

std::vector<uint8_t> MakeMpo(const std::vector<uint8_t>& left, const std::vector<uint8_t>& right, uint32_t attributes) {
  constexpr uint32_t kTiffHead = 8, kDirectory = 2 + 3 * 12 + 4, kEntries = 2 * 16;
  constexpr uint32_t kSegment = 2 + 4 + kTiffHead + kDirectory + kEntries;  // with its length and its name
  constexpr uint32_t kTiffPosition = 2 + 2 + 2 + 4;                         // in the file
  const auto left_bytes = static_cast<uint32_t>(left.size() + 2 + kSegment);
  Buffer mpo(left.begin(), left.begin() + 2);
  Add16(mpo, 0xFFE2);
  Add16(mpo, kSegment);
  Add(mpo, std::string("MPF\0MM\0*", 8));
  Add32(mpo, kTiffHead);
  Add16(mpo, 3);
  AddEntry(mpo, 0xB000, 7, 4, 0x30313030);
  AddEntry(mpo, 0xB001, 4, 1, 2);
  AddEntry(mpo, 0xB002, 7, kEntries, kTiffHead + kDirectory);
  Add32(mpo, 0);
  for (const auto& [kind, bytes, position] :
       {std::array<uint32_t, 3>{0x20000000 | attributes, left_bytes, 0},
        {attributes, static_cast<uint32_t>(right.size()), left_bytes - kTiffPosition}}) {
    Add32(mpo, kind);
    Add32(mpo, bytes);
    Add32(mpo, position);
    Add32(mpo, 0);
  }
  mpo.insert(mpo.end(), left.begin() + 2, left.end());
  Add(mpo, right);
  return mpo;
}

std::vector<uint8_t> MakeQoi(const Picture& picture) {
  Buffer qoi;
  Add(qoi, "qoif");
  Add32(qoi, static_cast<uint32_t>(picture.width));
  Add32(qoi, static_cast<uint32_t>(picture.height));
  qoi.push_back(3);
  qoi.push_back(0);
  QoiWriter writer(qoi);
  for (const uint32_t pixel : picture.pixels) {
    writer.Write(Split(pixel));
  }
  writer.EndRun();
  Add32(qoi, 0);
  Add32(qoi, 1);
  return qoi;
}

std::vector<uint8_t> MakeSwappedProfile() {
  const Buffer red = XyzTag(0.4360, 0.2225, 0.0139);
  const Buffer green = XyzTag(0.3851, 0.7169, 0.0971);
  const std::pair<const char*, Buffer> tags[] = {{"wtpt", XyzTag(0.9642, 1, 0.8249)},
                                                 {"rXYZ", green},
                                                 {"gXYZ", red},
                                                 {"bXYZ", XyzTag(0.1431, 0.0606, 0.7141)},
                                                 {"rTRC", CurveTag()},
                                                 {"gTRC", CurveTag()},
                                                 {"bTRC", CurveTag()}};
  Buffer table;
  Buffer contents;
  constexpr uint32_t kHeader = 128;
  const auto table_bytes = static_cast<uint32_t>(4 + 12 * std::size(tags));
  Add32(table, static_cast<uint32_t>(std::size(tags)));
  for (const auto& [name, content] : tags) {
    Add(table, name);
    Add32(table, kHeader + table_bytes + static_cast<uint32_t>(contents.size()));
    Add32(table, static_cast<uint32_t>(content.size()));
    Add(contents, content);
  }
  Buffer profile;
  Add32(profile, kHeader + table_bytes + static_cast<uint32_t>(contents.size()));
  Add32(profile, 0);
  Add32(profile, 0x02100000);
  Add(profile, "mntrRGB XYZ ");
  profile.resize(36);
  Add(profile, "acsp");
  profile.resize(68);
  for (const double part : {0.9642, 1.0, 0.8249}) {
    Add32(profile, Fixed(part));
  }
  profile.resize(kHeader);
  Add(profile, table);
  Add(profile, contents);
  return profile;
}

}  // namespace sim::lumaview::test
