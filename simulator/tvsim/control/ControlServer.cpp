// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/control/ControlServer.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "simulator/tvsim/Console.h"
#include "simulator/tvsim/control/Notifications.h"
#include "simulator/tvsim/engine/LogTail.h"

namespace sim::tvsim {
namespace {

constexpr int kBacklog = 16;
constexpr size_t kLastLines = 8;
/// More at once are no applications but a flood, and would take the descriptors that the session itself needs.
constexpr size_t kMaxClients = 128;

Result<UniqueFd> Listen(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    return Error{ENAMETOOLONG, path + " is too long for a socket"};
  }
  std::memcpy(address.sun_path, path.data(), path.size());
  UniqueFd listener(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!listener || bind(listener.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener.Get(), kBacklog) != 0) {
    return Error{errno, "cannot listen at " + path + ": " + std::strerror(errno)};
  }
  return listener;
}

bool IsOwnUser(int socket) {
  ucred peer{};
  socklen_t size = sizeof peer;
  return getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 && peer.uid == geteuid();
}

}  // namespace

Result<std::unique_ptr<ControlServer>> ControlServer::Start(Television& television, const std::string& socket) {
  Result<UniqueFd> listener = Listen(socket);
  if (!listener) {
    return listener.error();
  }
  return std::unique_ptr<ControlServer>(new ControlServer(television, std::move(*listener)));
}

ControlServer::ControlServer(Television& television, UniqueFd listener)
    : m_context{television, {}, [this](int64_t number) { OnScreenChange(number); }, [this] { FollowLog(); }},
      m_listener(std::move(listener)) {
  Television::Observer observer;
  observer.on_event = [this](const SessionEvent& event) { Broadcast(kEventMethod, ParamsOf(event)); };
  observer.on_engine_exit = [this](const ProcessEnd& end, bool restarted) { OnEngineExit(end, restarted); };
  observer.on_new_screen = [this] { FollowScreen(); };
  observer.on_late_start = [this] { Broadcast(kStartMethod, {"{}"}); };
  television.Observe(std::move(observer));
}

/// Not before somebody wants it: every command logs some lines, and each would wake this process up.
void ControlServer::FollowLog() {
  if (m_log) {
    return;
  }
  auto log = LogFollower::Create(m_context.television.GetEngine().LogFile(), false,
                                 [this](const std::string& line) { OnLogLine(line); });
  if (log) {
    m_log = std::move(*log);
  } else {
    Complain(log.error().reason);
  }
}

void ControlServer::FollowScreen() {
  if (!m_context.screen) {
    return;
  }
  if (const Status follows = m_context.screen->Follow(); !follows) {
    Complain(follows.error().reason);
  }
}

void ControlServer::Accept() {
  UniqueFd socket(accept4(m_listener.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (!socket || !IsOwnUser(socket.Get())) {
    return;
  }
  if (auto transport = rpc::Transport::Create(g_main_context_default(), std::move(socket))) {
    Adopt(std::move(*transport), Rights::kControl);
  }
}

bool ControlServer::Adopt(std::shared_ptr<rpc::Transport> transport, Rights rights) {
  if (m_clients.size() >= kMaxClients) {
    return false;
  }
  // The connection is known only once it is made, and is not closed before the loop runs again.
  auto made = std::make_shared<const ControlConnection*>();
  m_clients.push_back(
      std::make_shared<ControlConnection>(m_context, rights, std::move(transport), [this, made] { Forget(*made); }));
  *made = m_clients.back().get();
  return true;
}

void ControlServer::Forget(const ControlConnection* connection) {
  std::erase_if(m_clients, [connection](const auto& one) { return one.get() == connection; });
}

void ControlServer::OnEngineExit(const ProcessEnd& end, bool restarted) {
  Broadcast(kExitMethod, ParamsOf(end, restarted, LastLines(m_context.television.GetEngine().LogFile(), kLastLines)));
}

void ControlServer::OnLogLine(const std::string& line) {
  Broadcast(kLogMethod, rpc::ObjectWriter().Add("line", rpc::Quote(line)).Take(), &Subscriptions::log);
}

void ControlServer::OnScreenChange(int64_t number) {
  Broadcast(kScreenMethod, rpc::ObjectWriter().Add("number", rpc::Number(number)).Take(), &Subscriptions::screen);
}

/// To all, or to those who asked for it.
void ControlServer::Broadcast(const char* method, const rpc::JsonText& params, bool Subscriptions::*wanted) {
  const auto clients = m_clients;  // a client that is dropped meanwhile leaves the list
  for (const auto& client : clients) {
    if (wanted == nullptr || client->Wants().*wanted) {
      client->Notify(method, params);
    }
  }
}

}  // namespace sim::tvsim
