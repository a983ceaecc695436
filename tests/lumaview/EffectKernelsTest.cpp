// SPDX-License-Identifier: Apache-2.0
/// The vector kernels of every instruction set that this processor has, against the ordinary loops.
#include <gtest/gtest.h>
#include <hwy/targets.h>
#ifdef __arm__
#include <asm/hwcap.h>
#include <sys/auxv.h>
#endif

#include <cmath>
#include <numbers>
#include <string>

#include "simulator/lumaview/effect/Effect.h"
#include "simulator/lumaview/effect/Kernels.h"
#include "simulator/lumaview/effect/Pixel.h"
#include "tests/lumaview/EffectPictures.h"

namespace sim::lumaview {
namespace {

constexpr uint32_t kUntouched = 0x12345678;

std::vector<int64_t> InstructionSets() {
  std::vector<int64_t> sets;
  for (int64_t rest = hwy::SupportedTargets(); rest != 0; rest &= rest - 1) {
    sets.push_back(rest & -rest);
  }
  return sets;
}

/// Kernels as a processor with nothing above `set` would choose them.
const Kernels& KernelsFor(int64_t set) {
  hwy::SetSupportedTargetsForTest(set);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
  const Kernels& kernels = VectorKernels();
  hwy::SetSupportedTargetsForTest(0);
  hwy::GetChosenTarget().Update(hwy::SupportedTargets());
  return kernels;
}

TEST(GivenThisProcessor, KernelsWithVectorsAreChosenWhereItHasThem) {
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx2")) {
    EXPECT_STRNE(VectorKernels().name, "plain");
    EXPECT_STREQ(KernelsFor(HWY_AVX2).name, "AVX2");
  }
  if (__builtin_cpu_supports("sse4.1")) {
    EXPECT_STREQ(KernelsFor(HWY_SSE4).name, "SSE4");
  }
#elif defined(__arm__)
  EXPECT_STREQ(VectorKernels().name, (getauxval(AT_HWCAP) & HWCAP_NEON) != 0 ? "NEON" : "plain");
#endif
  EXPECT_STREQ(BestKernels().name, VectorKernels().name);
}

class GivenKernels : public testing::TestWithParam<int64_t> {
 protected:
  const Kernels& m_kernels = KernelsFor(GetParam());
  const Kernels& m_plain = PlainKernels();
};

TEST_P(GivenKernels, EveryEffectIsThatOfTheOrdinaryLoops) {
  constexpr Size kSizes[] = {{1, 1}, {7, 5}, {31, 33}, {257, 61}, {1920, 40}};
  for (const Size size : kSizes) {
    const TestPicture from = TestPicture::Noise(size, 1, 1);
    const TestPicture to = TestPicture::Noise(size, 2);
    for (int effect = 0; effect < kEffectCount; ++effect) {
      for (const float progress : {0.01F, 0.2F, 0.37F, 0.5F, 0.81F, 0.99F}) {
        TestPicture vector(size, kUntouched, 5);
        TestPicture plain(size, kUntouched, 5);
        DrawEffectWith(m_kernels, effect, from.View(), to.View(), progress, vector.View(), 0, size.height);
        DrawEffectWith(m_plain, effect, from.View(), to.View(), progress, plain.View(), 0, size.height);
        ASSERT_EQ(vector, plain) << EffectName(effect) << " at " << progress << ", " << size.width << " wide";
      }
    }
  }
}

TEST_P(GivenKernels, MixIsExactForEveryWeightAndByte) {
  constexpr int kCount = 256 * 16;
  std::vector<uint32_t> from(kCount), to(kCount), vector(kCount), plain(kCount);
  for (int i = 0; i < kCount; ++i) {
    const auto byte = static_cast<uint32_t>(i % 256);
    from[static_cast<size_t>(i)] = byte * 0x01010101U;
    to[static_cast<size_t>(i)] = (byte * 0x01010101U) ^ (static_cast<uint32_t>(i / 256) * 0x1F3F7FFFU);
  }
  for (int weight = 0; weight <= kFullWeight; ++weight) {
    m_kernels.mix({vector.data(), from.data(), to.data(), kCount}, weight);
    m_plain.mix({plain.data(), from.data(), to.data(), kCount}, weight);
    ASSERT_EQ(vector, plain) << "weight " << weight;
  }
  EXPECT_EQ(vector, to);
}

TEST_P(GivenKernels, ShortAndUnalignedRowsAreWrittenExactly) {
  const TestPicture source = TestPicture::Noise({300, 1}, 5);
  for (int begin = 0; begin < 17; ++begin) {
    for (int count = 0; count < 70; ++count) {
      std::vector<uint32_t> vector(120, kUntouched), plain(120, kUntouched);
      m_kernels.copy(vector.data() + begin, source.View().pixels + 3, count);
      m_plain.copy(plain.data() + begin, source.View().pixels + 3, count);
      ASSERT_EQ(vector, plain) << "copy of " << count << " at " << begin;
      m_kernels.mix_near({vector.data() + begin, source.View().pixels, source.View().pixels + 99, count}, 77);
      m_plain.mix_near({plain.data() + begin, source.View().pixels, source.View().pixels + 99, count}, 77);
      ASSERT_EQ(vector, plain) << "mix of " << count << " at " << begin;
    }
  }
}

TEST_P(GivenKernels, BoxIsThatOfTheOrdinaryLoopsForEveryRadius) {
  constexpr int kCount = 75;
  std::vector<ColumnSum> means(4 * (kCount + 2 * kMaxBlurRadius));
  for (size_t i = 0; i < means.size(); ++i) {
    means[i] = static_cast<ColumnSum>(i * 40503U % 256U);
  }
  for (int radius = 1; radius <= kMaxBlurRadius; ++radius) {
    std::vector<uint32_t> vector(kCount), plain(kCount);
    m_kernels.box(vector.data(), kCount, means.data(), radius);
    m_plain.box(plain.data(), kCount, means.data(), radius);
    ASSERT_EQ(vector, plain) << "radius " << radius;
  }
}

INSTANTIATE_TEST_SUITE_P(EveryInstructionSet, GivenKernels, testing::ValuesIn(InstructionSets()),
                         [](const auto& given) { return std::string(hwy::TargetName(given.param)); });

TEST(GivenOnePixel, MixEndsOnBothPicturesAndRoundsBetweenThem) {
  EXPECT_EQ(MixPixels(0xFF123456, 0xFFABCDEF, 0), 0xFF123456U);
  EXPECT_EQ(MixPixels(0xFF123456, 0xFFABCDEF, 256), 0xFFABCDEFU);
  EXPECT_EQ(MixPixels(0xFF000000, 0xFFFFFFFF, 128), 0xFF808080U);
}

TEST(GivenEqualBytes, MeanIsThatByteForEveryNumberOfParts) {
  for (int parts = 3; parts <= 255; ++parts) {
    const Divisor divisor(parts);
    for (int byte = 0; byte < 256; ++byte) {
      ASSERT_EQ(divisor.Mean(static_cast<uint32_t>(byte * parts)), static_cast<uint32_t>(byte)) << parts << " parts";
    }
  }
}

TEST(GivenOneDirection, TurnIsThatOfAClockHand) {
  EXPECT_FLOAT_EQ(Turn(0.0F, 9.0F), 0.0F);
  EXPECT_FLOAT_EQ(Turn(9.0F, 0.0F), 0.25F);
  EXPECT_FLOAT_EQ(Turn(0.0F, -9.0F), 0.5F);
  EXPECT_FLOAT_EQ(Turn(-9.0F, 0.0F), 0.75F);
  for (int degrees = 1; degrees < 360; ++degrees) {
    const double angle = degrees * std::numbers::pi / 180.0;
    EXPECT_NEAR(Turn(static_cast<float>(100 * std::sin(angle)), static_cast<float>(100 * std::cos(angle))),
                degrees / 360.0, 4e-6);
  }
}

TEST(GivenNoise, GrainsAreSpreadEvenly) {
  constexpr int kSide = 256;
  int buckets[16] = {};
  for (uint32_t y = 0; y < kSide; ++y) {
    for (uint32_t x = 0; x < kSide; ++x) {
      ++buckets[Grain(x, Grain(y, kGrainSecond) * kGrainFirst) >> 20];
    }
  }
  for (const int bucket : buckets) {
    EXPECT_NEAR(bucket, kSide * kSide / 16, 350);  // 5.5 standard deviations
  }
}

}  // namespace
}  // namespace sim::lumaview
