// SPDX-License-Identifier: Apache-2.0
/// How pictures of the set look: one photograph in many formats and codings, and a test card in all orientations.
#include <algorithm>
#include <filesystem>

#include "tests/lumaview/PictureSet.h"
#include "tests/lumaview/TestPictures.h"

namespace sim::lumaview::test {
namespace {

/// Files of the set whose path contains `part`; the test is skipped where there are none.
std::vector<std::string> FindPictures(const std::string& part) {
  std::vector<std::string> paths;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(PicturesFolder())) {
    const std::string path = entry.path();
    if (entry.is_regular_file() && path.find(part) != std::string::npos && path.find("/broken/") == std::string::npos) {
      paths.push_back(path);
    }
  }
  std::sort(paths.begin(), paths.end());
  return paths;
}

bool Contains(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

/// The least that a coding of the photograph has to keep; 99 = every pixel.
double LeastPsnr(const std::string& path) {
  if (Contains(path, ".gif")) {
    return 32;
  }
  const bool is_lossless = Contains(path, "lossless") || Contains(path, ".png") || Contains(path, ".bmp") ||
                           Contains(path, ".tif") || Contains(path, ".ppm") || Contains(path, ".qoi") ||
                           Contains(path, ".tga");
  return is_lossless ? 99 : Contains(path, "/odd/jpeg/") ? 32 : 36;
}

/// The photograph in the size of `path`, as ImageMagick reads its PNG; skips what is not in the set.
void ExpectTheSamePhotograph(const std::string& path) {
  const Size size = Contains(path, "768x512") ? Size{768, 512} : Size{384, 256};
  const std::string name = "own-photo-" + std::to_string(size.width) + "x" + std::to_string(size.height) + ".png";
  const Outcome shown = Show(path, size);

  ASSERT_FALSE(shown.error) << path << ": " << shown.error->reason;
  const double psnr = Psnr(shown.window, Oracle(PicturesFolder() + "/valid/png/" + name, {}));
  EXPECT_GE(psnr, LeastPsnr(path)) << path;
  std::printf("%-60s %5.1f dB\n", std::filesystem::path(path).filename().c_str(), psnr);
}

TEST(GivenOnePhotograph, EveryFormatShowsIt) {
  const std::vector<std::string> paths = FindPictures("/own-photo-");
  if (paths.empty()) {
    GTEST_SKIP() << "no photographs in " << PicturesFolder();
  }
  for (const std::string& path : paths) {
    ExpectTheSamePhotograph(path);
  }
}

TEST(GivenOnePhotograph, EveryCodingOfJpegShowsIt) {
  int compared = 0;
  for (const std::string& path : FindPictures("/odd/jpeg/own-")) {
    const bool is_meant = Contains(path, "384x256") && !Contains(path, "own-q1-") && !Contains(path, "own-gray");
    if (is_meant) {
      ExpectTheSamePhotograph(path);
      ++compared;
    }
  }
  if (compared == 0) {
    GTEST_SKIP() << "no rare codings in " << PicturesFolder();
  }
}

/// Lossy formats leave the corners' colours nearly pure.
bool IsNear(uint32_t pixel, uint32_t colour) {
  for (const int shift : {0, 8, 16}) {
    if (std::abs(static_cast<int>(pixel >> shift & 0xFF) - static_cast<int>(colour >> shift & 0xFF)) > 60) {
      return false;
    }
  }
  return true;
}

TEST(GivenTestCards, EveryOrientationIsUpright) {
  const std::vector<std::string> paths = FindPictures("/own-orient-");
  if (paths.empty()) {
    GTEST_SKIP() << "no test cards in " << PicturesFolder();
  }
  for (const std::string& path : paths) {
    const Outcome shown = Show(path, {120, 80});
    ASSERT_FALSE(shown.error) << path << ": " << shown.error->reason;
    EXPECT_EQ(UprightSize(shown.info), (Size{120, 80})) << path;
    EXPECT_TRUE(IsNear(shown.window.At(4, 4), 0xFF0000)) << path;
    EXPECT_TRUE(IsNear(shown.window.At(115, 4), 0x00FF00)) << path;
    EXPECT_TRUE(IsNear(shown.window.At(4, 75), 0x0000FF)) << path;
    EXPECT_TRUE(IsNear(shown.window.At(115, 75), 0xFFFFFF)) << path;
  }
  std::printf("%zu test cards\n", paths.size());
}

/// Large ones have a second thread that reads their coefficients; here all have one.
TEST(GivenJpegsOfTheSet, ASecondThreadChangesNothing) {
  constexpr Size kWindow{640, 360};
  constexpr Limits kOneThread{.jpeg_thread_bytes = UINT64_MAX};
  constexpr Limits kTwoThreads{.jpeg_thread_bytes = 0, .jpeg_thread_pixels = UINT64_MAX};
  int shown = 0;
  int refused = 0;
  for (const ListedPicture& picture : ReadManifest(PicturesFolder(), "jpeg")) {
    if (picture.expect == "bomb") {
      continue;
    }
    const std::string path = PicturesFolder() + "/" + picture.path;
    const Outcome one = Show(path, kWindow, {}, kOneThread);
    const Outcome two = Show(path, kWindow, {}, kTwoThreads);
    ASSERT_EQ(one.error.has_value(), two.error.has_value()) << path;
    EXPECT_TRUE(one.window.pixels == two.window.pixels) << path;
    EXPECT_EQ(one.error ? one.error->reason : "", two.error ? two.error->reason : "") << path;
    ++(one.error ? refused : shown);
  }
  EXPECT_GT(shown, 0);
  std::printf("%d shown, %d refused\n", shown, refused);
}

}  // namespace
}  // namespace sim::lumaview::test
