// SPDX-License-Identifier: Apache-2.0
/// The picture library: no pictures, no threads; records that remember their callbacks.
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "adapter/CPictureAdapter.h"
#include "platform/lumaview.h"
#include "tests/kit/Journal.h"
#include "tests/kit/Names.h"
#include "tests/kit/Script.h"
#include "tests/kit/World.h"

namespace kit {
namespace {

constexpr size_t kEffectListBytes = 400;

/// While `busyIn` names a thread, that thread runs a callback of the record.
struct Picture {
  _lumaview_s record{};
  std::thread::id busyIn;
  lumaview_event_cb onParse = nullptr;
  lumaview_event_cb onDecode = nullptr;
};

struct Effect {
  _lumaview_effect_s record{};
  std::thread::id busyIn;
  lumaview_event_cb onEffect = nullptr;
};

struct Library {
  std::mutex mutex;
  std::condition_variable idle;                    ///< some record's callback has returned
  std::vector<std::shared_ptr<Picture>> pictures;  ///< the newest last
  std::vector<std::shared_ptr<Effect>> effects;
};

Library& TheLibrary() {
  static auto& library = *new Library;  // never destroyed: what is called while the process ends asks for it too
  return library;
}

template <typename Owner, typename Record>
Owner* Find(const std::vector<std::shared_ptr<Owner>>& owners, const Record* record) {
  for (const auto& owner : owners) {
    if (&owner->record == record) return owner.get();
  }
  return nullptr;
}

/// Takes the record out, after its callback has returned; from inside that callback at once.
template <typename Owner, typename Record>
void Remove(std::vector<std::shared_ptr<Owner>>& owners, const Record* record) {
  std::unique_lock<std::mutex> lock(TheLibrary().mutex);
  TheLibrary().idle.wait(lock, [&owners, record] {
    const Owner* owner = Find(owners, record);
    return owner == nullptr || owner->busyIn == std::thread::id() || owner->busyIn == std::this_thread::get_id();
  });
  std::erase_if(owners, [record](const auto& owner) { return &owner->record == record; });
}

std::string PictureName(const _lumaview_s* picture) {
  if (picture != nullptr && !IsAlive(Kind::kPicture, picture)) Violation("a picture that does not exist is used");
  return NameOf(Kind::kPicture, picture);
}

std::string EffectName(const _lumaview_effect_s* effect) {
  if (effect != nullptr && !IsAlive(Kind::kEffect, effect)) Violation("an effect that does not exist is used");
  return NameOf(Kind::kEffect, effect);
}

/// With what the engine wrote into the record.
std::string PictureState(_lumaview_s* picture) {
  const std::string name = PictureName(picture);
  if (!IsAlive(Kind::kPicture, picture)) return name;
  const void* user = std::atomic_ref<void*>(picture->user_data).load();
  const int flag = std::atomic_ref<int32_t>(picture->flag).load();
  return name + "{user_data=" + NameOfAdapter(user) + ", flag=" + std::to_string(flag) + "}";
}

std::string EffectState(_lumaview_effect_s* effect) {
  const std::string name = EffectName(effect);
  if (!IsAlive(Kind::kEffect, effect)) return name;
  return name + "{user_data=" + NameOfAdapter(std::atomic_ref<void*>(effect->user_data).load()) + "}";
}

std::string WindowId(Window window) {
  if (static_cast<uint32_t>(window) == UINT32_MAX) return "-1";
  char text[32];
  std::snprintf(text, sizeof text, "0x%lx", window);
  return text;
}

std::string Text(const char* text) {
  return text == nullptr ? "NULL" : Quoted(text);
}

std::string CallbackName(lumaview_event_cb callback) {
  if (callback == nullptr) return "NULL";
  if (callback == &olm::CPictureAdapter::OnParseEventCB) return "OnParseEventCB";
  if (callback == &olm::CPictureAdapter::OnDecodeEventCB) return "OnDecodeEventCB";
  if (callback == &olm::CPictureAdapter::OnEffectEventCB) return "OnEffectEventCB";
  return "other";
}

template <typename Owner>
struct Report {
  std::shared_ptr<Owner> owner;
  lumaview_event_cb callback;
};

/// Of the newest record with such a callback that runs none now; it is marked as busy in this thread. The owner is null
/// when there is none.
template <typename Owner>
Report<Owner> TakeReport(const std::vector<std::shared_ptr<Owner>>& owners, lumaview_event_cb Owner::*callback) {
  const std::lock_guard<std::mutex> lock(TheLibrary().mutex);
  for (auto owner = owners.rbegin(); owner != owners.rend(); ++owner) {
    if ((**owner).*callback == nullptr || (*owner)->busyIn != std::thread::id()) continue;
    (*owner)->busyIn = std::this_thread::get_id();
    return {*owner, (**owner).*callback};
  }
  return {};
}

template <typename Owner>
bool Fire(const std::vector<std::shared_ptr<Owner>>& owners, lumaview_event_cb Owner::*callback,
          lumaview_event_type_e type, int result) {
  const Report<Owner> report = TakeReport(owners, callback);
  if (report.owner == nullptr) return false;
  report.callback(&report.owner->record, type, static_cast<lumaview_event_result_e>(result));
  const std::lock_guard<std::mutex> lock(TheLibrary().mutex);
  report.owner->busyIn = std::thread::id();
  TheLibrary().idle.notify_all();
  return true;
}

}  // namespace

bool FireParse(int result) {
  return Fire(TheLibrary().pictures, &Picture::onParse, LUMAVIEW_EVENT_PARSE, result);
}
bool FireDecode(int result) {
  return Fire(TheLibrary().pictures, &Picture::onDecode, LUMAVIEW_EVENT_DECODE, result);
}
bool FireEffect(int result) {
  return Fire(TheLibrary().effects, &Effect::onEffect, LUMAVIEW_EVENT_EFFECT, result);
}

void ResetLumaview() {
  TheLibrary().pictures.clear();
  TheLibrary().effects.clear();
}

}  // namespace kit

using namespace kit;

int lumaview_pre_loading() {
  return Call("lumaview_pre_loading").Done(0);
}

int lumaview_create_from_url(const char* path, _lumaview_s** picture) {
  Call call("lumaview_create_from_url");
  call.Arg(Text(path)).Arg(NameOfField(picture));
  if (!call.Fails()) {
    auto made = std::make_shared<Picture>();
    *picture = &made->record;
    const std::lock_guard<std::mutex> lock(TheLibrary().mutex);
    TheLibrary().pictures.push_back(std::move(made));
    call.Out(NameNew(Kind::kPicture, *picture));
  }
  return call.Done(0);
}

int lumaview_destroy(_lumaview_s** picture) {
  Call call("lumaview_destroy");
  call.Arg(NameOfField(picture));
  PictureName(*picture);
  if (call.Fails()) return call.Done(0);
  Remove(TheLibrary().pictures, *picture);
  Release(Kind::kPicture, *picture);
  *picture = nullptr;
  return call.Done(0);
}

int lumaview_parse(_lumaview_s* picture) {
  return Call("lumaview_parse").Arg(PictureState(picture)).Done(0);
}

int lumaview_decode(_lumaview_s* picture, int mode) {
  return Call("lumaview_decode").Arg(PictureState(picture)).Arg(mode).Done(0);
}

int lumaview_add_event_callback(void* record, lumaview_event_type_e type, lumaview_event_cb callback) {
  Call call("lumaview_add_event_callback");
  const bool isEffect = IsAlive(Kind::kEffect, record);
  call.Arg(isEffect ? EffectState(static_cast<_lumaview_effect_s*>(record))
                    : PictureState(static_cast<_lumaview_s*>(record)));
  call.Arg(type).Arg(CallbackName(callback));
  if (!call.Fails()) {
    const std::lock_guard<std::mutex> lock(TheLibrary().mutex);
    if (Effect* effect = Find(TheLibrary().effects, static_cast<_lumaview_effect_s*>(record))) {
      if (type == LUMAVIEW_EVENT_EFFECT) effect->onEffect = callback;
    } else if (Picture* owner = Find(TheLibrary().pictures, static_cast<_lumaview_s*>(record))) {
      if (type == LUMAVIEW_EVENT_PARSE) owner->onParse = callback;
      if (type == LUMAVIEW_EVENT_DECODE) owner->onDecode = callback;
    }
  }
  return call.Done(0);
}

int lumaview_init_display(Window* window) {
  return Call("lumaview_init_display").Arg(NameOfField(window)).Done(0);
}

int lumaview_destroy_display(Window* window) {
  return Call("lumaview_destroy_display").Arg(NameOfField(window)).Done(0);
}

int lumaview_set_window(_lumaview_s* picture, Window window) {
  return Call("lumaview_set_window").Arg(PictureName(picture)).Arg(WindowId(window)).Done(0);
}

int lumaview_set_3d_mode(_lumaview_s* picture, int mode) {
  return Call("lumaview_set_3d_mode").Arg(PictureName(picture)).Arg(mode).Done(0);
}

int lumaview_get_picture_type(_lumaview_s* picture, picture_type_e* type) {
  Call call("lumaview_get_picture_type");
  call.Arg(PictureName(picture)).Arg(NameOfField(type));
  if (!call.Fails()) {
    *type = static_cast<picture_type_e>(world().pictureType);
    call.Out(std::to_string(*type));
  }
  return call.Done(0);
}

int lumaview_get_size(_lumaview_s* picture, int* width, int* height) {
  Call call("lumaview_get_size");
  call.Arg(PictureName(picture)).Arg(NameOfField(width)).Arg(NameOfField(height));
  if (!call.Fails()) {
    *width = world().pictureWidth;
    *height = world().pictureHeight;
    call.Out(std::to_string(*width)).Out(std::to_string(*height));
  }
  return call.Done(0);
}

int lumaview_get_thumbnail(_lumaview_thumbnail_s* thumbnail) {
  return Call("lumaview_get_thumbnail").Arg(NameOfField(thumbnail)).Done(0);
}

int lumaview_get_zoom_ratio(_lumaview_s* picture, float* ratio) {
  Call call("lumaview_get_zoom_ratio");
  call.Arg(PictureName(picture)).Arg(NameOfField(ratio));
  if (!call.Fails()) {
    *ratio = world().zoomRatio;
    char text[32];
    std::snprintf(text, sizeof text, "%g", static_cast<double>(*ratio));
    call.Out(text);
  }
  return call.Done(0);
}

int lumaview_set_zoom_move(_lumaview_s* picture, lumaview_key_direction_e direction, int* x, int* y) {
  if (*x != 0 || *y != 0) Violation("lumaview_set_zoom_move is given numbers other than 0");
  Call call("lumaview_set_zoom_move");
  return call.Arg(PictureName(picture)).Arg(direction).Arg(NameOfField(x)).Arg(NameOfField(y)).Done(0);
}

int lumaview_set_display_param(_lumaview_s* picture, lumaview_display_param_s param) {
  std::string fields;
  for (const int32_t field : param.field) fields += (fields.empty() ? "{" : ", ") + std::to_string(field);
  return Call("lumaview_set_display_param").Arg(PictureName(picture)).Arg(fields + "}").Done(0);
}

int lumaview_set_display_lock(_lumaview_s* picture, Window window, int lock) {
  return Call("lumaview_set_display_lock").Arg(PictureName(picture)).Arg(WindowId(window)).Arg(lock).Done(0);
}

int lumaview_create_transition_effect(int type, _lumaview_effect_s** effect) {
  Call call("lumaview_create_transition_effect");
  call.Arg(type).Arg(NameOfField(effect));
  if (!call.Fails()) {
    auto made = std::make_shared<Effect>();
    *effect = &made->record;
    const std::lock_guard<std::mutex> lock(TheLibrary().mutex);
    TheLibrary().effects.push_back(std::move(made));
    call.Out(NameNew(Kind::kEffect, *effect));
  }
  return call.Done(0);
}

int lumaview_destroy_transition_effect(_lumaview_effect_s** effect) {
  Call call("lumaview_destroy_transition_effect");
  call.Arg(NameOfField(effect));
  EffectName(*effect);
  if (call.Fails()) return call.Done(0);
  Remove(TheLibrary().effects, *effect);
  Release(Kind::kEffect, *effect);
  *effect = nullptr;
  return call.Done(0);
}

int lumaview_set_effect_window_handle(_lumaview_effect_s* effect, Window window) {
  return Call("lumaview_set_effect_window_handle").Arg(EffectName(effect)).Arg(WindowId(window)).Done(0);
}

int lumaview_set_effect_type(_lumaview_effect_s* effect, effect_type_e type) {
  return Call("lumaview_set_effect_type").Arg(EffectName(effect)).Arg(type).Done(0);
}

int lumaview_run_transition_effect(_lumaview_effect_s* effect, const char* path) {
  return Call("lumaview_run_transition_effect").Arg(EffectName(effect)).Arg(Text(path)).Done(0);
}

int lumaview_is_transition_effect_available(_lumaview_s* picture, _lumaview_effect_s* effect, Window window) {
  Call call("lumaview_is_transition_effect_available");
  call.Arg(PictureName(picture)).Arg(EffectName(effect)).Arg(WindowId(window));
  return call.Done(world().effectAvailable);
}

int lumaview_get_transition_effect_list(char* list) {
  Call call("lumaview_get_transition_effect_list");
  call.Arg(NameOfField(list));
  if (!call.Fails()) {
    const std::string& names = world().effectList;
    const size_t bytes = std::min(names.size() + 1, kEffectListBytes);
    std::memcpy(list, names.c_str(), bytes);
  }
  return call.Done(0);
}
