// SPDX-License-Identifier: Apache-2.0
/// The command interface: a row a command. A command that only calls its operation is a lambda here; one with lines or
/// results of its own is a function of host/CommandRows.cpp.
#include "host/CommandTable.h"

#include <array>

#include "adapter/CPictureAdapter.h"
#include "host/CommandRows.h"

namespace olm {
namespace {

constexpr Outcome Flag(int done) {
  return done ? Outcome::kDone : Outcome::kFailed;
}

bool Switch(const std::string& text) {
  return Number(text) != 0;
}

using Call = const CommandCall&;

// clang-format off
constexpr std::array kCommands{
    CommandRow{"InitPlayer",                  Param1::kUnused,          InitPlayer},  // tests it after the identity
    CommandRow{"StartPlayback",               Param1::kUnused,          [](Call c) { return Flag(c.adapter.StartPlayback(0)); }},
    CommandRow{"Play",                        Param1::kUnused,          Play},
    CommandRow{"Stop",                        Param1::kUnused,          [](Call c) { return Flag(c.adapter.Stop()); }},
    CommandRow{"SetDisplayArea",              Param1::kUnused,          SetDisplayArea},
    CommandRow{"ChangePlayingURL",            Param1::kNeeded,          [](Call c) { return Flag(c.adapter.ChangePlayingURL(c.param1.c_str())); }},
    CommandRow{"GetPictureSize",              Param1::kUnused,          GetPictureSize},
    CommandRow{"GetPictureType",              Param1::kUnused,          GetPictureType},
    CommandRow{"SetZoomMove",                 Param1::kNeededAndLogged, [](Call c) { return Flag(c.adapter.SetZoomMove(static_cast<lumaview_key_direction_e>(Number(c.param1)))); }},
    CommandRow{"AddEventCallback",            Param1::kNeededAndLogged, AddEventCallback},
    CommandRow{"EffectShow",                  Param1::kNeededAndLogged, [](Call c) { return Flag(c.adapter.EffectShow(static_cast<effect_type_e>(Number(c.param1)))); }},
    CommandRow{"GetThumbnail",                Param1::kUnused,          GetThumbnail},
    CommandRow{"SetRotation",                 Param1::kNeededAndLogged, [](Call c) { return Flag(c.adapter.SetRotation(Number(c.param1), false)); }},
    CommandRow{"SetZoomRatio",                Param1::kNeededAndLogged, [](Call c) { return Flag(c.adapter.SetZoomRatio(Number(c.param1))); }},
    CommandRow{"GetZoomRatio",                Param1::kUnused,          GetZoomRatio},
    CommandRow{"IsTransitionEffectAvailable", Param1::kUnused,          IsTransitionEffectAvailable},
    CommandRow{"GetTransitionEffectList",     Param1::kUnused,          GetTransitionEffectList},
    CommandRow{"ClearScreenForImage",         Param1::kUnused,          ClearScreenForImage},
    CommandRow{"ClearScreen",                 Param1::kUnused,          ClearScreen},
    CommandRow{"SetTransitionEffect",         Param1::kNeededAndLogged, [](Call c) { return Flag(c.adapter.SetTransitionEffect(Number(c.param1))); }},
    CommandRow{"SetSlideShowStatus",          Param1::kNeededAndLogged, [](Call c) { return Flag(c.adapter.SetSlideShowStatus(Switch(c.param1))); }},
    CommandRow{"GetVideoResolution",          Param1::kUnused,          GetVideoResolution},
    CommandRow{"SetDisplayLock",              Param1::kNeededAndLogged, [](Call c) { return Flag(c.adapter.SetDisplayLock(Switch(c.param1))); }},
    CommandRow{"SetPlayerProperty",           Param1::kNeeded,          SetPlayerProperty},
};
// clang-format on

constexpr bool NamesAreUnique() {
  for (size_t i = 0; i < kCommands.size(); ++i) {
    for (size_t j = i + 1; j < kCommands.size(); ++j) {
      if (kCommands[i].name == kCommands[j].name) {
        return false;
      }
    }
  }
  return true;
}

static_assert(kCommands.size() == 24);
static_assert(NamesAreUnique());

}  // namespace

std::span<const CommandRow> CommandTable() {
  return kCommands;
}

}  // namespace olm
