// SPDX-License-Identifier: Apache-2.0
/// What stands in a file besides its picture is used where it is short, and costs no memory where it is long.
#include <cstdio>

#include "tests/lumaview/PictureSet.h"
#include "tests/lumaview/TestPictures.h"

namespace sim::lumaview::test {
namespace {

constexpr size_t kPngHeader = 33;  // signature and IHDR
constexpr long kCrc = 4;           // it is wrong, which costs only the chunk
constexpr uint32_t kMegabyte = 1 << 20;
constexpr long kMostKibibytes = 128 << 10;

/// A PNG whose EXIF chunks are `lengths` long, zeros but for the byte order, and take no room on the disk.
void WritePngWithExif(const std::string& path, const std::vector<uint8_t>& png, const std::vector<uint32_t>& lengths) {
  std::FILE* file = std::fopen(path.c_str(), "wb");
  ASSERT_NE(file, nullptr);
  std::fwrite(png.data(), 1, kPngHeader, file);
  for (const uint32_t length : lengths) {
    const uint8_t head[] = {static_cast<uint8_t>(length >> 24), static_cast<uint8_t>(length >> 16),
                            static_cast<uint8_t>(length >> 8),  static_cast<uint8_t>(length), 'e', 'X', 'I', 'f', 'M', 'M'};
    std::fwrite(head, 1, sizeof head, file);
    std::fseek(file, static_cast<long>(length) - 2 + kCrc, SEEK_CUR);
  }
  std::fwrite(&png[kPngHeader], 1, png.size() - kPngHeader, file);
  std::fclose(file);
}

/// An EXIF chunk that says orientation 6, which stands a picture on its side.
constexpr uint8_t kTurned[] = {
    0x00, 0x00, 0x00, 0x1A, 0x65, 0x58, 0x49, 0x66, 0x4D, 0x4D, 0x00, 0x2A, 0x00, 0x00, 0x00, 0x08,
    0x00, 0x01, 0x01, 0x12, 0x00, 0x03, 0x00, 0x00, 0x00, 0x01, 0x00, 0x06, 0x00, 0x00, 0x00, 0x00,
    0x00, 0x00, 0xD6, 0x67, 0x4B, 0x69};

TEST(GivenPngWithShortExif, ItIsTurnedAsThatSays) {
  const TempFolder folder;
  Convert({"-size", "64x48", "xc:#C86432", folder / "turned.png"});
  std::vector<uint8_t> png = ReadFile(folder / "turned.png");
  png.insert(png.begin() + kPngHeader, std::begin(kTurned), std::end(kTurned));
  WriteFile(folder / "turned.png", png);

  const ShownPicture shown = ShowInProcess(folder / "turned.png", 64, 48);

  ASSERT_EQ(shown.kind, ShownPicture::Kind::kShown) << shown.output;
  EXPECT_EQ(shown.width, 48);
  EXPECT_EQ(shown.height, 64);
}

class GivenPngWithExif : public testing::TestWithParam<std::vector<uint32_t>> {};

TEST_P(GivenPngWithExif, ItIsShownWithoutKeepingTheExif) {
  const TempFolder folder;
  Convert({"-size", "64x48", "xc:#C86432", folder / "plain.png"});
  WritePngWithExif(folder / "long.png", ReadFile(folder / "plain.png"), GetParam());

  const ShownPicture shown = ShowInProcess(folder / "long.png", 64, 48);

  EXPECT_EQ(shown.kind, ShownPicture::Kind::kShown) << shown.output;
  EXPECT_LT(shown.kibibytes, kMostKibibytes);
}

INSTANTIATE_TEST_SUITE_P(Lengths, GivenPngWithExif,
                         testing::Values(std::vector<uint32_t>{256 * kMegabyte}, std::vector<uint32_t>(40, 7 * kMegabyte)),
                         [](const auto& test) { return test.param.size() == 1 ? "InOneChunk" : "InManyChunks"; });

}  // namespace
}  // namespace sim::lumaview::test
