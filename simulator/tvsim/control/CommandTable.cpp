// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/control/CommandTable.h"

#include <algorithm>

namespace sim::tvsim {
namespace {

using enum ParamKind;

// clang-format off
constexpr EngineCommand kCommands[] = {
    {"InitPlayer", "Opens a picture and makes the window", {{{"url", kPath}}}},
    {"StartPlayback", "Reads, decodes and shows the opened picture", {}},
    {"Play", "Opens a picture in the window that there is, and shows it", {{{"url", kPath}}}},
    {"Stop", "Takes picture and window down", {}},
    {"SetDisplayArea", "Places the picture in a layout of 540 lines; a width or height of 0 is the whole screen",
     {{{"x", kNumber}, {"y", kNumber}, {"width", kNumber}, {"height", kNumber}}}},
    {"ChangePlayingURL", "Replaces the picture, to be shown by the next command", {{{"url", kPath}}}},
    {"GetPictureSize", "The picture's width*height", {}},
    {"GetPictureType", "The picture's format, a number", {}},
    {"SetZoomMove", "Moves the zoomed picture: 0 up, 1 down, 2 left, 3 right", {{{"direction", kNumber}}}},
    {"AddEventCallback", "Stores a text; has no effect", {{{"callback", kText}}}},
    {"EffectShow", "Shows the picture with a transition", {{{"effect", kEffect}}}},
    {"GetThumbnail", "Whether the picture has a thumbnail", {}},
    {"SetRotation", "Turns the picture by 0, 90, 180 or 270 degrees", {{{"degrees", kNumber}}}},
    {"SetZoomRatio", "Enlarges the picture 1 to 16 times", {{{"ratio", kNumber}}}},
    {"GetZoomRatio", "How many times the picture is enlarged", {}},
    {"IsTransitionEffectAvailable", "Whether a transition can run now", {}},
    {"GetTransitionEffectList", "The transitions' names, joined by commas", {}},
    {"ClearScreenForImage", "Takes the picture off the screen, as ClearScreen", {}},
    {"ClearScreen", "Takes the picture off the screen and leaves the window", {}},
    {"SetTransitionEffect", "Shows the picture with a transition; -2 lets the library choose", {{{"effect", kEffect}}}},
    {"SetSlideShowStatus", "Notes whether a slide show runs: 0 or 1", {{{"on", kNumber}}}},
    {"GetVideoResolution", "The picture's width*height", {}},
    {"SetDisplayLock", "1 keeps what the screen shows, 0 lets the newest through", {{{"locked", kNumber}}}},
    {"SetPlayerProperty", "Property 2 is the 3D mode of the next showing",
     {{{"property", kNumber}, {"name", kText, false}, {"value", kNumber, false}}}},
};
// clang-format on
static_assert(std::size(kCommands) == 24);

}  // namespace

std::span<const EngineCommand> EngineCommands() {
  return kCommands;
}

const EngineCommand* FindCommand(std::string_view name) {
  const auto found = std::ranges::find(kCommands, name, &EngineCommand::name);
  return found == std::end(kCommands) ? nullptr : found;
}

}  // namespace sim::tvsim
