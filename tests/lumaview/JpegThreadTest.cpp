// SPDX-License-Identifier: Apache-2.0
/// JPEGs whose coefficients a second thread reads: the same pixels as one thread makes, and the same end of damaged
/// files.
#include "tests/lumaview/TestPictures.h"
// Behind gtest, which one of its macros breaks.
#include <algorithm>
#include <cstdlib>

#include "simulator/lumaview/decode/JpegSession.h"

namespace sim::lumaview::test {
namespace {

using Bytes = std::vector<uint8_t>;
using Threads = JpegSession::Threads;

constexpr uint8_t kScanMarker = 0xDA;
/// Every file is worth a thread.
constexpr Limits kThreaded{.jpeg_thread_bytes = 0, .jpeg_thread_pixels = UINT64_MAX};
/// No file is.
constexpr Limits kPlain{.jpeg_thread_bytes = UINT64_MAX};

struct Kind {
  const char* name;
  J_COLOR_SPACE space = JCS_YCbCr;
  int h = 2;  ///< sampling factors of the first component
  int v = 2;
  int quality = 90;
  unsigned int restart_interval = 0;
  bool optimised = false;
};

void PrintTo(const Kind& kind, std::ostream* stream) {
  *stream << kind.name;
}

/// A picture with something of everything: smooth, noisy and flat parts.
Bytes Encode(const Kind& kind, int width, int height) {
  jpeg_compress_struct compress{};
  jpeg_error_mgr errors{};
  compress.err = jpeg_std_error(&errors);
  jpeg_create_compress(&compress);
  unsigned char* memory = nullptr;
  unsigned long size = 0;
  jpeg_mem_dest(&compress, &memory, &size);
  compress.image_width = static_cast<JDIMENSION>(width);
  compress.image_height = static_cast<JDIMENSION>(height);
  compress.in_color_space = kind.space;
  compress.input_components = kind.space == JCS_GRAYSCALE ? 1 : kind.space == JCS_CMYK ? 4 : 3;
  jpeg_set_defaults(&compress);
  jpeg_set_colorspace(&compress, kind.space);
  jpeg_set_quality(&compress, kind.quality, TRUE);
  compress.comp_info[0].h_samp_factor = kind.h;
  compress.comp_info[0].v_samp_factor = kind.v;
  compress.restart_interval = kind.restart_interval;
  compress.optimize_coding = kind.optimised ? TRUE : FALSE;
  jpeg_start_compress(&compress, TRUE);
  std::vector<uint8_t> row(static_cast<size_t>(width * compress.input_components));
  uint32_t noise = 1;
  for (int y = 0; y < height; ++y) {
    for (size_t i = 0; i < row.size(); ++i) {
      noise = noise * 1664525 + 1013904223;
      const bool is_noisy = (i / 64 + static_cast<size_t>(y) / 64) % 3 == 0;
      row[i] = static_cast<uint8_t>(is_noisy ? noise >> 24 : i / 9 + static_cast<size_t>(y) / 3);
    }
    JSAMPROW rows[] = {row.data()};
    jpeg_write_scanlines(&compress, rows, 1);
  }
  jpeg_finish_compress(&compress);
  jpeg_destroy_compress(&compress);
  Bytes bytes(memory, memory + size);
  std::free(memory);
  return bytes;
}

size_t BeginOfScan(const Bytes& jpeg) {
  for (size_t at = 2; at + 3 < jpeg.size(); at += 2u + (static_cast<size_t>(jpeg[at + 2]) << 8 | jpeg[at + 3])) {
    if (jpeg[at + 1] == kScanMarker) {
      return at + 2 + (static_cast<size_t>(jpeg[at + 2]) << 8 | jpeg[at + 3]);
    }
  }
  return jpeg.size();
}

struct Decoded {
  unsigned int threads = 0;
  bool is_stuck = false;
  Bytes rows;
};

Decoded Decode(const Bytes& jpeg, Size ideal, Threads threads) {
  const std::atomic<bool> cancelled{false};
  Source source(jpeg, kThreaded, cancelled);
  JpegSession session(source, 0);
  EXPECT_TRUE(session.ReadHeader());
  EXPECT_TRUE(session.Start(ideal, threads));
  Decoded decoded{.threads = session.GetThreads(), .is_stuck = false, .rows = {}};
  const Size size = session.GetOutputSize();
  std::vector<uint8_t> row(static_cast<size_t>(size.width * BytesPerPixel(session.GetLayout())));
  for (int y = 0; y < size.height; ++y) {
    JSAMPROW rows[] = {row.data()};
    if (!session.ReadRows(rows)) {
      break;
    }
    decoded.rows.insert(decoded.rows.end(), row.begin(), row.end());
  }
  decoded.is_stuck = session.IsStuck();
  return decoded;
}

class GivenKindOfJpeg : public testing::TestWithParam<Kind> {};

TEST_P(GivenKindOfJpeg, TwoThreadsMakeTheSamePixelsAtEveryScale) {
  constexpr Size kSize{333, 251};
  const Bytes jpeg = Encode(GetParam(), kSize.width, kSize.height);
  for (const int part : {1, 2, 4, 8}) {
    const Size ideal{kSize.width / part, kSize.height / part};
    const Decoded one = Decode(jpeg, ideal, Threads::kOne);
    const Decoded two = Decode(jpeg, ideal, Threads::kTwo);

    EXPECT_EQ(one.threads, 1u);
    EXPECT_EQ(two.threads, 2u);
    EXPECT_FALSE(two.is_stuck) << "1/" << part;
    EXPECT_FALSE(one.rows.empty());
    EXPECT_TRUE(one.rows == two.rows) << "1/" << part;
  }
}

TEST_P(GivenKindOfJpeg, ADamagedOneIsShownOrRefusedAsByOneThread) {
  constexpr Size kWindow{120, 90};
  const TempFolder folder;
  const std::string path = folder / "damaged.jpg";
  const Bytes whole = Encode(GetParam(), 300, 200);
  const size_t begin = BeginOfScan(whole);
  ASSERT_LT(begin, whole.size());
  for (size_t damage = 0; damage < 60; ++damage) {
    Bytes jpeg = whole;
    const size_t at = begin + (whole.size() - begin) * damage / 60;
    if (damage % 3 == 0) {
      jpeg.resize(at);
    } else {
      jpeg[at] = damage % 3 == 1 ? static_cast<uint8_t>(~jpeg[at]) : 0xFF;
    }
    WriteFile(path, jpeg);
    const Outcome one = Show(path, kWindow, {}, kPlain);
    const Outcome two = Show(path, kWindow, {}, kThreaded);

    ASSERT_EQ(one.error.has_value(), two.error.has_value()) << damage;
    if (one.error) {
      EXPECT_EQ(one.error->reason, two.error->reason) << damage;
    } else {
      EXPECT_TRUE(one.window.pixels == two.window.pixels) << damage;
    }
  }
}

constexpr Kind kKinds[] = {
    {.name = "photograph"},
    {.name = "full_colour", .h = 1, .v = 1, .quality = 100},
    {.name = "half_colour", .h = 2, .v = 1},
    {.name = "quarter_colour", .h = 4, .v = 1},
    {.name = "tall_colour", .h = 1, .v = 2},
    {.name = "coarse", .quality = 5},
    {.name = "own_tables", .quality = 97, .optimised = true},
    {.name = "grey", .space = JCS_GRAYSCALE, .h = 1, .v = 1},
    {.name = "ink", .space = JCS_CMYK, .h = 1, .v = 1},
    {.name = "restarts", .restart_interval = 7},
    {.name = "restart_each", .restart_interval = 1},
    {.name = "restart_row", .h = 1, .v = 1, .restart_interval = 42},
};
INSTANTIATE_TEST_SUITE_P(Jpeg, GivenKindOfJpeg, testing::ValuesIn(kKinds),
                         [](const auto& tested) { return std::string(tested.param.name); });

/// What only one thread can do, and what the second one must notice.
TEST(GivenOddJpeg, AGreyOneWithSamplingFactorsIsReadByOneThread) {
  const Bytes jpeg = Encode({.name = "grey", .space = JCS_GRAYSCALE, .h = 2, .v = 2}, 100, 80);

  EXPECT_EQ(Decode(jpeg, {100, 80}, Threads::kTwo).threads, 1u);
}

TEST(GivenOddJpeg, ACutOneStopsTheSecondThreadBehindTheRightRows) {
  Bytes jpeg = Encode({.name = "photograph"}, 333, 251);
  const Decoded whole = Decode(jpeg, {333, 251}, Threads::kOne);
  jpeg.resize(jpeg.size() / 2);
  const Decoded cut = Decode(jpeg, {333, 251}, Threads::kTwo);

  EXPECT_TRUE(cut.is_stuck);
  ASSERT_LT(cut.rows.size(), whole.rows.size());
  EXPECT_GT(cut.rows.size(), whole.rows.size() / 4);
  EXPECT_TRUE(std::equal(cut.rows.begin(), cut.rows.end(), whole.rows.begin()));
}

TEST(GivenOddJpeg, ARestartAtTheWrongPlaceStopsTheSecondThread) {
  Bytes jpeg = Encode({.name = "restarts", .restart_interval = 5}, 333, 251);
  constexpr uint8_t kSecond[] = {0xFF, JPEG_RST0 + 1};
  const auto second = std::search(jpeg.begin() + static_cast<ptrdiff_t>(BeginOfScan(jpeg)), jpeg.end(),
                                  std::begin(kSecond), std::end(kSecond));
  ASSERT_NE(second, jpeg.end());
  *(second + 1) = JPEG_RST0 + 3;

  EXPECT_TRUE(Decode(jpeg, {333, 251}, Threads::kTwo).is_stuck);
}

/// Nothing waits for anything when a decode is given up with rows read ahead.
TEST(GivenOddJpeg, OneThatNobodyReadsToTheEndIsLetGo) {
  const Bytes jpeg = Encode({.name = "photograph"}, 1200, 900);
  const std::atomic<bool> cancelled{false};
  Source source(jpeg, kThreaded, cancelled);
  for (const int rows : {0, 1, 40}) {
    JpegSession session(source, 0);
    ASSERT_TRUE(session.ReadHeader());
    ASSERT_TRUE(session.Start({1200, 900}, Threads::kTwo));
    ASSERT_EQ(session.GetThreads(), 2u);
    std::vector<uint8_t> row(1200 * 4);
    for (int y = 0; y < rows; ++y) {
      JSAMPROW list[] = {row.data()};
      ASSERT_TRUE(session.ReadRows(list));
    }
  }
}

}  // namespace
}  // namespace sim::lumaview::test
