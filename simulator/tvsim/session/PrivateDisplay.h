// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SESSION_PRIVATEDISPLAY_H
#define SIMULATOR_TVSIM_SESSION_PRIVATEDISPLAY_H

#include <memory>
#include <string>
#include <vector>

#include "simulator/base/Result.h"
#include "simulator/tvsim/process/ChildProcess.h"
#include "simulator/tvsim/screen/Screen.h"

namespace sim::tvsim {

struct ScreenSize {
  int width = 1920;
  int height = 1080;
};

/// A television's screen that nobody sees: Xvfb on ":0" with an undecorating window manager (openbox) where that is
/// installed. All end with this object.
///
/// A compositor is only there when it is asked for: xcompmgr paints some time after its clients, under load a long
/// time, while the server itself shows what `Screen::EnsureRedirected` has redirected at once.
class PrivateDisplay {
 public:
  /// ":0" must be free (see Namespaces.h). `folder` takes the configuration and the programs' messages.
  /// `compositor`: with xcompmgr. Errors: Xvfb is missing or does not come up; the reason says what to do.
  static Result<PrivateDisplay> Start(ScreenSize size, bool compositor, const std::string& folder);

  /// A descriptor that polls readable once the X server has ended.
  int EndDescriptor() const { return m_server.EndDescriptor(); }

 private:
  explicit PrivateDisplay(ChildProcess server) : m_server(std::move(server)) {}

  void StartWindowManager(const std::string& folder);
  void StartCompositor(const std::string& folder);

  ChildProcess m_server;
  std::unique_ptr<Screen> m_screen;        ///< its background lasts as long as this connection
  std::vector<ChildProcess> m_companions;  ///< after the server: they end before it
};

}  // namespace sim::tvsim

#endif
