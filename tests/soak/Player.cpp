// SPDX-License-Identifier: Apache-2.0
#include "tests/soak/Player.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <stdexcept>

namespace soak {
namespace {

using nlohmann::json;

constexpr int kPatienceMs = 60000;

}  // namespace

Player::Player(const std::string& program, const std::map<std::string, std::string>& environment) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) throw std::runtime_error("no channel");
  m_channel.Reset(ends[0]);
  const sim::UniqueFd other(ends[1]);
  m_pid = fork();
  if (m_pid == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
    setenv("OLM_CHANNEL_FD", std::to_string(dup(other.Get())).c_str(), 1);
    execl(program.c_str(), program.c_str(), nullptr);
    _exit(127);
  }
}

Player::~Player() {
  if (m_pid > 0) {
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
  }
}

void Player::Open(const std::string& application, const std::string& widget) {
  Call("app.open", json{{"applicationId", application}, {"widgetId", widget}}.dump());
}

std::string Player::Execute(const std::string& command, const std::vector<std::string>& params) {
  return Call("engine.execute", json{{"command", command}, {"params", params}}.dump());
}

void Player::Do(const std::string& command, const std::vector<std::string>& params) {
  const std::string result = Execute(command, params);
  if (result != "1") throw std::runtime_error(command + " answered " + result);
}

void Player::AwaitEvent(int event) {
  for (;;) {
    const auto found = std::find(m_events.begin(), m_events.end(), event);
    if (found != m_events.end()) {
      m_events.erase(m_events.begin(), found + 1);
      return;
    }
    ReadMessage();
  }
}

int Player::End() {
  m_channel.Reset();
  int status = 0;
  waitpid(m_pid, &status, 0);
  m_pid = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

std::string Player::Call(const std::string& method, const std::string& params) {
  const std::string line = R"({"jsonrpc":"2.0","id":)" + std::to_string(++m_lastId) + R"(,"method":")" + method +
                           R"(","params":)" + params + "}\n";
  if (send(m_channel.Get(), line.data(), line.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(line.size())) {
    throw std::runtime_error("the engine has gone before " + line);
  }
  for (;;) {
    const std::string answer = ReadMessage();
    if (!answer.empty()) return answer;
  }
}

std::string Player::ReadMessage() {
  size_t end;
  while ((end = m_received.find('\n')) == std::string::npos) {
    pollfd channel{m_channel.Get(), POLLIN, 0};
    if (poll(&channel, 1, kPatienceMs) <= 0) throw std::runtime_error("the engine has said nothing for a minute");
    char bytes[4096];
    const ssize_t count = read(m_channel.Get(), bytes, sizeof bytes);
    if (count <= 0) throw std::runtime_error("the engine has ended with " + std::to_string(End()));
    m_received.append(bytes, static_cast<size_t>(count));
  }
  const json message = json::parse(m_received.substr(0, end));
  m_received.erase(0, end + 1);
  if (message.contains("method")) {
    if (message["method"] == "engine.event") m_events.push_back(message["params"]["event"]);
    return "";
  }
  if (!message.contains("result")) throw std::runtime_error("an error: " + message.dump());
  return message["result"].dump();
}

}  // namespace soak
