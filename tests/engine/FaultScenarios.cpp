// SPDX-License-Identifier: Apache-2.0
#include "tests/engine/FaultScenarios.h"

#include <string>

namespace faults {
namespace {

using olm::CEmpEnginePicture;
using olm::CPictureAdapter;

constexpr const char* kPicture = "/pictures/a.jpg";
constexpr const char* kKey = "db/KestWebApp/abcd1234";

/// A step that runs an operation of the adapter, whose result is written down.
template <typename Operation>
Step On(Operation operation) {
  return [operation](CEmpEnginePicture& engine) { kit::Run([&] { return operation(*engine.m_pAdapter); }); };
}

Step Identify() {
  return On([](CPictureAdapter& a) { a.SetAppID(0, "app", "abcd1234.Viewer"); });
}

Step InitPlayer(const char* url) {
  return On([url](CPictureAdapter& a) { return a.InitPlayer(url); });
}

Step Set3DMode() {
  return On([](CPictureAdapter& a) { return a.SetPlayerProperty(2, "", 1); });
}

Step Play(const char* url) {
  return On([url](CPictureAdapter& a) { return a.Play(url, 0); });
}

Step StartPlayback() {
  return On([](CPictureAdapter& a) { return a.StartPlayback(0); });
}

Step Place(int x, int y, int width, int height) {
  return On([=](CPictureAdapter& a) { return a.SetDisplayArea(x, y, width, height, 540, true); });
}

Step ShowEffect(int type) {
  return On([type](CPictureAdapter& a) { return a.EffectShow(static_cast<effect_type_e>(type)); });
}

/// The store hands a value of the state key over, whether it was asked to or not.
Step Announce(const char* value) {
  return [value](CEmpEnginePicture& engine) {
    std::string key = kKey;
    std::string text = value;
    keynode_t node{};
    node.keyname = key.data();
    node.value.s = text.data();
    CPictureAdapter::AppNotifyCB(&node, &engine);
  };
}

int Held(bool held) {
  return held ? 1 : 0;
}

std::string WindowText(Window window) {
  if (window == olm::kNoWindow) return "-1";
  char text[32];
  std::snprintf(text, sizeof text, "0x%lx", window);
  return text;
}

/// One journal entry with what the fields hold; of handles only whether there is one.
void AppendState(const CPictureAdapter* adapter) {
  if (adapter == nullptr) {
    kit::Append("state no adapter");
    return;
  }
  const CPictureAdapter& a = *adapter;
  std::string text = "state m_cWin=" + WindowText(a.m_cWin) + " window_id=" + WindowText(CPictureAdapter::window_id);
  const std::pair<const char*, int> numbers[] = {
      {"winNum", CPictureAdapter::winNum},
      {"m_pDisplay", Held(a.m_pDisplay != nullptr)},
      {"m_GC", Held(a.m_GC != nullptr)},
      {"m_pImage", Held(a.m_pImage != nullptr)},
      {"m_pPicture", Held(a.m_pPicture != nullptr)},
      {"m_pTransitionEffect", Held(a.m_pTransitionEffect != nullptr)},
      {"m_thread_id", Held(a.m_thread_id != pthread_t{})},
      {"m_pMainLoop", Held(a.m_pMainLoop != nullptr)},
      {"m_bVconfRegistered", Held(a.m_bVconfRegistered)},
      {"m_bInitWindow", Held(a.m_bInitWindow)},
      {"m_bInitDisplay", Held(a.m_bInitDisplay)},
      {"lumaviewInitFlag", CPictureAdapter::lumaviewInitFlag},
      {"m_b3DSettingChanged", Held(a.m_b3DSettingChanged)},
  };
  for (const auto& [name, value] : numbers) text += std::string(" ") + name + "=" + std::to_string(value);
  kit::Append(text + " m_cURL=\"" + a.m_cURL + "\"");
}

}  // namespace

Scenario Playing() {
  return {"Playing",
          {Identify(), Place(0, 0, 960, 540), InitPlayer("file:///pictures/a.jpg"), Set3DMode(), StartPlayback(),
           On([](CPictureAdapter& a) {
             CPictureAdapter::OnParseEventCB(a.m_pPicture, LUMAVIEW_EVENT_PARSE, LUMAVIEW_RESULT_PARSE_OK);
           }),
           On([](CPictureAdapter& a) {
             CPictureAdapter::OnDecodeEventCB(a.m_pPicture, LUMAVIEW_EVENT_DECODE, LUMAVIEW_RESULT_DECODE_OK);
           }),
           Place(100, 50, 200, 100), On([](CPictureAdapter& a) { return a.ClearScreen(); }), Play("/pictures/b.jpg"),
           On([](CPictureAdapter& a) { return a.ChangePlayingURL("/pictures/c.jpg"); }), StartPlayback(),
           On([](CPictureAdapter& a) { return a.Stop(); }), InitPlayer("/pictures/d.jpg"), Play("/pictures/e.jpg")}};
}

Scenario Effects() {
  return {"Effects",
          {Identify(), InitPlayer(kPicture), Set3DMode(),
           On([](CPictureAdapter& a) { return a.IsTransitionEffectAvailable(); }),
           [](CEmpEnginePicture& engine) {
             std::string result;
             kit::Run([&] { return engine.Execute(result, "GetTransitionEffectList", "", "", "", ""); });
           },
           ShowEffect(3), On([](CPictureAdapter& a) {
             CPictureAdapter::OnEffectEventCB(a.m_pTransitionEffect, LUMAVIEW_EVENT_EFFECT, LUMAVIEW_RESULT_EFFECT_OK);
           }),
           On([](CPictureAdapter& a) { return a.AppPause(); }), ShowEffect(36),
           On([](CPictureAdapter& a) { return a.Stop(); })}};
}

Scenario Lifecycle() {
  return {"Lifecycle",
          {Identify(), InitPlayer(kPicture), StartPlayback(), Announce("pause"), Announce("resume"),
           Place(100, 50, 200, 100), Announce("destroy"), Announce("pause")}};
}

Scenario Views() {
  return {"Views",
          {Identify(), InitPlayer(kPicture), StartPlayback(), On([](CPictureAdapter& a) {
             int width = 0;
             int height = 0;
             return a.GetPictureSize(&width, &height);
           }),
           On([](CPictureAdapter& a) {
             picture_type_e type{};
             return a.GetPictureType(&type);
           }),
           On([](CPictureAdapter& a) {
             unsigned int width = 0;
             unsigned int height = 0;
             return a.GetVideoResolution(&width, &height);
           }),
           On([](CPictureAdapter& a) {
             _lumaview_thumbnail_s thumbnail{};
             return a.GetThumbnail(&thumbnail);
           }),
           On([](CPictureAdapter& a) {
             int ratio = 0;
             return a.GetZoomRatio(&ratio);
           }),
           On([](CPictureAdapter& a) { return a.SetZoomMove(LUMAVIEW_DIRECTION_DOWN); }),
           On([](CPictureAdapter& a) { return a.SetZoomRatio(2); }),
           On([](CPictureAdapter& a) { return a.SetRotation(90, false); }),
           On([](CPictureAdapter& a) { return a.SetDisplayLock(true); }), On([](CPictureAdapter& a) {
             std::string url = "/pictures/p.png";
             return a.ParsePictureType(url.data());
           })}};
}

void LiveThrough(const Scenario& scenario) {
  kit::Begin();
  auto engine = std::make_unique<CEmpEnginePicture>();
  AppendState(engine->m_pAdapter);
  for (const Step& step : scenario.steps) {
    step(*engine);
    AppendState(engine->m_pAdapter);
  }
  engine.reset();
}

}  // namespace faults
