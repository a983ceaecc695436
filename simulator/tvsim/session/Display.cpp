// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/session/Display.h"

#include <poll.h>

#include <cerrno>
#include <utility>

#include "simulator/tvsim/Console.h"

namespace sim::tvsim {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds kFirstWindow(20000);  // a window manager comes up in a tenth of a second, under load later
constexpr milliseconds kAnswer(1000);        // it takes less than one; a server that hangs is still there
constexpr milliseconds kNextWindow(1000);    // nothing else runs meanwhile, and there is another try
/// An engine is to be back within a second of the screen.
constexpr milliseconds kBetweenLooks(250);

bool HasEnded(const PrivateDisplay& server) {
  pollfd ended{server.EndDescriptor(), POLLIN, 0};
  return poll(&ended, 1, 0) == 1;
}

}  // namespace

Result<std::unique_ptr<Display>> Display::Open(DisplayOptions options, Callbacks callbacks) {
  std::unique_ptr<Display> display(new Display(std::move(options), std::move(callbacks)));
  SIM_TRY(display->StartServer());
  auto screen = Screen::Connect();
  if (!screen) {
    return Error{screen.error().code, screen.error().reason + "; start one there, or use --headless"};
  }
  display->m_screen = std::move(*screen);
  SIM_TRY(display->Prepare(kFirstWindow));
  display->Watch();
  return display;
}

Display::~Display() {
  Unwatch();
}

/// Where the session has none of its own, nothing is to be done.
Status Display::StartServer() {
  if (!m_options.own) {
    return Ok();
  }
  m_server.reset();  // with the companions, which the server may have left behind
  auto server = PrivateDisplay::Start(*m_options.own, m_options.compositor, m_options.folder);
  if (!server) {
    return server.error();
  }
  m_server = std::make_unique<PrivateDisplay>(std::move(*server));
  return Ok();
}

/// Makes the screen one on which an engine's window appears.
Status Display::Prepare(milliseconds patience) {
  SIM_TRY(m_screen->EnsureRedirected());
  if (!m_screen->AwaitWindowsAppear(patience)) {
    return Error{ETIMEDOUT,
                 "a window made on \":0\" does not appear; the window manager there must map it without asking"};
  }
  m_server_process = m_screen->ServerProcess();
  return Ok();
}

void Display::Watch() {
  m_screen_end = std::make_unique<FdWatch>(m_screen->Descriptor(), FdWatch::For::kHangUp, [this] { OnHangUp(); });
  if (m_server) {
    m_server_end = std::make_unique<FdWatch>(m_server->EndDescriptor(), FdWatch::For::kInput, [this] { OnHangUp(); });
  }
}

void Display::Unwatch() {
  m_screen_end.reset();
  m_server_end.reset();
}

bool Display::IsThere() {
  if (!m_is_lost) {
    // A server that is being killed may have closed the engine's connection and not yet this one; it answers no more.
    m_screen->AwaitAnswer(kAnswer);
  }
  if (!m_is_lost && (m_screen->IsLost() || (m_server && HasEnded(*m_server)))) {
    OnHangUp();
  }
  return !m_is_lost;
}

void Display::OnHangUp() {
  Unwatch();
  if (!(m_server && HasEnded(*m_server)) && ReconnectToSameServer()) {
    Complain("the connection to the X server on \":0\" was cut; there is another one");
    Watch();
    return;
  }
  m_is_lost = true;
  m_callbacks.on_lost(m_options.own ? "its X server has ended" : "the X server on \":0\" has gone");
}

/// Another server may stand at the same place already, where the engine's windows do not.
bool Display::ReconnectToSameServer() {
  return m_server_process != 0 && m_screen->Reconnect() && m_screen->ServerProcess() == m_server_process &&
         Prepare(kNextWindow);
}

void Display::ComeBack() {
  if (m_is_lost) {
    TryAfter(!m_options.own || m_pace.MayStartNow() ? milliseconds(0) : m_pace.NextWait());
  }
}

void Display::TryAfter(milliseconds wait) {
  m_next_try = std::make_unique<Timer>(wait, [this] { Try(); });
}

void Display::Try() {
  const bool at_once = m_pace.MayStartNow();
  Status ready = StartServer();
  if (ready) {
    ready = m_screen->Reconnect();
  }
  if (ready) {
    ready = Prepare(kNextWindow);
  }
  if (!ready && m_options.own) {
    Complain("the X server does not come back: " + ready.error().reason);
    TryAfter(m_pace.NextWait());
    return;
  }
  if (!ready) {
    TryAfter(kBetweenLooks);
    return;
  }
  if (m_options.own) {
    at_once ? m_pace.StartedNow() : m_pace.StartedLate();
  }
  m_is_lost = false;
  Watch();
  m_callbacks.on_back();
}

}  // namespace sim::tvsim
