// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/screen/Picture.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>

namespace sim::tvsim {
namespace {

class GivenPicture : public testing::Test {
 protected:
  GivenPicture() {
    std::string name = testing::TempDir() + "picture-XXXXXX";
    m_folder = mkdtemp(name.data());
    for (int i = 0; i < 5 * 3 * 3; ++i) {
      m_picture.rgb.push_back(static_cast<uint8_t>(i * 5));
    }
  }
  ~GivenPicture() override { std::filesystem::remove_all(m_folder); }

  std::string m_folder;
  Picture m_picture{5, 3, {}};
};

TEST_F(GivenPicture, PngKeepsEveryPixel) {
  ASSERT_TRUE(WritePng(m_picture, m_folder + "/a.png"));

  const Result<Picture> read = ReadPng(m_folder + "/a.png");

  ASSERT_TRUE(read);
  EXPECT_EQ(*read, m_picture);
}

TEST_F(GivenPicture, WritingIntoNowhereIsRefusedWithTheReason) {
  const Status written = WritePng(m_picture, m_folder + "/nowhere/a.png");

  ASSERT_FALSE(written);
  EXPECT_NE(written.error().reason.find("cannot write"), std::string::npos);
}

TEST_F(GivenPicture, ReadingWhatIsNoPngIsRefused) {
  std::ofstream(m_folder + "/a.png") << "no picture";

  EXPECT_FALSE(ReadPng(m_folder + "/a.png"));
  EXPECT_FALSE(ReadPng(m_folder + "/none.png"));
}

TEST_F(GivenPicture, LikenessFollowsTheMeanSquareError) {
  Picture other = m_picture;
  for (uint8_t& value : other.rgb) {
    value = static_cast<uint8_t>(value + 10);
  }

  EXPECT_TRUE(std::isinf(*Psnr(m_picture, m_picture)));
  EXPECT_NEAR(*Psnr(m_picture, other), 20 * std::log10(255.0 / 10), 1e-9);
  EXPECT_FALSE(Psnr(m_picture, Picture{1, 1, {0, 0, 0}}));
}

}  // namespace
}  // namespace sim::tvsim
