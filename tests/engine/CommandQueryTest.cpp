// SPDX-License-Identifier: Apache-2.0
/// The rows that ask about the picture and answer with numbers and texts.
#include "tests/engine/CommandGiven.h"

namespace {

using QueryCommands = GivenEngine;
using QueryCommandsOfAPicture = GivenPreparedPicture;

/// The two size commands differ in the adapter's operation and in the sign of their numbers.
class SizeCommands : public GivenPreparedPicture, public testing::WithParamInterface<const char*> {
 protected:
  void ExpectSize(int width, int height, const char* path) {
    kit::world().pictureWidth = width;
    kit::world().pictureHeight = height;
    ExpectRow(GetParam(), {}, path);
  }
};

TEST_P(SizeCommands, JoinTheNumbersWithAStar) {
  ExpectSize(640, 480, "640 by 480");
  ExpectSize(1920000, 1080000, "thousands without grouping");
  ExpectSize(-1, 0, "negative width");
}

TEST_P(SizeCommands, AreNotChangedByTheProcesssLocale) {
  const GroupedThousands locale;
  ExpectSize(1920000, 1080000, "thousands without grouping");
}

TEST_P(SizeCommands, FailWithTheLibrary) {
  kit::FailNext("lumaview_get_size", -2);
  ExpectRow(GetParam(), {}, "library failure");
}

TEST_P(SizeCommands, NeedAPicture) {
  ASSERT_EQ(Adapter().EffectShow(LUMAVIEW_EFFECT_CHOOSE), 1);
  ExpectRow(GetParam(), {}, "no picture");
}

INSTANTIATE_TEST_SUITE_P(Both, SizeCommands, testing::Values("GetPictureSize", "GetVideoResolution"));

TEST_F(QueryCommandsOfAPicture, GetPictureTypeAnswersThreeCharacters) {
  for (const int type : {0, 7, 999, 1000, 1234, -1234}) {
    kit::world().pictureType = type;
    ExpectRow("GetPictureType", {}, "type " + std::to_string(type));
  }
}

TEST_F(QueryCommandsOfAPicture, GetPictureTypeFails) {
  kit::FailNext("lumaview_get_picture_type", 5);
  ExpectRow("GetPictureType", {}, "library failure");
}

TEST_F(QueryCommandsOfAPicture, GetThumbnailAnswersAFlag) {
  ExpectRow("GetThumbnail", {}, "filled");
  kit::FailNext("lumaview_get_thumbnail", -2);
  ExpectRow("GetThumbnail", {}, "library failure");
}

TEST_F(QueryCommandsOfAPicture, GetZoomRatioAnswersAWholeNumber) {
  kit::world().zoomRatio = 2.9F;
  ExpectRow("GetZoomRatio", {}, "2.9");
  kit::world().zoomRatio = 0.5F;
  ExpectRow("GetZoomRatio", {}, "ratio 0.5 answers 0");
}

TEST_F(QueryCommandsOfAPicture, GetZoomRatioFailsWithMinusTwoAlone) {
  kit::FailNext("lumaview_get_zoom_ratio", -1);
  ExpectRow("GetZoomRatio", {}, "code -1");
  kit::FailNext("lumaview_get_zoom_ratio", -2);
  ExpectRow("GetZoomRatio", {}, "code -2");
}

TEST_F(QueryCommands, NeedAPicture) {
  ExpectRow("GetPictureType", {}, "no picture");
  ExpectRow("GetThumbnail", {}, "no picture");
  ExpectRow("GetZoomRatio", {}, "no picture");
  ExpectRow("GetTransitionEffectList", {}, "no picture");
}

class EffectListCommand : public GivenPreparedPicture {
 protected:
  void ExpectList(const std::string& list, const char* path) {
    kit::world().effectList = list;
    ExpectRow("GetTransitionEffectList", {}, path);
  }
};

TEST_F(EffectListCommand, PutsCommasInThePlaceOfNewlines) {
  ExpectList("fade\nwipe\nslide", "three names");
  EXPECT_EQ(Result(), "fade,wipe,slide");
  ExpectList("fade\n", "trailing newline");
  ExpectList("\n\n\n", "newlines only");
  ExpectList("", "empty list");
}

TEST_F(EffectListCommand, KeepsAtMost254Characters) {
  ExpectList(std::string(254, 'y'), "254 characters");
  ExpectList(std::string(254, 'y') + "z", "255 characters");
  ExpectList(std::string(253, 'y') + "\nzz", "newline as 254th character");
}

TEST_F(EffectListCommand, ReadsNoMoreThanTheBuffer) {
  ExpectList(std::string(400, 'x'), "400 characters");
}

TEST_F(EffectListCommand, FailsWithTheLibrary) {
  kit::FailNext("lumaview_get_transition_effect_list", 3);
  ExpectRow("GetTransitionEffectList", {}, "library failure");
}

TEST_F(EffectListCommand, FailsWithoutItsBuffer) {
  kit::FailNext("malloc");
  ExpectRow("GetTransitionEffectList", {}, "no memory");
}

}  // namespace
