// SPDX-License-Identifier: Apache-2.0
#include "bench/protocol_echo.h"

#include <libsoup/soup.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

[[noreturn]] void Die(const char* what) {
  std::perror(what);
  std::exit(2);
}

/// Passes on what has come; false at the end. Whole lines come in whole, as the clients wait for their answers.
bool Pass(int from, int to) {
  char bytes[65536];
  const ssize_t count = read(from, bytes, sizeof bytes);
  for (ssize_t written = 0; written < count;) {
    const ssize_t now = write(to, bytes + written, static_cast<size_t>(count - written));
    if (now <= 0) {
      return false;
    }
    written += now;
  }
  return count > 0;
}

[[noreturn]] void Echo(int line) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  pollfd ready{line, POLLIN, 0};
  while (poll(&ready, 1, -1) == 1 && Pass(line, line)) {
  }
  _exit(0);
}

void Relay(int client, int line) {
  pollfd ready[] = {{client, POLLIN, 0}, {line, POLLIN, 0}};
  while (poll(ready, 2, -1) > 0) {
    if (ready[1].revents != 0 && !Pass(line, client)) {
      return;
    }
    if (ready[0].revents != 0 && !Pass(client, line)) {
      return;
    }
  }
}

}  // namespace

void ServeTwoHops(const std::string& path) {
  sockaddr_un address{AF_UNIX, {}};
  std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
  const int listener = socket(AF_UNIX, SOCK_STREAM, 0);
  int ends[2];
  if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 || listen(listener, 8) != 0 ||
      socketpair(AF_UNIX, SOCK_STREAM, 0, ends) != 0) {
    Die("two hops");
  }
  if (fork() == 0) {
    Echo(ends[1]);
  }
  for (;;) {
    const int client = accept(listener, nullptr, nullptr);
    Relay(client, ends[0]);
    close(client);
  }
}

void ServeSoupEcho() {
  SoupServer* server = soup_server_new(nullptr, nullptr);
  soup_server_add_websocket_handler(
      server, "/ws", nullptr, nullptr,
      [](SoupServer*, SoupServerMessage*, const char*, SoupWebsocketConnection* connection, gpointer) {
        g_object_ref(connection);
        g_signal_connect(connection, "message",
                         G_CALLBACK(+[](SoupWebsocketConnection* from, gint, GBytes* bytes, gpointer) {
                           soup_websocket_connection_send_message(from, SOUP_WEBSOCKET_DATA_TEXT, bytes);
                         }),
                         nullptr);
      },
      nullptr, nullptr);
  if (soup_server_listen_local(server, 0, SOUP_SERVER_LISTEN_IPV4_ONLY, nullptr) == FALSE) {
    Die("soup echo");
  }
  GSList* uris = soup_server_get_uris(server);
  std::printf("%d\n", g_uri_get_port(static_cast<GUri*>(uris->data)));
  std::fflush(stdout);
  g_main_loop_run(g_main_loop_new(nullptr, FALSE));
  std::exit(0);
}
