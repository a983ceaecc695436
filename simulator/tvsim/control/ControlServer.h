// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_CONTROL_CONTROLSERVER_H
#define SIMULATOR_TVSIM_CONTROL_CONTROLSERVER_H

#include <memory>
#include <string>
#include <vector>

#include "simulator/tvsim/control/ControlConnection.h"
#include "simulator/tvsim/engine/LogFollower.h"
#include "simulator/tvsim/session/Television.h"

namespace sim::tvsim {

/// The public socket of a session: JSON-RPC 2.0, one message a line, any number of clients, of this user only.
/// Loop thread only.
class ControlServer {
 public:
  /// Listens at `socket`, a path in a folder of mode 0700. `television` outlives the server, and does not run after it.
  static Result<std::unique_ptr<ControlServer>> Start(Television& television, const std::string& socket);
  ~ControlServer();
  ControlServer(const ControlServer&) = delete;
  ControlServer& operator=(const ControlServer&) = delete;

 private:
  ControlServer(Television& television, UniqueFd listener);

  void Accept();
  void Forget(const ControlConnection* connection);
  void OnLogLine(const std::string& line);
  void OnEngineExit(const ProcessEnd& end, bool restarted);
  void Broadcast(const char* method, const rpc::JsonText& params);

  Television& m_television;
  UniqueFd m_listener;
  unsigned int m_source = 0;
  std::unique_ptr<LogFollower> m_log;
  std::vector<std::shared_ptr<ControlConnection>> m_clients;
};

}  // namespace sim::tvsim

#endif
