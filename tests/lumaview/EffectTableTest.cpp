// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

#include "simulator/lumaview/effect/Effect.h"

namespace sim::lumaview {
namespace {

TEST(GivenTheTableOfEffects, ListHasOneNameALineInTheOrderOfTheNumbers) {
  std::istringstream lines{std::string(EffectList())};
  int number = 0;
  for (std::string name; std::getline(lines, name); ++number) {
    ASSERT_LT(number, kEffectCount);
    EXPECT_EQ(name, EffectName(number));
  }
  EXPECT_EQ(number, kEffectCount);
}

TEST(GivenTheTableOfEffects, ListFitsWhatAnApplicationIsShown) {
  EXPECT_LE(EffectList().size(), 254U);
  EXPECT_EQ(EffectList().back(), '\n');
}

TEST(GivenTheTableOfEffects, EveryNameIsFoundAndThereIsNoneTwice) {
  std::set<std::string_view> names;
  for (int number = 0; number < kEffectCount; ++number) {
    EXPECT_EQ(FindEffect(EffectName(number)), number);
    names.insert(EffectName(number));
  }
  EXPECT_EQ(names.size(), static_cast<size_t>(kEffectCount));
}

TEST(GivenTheTableOfEffects, UnknownNamesAreNotFound) {
  EXPECT_EQ(FindEffect(""), -1);
  EXPECT_EQ(FindEffect("fad"), -1);
  EXPECT_EQ(FindEffect("Fade"), -1);
}

}  // namespace
}  // namespace sim::lumaview
