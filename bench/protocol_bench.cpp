// SPDX-License-Identifier: Apache-2.0
/// Round trips on a socket, for script/bench protocol.
///
///     protocol_bench two-hops PATH                  an echo to compare with, see protocol_echo.h
///     protocol_bench soup-echo                      the same for WebSocket; prints its port
///     protocol_bench measure ADDRESS REQUEST COUNT IN-FLIGHT
///     protocol_bench clients ADDRESS REQUEST CLIENTS COUNT
///
/// ADDRESS: the path of a Unix socket, or ws:PORT/PATH on 127.0.0.1. REQUEST: a JSON text in which @ stands for the
/// request's number, which has to come back. `measure` prints {"rate":..., "p50":..., "p99":...}, microseconds;
/// `clients` shares COUNT requests among CLIENTS connections and fails when an answer is lost, doubled or an error.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "bench/protocol_echo.h"
#include "simulator/base/UniqueFd.h"

namespace {

using Clock = std::chrono::steady_clock;

[[noreturn]] void Fail(const std::string& what) {
  throw std::runtime_error(what);
}

/// Messages to and from a server: lines, or a WebSocket's text frames.
class Connection {
 public:
  explicit Connection(const std::string& address) : m_is_web_socket(address.starts_with("ws:")) {
    m_is_web_socket ? ConnectWebSocket(address.substr(3)) : ConnectUnix(address);
  }

  int Descriptor() const { return m_socket.Get(); }

  void Send(const std::string& message) {
    std::string bytes;
    if (!m_is_web_socket) {
      bytes = message + '\n';
    } else {
      bytes += '\x81';
      if (message.size() < 126) {
        bytes += static_cast<char>(0x80 | message.size());
      } else {
        bytes += '\xFE';
        bytes += static_cast<char>(message.size() >> 8);
        bytes += static_cast<char>(message.size() & 0xFF);
      }
      bytes += std::string(4, '\0');  // a mask that changes nothing
      bytes += message;
    }
    WriteAll(bytes);
  }

  /// The next message, waiting for it.
  std::string Receive() {
    for (;;) {
      if (auto message = Take(); !message.empty()) {
        return message;
      }
      ReadMore();
    }
  }

  /// The next message that is here already; empty when there is none.
  std::string Take() {
    if (!m_is_web_socket) {
      const size_t end = m_bytes.find('\n', m_begin);
      return end == std::string::npos ? "" : Cut(end - m_begin, 1);
    }
    const size_t here = m_bytes.size() - m_begin;
    if (here < 2) {
      return "";
    }
    const auto byte = [this](size_t i) { return static_cast<unsigned char>(m_bytes[m_begin + i]); };
    size_t header = 2, length = byte(1) & 0x7F;
    if (length == 126) {
      header = 4;
      length = here < header ? here : static_cast<size_t>(byte(2) << 8 | byte(3));
    }
    if (here < header + length) {
      return "";
    }
    m_begin += header;
    return Cut(length, 0);
  }

  void ReadMore() {
    char bytes[65536];
    const ssize_t count = read(m_socket.Get(), bytes, sizeof bytes);
    if (count <= 0) {
      Fail("the server has closed the connection");
    }
    m_bytes.erase(0, std::exchange(m_begin, 0));
    m_bytes.append(bytes, static_cast<size_t>(count));
  }

 private:
  std::string Cut(size_t length, size_t after) {
    std::string message = m_bytes.substr(m_begin, length);
    m_begin += length + after;
    return message;
  }

  void WriteAll(const std::string& bytes) {
    for (size_t written = 0; written < bytes.size();) {
      const ssize_t now = write(m_socket.Get(), bytes.data() + written, bytes.size() - written);
      if (now <= 0) {
        Fail("cannot write to the server");
      }
      written += static_cast<size_t>(now);
    }
  }

  void ConnectUnix(const std::string& path) {
    sockaddr_un address{AF_UNIX, {}};
    std::strncpy(address.sun_path, path.c_str(), sizeof address.sun_path - 1);
    m_socket.Reset(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    if (connect(m_socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      Fail("nobody answers at " + path);
    }
  }

  void ConnectWebSocket(const std::string& place) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(static_cast<uint16_t>(std::stoi(place)));
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const int on = 1;
    m_socket.Reset(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    setsockopt(m_socket.Get(), IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    if (connect(m_socket.Get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
      Fail("nobody answers at port " + place);
    }
    WriteAll("GET " + place.substr(place.find('/')) +
             " HTTP/1.1\r\nHost: 127.0.0.1:" + place.substr(0, place.find('/')) +
             "\r\nUpgrade: websocket\r\nConnection: Upgrade\r\nSec-WebSocket-Version: 13\r\n"
             "Sec-WebSocket-Key: AQIDBAUGBwgJCgsMDQ4PEA==\r\n\r\n");
    size_t end = 0;
    while ((end = m_bytes.find("\r\n\r\n")) == std::string::npos) {
      ReadMore();
    }
    if (!m_bytes.starts_with("HTTP/1.1 101")) {
      Fail("no WebSocket: " + m_bytes.substr(0, m_bytes.find('\r')));
    }
    m_bytes.erase(0, end + 4);
  }

  const bool m_is_web_socket;
  sim::UniqueFd m_socket;
  std::string m_bytes;
  size_t m_begin = 0;  ///< of what was not taken yet
};

std::string Numbered(const std::string& request, long number) {
  const size_t at = request.find('@');
  return request.substr(0, at) + std::to_string(number) + request.substr(at + 1);
}

/// The number in an answer, which stands after "id": or "request_id":; -1 for what is no answer.
long NumberOf(const std::string& answer) {
  const size_t at = answer.find("id\":");
  return at == std::string::npos ? -1 : std::atol(answer.c_str() + at + 4);
}

void ExpectNoError(const std::string& answer) {
  if (answer.find("\"error\":{") != std::string::npos) {
    Fail("the server answers " + answer);
  }
}

void Measure(const std::string& address, const std::string& request, long count, long in_flight) {
  Connection connection(address);
  std::vector<double> micros;
  std::vector<Clock::time_point> sent(static_cast<size_t>(count));
  micros.reserve(static_cast<size_t>(count));
  const auto start = Clock::now();
  long next = 0;
  const auto send_next = [&] {
    const std::string message = Numbered(request, next);
    sent[static_cast<size_t>(next++)] = Clock::now();
    connection.Send(message);
  };
  while (next < std::min(in_flight, count)) {
    send_next();
  }
  while (micros.size() < static_cast<size_t>(count)) {
    const std::string answer = connection.Receive();
    const long number = NumberOf(answer);
    if (number < 0) {
      continue;  // a notification
    }
    ExpectNoError(answer);
    micros.push_back(
        std::chrono::duration<double, std::micro>(Clock::now() - sent[static_cast<size_t>(number)]).count());
    if (next < count) {
      send_next();
    }
  }
  const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  std::ranges::sort(micros);
  std::printf("{\"rate\":%.0f,\"p50\":%.1f,\"p99\":%.1f}\n", static_cast<double>(count) / seconds,
              micros[micros.size() / 2], micros[micros.size() * 99 / 100]);
}

void RunClients(const std::string& address, const std::string& request, size_t clients, long count) {
  std::vector<std::unique_ptr<Connection>> connections;
  std::vector<pollfd> ready;
  for (size_t i = 0; i < clients; ++i) {
    connections.push_back(std::make_unique<Connection>(address));
    ready.push_back({connections.back()->Descriptor(), POLLIN, 0});
  }
  std::vector<int> answers(static_cast<size_t>(count));
  std::vector<long> waits_for(clients);
  long next = 0, answered = 0;
  const auto send_next = [&](size_t client) {
    waits_for[client] = next < count ? next : -1;
    if (next < count) {
      connections[client]->Send(Numbered(request, next++));
    }
  };
  for (size_t i = 0; i < clients; ++i) {
    send_next(i);
  }
  while (answered < count) {
    constexpr int kPatience = 60000;
    if (poll(ready.data(), ready.size(), kPatience) <= 0) {
      Fail("no answer for a minute; " + std::to_string(count - answered) + " are lost");
    }
    for (size_t i = 0; i < clients; ++i) {
      if (ready[i].revents == 0) {
        continue;
      }
      connections[i]->ReadMore();
      for (std::string answer; !(answer = connections[i]->Take()).empty();) {
        const long number = NumberOf(answer);
        if (number < 0) {
          continue;
        }
        ExpectNoError(answer);
        if (number != waits_for[i] || ++answers[static_cast<size_t>(number)] != 1) {
          Fail("answer " + std::to_string(number) + " came to a client that waits for " + std::to_string(waits_for[i]));
        }
        ++answered;
        send_next(i);
      }
    }
  }
  std::printf("{\"answered\":%ld,\"clients\":%zu}\n", answered, clients);
}

int Usage() {
  std::fputs(
      "usage: protocol_bench two-hops PATH | soup-echo | measure ADDRESS REQUEST COUNT IN-FLIGHT | clients ADDRESS "
      "REQUEST CLIENTS COUNT\n",
      stderr);
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  try {
    if (words.size() == 2 && words[0] == "two-hops") {
      ServeTwoHops(words[1]);
    } else if (words.size() == 1 && words[0] == "soup-echo") {
      ServeSoupEcho();
    } else if (words.size() == 5 && words[0] == "measure") {
      Measure(words[1], words[2], std::stol(words[3]), std::stol(words[4]));
    } else if (words.size() == 5 && words[0] == "clients") {
      RunClients(words[1], words[2], std::stoul(words[3]), std::stol(words[4]));
    } else {
      return Usage();
    }
  } catch (const std::exception& error) {
    std::fprintf(stderr, "protocol_bench: %s\n", error.what());
    return 1;
  }
  return 0;
}
