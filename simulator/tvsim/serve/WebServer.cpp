// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/serve/WebServer.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "simulator/rpc/WebSocketFraming.h"
#include "simulator/tvsim/serve/PageFiles.h"

namespace sim::tvsim {
namespace {

constexpr int kBacklog = 64;
/// A page takes six at once; many more are a flood, and would take the descriptors that the session itself needs.
constexpr int kMostConnections = 64;
/// A request that takes longer is not meant seriously.
constexpr guint kIdleSeconds = 30;

template <typename T>
using GPointer = std::unique_ptr<T, decltype([](T* object) { g_object_unref(object); })>;

const char* TypeOf(std::string_view name) {
  constexpr std::pair<std::string_view, const char*> kTypes[] = {
      {".html", "text/html; charset=utf-8"},
      {".css", "text/css; charset=utf-8"},
      {".js", "text/javascript; charset=utf-8"},
      {".svg", "image/svg+xml"},
      {".png", "image/png"},
      {".jpg", "image/jpeg"},
      {".webmanifest", "application/manifest+json"},
  };
  const auto found = std::ranges::find_if(kTypes, [name](const auto& type) { return name.ends_with(type.first); });
  return found == std::end(kTypes) ? "text/plain; charset=utf-8" : found->second;
}

const char* Header(SoupServerMessage* message, const char* name) {
  return soup_message_headers_get_one(soup_server_message_get_request_headers(message), name);
}

/// The connection that libsoup was given, out of its own wrapper in which it gives it back; a new reference, or null.
GIOStream* Unwrapped(GIOStream* stream) {
  GIOStream* base = nullptr;
  if (stream != nullptr && g_object_class_find_property(G_OBJECT_GET_CLASS(stream), "base-iostream") != nullptr) {
    g_object_get(stream, "base-iostream", &base, nullptr);
  }
  return base;
}

void SetHeader(SoupServerMessage* message, const char* name, const std::string& value) {
  soup_message_headers_replace(soup_server_message_get_response_headers(message), name, value.c_str());
}

void Say(SoupServerMessage* message, guint status, const std::string& text) {
  soup_server_message_set_status(message, status, nullptr);
  soup_server_message_set_response(message, "text/plain; charset=utf-8", SOUP_MEMORY_COPY, text.data(), text.size());
}

}  // namespace

Result<LoopbackListener> LoopbackListener::Open(int port) {
  LoopbackListener listener{UniqueFd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0)), 0};
  const int on = 1;
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(static_cast<uint16_t>(port));
  socklen_t size = sizeof address;
  setsockopt(listener.socket.Get(), SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  if (!listener.socket || bind(listener.socket.Get(), reinterpret_cast<const sockaddr*>(&address), size) != 0 ||
      listen(listener.socket.Get(), kBacklog) != 0 ||
      getsockname(listener.socket.Get(), reinterpret_cast<sockaddr*>(&address), &size) != 0) {
    return Error{errno, "cannot listen on 127.0.0.1:" + std::to_string(port) + ": " + std::strerror(errno) +
                            "; --port 0 takes any that is free"};
  }
  listener.port = ntohs(address.sin_port);
  return listener;
}

Result<std::unique_ptr<WebServer>> WebServer::Start(LoopbackListener listener, WebServerOptions options,
                                                    ControlServer& control) {
  return std::unique_ptr<WebServer>(new WebServer(std::move(listener), std::move(options), control));
}

WebServer::WebServer(LoopbackListener listener, WebServerOptions options, ControlServer& control)
    : m_listener(std::move(listener)), m_options(std::move(options)), m_control(control) {
  for (const char* name : {"127.0.0.1", "localhost", "[::1]"}) {
    m_hosts.push_back(std::string(name) + ":" + std::to_string(m_listener.port));
  }
  m_server.reset(soup_server_new("server-header", "tvsim", nullptr));
  // Before the body: whoever may not ask, and whoever sends something, is answered at once.
  soup_server_add_early_handler(
      m_server.get(), nullptr,
      [](SoupServer*, SoupServerMessage* message, const char*, GHashTable*, gpointer self) {
        soup_message_body_set_accumulate(soup_server_message_get_request_body(message), FALSE);
        static_cast<WebServer*>(self)->IsRefused(message);
      },
      this, nullptr);
  soup_server_add_handler(
      m_server.get(), nullptr,
      [](SoupServer*, SoupServerMessage* message, const char* path, GHashTable* query, gpointer self) {
        static_cast<WebServer*>(self)->Answer(message, path, query);
      },
      this, nullptr);
}

WebServer::~WebServer() {
  soup_server_disconnect(m_server.get());
}

PageAddress WebServer::Address() const {
  const std::string page = "http://" + m_hosts.front() + "/#token=";
  return {page + m_options.tokens.control, page + m_options.tokens.view};
}

/// libsoup accepts without a limit, so it is done here.
void WebServer::Accept() {
  UniqueFd client(accept4(m_listener.socket.Get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
  if (!client || *m_open >= kMostConnections) {
    return;
  }
  const int on = 1;
  setsockopt(client.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
  const GPointer<GSocket> socket(g_socket_new_from_fd(client.Get(), nullptr));
  if (!socket) {
    return;
  }
  (void)client.Release();  // the socket's now
  g_socket_set_timeout(socket.get(), kIdleSeconds);
  const GPointer<GSocketConnection> connection(g_socket_connection_factory_create_connection(socket.get()));
  const GPointer<GSocketAddress> local(g_socket_connection_get_local_address(connection.get(), nullptr));
  const GPointer<GSocketAddress> remote(g_socket_connection_get_remote_address(connection.get(), nullptr));
  if (!local || !remote) {
    return;  // the client has gone already
  }
  ++*m_open;
  g_object_weak_ref(
      G_OBJECT(connection.get()),
      [](gpointer open, GObject*) {
        auto* count = static_cast<std::shared_ptr<int>*>(open);
        --**count;
        delete count;
      },
      new std::shared_ptr<int>(m_open));
  soup_server_accept_iostream(m_server.get(), G_IO_STREAM(connection.get()), local.get(), remote.get(), nullptr);
}

/// True after it was answered. A page of somebody else's, or one that has made its name point at this machine, gets
/// nothing, with a token or without.
bool WebServer::IsRefused(SoupServerMessage* message) const {
  const char* host = Header(message, "Host");
  const char* origin = Header(message, "Origin");
  const auto is_own = [origin](const std::string& name) { return origin == "http://" + name; };
  const bool known_host = host != nullptr && std::ranges::find(m_hosts, host) != m_hosts.end();
  const bool known_origin = origin == nullptr || std::ranges::any_of(m_hosts, is_own) ||
                            std::ranges::find(m_options.origins, origin) != m_options.origins.end();
  const std::string method = soup_server_message_get_method(message);
  if (!known_host) {
    Say(message, SOUP_STATUS_MISDIRECTED_REQUEST, "this server is called " + m_hosts.front() + "\n");
  } else if (!known_origin) {
    Say(message, SOUP_STATUS_FORBIDDEN, "pages from elsewhere are not served; tvsim serve --allow-origin allows one\n");
  } else if (method != "GET" && method != "HEAD") {
    Say(message, SOUP_STATUS_METHOD_NOT_ALLOWED, "only GET and HEAD\n");
  }
  return soup_server_message_get_status(message) != 0;
}

void WebServer::Answer(SoupServerMessage* message, const std::string& path, GHashTable* query) {
  if (soup_server_message_get_status(message) != 0) {
    return;
  }
  SetHeader(message, "Content-Security-Policy",
            "default-src 'self'; img-src 'self' blob:; connect-src 'self' ws://" + m_hosts[0] + " ws://" + m_hosts[1] +
                "; base-uri 'none'; form-action 'none'; frame-ancestors 'none'; object-src 'none'");
  SetHeader(message, "X-Content-Type-Options", "nosniff");
  SetHeader(message, "Referrer-Policy", "no-referrer");
  SetHeader(message, "Cross-Origin-Resource-Policy", "same-origin");
  SetHeader(message, "Cross-Origin-Opener-Policy", "same-origin");
  SetHeader(message, "Cache-Control", "no-store");
  if (path == "/ws") {
    Upgrade(message, query);
  } else if (path == "/screen.jpg") {
    AnswerWithScreen(message, query);
  } else {
    AnswerWithFile(message, path);
  }
}

void WebServer::AnswerWithFile(SoupServerMessage* message, const std::string& path) const {
  const std::string_view name = path == "/" ? std::string_view("index.html") : std::string_view(path).substr(1);
  const auto files = PageFiles();
  const auto file = std::ranges::find(files, name, &PageFile::name);
  if (file == files.end()) {
    return Say(message, SOUP_STATUS_NOT_FOUND, "there is no such page\n");
  }
  soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
  soup_server_message_set_response(message, TypeOf(name), SOUP_MEMORY_STATIC, file->content.data(),
                                   file->content.size());
}

std::optional<Rights> WebServer::RightsIn(SoupServerMessage* message, GHashTable* query) const {
  constexpr std::string_view kBearer = "Bearer ";
  const char* header = Header(message, "Authorization");
  if (header != nullptr && std::string_view(header).starts_with(kBearer)) {
    return m_options.tokens.RightsOf(std::string_view(header).substr(kBearer.size()));
  }
  const auto* token = query != nullptr ? static_cast<const char*>(g_hash_table_lookup(query, "token")) : nullptr;
  return token != nullptr ? m_options.tokens.RightsOf(token) : std::nullopt;
}

void WebServer::AnswerWithScreen(SoupServerMessage* message, GHashTable* query) {
  if (!RightsIn(message, query)) {
    return Say(message, SOUP_STATUS_UNAUTHORIZED, "a token is needed; `tvsim url` tells it\n");
  }
  int64_t number = 0;
  const auto screen = m_control.Context().WatchScreen();
  const Result<std::string> jpeg = screen ? (*screen)->Jpeg(number) : screen.error();
  if (!jpeg) {
    return Say(message, SOUP_STATUS_SERVICE_UNAVAILABLE, jpeg.error().reason + "\n");
  }
  SetHeader(message, "X-Screen-Number", std::to_string(number));
  soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
  soup_server_message_set_response(message, "image/jpeg", SOUP_MEMORY_COPY, jpeg->data(), jpeg->size());
}

void WebServer::Upgrade(SoupServerMessage* message, GHashTable* query) {
  const std::optional<Rights> rights = RightsIn(message, query);
  if (!rights) {
    return Say(message, SOUP_STATUS_UNAUTHORIZED, "a token is needed; `tvsim url` tells it\n");
  }
  GList* extensions = nullptr;
  if (soup_websocket_server_process_handshake(message, nullptr, nullptr, nullptr, &extensions) == FALSE) {
    return;  // answered with what is wrong
  }
  struct Wanted {
    WebServer* server;
    Rights rights;
  };
  g_signal_connect_data(
      message, "wrote-informational", G_CALLBACK(+[](SoupServerMessage* upgraded, gpointer data) {
        const auto* wanted = static_cast<const Wanted*>(data);
        wanted->server->TakeOver(upgraded, wanted->rights);
      }),
      new Wanted{this, *rights}, [](gpointer data, GClosure*) { delete static_cast<Wanted*>(data); }, GConnectFlags{});
}

/// From here on the connection is not HTTP's any more.
void WebServer::TakeOver(SoupServerMessage* message, Rights rights) {
  const GPointer<GIOStream> stream(soup_server_message_steal_connection(message));
  const GPointer<GIOStream> connection(Unwrapped(stream.get()));
  if (!G_IS_SOCKET_CONNECTION(connection.get())) {
    return;
  }
  GSocket* socket = g_socket_connection_get_socket(G_SOCKET_CONNECTION(connection.get()));
  UniqueFd client(fcntl(g_socket_get_fd(socket), F_DUPFD_CLOEXEC, 0));
  const rpc::TransportLimits limits;
  auto transport = rpc::Transport::Create(g_main_context_default(), std::move(client),
                                          std::make_unique<rpc::WebSocketFraming>(limits.message), limits);
  if (transport) {
    m_control.Adopt(std::move(*transport), rights);
  }
}

}  // namespace sim::tvsim
