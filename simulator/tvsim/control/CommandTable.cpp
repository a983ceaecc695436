// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/control/CommandTable.h"

#include <algorithm>

namespace sim::tvsim {
namespace {

using enum ParamKind;
using ResultKind::kDone;
using ResultKind::kSize;
using ResultKind::kTextOrZero;

// clang-format off
constexpr const char* kShown = "10 (decoded) and 8 (shown), or 6 (cannot be shown)";
constexpr const char* kEffectEnds = "10 and 8 when the transition has ended";
constexpr CommandParam kUrl = {"url", kPath, "a path or a file:// URL"};
constexpr CommandParam kTransition = {"effect", kEffect, "0 to 23, or 36 for the library's choice"};

constexpr EngineCommand kCommands[] = {
    {"InitPlayer", "Opens a picture and makes the window", {{kUrl}}, kDone, "",
     R"({"url":"/pictures/a.jpg"})", "1"},
    {"StartPlayback", "Reads, decodes and shows the opened picture", {}, kDone, kShown, "{}", "1"},
    {"Play", "Opens a picture in the window that there is, and shows it", {{{"url", kPath, "a path, taken as it is"}}}, kDone, kShown,
     R"({"url":"/pictures/b.jpg"})", "1"},
    {"Stop", "Takes picture and window down", {}, kDone, "", "{}", "1"},
    {"SetDisplayArea", "Places the picture in a layout of 540 lines; a width or height of 0 is the whole screen",
     {{{"x", kNumber, "left edge"}, {"y", kNumber, "upper edge"}, {"width", kNumber, "0: the whole screen"}, {"height", kNumber, "0: the whole screen"}}}, kDone, "",
     R"({"x":240,"y":60,"width":480,"height":270})", "1"},
    {"ChangePlayingURL", "Replaces the picture, to be shown by the next command", {{kUrl}}, kDone, "",
     R"({"url":"/pictures/b.jpg"})", "1"},
    {"GetPictureSize", "The picture's width*height", {}, kSize, "", "{}", R"("640*480")"},
    {"GetPictureType", "The picture's format, a number as text", {}, ResultKind::kText, "", "{}", R"("0")"},
    {"SetZoomMove", "Moves the zoomed picture", {{{"direction", kNumber, "0 up, 1 down, 2 left, 3 right"}}}, kDone, "",
     R"({"direction":2})", "1"},
    {"AddEventCallback", "Stores a text; has no effect", {{{"callback", kText, "any text"}}}, kDone, "",
     R"({"callback":"1"})", "1"},
    {"EffectShow", "Shows the picture with a transition", {{kTransition}}, kDone, kEffectEnds,
     R"({"effect":3})", "1"},
    {"GetThumbnail", "Whether the picture has a thumbnail", {}, kDone, "", "{}", "1"},
    {"SetRotation", "Turns the picture", {{{"degrees", kNumber, "0, 90, 180 or 270"}}}, kDone, "",
     R"({"degrees":90})", "1"},
    {"SetZoomRatio", "Enlarges the picture", {{{"ratio", kNumber, "1 to 16 times"}}}, kDone, "",
     R"({"ratio":2})", "1"},
    {"GetZoomRatio", "How many times the picture is enlarged", {}, ResultKind::kNumber, "", "{}", "1"},
    {"IsTransitionEffectAvailable", "Whether a transition can run now", {}, kTextOrZero, "", "{}", R"("1")"},
    {"GetTransitionEffectList", "The transitions' names, joined by commas", {}, ResultKind::kText, "", "{}", R"("fade,wipe,")"},
    {"ClearScreenForImage", "Takes the picture off the screen, as ClearScreen", {}, kDone, "", "{}", "1"},
    {"ClearScreen", "Takes the picture off the screen and leaves the window", {}, kDone, "", "{}", "1"},
    {"SetTransitionEffect", "Shows the picture with a transition", {{{"effect", kEffect, "as for EffectShow; -2 is 36"}}}, kDone, kEffectEnds,
     R"({"effect":-2})", "1"},
    {"SetSlideShowStatus", "Notes whether a slide show runs", {{{"on", kNumber, "0 or 1"}}}, kDone, "",
     R"({"on":1})", "1"},
    {"GetVideoResolution", "The picture's width*height", {}, kSize, "", "{}", R"("640*480")"},
    {"SetDisplayLock", "Keeps what the screen shows", {{{"locked", kNumber, "1 keeps it, 0 lets the newest through"}}}, kDone, "",
     R"({"locked":1})", "1"},
    {"SetPlayerProperty", "Sets a property of the player",
     {{{"property", kNumber, "2 is the 3D mode of the next showing, others are ignored"}, {"name", kText, "any text", false}, {"value", kNumber, "0 or more", false}}}, kDone, "",
     R"({"property":2,"name":"mode","value":3})", "1"},
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
