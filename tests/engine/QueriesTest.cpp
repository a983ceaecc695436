// SPDX-License-Identifier: Apache-2.0
/// What can be asked about the picture: the answers, and the out values that a failure leaves alone.
#include <climits>
#include <limits>
#include <utility>

#include "tests/engine/CommandGiven.h"

namespace {

constexpr int kOld = -77;

using QueriesOfNoPicture = GivenEngine;
using QueriesOfAPicture = GivenPreparedPicture;

TEST_F(QueriesOfNoPicture, FailAndWriteNothing) {
  int width = kOld;
  int height = kOld;
  unsigned int unsignedWidth = 77;
  unsigned int unsignedHeight = 77;
  auto type = static_cast<picture_type_e>(kOld);
  _lumaview_thumbnail_s thumbnail;
  ExpectOperation("GetPictureSize", "no picture", [&] { return Adapter().GetPictureSize(&width, &height); });
  ExpectOperation("GetPictureType", "no picture", [&] { return Adapter().GetPictureType(&type); });
  ExpectOperation("GetVideoResolution", "no picture",
                  [&] { return Adapter().GetVideoResolution(&unsignedWidth, &unsignedHeight); });
  ExpectOperation("GetThumbnail", "no picture", [&] { return Adapter().GetThumbnail(&thumbnail); });
  ExpectOperation("GetZoomRatio", "no picture", [&] { return Adapter().GetZoomRatio(&width); });
  EXPECT_EQ(width, kOld);
  EXPECT_EQ(height, kOld);
  EXPECT_EQ(unsignedWidth, 77U);
  EXPECT_EQ(unsignedHeight, 77U);
  EXPECT_EQ(type, kOld);
}

TEST_F(QueriesOfNoPicture, TestThePictureBeforeThePointers) {
  int width = kOld;
  ExpectOperation("GetPictureSize", "no picture and no height",
                  [&] { return Adapter().GetPictureSize(&width, nullptr); });
  ExpectOperation("GetPictureType", "no picture and no type", [&] { return Adapter().GetPictureType(nullptr); });
}

TEST_F(QueriesOfAPicture, FailAfterAnEffect) {
  ASSERT_EQ(Adapter().EffectShow(LUMAVIEW_EFFECT_CHOOSE), 1);
  int number = kOld;
  ExpectOperation("GetPictureSize", "no picture", [&] { return Adapter().GetPictureSize(&number, &number); });
  ExpectOperation("GetZoomRatio", "no picture", [&] { return Adapter().GetZoomRatio(&number); });
  EXPECT_EQ(number, kOld);
}

TEST_F(QueriesOfAPicture, NeedBothPointersOfTheSize) {
  int number = kOld;
  ExpectOperation("GetPictureSize", "no width", [&] { return Adapter().GetPictureSize(nullptr, &number); });
  ExpectOperation("GetPictureSize", "no height", [&] { return Adapter().GetPictureSize(&number, nullptr); });
  EXPECT_EQ(number, kOld);
}

TEST_F(QueriesOfAPicture, AnswerTheSize) {
  int width = kOld;
  int height = kOld;
  ExpectOperation("GetPictureSize", "640 by 480", [&] { return Adapter().GetPictureSize(&width, &height); });
  EXPECT_EQ(width, 640);
  EXPECT_EQ(height, 480);
}

TEST_F(QueriesOfAPicture, FailWithTheLibrarysSize) {
  int number = kOld;
  kit::FailNext("lumaview_get_size", -2);
  ExpectOperation("GetPictureSize", "library failure", [&] { return Adapter().GetPictureSize(&number, &number); });
}

TEST_F(QueriesOfAPicture, NeedAPlaceForTheType) {
  ExpectOperation("GetPictureType", "no type", [&] { return Adapter().GetPictureType(nullptr); });
}

TEST_F(QueriesOfAPicture, AnswerTheType) {
  kit::world().pictureType = 7;
  auto type = static_cast<picture_type_e>(kOld);
  ExpectOperation("GetPictureType", "type 7", [&] { return Adapter().GetPictureType(&type); });
  EXPECT_EQ(type, LUMAVIEW_TYPE_WEBP);
}

TEST_F(QueriesOfAPicture, FailWithTheLibrarysType) {
  auto type = static_cast<picture_type_e>(kOld);
  kit::FailNext("lumaview_get_picture_type", 5);
  ExpectOperation("GetPictureType", "library failure", [&] { return Adapter().GetPictureType(&type); });
}

TEST_F(QueriesOfAPicture, AnswerTheResolution) {
  kit::world().pictureWidth = 1920;
  kit::world().pictureHeight = 1080;
  unsigned int width = 0;
  unsigned int height = 0;
  ExpectOperation("GetVideoResolution", "1920 by 1080", [&] { return Adapter().GetVideoResolution(&width, &height); });
  EXPECT_EQ(width, 1920U);
  EXPECT_EQ(height, 1080U);
}

TEST_F(QueriesOfAPicture, LeaveTheResolutionAloneOnAFailure) {
  unsigned int width = 77;
  unsigned int height = 78;
  kit::FailNext("lumaview_get_size", -6);
  ExpectOperation("GetVideoResolution", "library failure",
                  [&] { return Adapter().GetVideoResolution(&width, &height); });
  EXPECT_EQ(width, 77U);
  EXPECT_EQ(height, 78U);
}

TEST_F(QueriesOfAPicture, HandOnTheThumbnailsCode) {
  _lumaview_thumbnail_s thumbnail;
  ExpectOperation("GetThumbnail", "filled", [&] { return Adapter().GetThumbnail(&thumbnail); });
  kit::FailNext("lumaview_get_thumbnail", -2);
  ExpectOperation("GetThumbnail", "library failure", [&] { return Adapter().GetThumbnail(&thumbnail); });
}

/// A ratio that the library reports, and the section that shows what becomes of it.
struct Ratio {
  float reported;
  const char* path;
  int answered;
};

class ZoomRatios : public GivenPreparedPicture, public testing::WithParamInterface<Ratio> {};

class ImpossibleZoomRatios : public GivenPreparedPicture,
                             public testing::WithParamInterface<std::pair<float, int>> {};

TEST_P(ZoomRatios, LoseTheirFraction) {
  kit::world().zoomRatio = GetParam().reported;
  int ratio = kOld;
  ExpectOperation("GetZoomRatio", GetParam().path, [&] { return Adapter().GetZoomRatio(&ratio); });
  EXPECT_EQ(ratio, GetParam().answered);
}

INSTANTIATE_TEST_SUITE_P(TowardsZero, ZoomRatios,
                         testing::Values(Ratio{2.9F, "2.9", 2}, Ratio{-0.5F, "-0.5", 0}, Ratio{1.99F, "1.99", 1}));

TEST_P(ImpossibleZoomRatios, BecomeTheNearestInteger) {
  kit::world().zoomRatio = GetParam().first;
  int ratio = kOld;

  EXPECT_EQ(Adapter().GetZoomRatio(&ratio), 1);

  EXPECT_EQ(ratio, GetParam().second);
}

INSTANTIATE_TEST_SUITE_P(BeyondIntAndNone, ImpossibleZoomRatios,
                         testing::Values(std::pair(3e9F, INT_MAX), std::pair(-3e9F, INT_MIN),
                                         std::pair(std::numeric_limits<float>::quiet_NaN(), 0)));

TEST_F(QueriesOfAPicture, TakeEveryZoomCodeButMinusTwoForSuccess) {
  int ratio = kOld;
  kit::FailNext("lumaview_get_zoom_ratio", -1);
  ExpectOperation("GetZoomRatio", "code -1", [&] { return Adapter().GetZoomRatio(&ratio); });
  EXPECT_EQ(ratio, 0);
  ratio = kOld;
  kit::FailNext("lumaview_get_zoom_ratio", 1);
  ExpectOperation("GetZoomRatio", "code 1 and nothing written", [&] { return Adapter().GetZoomRatio(&ratio); });
  EXPECT_EQ(ratio, 0);
  ratio = kOld;
  kit::FailNext("lumaview_get_zoom_ratio", -2);
  ExpectOperation("GetZoomRatio", "code -2", [&] { return Adapter().GetZoomRatio(&ratio); });
  EXPECT_EQ(ratio, kOld);
}

}  // namespace
