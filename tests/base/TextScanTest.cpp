// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/TextScan.h"

#include <gtest/gtest.h>

#include <string>

namespace sim {
namespace {

bool HasHash(std::string_view text) {
  return HasAny(text, [](auto c) { return (c == '#') | (c > 0xF0); });
}

TEST(TextScan, FindsACharacterWhereverItStands) {
  for (size_t size = 0; size < 70; ++size) {
    EXPECT_FALSE(HasHash(std::string(size, 'a'))) << size;
    for (size_t at = 0; at < size; ++at) {
      for (const char odd : {'#', '\xF1', '\xFF'}) {
        std::string text(size, 'a');
        text[at] = odd;
        EXPECT_TRUE(HasHash(text)) << size << " " << at;
      }
    }
  }
}

TEST(TextScan, LooksAtNothingAroundTheText) {
  const std::string text = "#" + std::string(40, 'a') + "#";
  for (size_t size = 0; size <= 40; ++size) {
    EXPECT_FALSE(HasHash(std::string_view(text).substr(1, size))) << size;
  }
}

}  // namespace
}  // namespace sim
