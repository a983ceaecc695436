// SPDX-License-Identifier: Apache-2.0
/// Scaled pictures against ImageMagick's, in all eight orientations.
#include "tests/lumaview/TestPictures.h"

namespace sim::lumaview::test {
namespace {

constexpr double kGoodEnough = 32.0;
constexpr uint32_t kBlack = 0xFF000000;

struct Case {
  const char* name;
  Size picture;
  Size window;
};

class GivenPhotograph : public ::testing::TestWithParam<std::tuple<Case, int>> {
 protected:
  void SetUp() override {
    const Size size = GetCase().picture;
    Convert({"-size", std::to_string(size.width) + "x" + std::to_string(size.height), "-seed", "7", "plasma:red-blue",
             "-fill", "white", "-draw", "circle 100,100 140,180 rectangle 10,10 60,20", "-quality", "95", Path()});
    WriteFile(Path(), WithOrientation(ReadFile(Path()), GetOrientation()));
  }

  static const Case& GetCase() { return std::get<0>(GetParam()); }
  static int GetOrientation() { return std::get<1>(GetParam()); }
  std::string Path() const { return m_folder / "photograph.jpg"; }

  TempFolder m_folder;
};

TEST_P(GivenPhotograph, FitEqualsTheOracleAndTheRestIsBlack) {
  const Outcome shown = Show(Path(), GetCase().window);

  ASSERT_FALSE(shown.error) << shown.error->reason;
  const Rect placed = PlaceInWindow(UprightSize(shown.info), View{}, GetCase().window);
  const std::string size = std::to_string(placed.width) + "x" + std::to_string(placed.height) + "!";
  const double psnr = Psnr(shown.window.Crop(placed), Oracle(Path(), {"-auto-orient", "-resize", size}));
  EXPECT_GE(psnr, kGoodEnough);
  RecordProperty("psnr", std::to_string(psnr));
  for (int y = 0; y < shown.window.height; ++y) {
    for (int x = 0; x < shown.window.width; ++x) {
      const bool covered =
          x >= placed.x && x < placed.x + placed.width && y >= placed.y && y < placed.y + placed.height;
      ASSERT_TRUE(covered || shown.window.At(x, y) == kBlack) << x << "," << y;
      ASSERT_EQ(shown.window.At(x, y) >> 24, 0xFFu);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Render, GivenPhotograph,
                         ::testing::Combine(::testing::Values(Case{"Shrunk", {600, 400}, {221, 180}},
                                                              Case{"ShrunkWhileDecoded", {1500, 1000}, {320, 301}},
                                                              Case{"Enlarged", {200, 301}, {500, 480}}),
                                            ::testing::Range(1, 9)),
                         [](const auto& test) {
                           return std::string(std::get<0>(test.param).name) + std::to_string(std::get<1>(test.param));
                         });

}  // namespace
}  // namespace sim::lumaview::test
