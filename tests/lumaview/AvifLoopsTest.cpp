// SPDX-License-Identifier: Apache-2.0
/// How often an AVIF sequence plays, read from boxes made here: no encoder at hand writes them.
#include <gtest/gtest.h>

#include <string>

#include "simulator/lumaview/decode/AvifLoops.h"

namespace sim::lumaview::test {
namespace {

constexpr uint32_t kEndless = 0xFFFFFFFF;

std::string Number(uint32_t number) {
  std::string bytes;
  for (const int shift : {24, 16, 8, 0}) {
    bytes += static_cast<char>(number >> shift & 0xFF);
  }
  return bytes;
}

std::string Box(const std::string& type, const std::string& content) {
  return Number(static_cast<uint32_t>(content.size()) + 8) + type + content;
}

std::string TrackHeader(uint32_t duration) {
  return Box("tkhd", Number(0) + std::string(16, '\0') + Number(duration) + std::string(60, '\0'));
}

std::string EditList(uint32_t flags, uint32_t duration, uint32_t edits = 1) {
  return Box("edts", Box("elst", Number(flags) + Number(edits) + Number(duration) + std::string(8, '\0')));
}

std::string Sequence(const std::string& track) {
  return Box("ftyp", "avis" + Number(0)) + Box("moov", Box("mvhd", std::string(100, '\0')) + Box("trak", track)) +
         Box("mdat", "pictures");
}

int Loops(const std::string& file) {
  return ReadAvifLoops({reinterpret_cast<const uint8_t*>(file.data()), file.size()});
}

TEST(GivenSequence, ARepeatedEditPlaysAsOftenAsItFitsTheTrack) {
  EXPECT_EQ(Loops(Sequence(TrackHeader(3000) + EditList(1, 1000))), 3);
  EXPECT_EQ(Loops(Sequence(TrackHeader(2500) + EditList(1, 1000))), 3);
  EXPECT_EQ(Loops(Sequence(TrackHeader(1000) + EditList(1, 1000))), 1);
}

TEST(GivenSequence, ATrackWithoutAnEndPlaysForEver) {
  EXPECT_EQ(Loops(Sequence(TrackHeader(kEndless) + EditList(1, 1000))), 0);
}

TEST(GivenSequence, AnEditThatIsNotRepeatedPlaysOnce) {
  EXPECT_EQ(Loops(Sequence(TrackHeader(3000) + EditList(0, 1000))), 1);
}

TEST(GivenSequence, WithoutAnEditListItPlaysForEver) {
  EXPECT_EQ(Loops(Sequence(TrackHeader(3000))), 0);
  EXPECT_EQ(Loops(Sequence(TrackHeader(3000) + EditList(1, 1000, 2))), 0);
  EXPECT_EQ(Loops(""), 0);
}

TEST(GivenSequence, LongTimesAreRead) {
  const std::string header =
      Box("tkhd", Number(1u << 24) + std::string(24, '\0') + Number(1) + Number(0) + std::string(60, '\0'));
  const std::string edits = Box(
      "edts", Box("elst", Number(1u << 24 | 1) + Number(1) + Number(0) + Number(0x80000000) + std::string(12, '\0')));

  EXPECT_EQ(Loops(Sequence(header + edits)), 2);
}

TEST(GivenSequence, NoCutAndNoZeroLengthLeadsAstray) {
  const std::string whole = Sequence(TrackHeader(3000) + EditList(1, 1000));
  for (size_t length = 0; length < whole.size(); ++length) {
    const int loops = Loops(whole.substr(0, length));
    EXPECT_TRUE(loops == 0 || loops == 3) << length;
  }
  EXPECT_EQ(Loops(Sequence(TrackHeader(3000) + EditList(1, 0))), 0);
}

}  // namespace
}  // namespace sim::lumaview::test
