// SPDX-License-Identifier: Apache-2.0
#include "host/CommandRows.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <locale>
#include <sstream>

#include "adapter/CPictureAdapter.h"
#include "adapter/PictureLog.h"

namespace olm {
namespace {

constexpr int kBaseResolution = 540;     ///< lines of the layout that the application's rectangles are in
constexpr size_t kTextCapacity = 255;    ///< bytes of a text result, the terminating NUL among them
constexpr size_t kTypeTextCapacity = 4;  ///< so that three characters of a picture type survive

template <typename T>
std::string Decimal(T number) {
  std::ostringstream text;
  text.imbue(std::locale::classic());
  text << number;
  return text.str();
}

Outcome Answer(const CommandCall& call, int number) {
  call.engine.SetReturnValueInteger(call.result, number);
  return Outcome::kAnswered;
}

Outcome Answer(const CommandCall& call, const char* text) {
  call.engine.SetReturnValueASCII(call.result, text);
  return Outcome::kAnswered;
}

Outcome Answer(const CommandCall& call, std::string& text) {
  call.engine.SetReturnValueASCII(call.result, text);
  return Outcome::kAnswered;
}

/// `list` may fill its buffer without a terminating NUL, so no more than that is read.
void AnswerEffectList(const CommandCall& c, const char* list) {
  LOG_BLUE(c.operation, "EffectList is: \n%.400s\n", list);
  std::string yourparam1(list, strnlen(list, kTextCapacity - 1));
  LOG_BLUE(c.operation, "---- yourparam1 is: \n%s\n", yourparam1.c_str());
  std::ranges::replace(yourparam1, '\n', ',');
  LOG_BLUE(c.operation, " After convert yourparam1 is: \n%s\n", yourparam1.c_str());
  Answer(c, yourparam1);
}

}  // namespace

Outcome InitPlayer(const CommandCall& c) {
  // The identity is set even by a command without a path.
  c.engine.GetAppInfo(E_APP_INFO_DESKTOP_ID);
  const std::string appId = c.engine.GetAppInfo(E_APP_INFO_APP_ID);
  const std::string widgetId = c.engine.GetAppInfo(E_APP_INFO_WIDGET_ID);
  constexpr int kDesktopId = 0;
  LOG_BLUE(c.operation, "Desktopid= %d AppID = %s, WidgetID = %s", kDesktopId, appId.c_str(), widgetId.c_str());
  c.adapter.SetAppID(kDesktopId, appId, widgetId);
  if (!RequireParam1(c)) {
    return Outcome::kAnswered;
  }
  if (!c.adapter.InitPlayer(c.param1.c_str())) {
    return Outcome::kFailed;
  }
  ++s_initPlayerCount;
  return Outcome::kDone;
}

Outcome Play(const CommandCall& c) {
  if (c.param1.empty()) {
    LOG_RED(c.operation, "strParam1.empty() or strParam2.empty() is NULL\n");
    return Answer(c, 0);
  }
  LOG_BLUE(c.operation, "Play: url=%s; \n", c.param1.c_str());
  if (!c.adapter.Play(c.param1.c_str(), 0)) {
    return Outcome::kFailed;
  }
  ++s_playCount;
  return Outcome::kDone;
}

Outcome SetDisplayArea(const CommandCall& c) {
  if (c.param1.empty() || c.param2.empty() || c.param3.empty() || c.param4.empty()) {
    return Answer(c, 0);
  }
  LOG_BLUE(c.operation, " strParam1: %s\n strParam2: %s\n strParam3: %s\n strParam4: %s\n", c.param1.c_str(),
           c.param2.c_str(), c.param3.c_str(), c.param4.c_str());
  const int x = Number(c.param1);
  const int y = Number(c.param2);
  const int width = Number(c.param3);
  const int height = Number(c.param4);
  LOG_BLUE(c.operation, "x: %d  y: %d  width: %d  height: %d \n", x, y, width, height);
  return c.adapter.SetDisplayArea(x, y, width, height, kBaseResolution, true) ? Outcome::kDone : Outcome::kFailed;
}

Outcome GetPictureSize(const CommandCall& c) {
  int width = 0;
  int height = 0;
  if (!c.adapter.GetPictureSize(&width, &height)) {
    return Outcome::kFailed;
  }
  LOG_BLUE(c.operation, "GetPictureSize:width=%d, height=%d\n", width, height);
  std::string size = Decimal(width) + "*" + Decimal(height);
  Answer(c, size);
  LOG_BLUE(c.operation, "GetPictureSize: width*height=%s\n", size.c_str());
  return Outcome::kAnswered;
}

Outcome GetVideoResolution(const CommandCall& c) {
  unsigned int width = 0;
  unsigned int height = 0;
  if (!c.adapter.GetVideoResolution(&width, &height)) {
    return Outcome::kFailed;
  }
  LOG_BLUE(c.operation, "GetVideoResolution:width=%d, height=%d\n", static_cast<int>(width), static_cast<int>(height));
  std::string size = Decimal(width) + "*" + Decimal(height);
  Answer(c, size);
  LOG_BLUE(c.operation, "GetVideoResolution: width*height=%s\n", size.c_str());
  return Outcome::kAnswered;
}

Outcome GetPictureType(const CommandCall& c) {
  picture_type_e type;
  if (!c.adapter.GetPictureType(&type)) {
    return Outcome::kFailed;
  }
  LOG_BLUE(c.operation, "GetPictureType:type=%d\n", type);
  char text[kTypeTextCapacity];
  std::snprintf(text, sizeof text, "%d", type);
  return Answer(c, text);
}

Outcome AddEventCallback(const CommandCall& c) {
  // The address of the text itself is what is stored; the adapter never calls it, and the text is soon gone.
  const auto callback = reinterpret_cast<PhotoPlayerEventCallback>(const_cast<char*>(c.param1.c_str()));
  return c.adapter.AddEventCallback(callback) ? Outcome::kDone : Outcome::kFailed;
}

Outcome GetThumbnail(const CommandCall& c) {
  _lumaview_thumbnail_s thumbnail;
  return c.adapter.GetThumbnail(&thumbnail) ? Outcome::kDone : Outcome::kFailed;
}

Outcome GetZoomRatio(const CommandCall& c) {
  int ratio = 0;
  if (!c.adapter.GetZoomRatio(&ratio)) {
    return Outcome::kFailed;
  }
  LOG_BLUE(c.operation, "GetZoomRatio: zoom ratio=%d\n", ratio);
  return Answer(c, ratio);
}

Outcome IsTransitionEffectAvailable(const CommandCall& c) {
  // A text for yes and an integer for no: applications rely on the difference.
  if (!c.adapter.IsTransitionEffectAvailable()) {
    LOG_BLUE(c.operation, "Effect is not available!\n");
    return Answer(c, 0);
  }
  LOG_BLUE(c.operation, "Effect is available!\n");
  char text[kTextCapacity];
  std::snprintf(text, sizeof text, "%d", 1);
  return Answer(c, text);
}

Outcome GetTransitionEffectList(const CommandCall& c) {
  auto* list = static_cast<char*>(std::malloc(kEffectListCapacity));
  if (list == nullptr || !c.adapter.GetTransitionEffectList(&list)) {
    LOG_RED(c.operation, "GetTransitionEffectList failed\n");
    Answer(c, 0);
  } else {
    AnswerEffectList(c, list);
  }
  std::free(list);  // the adapter may have put another one in its place
  return Outcome::kAnswered;
}

Outcome ClearScreenForImage(const CommandCall& c) {
  if (!c.adapter.ClearScreenForImage()) {
    LOG_BLUE(c.operation, "ClearScreenForImage failed!\n");
    return Answer(c, 0);
  }
  LOG_BLUE(c.operation, "ClearScreenForImage succeed!\n");
  return Outcome::kDone;
}

Outcome ClearScreen(const CommandCall& c) {
  if (!c.adapter.ClearScreen()) {
    LOG_BLUE(c.operation, "ClearScreen failed!\n");
    return Answer(c, 0);
  }
  LOG_BLUE(c.operation, "ClearScreen succeed!\n");
  return Outcome::kDone;
}

Outcome SetPlayerProperty(const CommandCall& c) {
  const int type = Number(c.param1);
  const int value = c.param3.empty() ? 0 : Number(c.param3);
  LOG_BLUE(c.operation, "SetPlayerProperty string strParam1: %s \n", c.param1.c_str());
  return c.adapter.SetPlayerProperty(type, c.param2.c_str(), value) ? Outcome::kDone : Outcome::kFailed;
}

}  // namespace olm
