// SPDX-License-Identifier: Apache-2.0
// Calls with every kind of wrong argument, and files that are no files. No X server is needed.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>
#include <thread>

#include "platform/lumaview.h"
#include "simulator/lumaview/include/lumaview_simulator.h"
#include "tests/lumaview/PictureFiles.h"
#include "tests/lumaview/Screen.h"

namespace lumaview_test {
namespace {

constexpr Window kNoWindow = static_cast<Window>(-1);

class GivenPicture : public ::testing::Test {
 protected:
  GivenPicture() : path(folder.WriteJpeg("tall.jpg", 64, 48, Solid(0x808080), 6)) {
    Reports::Get().Clear();
    EXPECT_EQ(lumaview_pre_loading(), 0);
    EXPECT_EQ(lumaview_create_from_url(path.c_str(), &picture), 0);
    EXPECT_EQ(lumaview_create_transition_effect(12345, &effect), 0);
  }
  ~GivenPicture() override {
    lumaview_destroy(&picture);
    lumaview_destroy_transition_effect(&effect);
  }

  PictureFolder folder;
  std::string path;
  _lumaview_s* picture = nullptr;
  _lumaview_effect_s* effect = nullptr;
};

/// Calls everything that takes a picture.
void ExpectRefused(_lumaview_s* record) {
  int number = 0;
  float ratio = 0;
  picture_type_e type{};
  EXPECT_EQ(lumaview_parse(record), -1);
  EXPECT_EQ(lumaview_decode(record, 0), -1);
  EXPECT_EQ(lumaview_add_event_callback(record, LUMAVIEW_EVENT_PARSE, Reports::Callback), -1);
  EXPECT_EQ(lumaview_set_window(record, 1), -1);
  EXPECT_EQ(lumaview_set_3d_mode(record, 1), -1);
  EXPECT_EQ(lumaview_get_picture_type(record, &type), -1);
  EXPECT_EQ(lumaview_get_size(record, &number, &number), -1);
  EXPECT_EQ(lumaview_get_zoom_ratio(record, &ratio), -1);
  EXPECT_EQ(lumaview_set_zoom_move(record, LUMAVIEW_DIRECTION_UP, &number, &number), -1);
  EXPECT_EQ(lumaview_set_display_param(record, {}), -1);
  EXPECT_EQ(lumaview_set_display_lock(record, 1, 1), -1);
  _lumaview_s* copy = record;
  EXPECT_EQ(lumaview_destroy(&copy), -1);
  EXPECT_EQ(copy, record);
}

void ExpectRefused(_lumaview_effect_s* record) {
  EXPECT_EQ(lumaview_add_event_callback(record, LUMAVIEW_EVENT_EFFECT, Reports::Callback), -1);
  EXPECT_EQ(lumaview_set_effect_window_handle(record, 1), -1);
  EXPECT_EQ(lumaview_set_effect_type(record, LUMAVIEW_EFFECT_CHOOSE), -1);
  EXPECT_EQ(lumaview_run_transition_effect(record, "/"), -1);
  EXPECT_EQ(lumaview_is_transition_effect_available(nullptr, record, 1), -1);
  _lumaview_effect_s* copy = record;
  EXPECT_EQ(lumaview_destroy_transition_effect(&copy), -1);
  EXPECT_EQ(copy, record);
}

TEST_F(GivenPicture, NullHandlesAreRefused) {
  ExpectRefused(static_cast<_lumaview_s*>(nullptr));
  ExpectRefused(static_cast<_lumaview_effect_s*>(nullptr));
  EXPECT_EQ(lumaview_destroy(nullptr), -1);
  EXPECT_EQ(lumaview_destroy_transition_effect(nullptr), -1);
}

TEST_F(GivenPicture, ForeignHandlesAreRefused) {
  _lumaview_s own_picture{};
  _lumaview_effect_s own_effect{};
  ExpectRefused(&own_picture);
  ExpectRefused(&own_effect);
  ExpectRefused(reinterpret_cast<_lumaview_s*>(effect));
  ExpectRefused(reinterpret_cast<_lumaview_effect_s*>(picture));
}

TEST_F(GivenPicture, DeadHandlesAreRefused) {
  _lumaview_s* dead_picture = picture;
  _lumaview_effect_s* dead_effect = effect;

  EXPECT_EQ(lumaview_destroy(&picture), 0);
  EXPECT_EQ(lumaview_destroy_transition_effect(&effect), 0);

  EXPECT_EQ(picture, nullptr);
  EXPECT_EQ(effect, nullptr);
  ExpectRefused(dead_picture);
  ExpectRefused(dead_effect);
}

TEST_F(GivenPicture, NullOutValuesAreRefused) {
  int number = 0;
  EXPECT_EQ(lumaview_get_size(picture, nullptr, &number), -1);
  EXPECT_EQ(lumaview_get_size(picture, &number, nullptr), -1);
  EXPECT_EQ(lumaview_get_picture_type(picture, nullptr), -1);
  EXPECT_EQ(lumaview_get_zoom_ratio(picture, nullptr), -1);
  EXPECT_EQ(lumaview_set_zoom_move(picture, LUMAVIEW_DIRECTION_UP, nullptr, &number), -1);
  EXPECT_EQ(lumaview_get_thumbnail(nullptr), -1);
  EXPECT_EQ(lumaview_create_from_url(nullptr, &picture), -1);
  EXPECT_EQ(lumaview_create_from_url(path.c_str(), nullptr), -1);
  EXPECT_EQ(lumaview_create_transition_effect(36, nullptr), -1);
  EXPECT_EQ(lumaview_get_transition_effect_list(nullptr), -1);
  EXPECT_EQ(lumaview_run_transition_effect(effect, nullptr), -1);
  EXPECT_EQ(lumaview_init_display(nullptr), -1);
  EXPECT_EQ(lumaview_destroy_display(nullptr), -1);
}

TEST_F(GivenPicture, WindowsWithoutADisplayAreRefused) {
  for (Window window : {kNoWindow, Window{0}, Window{0x12345}}) {
    EXPECT_NE(lumaview_set_window(picture, window), 0);
    EXPECT_NE(lumaview_set_effect_window_handle(effect, window), 0);
    EXPECT_NE(lumaview_set_display_lock(picture, window, 1), 0);
    EXPECT_NE(lumaview_is_transition_effect_available(picture, effect, window), 0);
    EXPECT_EQ(lumaview_destroy_display(&window), -1);
  }
  Window none = kNoWindow;
  EXPECT_EQ(lumaview_init_display(&none), -1);
}

TEST_F(GivenPicture, NumbersOutOfRangeAreRefused) {
  int x = 0;
  int y = 0;
  EXPECT_EQ(lumaview_set_zoom_move(picture, static_cast<lumaview_key_direction_e>(4), &x, &y), -1);
  EXPECT_EQ(lumaview_set_zoom_move(picture, static_cast<lumaview_key_direction_e>(-1), &x, &y), -1);
  EXPECT_EQ(lumaview_set_3d_mode(picture, 4), -1);
  EXPECT_EQ(lumaview_set_3d_mode(picture, -1), -1);
  for (const auto& [zoom, rotation] : {std::pair{0, 0}, {17, 0}, {-1, 0}, {1, 45}, {1, 360}, {1, -90}}) {
    lumaview_display_param_s param{};
    param.field[kDisplayParamZoomRatio] = zoom;
    param.field[kDisplayParamRotation] = rotation;
    EXPECT_EQ(lumaview_set_display_param(picture, param), -1) << zoom << ", " << rotation;
  }
  for (int type : {2, 3, 4, -1}) {
    EXPECT_EQ(lumaview_add_event_callback(picture, static_cast<lumaview_event_type_e>(type), Reports::Callback), -1);
  }
  EXPECT_EQ(lumaview_add_event_callback(effect, LUMAVIEW_EVENT_PARSE, Reports::Callback), -1);
}

TEST_F(GivenPicture, SizeIsThatOfThePictureTurnedAsItsFileSays) {
  int width = 0;
  int height = 0;
  EXPECT_EQ(lumaview_get_size(picture, &width, &height), 0);
  EXPECT_EQ(width, 48);
  EXPECT_EQ(height, 64);
}

TEST_F(GivenPicture, ParseWithoutACallbackReadsTheHeaderAtOnce) {
  picture_type_e type = LUMAVIEW_TYPE_UNKNOWN;
  EXPECT_EQ(lumaview_parse(picture), 0);
  EXPECT_EQ(lumaview_get_picture_type(picture, &type), 0);
  EXPECT_EQ(type, LUMAVIEW_TYPE_JPEG);

  _lumaview_s* broken = nullptr;
  const auto text = folder.WriteBytes("text.png", "no picture");
  ASSERT_EQ(lumaview_create_from_url(text.c_str(), &broken), 0);
  EXPECT_EQ(lumaview_parse(broken), -5);
  EXPECT_EQ(lumaview_get_picture_type(broken, &type), -5);
  EXPECT_EQ(lumaview_destroy(&broken), 0);
}

TEST_F(GivenPicture, ThumbnailFitsAndIsUpright) {
  _lumaview_thumbnail_s thumbnail{};
  EXPECT_EQ(lumaview_get_thumbnail(&thumbnail), 0);
  EXPECT_EQ(thumbnail.height, 90);
  EXPECT_EQ(thumbnail.width, 68);  // 48 : 64 of 90, rounded
  EXPECT_EQ(thumbnail.stride, thumbnail.width * 4);
  const uint32_t pixel = *static_cast<const uint32_t*>(thumbnail.pixels);
  EXPECT_NEAR(static_cast<int>(pixel & 0xFF), 0x80, 3);
  EXPECT_EQ(pixel >> 24, 0xFFu);

  EXPECT_EQ(lumaview_destroy(&picture), 0);
  EXPECT_EQ(lumaview_get_thumbnail(&thumbnail), -2);
}

TEST_F(GivenPicture, ThumbnailOfADecodedPictureNeedsNoFile) {
  lumaview_add_event_callback(picture, LUMAVIEW_EVENT_DECODE, Reports::Callback);
  EXPECT_EQ(lumaview_decode(picture, 0), 0);
  EXPECT_EQ(Reports::Get().Next(), (Report{picture, 1, 3}));
  ASSERT_EQ(truncate(path.c_str(), 0), 0);

  _lumaview_thumbnail_s thumbnail{};
  EXPECT_EQ(lumaview_get_thumbnail(&thumbnail), 0);

  EXPECT_EQ(thumbnail.height, 90);
  EXPECT_EQ(thumbnail.width, 68);
  const auto* pixels = static_cast<const uint32_t*>(thumbnail.pixels);
  for (const int at : {0, 67, 89 * 68, 89 * 68 + 67}) {
    EXPECT_NEAR(static_cast<int>(pixels[at] & 0xFF), 0x80, 3) << at;
  }
}

TEST_F(GivenPicture, ZoomRatioIsNotKnownBeforeTheDecode) {
  float ratio = 0;
  EXPECT_EQ(lumaview_get_zoom_ratio(picture, &ratio), -2);

  lumaview_add_event_callback(picture, LUMAVIEW_EVENT_DECODE, Reports::Callback);
  EXPECT_EQ(lumaview_decode(picture, 0), 0);

  EXPECT_EQ(Reports::Get().Next(), (Report{picture, 1, 3}));
  EXPECT_EQ(lumaview_get_zoom_ratio(picture, &ratio), 0);
  EXPECT_EQ(ratio, 1.0f);
}

TEST_F(GivenPicture, EffectListIsOneNameALineAndTerminated) {
  char list[400];
  std::memset(list, 'x', sizeof list);
  EXPECT_EQ(lumaview_get_transition_effect_list(list), 0);
  const std::string names(list, strnlen(list, sizeof list));
  EXPECT_LE(names.size(), 254u);
  EXPECT_EQ(std::count(names.begin(), names.end(), '\n'), 24);
  EXPECT_EQ(names.back(), '\n');
  EXPECT_EQ(names.rfind("fade\n", 0), 0u);
}

TEST_F(GivenPicture, EveryErrorHasAText) {
  for (int code = -9; code <= 0; ++code) {
    EXPECT_STRNE(lumaview_strerror(code), "unknown error") << code;
  }
  EXPECT_STREQ(lumaview_strerror(77), "unknown error");
}

class GivenFolder : public ::testing::Test {
 protected:
  void ExpectNotOpened(const std::string& path) {
    auto* untouched = reinterpret_cast<_lumaview_s*>(&folder);
    _lumaview_s* picture = untouched;
    EXPECT_EQ(lumaview_create_from_url(path.c_str(), &picture), -4) << path;
    EXPECT_EQ(picture, untouched);
  }
  PictureFolder folder;
};

TEST_F(GivenFolder, MissingFileIsNotOpened) {
  ExpectNotOpened(folder.GetPath("missing.jpg"));
  ExpectNotOpened("");
  ExpectNotOpened("file:///etc/hostname");
  ExpectNotOpened(std::string(100'000, 'p'));
}

TEST_F(GivenFolder, FolderIsNotOpened) {
  ExpectNotOpened(folder.GetPath("."));
}

TEST_F(GivenFolder, DeviceIsNotOpened) {
  ExpectNotOpened("/dev/zero");
  ExpectNotOpened("/dev/full");
}

TEST_F(GivenFolder, PipeIsRefusedAtOnce) {
  const auto path = folder.GetPath("pipe.jpg");
  ASSERT_EQ(mkfifo(path.c_str(), 0600), 0);
  ExpectNotOpened(path);
}

TEST_F(GivenFolder, SocketIsNotOpened) {
  const auto path = folder.GetPath("socket.jpg");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  const int listener = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  ASSERT_EQ(bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
  ExpectNotOpened(path);
  close(listener);
}

}  // namespace
}  // namespace lumaview_test
