// SPDX-License-Identifier: Apache-2.0
/// The commands that a storm sends at random, those that change most more often than the others.
#ifndef TESTS_ENGINE_STORM_COMMANDS_H
#define TESTS_ENGINE_STORM_COMMANDS_H

#include <array>

#include "tests/engine/storm/Storm.h"

namespace storm {

struct Command {
  const char* name;
  std::array<const char*, 4> params;
};

inline constexpr std::array<Command, 30> kCommands = {{
    {"InitPlayer", {"/pictures/a.jpg", "", "", ""}},
    {"InitPlayer", {"file:///pictures/b.jpg", "", "", ""}},
    {"InitPlayer", {"", "", "", ""}},
    {"StartPlayback", {"", "", "", ""}},
    {"StartPlayback", {"", "", "", ""}},
    {"Play", {"/pictures/c.jpg", "", "", ""}},
    {"Stop", {"", "", "", ""}},
    {"Stop", {"", "", "", ""}},
    {"SetDisplayArea", {"0", "0", "16", "9"}},
    {"SetDisplayArea", {"1", "2", "8", "5"}},
    {"ChangePlayingURL", {"/pictures/d.jpg", "", "", ""}},
    {"ChangePlayingURL", {"/pictures/e.jpg", "", "", ""}},
    {"GetPictureSize", {"", "", "", ""}},
    {"GetPictureType", {"", "", "", ""}},
    {"SetZoomMove", {"2", "", "", ""}},
    {"AddEventCallback", {"1", "", "", ""}},
    {"EffectShow", {"3", "", "", ""}},
    {"EffectShow", {"36", "", "", ""}},
    {"GetThumbnail", {"", "", "", ""}},
    {"SetRotation", {"90", "", "", ""}},
    {"SetZoomRatio", {"4", "", "", ""}},
    {"GetZoomRatio", {"", "", "", ""}},
    {"IsTransitionEffectAvailable", {"", "", "", ""}},
    {"GetTransitionEffectList", {"", "", "", ""}},
    {"ClearScreenForImage", {"", "", "", ""}},
    {"SetTransitionEffect", {"-2", "", "", ""}},
    {"SetSlideShowStatus", {"1", "", "", ""}},
    {"GetVideoResolution", {"", "", "", ""}},
    {"SetDisplayLock", {"1", "", "", ""}},
    {"SetPlayerProperty", {"2", "name", "1", ""}},
}};

inline const Command& PickCommand(Random& random) {
  return kCommands[Pick(random, kCommands.size())];
}

}  // namespace storm

#endif
