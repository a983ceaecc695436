// SPDX-License-Identifier: Apache-2.0
/// The browser's way into a session, on loopback:
///
///     GET /, /main.js, ...           the files of simulator/web
///     GET /screen.jpg?token=T        what the screen shows; the header X-Screen-Number says which change
///     GET /ws?token=T                a WebSocket: JSON-RPC 2.0, one message a text frame, as on the session's socket
///
/// A token comes as the query's "token" or as "Authorization: Bearer T". The Host has to be loopback's with the
/// server's port, and an Origin, where there is one, that of the page or one that was allowed by name.
#ifndef SIMULATOR_TVSIM_SERVE_WEBSERVER_H
#define SIMULATOR_TVSIM_SERVE_WEBSERVER_H

#include <libsoup/soup.h>

#include <memory>
#include <string>
#include <vector>

#include "simulator/base/CHandle.h"
#include "simulator/base/UniqueFd.h"
#include "simulator/tvsim/control/ControlServer.h"
#include "simulator/tvsim/engine/FdWatch.h"
#include "simulator/tvsim/serve/Tokens.h"

namespace sim::tvsim {

/// A listening socket on 127.0.0.1 and its port.
struct LoopbackListener {
  UniqueFd socket;
  int port = 0;

  /// `port` 0: any that is free. Errors: the port is taken.
  static Result<LoopbackListener> Open(int port);
};

struct WebServerOptions {
  std::vector<std::string> origins;  ///< allowed besides the page's own
  Tokens tokens;
};

/// Serves one session's page. Loop thread only, on the default main context.
class WebServer {
 public:
  /// `control` outlives the server.
  static Result<std::unique_ptr<WebServer>> Start(LoopbackListener listener, WebServerOptions options,
                                                  ControlServer& control);
  ~WebServer();
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  PageAddress Address() const;

 private:
  WebServer(LoopbackListener listener, WebServerOptions options, ControlServer& control);

  void Accept();
  bool IsRefused(SoupServerMessage* message) const;
  void Answer(SoupServerMessage* message, const std::string& path, GHashTable* query);
  void AnswerWithFile(SoupServerMessage* message, const std::string& path) const;
  void AnswerWithScreen(SoupServerMessage* message, GHashTable* query);
  void Upgrade(SoupServerMessage* message, GHashTable* query);
  void TakeOver(SoupServerMessage* message, Rights rights);
  std::optional<Rights> RightsIn(SoupServerMessage* message, GHashTable* query) const;

  struct Unref {
    void operator()(SoupServer* server) const { g_object_unref(server); }
  };

  const LoopbackListener m_listener;
  const WebServerOptions m_options;
  ControlServer& m_control;
  std::vector<std::string> m_hosts;
  std::unique_ptr<SoupServer, Unref> m_server;
  std::shared_ptr<int> m_open = std::make_shared<int>(0);  ///< connections that are not WebSockets
  const FdWatch m_new_client{m_listener.socket.Get(), FdWatch::For::kInput, [this] { Accept(); }};
};

}  // namespace sim::tvsim

#endif
