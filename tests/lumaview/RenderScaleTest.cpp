// SPDX-License-Identifier: Apache-2.0
/// Scaling by itself: copies, plain areas, positions, and the fast kernels against their plain twins.
#include <gtest/gtest.h>

#include <random>

#include "simulator/lumaview/image/RowScaler.h"
#include "simulator/lumaview/image/ScaleKernels.h"

namespace sim::lumaview {
namespace {

constexpr Axis::Range Whole(int source, int target) {
  return {0, source, target, 0, target};
}

/// Scales `rows` (each with a pixel to spare at its end) and returns the target's rows.
std::vector<std::vector<uint8_t>> Scale(const std::vector<std::vector<uint8_t>>& rows, int channels, int width,
                                        int target_width, int target_height) {
  RowScaler scaler(channels, Whole(width, target_width), Whole(static_cast<int>(rows.size()), target_height));
  std::vector<std::vector<uint8_t>> scaled;
  for (size_t y = 0; y < rows.size(); ++y) {
    scaler.Push(static_cast<int>(y), rows[y].data(),
                [&](int, const uint8_t* row) { scaled.emplace_back(row, row + target_width * channels); });
  }
  EXPECT_TRUE(scaler.IsComplete());
  return scaled;
}

std::vector<std::vector<uint8_t>> RandomRows(int channels, int width, int height) {
  std::mt19937 random(42);
  std::vector<std::vector<uint8_t>> rows(static_cast<size_t>(height));
  for (auto& row : rows) {
    for (int i = 0; i < (width + 1) * channels; ++i) {
      row.push_back(static_cast<uint8_t>(random()));
    }
  }
  return rows;
}

TEST(RowScaler, SameSizeIsACopy) {
  const auto rows = RandomRows(4, 37, 11);

  const auto scaled = Scale(rows, 4, 37, 37, 11);

  ASSERT_EQ(scaled.size(), rows.size());
  for (size_t y = 0; y < rows.size(); ++y) {
    EXPECT_TRUE(std::equal(scaled[y].begin(), scaled[y].end(), rows[y].begin())) << y;
  }
}

class GivenPlainArea : public ::testing::TestWithParam<std::pair<int, int>> {};

TEST_P(GivenPlainArea, EverySizeKeepsItsValue) {
  const auto [source, target] = GetParam();
  for (const int value : {0, 1, 127, 254, 255}) {
    std::vector<std::vector<uint8_t>> rows(static_cast<size_t>(source));
    for (auto& row : rows) {
      row.assign(static_cast<size_t>(source + 1) * 4, static_cast<uint8_t>(value));
    }
    for (const auto& row : Scale(rows, 4, source, target, target)) {
      EXPECT_EQ(row, std::vector<uint8_t>(row.size(), static_cast<uint8_t>(value)));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Sizes, GivenPlainArea,
                         ::testing::Values(std::pair{1, 9}, std::pair{2, 3}, std::pair{3, 2}, std::pair{7, 1},
                                           std::pair{100, 33}, std::pair{64, 640}, std::pair{500, 3}));

TEST(RowScaler, CentresStayWhereTheyAre) {
  // A ramp that runs through the middle keeps its middle, and is mirrored by its mirror image.
  std::vector<uint8_t> ramp;
  for (int i = 0; i < 101; ++i) {
    ramp.push_back(static_cast<uint8_t>(i * 255 / 100));
  }
  for (const int target : {5, 33, 77, 303, 1001}) {
    const auto scaled = Scale({ramp}, 1, 101, target, 1)[0];
    for (int i = 0; i < target; ++i) {
      const int expected = 255 - scaled[static_cast<size_t>(target - 1 - i)];
      EXPECT_NEAR(scaled[static_cast<size_t>(i)], expected, 2) << target << " at " << i;
    }
  }
}

TEST(RowScaler, FineStripesBecomeGreyInsteadOfCoarseOnes) {
  std::vector<uint8_t> stripes;
  for (int i = 0; i < 1001; ++i) {
    stripes.push_back(i % 2 == 0 ? 0 : 255);
  }
  const auto scaled = Scale({stripes}, 1, 1000, 301, 1)[0];
  for (size_t i = 3; i < scaled.size() - 3; ++i) {
    EXPECT_NEAR(scaled[i], 127, 12) << i;
  }
}

TEST(RowScaler, VisiblePartEqualsThatPartOfTheWhole) {
  const auto rows = RandomRows(4, 50, 40);
  const auto whole = Scale(rows, 4, 50, 120, 90);
  RowScaler part(4, {0, 50, 120, 30, 70}, {0, 40, 90, 20, 60});
  int emitted = 0;
  for (int y = 0; y < 40; ++y) {
    part.Push(y, rows[static_cast<size_t>(y)].data(), [&](int target_row, const uint8_t* row) {
      const auto& expected = whole[static_cast<size_t>(target_row + 20)];
      EXPECT_TRUE(std::equal(row, row + 40 * 4, expected.begin() + 30 * 4)) << target_row;
      ++emitted;
    });
  }
  EXPECT_EQ(emitted, 40);
}

class GivenScale : public ::testing::TestWithParam<std::tuple<int, int, int>> {};

TEST_P(GivenScale, FastRowEqualsPlainRow) {
  const auto [channels, source, target] = GetParam();
  const auto rows = RandomRows(channels, source, 1);
  const Axis axis(Whole(source, target));
  std::vector<int16_t> fast(static_cast<size_t>(target * channels));
  std::vector<int16_t> plain(fast.size());

  ScaleRow(rows[0].data(), channels, axis, fast.data());
  plain::ScaleRow(rows[0].data(), channels, axis, plain.data());

  EXPECT_EQ(fast, plain);
}

TEST_P(GivenScale, FastMixEqualsPlainMix) {
  const auto [channels, source, target] = GetParam();
  std::mt19937 random(1);
  const Axis axis(Whole(source, target));
  const int count = 101;
  std::vector<std::vector<int16_t>> rows(static_cast<size_t>(axis.GetTaps()));
  std::vector<const int16_t*> pointers;
  for (auto& row : rows) {
    for (int i = 0; i < count; ++i) {
      row.push_back(static_cast<int16_t>(random() % (300 << kMiddleBits)));
    }
    pointers.push_back(row.data());
  }
  std::vector<uint8_t> fast(count);
  std::vector<uint8_t> plain(count);

  MixRows(pointers.data(), axis.Weights(target / 2), axis.GetTaps(), count, fast.data());
  plain::MixRows(pointers.data(), axis.Weights(target / 2), axis.GetTaps(), count, plain.data());

  EXPECT_EQ(fast, plain);
}

INSTANTIATE_TEST_SUITE_P(Sizes, GivenScale,
                         ::testing::Combine(::testing::Values(1, 4), ::testing::Values(1, 2, 3, 64, 1001),
                                            ::testing::Values(1, 2, 5, 63, 65, 1001)));

}  // namespace
}  // namespace sim::lumaview
