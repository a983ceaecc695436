// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_CONTROL_CONTROLSERVER_H
#define SIMULATOR_TVSIM_CONTROL_CONTROLSERVER_H

#include <memory>
#include <string>
#include <vector>

#include "simulator/tvsim/control/ControlConnection.h"
#include "simulator/tvsim/engine/FdWatch.h"
#include "simulator/tvsim/engine/LogFollower.h"
#include "simulator/tvsim/session/Television.h"

namespace sim::tvsim {

/// The clients of a session, any number of them: JSON-RPC 2.0 on its public socket, one message a line, for this user
/// only, and on connections that others hand over. Loop thread only.
class ControlServer {
 public:
  /// Listens at `socket`, a path in a folder of mode 0700. `television` outlives the server, and does not run after it.
  static Result<std::unique_ptr<ControlServer>> Start(Television& television, const std::string& socket);
  ControlServer(const ControlServer&) = delete;
  ControlServer& operator=(const ControlServer&) = delete;

  /// Serves one more client. False, and the transport goes, when there are too many.
  bool Adopt(std::shared_ptr<rpc::Transport> transport, Rights rights);

  ControlContext& Context() { return m_context; }

 private:
  ControlServer(Television& television, UniqueFd listener);

  void Accept();
  void Forget(const ControlConnection* connection);
  void FollowLog();
  void FollowScreen();
  void OnScreenChange(int64_t number);
  void OnLogLine(const std::string& line);
  void OnEngineExit(const ProcessEnd& end, bool restarted);
  void Broadcast(const char* method, const rpc::JsonText& params, bool Subscriptions::*wanted = nullptr);

  ControlContext m_context;
  UniqueFd m_listener;
  std::unique_ptr<LogFollower> m_log;
  std::vector<std::shared_ptr<ControlConnection>> m_clients;
  const FdWatch m_new_client{m_listener.Get(), FdWatch::For::kInput, [this] { Accept(); }};
};

}  // namespace sim::tvsim

#endif
