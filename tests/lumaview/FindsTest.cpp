// SPDX-License-Identifier: Apache-2.0
/// Every file in finds/ once crashed, hung or confused a decoder: none may do it again.
#include <gtest/gtest.h>

#include <filesystem>

#include "tests/lumaview/PictureSet.h"

namespace sim::lumaview::test {
namespace {

TEST(Finds, NeitherCrashNorHang) {
  int replayed = 0;
  for (const auto& entry : std::filesystem::directory_iterator(FINDS_FOLDER)) {
    for (const auto& [width, height] : {std::pair{61, 47}, std::pair{1920, 1080}}) {
      const ShownPicture shown = ShowInProcess(entry.path(), width, height);
      EXPECT_TRUE(shown.kind == ShownPicture::Kind::kShown || shown.kind == ShownPicture::Kind::kRefused)
          << entry.path() << ": " << shown.output;
      ++replayed;
    }
  }
  std::printf("%d replayed\n", replayed);
}

}  // namespace
}  // namespace sim::lumaview::test
