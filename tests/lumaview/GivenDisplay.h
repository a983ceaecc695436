// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_LUMAVIEW_GIVENDISPLAY_H
#define TESTS_LUMAVIEW_GIVENDISPLAY_H

#include <gtest/gtest.h>

#include <string>

#include "platform/lumaview.h"
#include "tests/lumaview/PictureFiles.h"
#include "tests/lumaview/Screen.h"

namespace lumaview_test {

inline constexpr uint32_t kRed = 0xFF0000;
inline constexpr uint32_t kGreen = 0x00FF00;
inline constexpr uint32_t kBlue = 0x0000FF;
inline constexpr uint32_t kWhite = 0xFFFFFF;
inline constexpr uint32_t kBlack = 0x000000;

/// What screens of 16 bits keep of the colours above.
inline bool SameColour(uint32_t a, uint32_t b) {
  return (a & 0xF8FCF8) == (b & 0xF8FCF8);
}

/// A window of 320 x 240 with a display on it.
class GivenDisplay : public ::testing::Test {
 protected:
  static constexpr int kWidth = 320;
  static constexpr int kHeight = 240;

  GivenDisplay() : window(screen.MakeWindow(kWidth, kHeight)) {
    Reports::Get().Clear();
    EXPECT_EQ(lumaview_init_display(&window), 0);
  }
  ~GivenDisplay() override {
    if (picture != nullptr) {
      lumaview_destroy(&picture);
    }
    if (effect != nullptr) {
      lumaview_destroy_transition_effect(&effect);
    }
    if (!displayDestroyed) {
      lumaview_destroy_display(&window);
    }
    screen.Destroy(window);
  }

  /// As the engine does it: parse, and decode from inside the parse callback.
  void StartShowing(const std::string& path) {
    ASSERT_EQ(lumaview_create_from_url(path.c_str(), &picture), 0);
    ASSERT_EQ(lumaview_set_window(picture, window), 0);
    ASSERT_EQ(lumaview_add_event_callback(picture, LUMAVIEW_EVENT_PARSE, DecodeWhenParsed), 0);
    ASSERT_EQ(lumaview_parse(picture), 0);
  }
  void ShowUntilSeen(const std::string& path) {
    StartShowing(path);
    EXPECT_EQ(Reports::Get().Next(), (Report{picture, 0, 0}));
    EXPECT_EQ(Reports::Get().Next(), (Report{picture, 1, 3}));
  }
  void DestroyPicture() { EXPECT_EQ(lumaview_destroy(&picture), 0); }

  void DestroyDisplay() {
    EXPECT_EQ(lumaview_destroy_display(&window), 0);
    displayDestroyed = true;
  }

  void StartEffect(int number, const std::string& path) {
    if (effect == nullptr) {
      ASSERT_EQ(lumaview_create_transition_effect(36, &effect), 0);
      ASSERT_EQ(lumaview_set_effect_window_handle(effect, window), 0);
      ASSERT_EQ(lumaview_add_event_callback(effect, LUMAVIEW_EVENT_EFFECT, Reports::Callback), 0);
    }
    ASSERT_EQ(lumaview_set_effect_type(effect, static_cast<effect_type_e>(number)), 0);
    ASSERT_EQ(lumaview_run_transition_effect(effect, path.c_str()), 0);
  }

  bool Shows(int x, int y, uint32_t colour) { return SameColour(screen.PixelAt(window, x, y), colour); }
  bool ShowsEventually(int x, int y, uint32_t colour) {
    return Eventually([&] { return Shows(x, y, colour); });
  }

  static int DecodeWhenParsed(void* record, lumaview_event_type_e type, lumaview_event_result_e result) {
    Reports::Callback(record, type, result);
    if (result == LUMAVIEW_RESULT_PARSE_OK) {
      auto* parsed = static_cast<_lumaview_s*>(record);
      lumaview_add_event_callback(parsed, LUMAVIEW_EVENT_DECODE, Reports::Callback);
      lumaview_decode(parsed, 0);
    }
    return 0;
  }

  PictureFolder folder;
  Screen screen;
  Window window;
  _lumaview_s* picture = nullptr;
  _lumaview_effect_s* effect = nullptr;

 private:
  bool displayDestroyed = false;
};

}  // namespace lumaview_test

#endif
