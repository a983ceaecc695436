// SPDX-License-Identifier: Apache-2.0
/// What holds for every effect, tested over the whole table and over sizes that are hard on rows and vectors.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>

#include "simulator/lumaview/effect/Effect.h"
#include "tests/lumaview/EffectPictures.h"

namespace sim::lumaview {
namespace {

constexpr Size kSizes[] = {{1, 1}, {1, 37}, {37, 1}, {2, 2}, {5, 3}, {16, 9}, {33, 65}, {127, 71}, {640, 361}};
constexpr float kProgresses[] = {0.001F, 0.02F, 0.1F, 0.25F, 0.333F, 0.5F, 0.66F, 0.75F, 0.9F, 0.98F, 0.999F};
constexpr uint32_t kUntouched = 0x12345678;

/// The two pictures, and one effect between them.
class Transition {
 public:
  Transition(int effect, Size size)
      : m_effect(effect), m_size(size), m_from(TestPicture::Noise(size, 1, 1)), m_to(TestPicture::Noise(size, 2, 2)) {}

  Size GetSize() const { return m_size; }
  const TestPicture& GetFrom() const { return m_from; }
  const TestPicture& GetTo() const { return m_to; }
  TestPicture Untouched() const { return TestPicture(m_size, kUntouched, 3); }

  void Draw(float progress, TestPicture& target, int first_row, int last_row) const {
    DrawEffect(m_effect, m_from.View(), m_to.View(), progress, target.View(), first_row, last_row);
  }
  TestPicture Whole(float progress) const {
    TestPicture target = Untouched();
    Draw(progress, target, 0, m_size.height);
    return target;
  }

 private:
  int m_effect;
  Size m_size;
  TestPicture m_from;
  TestPicture m_to;
};

class GivenTwoPictures : public testing::TestWithParam<int> {
 protected:
  /// Calls `check(transition)` for every size.
  template <typename Check>
  void ForEachSize(const Check& check) const {
    for (const Size size : kSizes) {
      SCOPED_TRACE(testing::Message() << size.width << " x " << size.height);
      check(Transition(GetParam(), size));
    }
  }
  /// Calls `check(transition, progress)` for every size and progress.
  template <typename Check>
  void ForEachFrame(const Check& check) const {
    ForEachSize([&](const Transition& transition) {
      for (const float progress : kProgresses) {
        SCOPED_TRACE(testing::Message() << "progress " << progress);
        check(transition, progress);
      }
    });
  }
};

TEST_P(GivenTwoPictures, ProgressZeroIsTheOldAndOneIsTheNew) {
  ForEachSize([](const Transition& transition) {
    EXPECT_TRUE(transition.Whole(0.0F).Shows(transition.GetFrom()));
    EXPECT_TRUE(transition.Whole(-0.5F).Shows(transition.GetFrom()));
    EXPECT_TRUE(transition.Whole(1.0F).Shows(transition.GetTo()));
    EXPECT_TRUE(transition.Whole(7.0F).Shows(transition.GetTo()));
  });
}

TEST_P(GivenTwoPictures, AnySplitIntoBandsGivesTheSamePicture) {
  ForEachFrame([](const Transition& transition, float progress) {
    const TestPicture whole = transition.Whole(progress);
    for (const int rows : {1, 2, 7, 64}) {
      TestPicture banded = transition.Untouched();
      for (int y = transition.GetSize().height - 1; y >= 0; y -= rows) {
        transition.Draw(progress, banded, std::max(0, y - rows + 1), y + 1);
      }
      ASSERT_EQ(banded, whole) << "bands of " << rows << " rows";
    }
  });
}

TEST_P(GivenTwoPictures, BandWritesItsRowsAndNothingElse) {
  ForEachFrame([](const Transition& transition, float progress) {
    const Size size = transition.GetSize();
    const int first = size.height / 3;
    const int last = size.height - size.height / 4;
    const TestPicture whole = transition.Whole(progress);
    TestPicture band = transition.Untouched();
    TestPicture expected = transition.Untouched();
    for (int y = first; y < last; ++y) {
      std::copy_n(whole.View().Row(y), size.width, expected.View().Row(y));
    }
    transition.Draw(progress, band, first, last);
    ASSERT_EQ(band, expected);
  });
}

TEST_P(GivenTwoPictures, EveryPixelStaysOpaque) {
  ForEachFrame([](const Transition& transition, float progress) {
    const TestPicture whole = transition.Whole(progress);
    for (int y = 0; y < transition.GetSize().height; ++y) {
      const uint32_t* row = whole.View().Row(y);
      ASSERT_TRUE(
          std::all_of(row, row + transition.GetSize().width, [](uint32_t pixel) { return pixel >> 24 == 0xFF; }))
          << "row " << y;
    }
  });
}

TEST_P(GivenTwoPictures, PictureDependsOnItsArgumentsAlone) {
  ForEachSize([](const Transition& transition) {
    const TestPicture first = transition.Whole(0.4F);
    transition.Whole(0.8F);
    EXPECT_EQ(transition.Whole(0.4F), first);
  });
}

std::string NameOf(const testing::TestParamInfo<int>& given) {
  return std::string(EffectName(given.param));
}

INSTANTIATE_TEST_SUITE_P(EveryEffect, GivenTwoPictures, testing::Range(0, kEffectCount), NameOf);

/// The average of one channel over the picture.
double Brightness(const TestPicture& picture, Size size) {
  double sum = 0;
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      sum += Channel(picture.At(x, y), 8);
    }
  }
  return sum / size.width / size.height;
}

class GivenDarkAndLight : public testing::TestWithParam<int> {
 protected:
  /// Between two pictures of one shade of grey each.
  double BrightnessAt(float progress, uint32_t dark, uint32_t light) const {
    const TestPicture from(kSize, 0xFF000000U | dark * 0x010101U);
    const TestPicture to(kSize, 0xFF000000U | light * 0x010101U);
    TestPicture target(kSize, kUntouched);
    DrawEffect(GetParam(), from.View(), to.View(), progress, target.View(), 0, kSize.height);
    return Brightness(target, kSize);
  }

  static constexpr Size kSize{320, 180};
  static constexpr int kFrames = 60;
};

TEST_P(GivenDarkAndLight, WhiteOverBlackNeverGetsLess) {
  double before = 0;
  for (int frame = 1; frame < kFrames; ++frame) {
    const double now = BrightnessAt(static_cast<float>(frame) / kFrames, 0, 255);
    EXPECT_GE(now, before - 0.01) << "frame " << frame;
    before = now;
  }
  EXPECT_GT(before, 200.0);
}

TEST_P(GivenDarkAndLight, NoFrameJumps) {
  // A second has 60 frames; the steepest way is 192 levels in half of them, with an easing of slope 1.5.
  constexpr double kLargestStep = 192.0 / 30.0 * 1.5 + 1.0;
  double before = 64;
  for (int frame = 1; frame <= kFrames; ++frame) {
    const double now = BrightnessAt(static_cast<float>(frame) / kFrames, 64, 192);
    EXPECT_LE(std::abs(now - before), kLargestStep) << "frame " << frame;
    before = now;
  }
  EXPECT_EQ(before, 192);
}

INSTANTIATE_TEST_SUITE_P(EveryEffect, GivenDarkAndLight, testing::Range(0, kEffectCount), NameOf);

/// Effects that copy outside of their soft edge look no different from the definition, pixel by pixel.
class GivenBlackToWhite : public testing::Test {
 protected:
  /// `weight(x, y)`: how far from black to white the pixel is, 0..1, x and y from the middle, up is positive.
  template <typename Weight>
  void ExpectFrame(const char* effect, float progress, const Weight& weight) const {
    for (const Size size : {Size{320, 181}, Size{151, 90}}) {
      const TestPicture from(size, 0xFF000000);
      const TestPicture to(size, 0xFFFFFFFF);
      TestPicture target(size, kUntouched);
      DrawEffect(FindEffect(effect), from.View(), to.View(), progress, target.View(), 0, size.height);
      for (int y = 0; y < size.height; ++y) {
        for (int x = 0; x < size.width; ++x) {
          const double across = x + 0.5 - 0.5 * size.width;
          const double up = 0.5 * size.height - 0.5 - y;
          const double expected = 255 * Smooth(weight(across, up, std::hypot(size.width, size.height) / 2));
          ASSERT_NEAR(Channel(target.At(x, y), 8), expected, 1.5) << effect << " " << x << ", " << y;
        }
      }
    }
  }
  static double Smooth(double t) {
    const double limited = std::clamp(t, 0.0, 1.0);
    return limited * limited * (3 - 2 * limited);
  }
};

TEST_F(GivenBlackToWhite, RadialIsAClockHand) {
  for (const float progress : {0.05F, 0.2F, 0.25F, 0.4F, 0.5F, 0.7F, 0.95F}) {
    ExpectFrame("radial", progress, [progress](double x, double up, double) {
      const double turn = std::atan2(x, up) / (2 * std::numbers::pi);
      return (progress * 1.08 - (turn < 0 ? turn + 1 : turn)) / 0.08;
    });
  }
}

TEST_F(GivenBlackToWhite, CircleOpensAndCloses) {
  for (const float progress : {0.05F, 0.3F, 0.6F, 0.95F}) {
    ExpectFrame("circleopen", progress, [progress](double x, double up, double corner) {
      return (progress * 1.15 - std::hypot(x, up) / corner) / 0.15;
    });
    ExpectFrame("circleclose", progress, [progress](double x, double up, double corner) {
      return (progress * 1.15 - 1 + std::hypot(x, up) / corner) / 0.15;
    });
  }
}

class GivenTheLargestScreen : public testing::TestWithParam<int> {};

TEST_P(GivenTheLargestScreen, BandsGiveTheSamePicture) {
  constexpr Size kSize{4096, 2160};
  static const TestPicture from = TestPicture::Noise(kSize, 3);
  static const TestPicture to = TestPicture::Noise(kSize, 4);
  TestPicture whole(kSize, kUntouched);
  TestPicture banded(kSize, kUntouched);
  DrawEffect(GetParam(), from.View(), to.View(), 0.4F, whole.View(), 0, kSize.height);
  DrawEffect(GetParam(), from.View(), to.View(), 0.4F, banded.View(), 1081, kSize.height);
  DrawEffect(GetParam(), from.View(), to.View(), 0.4F, banded.View(), 0, 1081);
  EXPECT_EQ(whole, banded);
}

INSTANTIATE_TEST_SUITE_P(EveryEffect, GivenTheLargestScreen, testing::Range(0, kEffectCount), NameOf);

}  // namespace
}  // namespace sim::lumaview
