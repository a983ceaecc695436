// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/session/PrivateDisplay.h"

#include <fcntl.h>
#include <poll.h>

#include <cerrno>
#include <cstring>
#include <fstream>

#include "simulator/base/Log.h"
#include "simulator/base/UniqueFd.h"

namespace sim::tvsim {
namespace {

/// Each comes up within a tenth of a second; a machine under load takes longer.
constexpr std::chrono::milliseconds kPatience(20000);

/// A television's window manager has no decorations, menus or keys of its own; only stacking, states and focus. Without
/// keepBorder a line of a pixel would stay around each window and shift what stands in it. The focus belongs to
/// applications, which have a class; the player's window has none, and with the focus it would count as an old program's
/// full screen, above everything.
constexpr const char* kOpenboxConfiguration = R"(<?xml version="1.0" encoding="UTF-8"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <theme><keepBorder>no</keepBorder></theme>
  <focus><focusNew>no</focusNew><followMouse>no</followMouse></focus>
  <desktops><number>1</number><popupTime>0</popupTime></desktops>
  <applications>
    <application class="*"><decor>no</decor></application>
    <application class="?*"><focus>yes</focus></application>
  </applications>
</openbox_config>
)";

UniqueFd MessagesOf(const std::string& program, const std::string& folder) {
  return UniqueFd(open((folder + "/" + program + ".log").c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
}

Error WithMessages(const std::string& what, const std::string& program, const std::string& folder) {
  std::ifstream file(folder + "/" + program + ".log");
  std::string line, last;
  while (std::getline(file, line)) {
    last = line.empty() ? last : line;
  }
  return Error{EIO, what + (last.empty() ? "" : "; it said: " + last)};
}

/// Starts `program` with its messages in a file of `folder`.
Result<ChildProcess> StartLogged(std::vector<std::string> arguments, const std::string& folder,
                                 std::vector<std::pair<int, int>> descriptors = {}) {
  const UniqueFd messages = MessagesOf(arguments.front(), folder);
  descriptors.emplace_back(messages.Get(), 1);
  descriptors.emplace_back(messages.Get(), 2);
  return ChildProcess::Start({std::move(arguments), {{"DISPLAY", kDisplay}, {"XAUTHORITY", ""}}, descriptors});
}

/// Xvfb writes its display's number and then, in another write, a line end once it takes clients; a reader that goes in
/// between ends it. It closes the pipe when it gives up.
bool AwaitNumber(int reader) {
  pollfd ready{reader, POLLIN, 0};
  char c = 0;
  while (c != '\n') {
    if (poll(&ready, 1, static_cast<int>(kPatience.count())) != 1 || read(reader, &c, 1) != 1) {
      return false;
    }
  }
  return true;
}

Result<ChildProcess> StartServer(ScreenSize size, const std::string& folder) {
  if (FindProgram("Xvfb").empty()) {
    return Error{ENOENT, "no Xvfb here to make a screen with; install the package xvfb, or use an X server on \":0\""};
  }
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) {
    return Error{errno, std::string("no pipe: ") + std::strerror(errno)};
  }
  UniqueFd reader(ends[0]), writer(ends[1]);
  const std::string screen = std::to_string(size.width) + "x" + std::to_string(size.height) + "x24";
  auto server = StartLogged(
      {"Xvfb", kDisplay, "-nolock", "-nolisten", "tcp", "-noreset", "-displayfd", "3", "-screen", "0", screen}, folder,
      {{writer.Get(), 3}});
  writer.Reset();
  if (server && !AwaitNumber(reader.Get())) {
    return WithMessages("Xvfb does not come up", "Xvfb", folder);
  }
  return server;
}

}  // namespace

Result<PrivateDisplay> PrivateDisplay::Start(ScreenSize size, bool compositor, const std::string& folder) {
  Result<ChildProcess> server = StartServer(size, folder);
  if (!server) {
    return server.error();
  }
  PrivateDisplay display(std::move(*server));
  auto screen = Screen::Connect();
  if (!screen) {
    return screen.error();
  }
  display.m_screen = std::move(*screen);
  display.m_screen->PaintBackgroundBlack();
  display.StartWindowManager(folder);
  if (compositor) {
    display.StartCompositor(folder);
  }
  return display;
}

void PrivateDisplay::StartWindowManager(const std::string& folder) {
  const std::string configuration = folder + "/openbox.xml";
  std::ofstream(configuration) << kOpenboxConfiguration;
  auto manager = StartLogged({"openbox", "--sm-disable", "--config-file", configuration}, folder);
  if (!manager) {
    Log(LogLevel::kInfo, "tvsim", "no window manager: " + manager.error().reason);
    return;
  }
  m_companions.push_back(std::move(*manager));
  if (!m_screen->AwaitWindowManager(kPatience)) {
    Log(LogLevel::kWarning, "tvsim", WithMessages("openbox does not come up", "openbox", folder).reason);
  }
}

void PrivateDisplay::StartCompositor(const std::string& folder) {
  auto compositor = StartLogged({"xcompmgr"}, folder);
  if (!compositor) {
    Log(LogLevel::kWarning, "tvsim", "no compositor: " + compositor.error().reason);
    return;
  }
  m_companions.push_back(std::move(*compositor));
  if (!m_screen->AwaitCompositor(kPatience)) {
    Log(LogLevel::kWarning, "tvsim", WithMessages("xcompmgr does not come up", "xcompmgr", folder).reason);
  }
}

}  // namespace sim::tvsim
