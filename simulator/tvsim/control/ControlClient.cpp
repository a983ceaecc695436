// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/control/ControlClient.h"

#include <glib.h>
#include <sys/socket.h>
#include <sys/un.h>

#include <cerrno>
#include <cstring>
#include <optional>

#include "simulator/tvsim/session/RuntimeFolder.h"

namespace sim::tvsim {
namespace {

Result<UniqueFd> ConnectTo(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.size() >= sizeof address.sun_path) {
    return Error{ENAMETOOLONG, path + " is too long for a socket"};
  }
  std::memcpy(address.sun_path, path.data(), path.size());
  UniqueFd client(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  if (!client || connect(client.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    return Error{errno, "nobody answers at " + path + "; `tvsim run PICTURES` starts a session"};
  }
  return client;
}

}  // namespace

Result<std::unique_ptr<ControlClient>> ControlClient::Connect(const std::string& session,
                                                              OnNotification on_notification) {
  const Result<std::string> folder = RuntimeFolder::Find(session);
  if (!folder) {
    return folder.error();
  }
  Result<UniqueFd> socket = ConnectTo(ControlSocketIn(*folder));
  if (!socket) {
    return socket.error();
  }
  auto transport = rpc::Transport::Create(g_main_context_default(), std::move(*socket));
  if (!transport) {
    return transport.error();
  }
  std::unique_ptr<ControlClient> client(new ControlClient);
  if (!on_notification) {
    on_notification = [](const std::string&, const rpc::JsonText&) {};
  }
  client->m_client = std::make_unique<rpc::Client>(
      *transport, rpc::Client::Callbacks{std::move(on_notification),
                                         [raw = client.get()](const rpc::CloseReason&) { raw->m_closed = true; }});
  return client;
}

rpc::Answer ControlClient::Call(const std::string& method, const rpc::JsonText& params) {
  std::optional<rpc::Answer> given;
  m_client->Call(method, params, [&given](const rpc::Answer& answer) { given = answer; });
  while (!given) {
    g_main_context_iteration(nullptr, TRUE);
  }
  return *given;
}

void ControlClient::RunUntilClosed() {
  while (!m_closed) {
    g_main_context_iteration(nullptr, TRUE);
  }
}

}  // namespace sim::tvsim
