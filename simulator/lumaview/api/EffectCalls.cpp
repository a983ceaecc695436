// SPDX-License-Identifier: Apache-2.0
// The exported calls on transition effects.
#include <cstring>

#include "simulator/lumaview/api/Export.h"
#include "simulator/lumaview/api/Library.h"
#include "simulator/lumaview/effect/Effect.h"

namespace sim::lumaview {
namespace {

/// Runs `body` with the live effect behind `record`.
template <typename Body>
int AnswerFor(const char* function, const _lumaview_effect_s* record, Body body) {
  return Answer(function, [&]() -> Status {
    const auto effect = FindEffect(static_cast<const void*>(record));
    return effect ? body(**effect) : Status(effect.error());
  });
}

Status NullArgument() {
  return Error{kBadArgument, "an argument is null"};
}

}  // namespace
}  // namespace sim::lumaview

using namespace sim::lumaview;

LUMAVIEW_EXPORT int lumaview_create_transition_effect(int type, _lumaview_effect_s** effect) {
  return Answer("lumaview_create_transition_effect", [&]() -> sim::Status {
    if (effect == nullptr) {
      return NullArgument();
    }
    auto made = TransitionEffect::Create(GetLibrary().services, type);
    *effect = made->GetRecord();
    GetLibrary().effects.Add(std::move(made));
    return sim::Ok();
  });
}

LUMAVIEW_EXPORT int lumaview_destroy_transition_effect(_lumaview_effect_s** effect) {
  return Answer("lumaview_destroy_transition_effect", [&]() -> sim::Status {
    if (effect == nullptr) {
      return NullArgument();
    }
    const auto destroyed = GetLibrary().effects.Remove(*effect);
    if (!destroyed) {
      return FindEffect(static_cast<const void*>(*effect)).error();
    }
    destroyed->Close();
    *effect = nullptr;
    return sim::Ok();
  });
}

LUMAVIEW_EXPORT int lumaview_set_effect_window_handle(_lumaview_effect_s* effect, Window window) {
  return AnswerFor("lumaview_set_effect_window_handle", effect,
                   [&](TransitionEffect& live) { return live.SetWindow(window); });
}

LUMAVIEW_EXPORT int lumaview_set_effect_type(_lumaview_effect_s* effect, effect_type_e type) {
  return AnswerFor("lumaview_set_effect_type", effect, [&](TransitionEffect& live) {
    live.SetType(type);
    return sim::Ok();
  });
}

LUMAVIEW_EXPORT int lumaview_run_transition_effect(_lumaview_effect_s* effect, const char* path) {
  return AnswerFor("lumaview_run_transition_effect", effect,
                   [&](TransitionEffect& live) { return path == nullptr ? NullArgument() : live.Run(path); });
}

LUMAVIEW_EXPORT int lumaview_is_transition_effect_available(_lumaview_s*, _lumaview_effect_s* effect, Window window) {
  return AnswerFor("lumaview_is_transition_effect_available", effect, [&](TransitionEffect&) -> sim::Status {
    if (GetLibrary().services.displays.Find(window)) {
      return sim::Ok();
    }
    return sim::Error{kDisplayFailed, "the window has no display"};
  });
}

LUMAVIEW_EXPORT int lumaview_get_transition_effect_list(char* list) {
  return Answer("lumaview_get_transition_effect_list", [&]() -> sim::Status {
    if (list == nullptr) {
      return NullArgument();
    }
    const std::string_view names = EffectList();
    names.copy(list, names.size());
    list[names.size()] = '\0';
    return sim::Ok();
  });
}
