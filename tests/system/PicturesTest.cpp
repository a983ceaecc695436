// SPDX-License-Identifier: Apache-2.0
/// What stands on the screen, against ImageMagick.
#include <gmock/gmock.h>

#include <cstdlib>

#include "tests/system/GivenTelevision.h"

namespace sim::tvsim {
namespace {

using testing::HasSubstr;

class GivenTelevisionAndPicture : public GivenTelevision {
 protected:
  /// Shows the picture over the whole screen; what the screen shows then.
  Picture Shown(const std::string& picture) {
    const Outcome outcome = Play("InitPlayer " + picture + "\nexpect 1\nSetDisplayArea 0 0 960 540\nexpect 1\n" +
                                 "StartPlayback\nexpect 1\nexpect-event 10 within 20s\nexpect-event 8 within 20s\n" +
                                 "screenshot " + PathOf("shot.png") + "\nStop\nexpect 1\n");
    EXPECT_EQ(outcome.status, 0) << outcome.output << outcome.errors;
    const Result<Picture> shot = ReadPng(PathOf("shot.png"));
    EXPECT_TRUE(shot);
    return shot ? *shot : Picture{};
  }
};

class GivenOrientation : public GivenTelevisionAndPicture, public testing::WithParamInterface<int> {};

TEST_P(GivenOrientation, ThePhotographStandsUpright) {
  const std::string picture = Photograph(900, 600, GetParam());

  ExpectShown(Shown(picture), picture, FitInto(kScreen, 900, 600));
}

INSTANTIATE_TEST_SUITE_P(System, GivenOrientation, testing::Range(1, 9));

struct Sizes {
  const char* name;
  int width, height;
};
void PrintTo(const Sizes& sizes, std::ostream* stream) {
  *stream << sizes.width << "x" << sizes.height;
}

class GivenSize : public GivenTelevisionAndPicture, public testing::WithParamInterface<Sizes> {};

TEST_P(GivenSize, ThePhotographFillsTheScreenAsFarAsItsShapeAllows) {
  const auto [name, width, height] = GetParam();
  const std::string picture = Photograph(width, height);

  ExpectShown(Shown(picture), picture, FitInto(kScreen, width, height));
}

INSTANTIATE_TEST_SUITE_P(System, GivenSize,
                         testing::Values(Sizes{"Larger", 3000, 2000}, Sizes{"Smaller", 320, 240},
                                         Sizes{"Upright", 700, 1900}, Sizes{"OfTheScreen", 1920, 1080}),
                         [](const auto& test) { return std::string(test.param.name); });

using GivenPicturesFolder = GivenTelevisionAndPicture;

TEST_F(GivenPicturesFolder, EachOrientedJpegShowsItsCornersWhereTheyBelong) {
  const char* folder = std::getenv("PICTURES_DIR");
  if (folder == nullptr) {
    GTEST_SKIP() << "PICTURES_DIR is not set";
  }
  for (int orientation = 1; orientation <= 8; ++orientation) {
    const std::string picture = std::string(folder) + "/valid/jpeg/own-orient-" + std::to_string(orientation) + ".jpg";
    ExpectShown(Shown(picture), picture, FitInto(kScreen, 120, 80));
  }
}

}  // namespace
}  // namespace sim::tvsim
