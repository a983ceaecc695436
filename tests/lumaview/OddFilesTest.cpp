// SPDX-License-Identifier: Apache-2.0
/// Stereo pairs, colour profiles, and formats that ImageMagick does not write.
#include "tests/lumaview/OddFiles.h"

namespace sim::lumaview::test {
namespace {

constexpr Size kWindow{64, 48};

/// Lossy formats and colour conversions round.
void ExpectNear(uint32_t pixel, uint32_t colour, int difference, const std::string& what) {
  for (const int shift : {0, 8, 16}) {
    EXPECT_NEAR(static_cast<int>(pixel >> shift & 0xFF), static_cast<int>(colour >> shift & 0xFF), difference) << what;
  }
}

class GivenTwoViews : public testing::Test {
 protected:
  GivenTwoViews() {
    Convert({"-size", "64x48", "xc:#C86432", "-quality", "95", m_folder / "left.jpg"});
    Convert({"-size", "64x48", "xc:#1496DC", "-quality", "95", m_folder / "right.jpg"});
    m_left = ReadFile(m_folder / "left.jpg");
    m_right = ReadFile(m_folder / "right.jpg");
  }

  Outcome ShowMpo(const std::vector<uint8_t>& mpo, StereoMode mode) const {
    WriteFile(m_folder / "views.mpo", mpo);
    return Show(m_folder / "views.mpo", kWindow, View{.stereo = mode});
  }
  void ExpectColour(const Outcome& shown, uint32_t colour, const char* what) const {
    ASSERT_FALSE(shown.error) << what << ": " << shown.error->reason;
    for (const auto& [x, y] : {std::pair{1, 1}, {62, 1}, {1, 46}, {62, 46}, {32, 24}}) {
      ExpectNear(shown.window.At(x, y), colour, 4, what);
    }
  }

  TempFolder m_folder;
  std::vector<uint8_t> m_left;
  std::vector<uint8_t> m_right;
};

constexpr uint32_t kStereoPair = 0x020002;
constexpr uint32_t kPanorama = 0x020001;

TEST_F(GivenTwoViews, AStereoPairIsShownByItsLeftViewOrAsAnAnaglyph) {
  const std::vector<uint8_t> mpo = MakeMpo(m_left, m_right, kStereoPair);
  const Outcome plain = ShowMpo(mpo, StereoMode::kOff);

  EXPECT_EQ(plain.info.type, LUMAVIEW_TYPE_MPO);
  EXPECT_TRUE(plain.info.stereo);
  ExpectColour(plain, 0xC86432, "off");
  ExpectColour(ShowMpo(mpo, StereoMode::kSideBySide), 0xC86432, "side by side");
  ExpectColour(ShowMpo(mpo, StereoMode::kTopAndBottom), 0xC86432, "top and bottom");
  ExpectColour(ShowMpo(mpo, StereoMode::kAnaglyph), 0xC896DC, "anaglyph");
}

TEST_F(GivenTwoViews, APanoramaIsNoStereoPair) {
  const std::vector<uint8_t> mpo = MakeMpo(m_left, m_right, kPanorama);
  const Outcome shown = ShowMpo(mpo, StereoMode::kAnaglyph);

  EXPECT_EQ(shown.info.type, LUMAVIEW_TYPE_MPO);
  EXPECT_FALSE(shown.info.stereo);
  ExpectColour(shown, 0xC86432, "anaglyph");
}

TEST_F(GivenTwoViews, WithoutTheRightViewOnlyTheAnaglyphIsRefused) {
  std::vector<uint8_t> mpo = MakeMpo(m_left, m_right, kStereoPair);
  mpo.resize(mpo.size() - m_right.size());

  ExpectColour(ShowMpo(mpo, StereoMode::kOff), 0xC86432, "off");
  EXPECT_TRUE(ShowMpo(mpo, StereoMode::kAnaglyph).error);
}

TEST_F(GivenTwoViews, ACutIndexNeverCostsTheLeftView) {
  const std::vector<uint8_t> whole = MakeMpo(m_left, m_right, kStereoPair);
  constexpr size_t kIndex = 10, kIndexEnd = 92;
  for (size_t at = kIndex; at < kIndexEnd; ++at) {
    std::vector<uint8_t> mpo = whole;
    mpo[at] ^= 0xFF;
    ExpectColour(ShowMpo(mpo, StereoMode::kOff), 0xC86432, "off");
    ShowMpo(mpo, StereoMode::kAnaglyph);  // may be refused, and comes back
  }
}

class GivenProfileWithRedAndGreenExchanged : public testing::TestWithParam<const char*> {};

TEST_P(GivenProfileWithRedAndGreenExchanged, RedIsShownGreen) {
  const TempFolder folder;
  const std::string path = folder / (std::string("red.") + GetParam());
  WriteFile(folder / "swapped.icc", MakeSwappedProfile());
  Convert({"-size", "64x48", "xc:#E02040", "-type", "TrueColor", "-quality", "100", "-profile", folder / "swapped.icc",
           path});

  const Outcome shown = Show(path, kWindow);

  ASSERT_FALSE(shown.error) << shown.error->reason;
  ExpectNear(shown.window.At(32, 24), 0x20E040, 12, GetParam());
}

INSTANTIATE_TEST_SUITE_P(Colours, GivenProfileWithRedAndGreenExchanged, testing::Values("jpg", "png", "tif", "webp"),
                         [](const auto& test) { return std::string(test.param); });

class GivenPhotographAsQoi : public testing::Test {
 protected:
  GivenPhotographAsQoi() {
    // Even areas, soft slopes and hard edges, so that every way to write a pixel is used.
    Convert({"-size",
             "96x64",
             "gradient:navy-gold",
             "-fill",
             "white",
             "-draw",
             "rectangle 10,10 60,20",
             "-seed",
             "5",
             "(",
             "-size",
             "48x64",
             "plasma:tan-steelblue",
             ")",
             "-gravity",
             "East",
             "-composite",
             "-depth",
             "8",
             m_folder / "photograph.png"});
    m_picture = Oracle(m_folder / "photograph.png", {});
    m_qoi = MakeQoi(m_picture);
  }
  Outcome ShowQoi() const {
    WriteFile(m_folder / "photograph.qoi", m_qoi);
    return Show(m_folder / "photograph.qoi", {96, 64});
  }

  TempFolder m_folder;
  Picture m_picture;
  std::vector<uint8_t> m_qoi;
};

TEST_F(GivenPhotographAsQoi, EveryPixelIsShown) {
  const Outcome shown = ShowQoi();

  ASSERT_FALSE(shown.error) << shown.error->reason;
  EXPECT_EQ(Psnr(shown.window, m_picture), 99);
}

TEST_F(GivenPhotographAsQoi, ACutOneIsRefused) {
  m_qoi.resize(m_qoi.size() / 2);

  const Outcome shown = ShowQoi();

  ASSERT_TRUE(shown.error);
  EXPECT_EQ(shown.error->code, kDamaged);
}

}  // namespace
}  // namespace sim::lumaview::test
