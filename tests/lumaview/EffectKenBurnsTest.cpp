// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include "simulator/lumaview/effect/KenBurns.h"
#include "tests/lumaview/EffectPictures.h"

namespace sim::lumaview {
namespace {

constexpr Size kPicture{400, 300};
constexpr Size kTarget{160, 120};
constexpr uint32_t kUntouched = 0x12345678;

TEST(GivenKenBurnsAreas, EndsAreTheGivenAreas) {
  const Area from{0, 0, 400, 300};
  const Area to{200, 100, 100, 75};
  const Area first = KenBurnsArea(from, to, 0.0F);
  const Area last = KenBurnsArea(from, to, 1.0F);
  EXPECT_DOUBLE_EQ(first.x, 0);
  EXPECT_DOUBLE_EQ(first.width, 400);
  EXPECT_DOUBLE_EQ(last.x, 200);
  EXPECT_DOUBLE_EQ(last.y, 100);
  EXPECT_DOUBLE_EQ(last.height, 75);
}

TEST(GivenKenBurnsAreas, ZoomMultipliesTheSizeByEqualFactorsAroundOnePoint) {
  const Area from{0, 0, 400, 300};
  const Area to{200, 100, 100, 75};
  const Area half = KenBurnsArea(from, to, 0.5F);
  EXPECT_NEAR(half.width, 200, 1e-9);
  const double fixed_point = 200.0 / 300.0;  // of the width, the same place in both
  EXPECT_NEAR(half.x + fixed_point * half.width, 0 + fixed_point * 400, 1e-9);
}

TEST(GivenKenBurnsAreas, PanMovesEvenly) {
  const Area half = KenBurnsArea({0, 10, 160, 120}, {100, 20, 160, 120}, 0.25F);
  EXPECT_DOUBLE_EQ(half.x, 25);
  EXPECT_DOUBLE_EQ(half.y, 12.5);
  EXPECT_DOUBLE_EQ(half.width, 160);
}

class GivenAPicture : public testing::Test {
 protected:
  TestPicture Draw(const Area& area, const Kernels& kernels = BestKernels()) const {
    TestPicture target(kTarget, kUntouched, 1);
    DrawKenBurnsWith(kernels, m_picture.View(), area, area, 0.5F, target.View(), 0, kTarget.height);
    return target;
  }

  const TestPicture m_picture = TestPicture::Noise(kPicture, 9);
};

TEST_F(GivenAPicture, WholePixelsAreThePicturesOwn) {
  const TestPicture shown = Draw({30, 20, 160, 120});
  for (int y = 0; y < kTarget.height; ++y) {
    for (int x = 0; x < kTarget.width; ++x) {
      ASSERT_EQ(shown.At(x, y), m_picture.At(30 + x, 20 + y)) << x << ", " << y;
    }
  }
}

TEST_F(GivenAPicture, HalfAPixelIsTheAverageOfNeighbours) {
  const TestPicture shown = Draw({30.5, 20, 160, 120});
  for (int x = 0; x < kTarget.width; ++x) {
    const int left = Channel(m_picture.At(30 + x, 20), 8);
    const int right = Channel(m_picture.At(31 + x, 20), 8);
    ASSERT_NEAR(Channel(shown.At(x, 0), 8), (left + right) / 2.0, 1.0) << x;
  }
}

TEST_F(GivenAPicture, BandsAndOrdinaryLoopsGiveTheSamePicture) {
  for (const Area& area : {Area{3.3, 4.7, 301.9, 226.4}, Area{0, 0, 400, 300}, Area{111.1, 90.2, 31.7, 23.8}}) {
    const TestPicture whole = Draw(area);
    TestPicture banded(kTarget, kUntouched, 1);
    for (int y = 0; y < kTarget.height; y += 11) {
      DrawKenBurns(m_picture.View(), area, area, 0.5F, banded.View(), y, std::min(y + 11, kTarget.height));
    }
    EXPECT_EQ(banded, whole);
    EXPECT_EQ(Draw(area, PlainKernels()), whole);
  }
}

TEST_F(GivenAPicture, AreaBeyondTheBorderRepeatsIt) {
  const TestPicture shown = Draw({-5, -5, 160, 120});
  EXPECT_EQ(shown.At(0, 0), m_picture.At(0, 0));
  EXPECT_EQ(shown.At(5, 5), m_picture.At(0, 0));
  EXPECT_EQ(shown.At(6, 7), m_picture.At(1, 2));
}

/// A ramp moves by the same small amount in every frame, which whole-pixel steps would not.
TEST(GivenARamp, SlowPanMovesByPartsOfAPixel) {
  TestPicture ramp(kPicture, 0);
  for (int y = 0; y < kPicture.height; ++y) {
    for (int x = 0; x < kPicture.width; ++x) {
      ramp.View().Row(y)[x] = 0xFF000000U | static_cast<uint32_t>((x * 16) % 256);
    }
  }
  int before = -1;
  for (int step = 0; step <= 16; ++step) {
    TestPicture target(kTarget, kUntouched);
    const Area area{32 + step / 16.0, 0, 160, 120};
    DrawKenBurns(AsConst(ramp.View()), area, area, 0.0F, target.View(), 0, kTarget.height);
    EXPECT_EQ(Channel(target.At(3, 50), 0), before + 1 + (step == 0 ? 48 : 0)) << "step " << step;
    before = Channel(target.At(3, 50), 0);
  }
}

TEST(GivenHugeReduction, AllRowsAreDrawn) {
  const TestPicture wide = TestPicture::Noise({16384, 8}, 4);
  TestPicture target({3, 2}, kUntouched);
  const Area all{0, 0, 16384, 8};
  DrawKenBurns(wide.View(), all, all, 0.0F, target.View(), 0, 2);
  for (int x = 0; x < 3; ++x) {
    EXPECT_EQ(target.At(x, 0) >> 24, 0xFFU);
    EXPECT_EQ(target.At(x, 1) >> 24, 0xFFU);
  }
}

}  // namespace
}  // namespace sim::lumaview
