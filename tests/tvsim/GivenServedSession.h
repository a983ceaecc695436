// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_TVSIM_GIVENSERVEDSESSION_H
#define TESTS_TVSIM_GIVENSERVEDSESSION_H

#include <gmock/gmock.h>
#include <libsoup/soup.h>

#include "simulator/base/CHandle.h"
#include "tests/tvsim/TvsimFixture.h"

namespace sim::tvsim {

/// What a server answered.
struct Page {
  guint status = 0;
  std::string body;
  std::string type;
  std::string policy;
};

/// A session that serves its page, with an engine that shows nothing, and libsoup's client as the browser.
class GivenServedSession : public TvsimFixture {
 protected:
  static constexpr std::chrono::milliseconds kGenerousTime{30000};

  GivenServedSession() : m_tvsim(Start({"serve", PictureNamed("a.jpg")})), m_soup(soup_session_new()) {
    Await("the address", [this] { return ContentsOf(PathOf("output")).find("look on only") != std::string::npos; });
    const std::string output = ContentsOf(PathOf("output"));
    const std::string control = output.substr(0, output.find('\n'));
    const std::string view = output.substr(output.find("only: ") + 6);
    m_address = control.substr(0, control.find("/#"));
    m_control = control.substr(control.find('=') + 1);
    m_view = view.substr(view.find('=') + 1, m_control.size());
  }
  ~GivenServedSession() override { g_object_unref(m_soup); }

  Page Get(const std::string& path, const std::vector<std::pair<std::string, std::string>>& headers = {},
           const char* method = "GET") {
    SoupMessage* message = soup_message_new(method, (m_address + path).c_str());
    for (const auto& [name, value] : headers) {
      soup_message_headers_replace(soup_message_get_request_headers(message), name.c_str(), value.c_str());
    }
    GBytes* bytes = soup_session_send_and_read(m_soup, message, nullptr, nullptr);
    Page page{soup_message_get_status(message), "", "", ""};
    if (bytes != nullptr) {
      gsize size = 0;
      const void* data = g_bytes_get_data(bytes, &size);
      page.body.assign(static_cast<const char*>(data), size);
      g_bytes_unref(bytes);
    }
    SoupMessageHeaders* answered = soup_message_get_response_headers(message);
    const auto text = [](const char* value) { return std::string(value != nullptr ? value : ""); };
    page.type = text(soup_message_headers_get_one(answered, "Content-Type"));
    page.policy = text(soup_message_headers_get_one(answered, "Content-Security-Policy"));
    g_object_unref(message);
    return page;
  }

  ChildProcess m_tvsim;
  SoupSession* m_soup;
  std::string m_address;  ///< "http://127.0.0.1:1234"
  std::string m_control;  ///< the tokens
  std::string m_view;
};

/// A WebSocket of libsoup's, whose messages are gathered.
class Socket {
 public:
  /// No connection when it is refused.
  static std::unique_ptr<Socket> Open(SoupSession* soup, const std::string& uri, const char* origin = nullptr) {
    SoupMessage* message = soup_message_new("GET", uri.c_str());
    struct Waiting {
      bool done = false;
      SoupWebsocketConnection* connection = nullptr;
    } waiting;
    soup_session_websocket_connect_async(
        soup, message, origin, nullptr, G_PRIORITY_DEFAULT, nullptr,
        [](GObject* source, GAsyncResult* result, gpointer data) {
          auto* wait = static_cast<Waiting*>(data);
          wait->connection = soup_session_websocket_connect_finish(SOUP_SESSION(source), result, nullptr);
          wait->done = true;
        },
        &waiting);
    while (!waiting.done) {
      g_main_context_iteration(nullptr, TRUE);
    }
    g_object_unref(message);
    return waiting.connection != nullptr ? std::unique_ptr<Socket>(new Socket(waiting.connection)) : nullptr;
  }
  ~Socket() { g_object_unref(m_connection); }
  Socket(const Socket&) = delete;
  Socket& operator=(const Socket&) = delete;

  void Send(const std::string& text) { soup_websocket_connection_send_text(m_connection, text.c_str()); }

  /// The next message that holds `part`; those before it are passed over.
  std::string Await(const std::string& part) {
    std::string found;
    TvsimFixtureAwait("a message with " + part, [&] {
      while (g_main_context_iteration(nullptr, FALSE) != FALSE) {
      }
      while (!m_messages.empty() && found.empty()) {
        found = m_messages.front().find(part) != std::string::npos ? m_messages.front() : "";
        m_messages.erase(m_messages.begin());
      }
      return !found.empty();
    });
    return found;
  }

  SoupWebsocketConnection* Get() { return m_connection; }

 private:
  struct Public : TvsimFixture {
    using TvsimFixture::Await;
  };
  static void TvsimFixtureAwait(const std::string& what, const std::function<bool()>& condition) {
    Public::Await(what, condition);
  }

  explicit Socket(SoupWebsocketConnection* connection) : m_connection(connection) {
    soup_websocket_connection_set_max_incoming_payload_size(connection, 16 << 20);
    g_signal_connect(connection, "message",
                     G_CALLBACK(+[](SoupWebsocketConnection*, gint, GBytes* bytes, gpointer self) {
                       gsize size = 0;
                       const void* data = g_bytes_get_data(bytes, &size);
                       static_cast<Socket*>(self)->m_messages.emplace_back(static_cast<const char*>(data), size);
                     }),
                     this);
  }

  SoupWebsocketConnection* m_connection;
  std::vector<std::string> m_messages;
};

}  // namespace sim::tvsim

#endif
