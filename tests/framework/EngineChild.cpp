// SPDX-License-Identifier: Apache-2.0
#include "tests/framework/EngineChild.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <thread>
#include <utility>

#include "simulator/rpc/JsonText.h"

namespace sim::framework {
namespace {

using std::chrono::steady_clock;
constexpr std::chrono::seconds kPatience{60};

std::pair<UniqueFd, UniqueFd> MakePair(bool socket) {
  int ends[2];
  const int made = socket ? socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) : pipe2(ends, O_CLOEXEC);
  EXPECT_EQ(made, 0);
  return {UniqueFd(ends[0]), UniqueFd(ends[1])};
}

/// Looks every millisecond; false when the patience is over.
template <typename Condition>
bool WaitUntil(Condition condition) {
  const auto deadline = steady_clock::now() + kPatience;
  while (!condition()) {
    if (steady_clock::now() > deadline) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace

EngineChild::EngineChild(Channel channel, const std::vector<std::string>& environment) {
  const bool isSocket = channel == Channel::kSocket;
  auto [read, engineOut] = MakePair(isSocket);
  UniqueFd engineIn;
  UniqueFd write;
  if (isSocket) {
    write.Reset(fcntl(read.Get(), F_DUPFD_CLOEXEC, 0));
  } else {
    auto ends = MakePair(false);
    engineIn = std::move(ends.first);
    write = std::move(ends.second);
  }
  m_pid = fork();
  if (m_pid == 0) {
    Exec(environment, isSocket ? engineOut.Get() : engineIn.Get(), engineOut.Get(), isSocket);
  }
  m_fromEngine = std::move(read);
  m_toEngine = std::move(write);
}

void EngineChild::Exec(const std::vector<std::string>& environment, int in, int out, bool inherited) const {
  dup2(open((m_folder / "stderr").c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600), STDERR_FILENO);
  setenv("OLM_LOG_FILE", (m_folder / "log").c_str(), 1);
  if (inherited) {
    setenv("OLM_CHANNEL_FD", std::to_string(dup(in)).c_str(), 1);
  } else {
    unsetenv("OLM_CHANNEL_FD");
    dup2(in, STDIN_FILENO);
    dup2(out, STDOUT_FILENO);
  }
  for (std::string variable : environment) {
    const size_t equals = variable.find('=');
    setenv(variable.substr(0, equals).c_str(), variable.substr(equals + 1).c_str(), 1);
  }
  execl(FAKE_ENGINE, FAKE_ENGINE, nullptr);
  _exit(127);
}

EngineChild::~EngineChild() {
  if (m_pid > 0) {
    kill(m_pid, SIGKILL);
    waitpid(m_pid, nullptr, 0);
  }
}

void EngineChild::Send(std::string_view bytes) {
  std::signal(SIGPIPE, SIG_IGN);
  while (!bytes.empty()) {
    const ssize_t count = write(m_toEngine.Get(), bytes.data(), bytes.size());
    ASSERT_GT(count, 0);
    bytes.remove_prefix(static_cast<size_t>(count));
  }
}

std::string EngineChild::Receive() {
  const auto deadline = steady_clock::now() + kPatience;
  size_t end;
  while ((end = m_received.find('\n')) == std::string::npos) {
    pollfd poll{m_fromEngine.Get(), POLLIN, 0};
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - steady_clock::now());
    if (left.count() <= 0 || ::poll(&poll, 1, static_cast<int>(left.count())) <= 0) {
      ADD_FAILURE() << "the engine has sent nothing";
      return "(nothing)";
    }
    char bytes[65536];
    const ssize_t count = read(m_fromEngine.Get(), bytes, sizeof bytes);
    if (count <= 0) {
      return "(end)" + std::exchange(m_received, {});
    }
    m_received.append(bytes, static_cast<size_t>(count));
  }
  std::string line = m_received.substr(0, end);
  m_received.erase(0, end + 1);
  return line;
}

void EngineChild::Request(const std::string& command, const std::vector<std::string>& params) {
  const auto body = rpc::ObjectWriter().Add("command", rpc::Quote(command)).Add("params", rpc::Quote(params)).Take();
  Send(rpc::WriteRequest("engine.execute", body, rpc::Number(1)) + "\n");
}

std::string EngineChild::Execute(const std::string& command, const std::vector<std::string>& params) {
  Request(command, params);
  return Receive();
}

void EngineChild::EndInput() {
  shutdown(m_toEngine.Get(), SHUT_WR);
  m_toEngine.Reset();
}

void EngineChild::Hang() {
  m_toEngine.Reset();
  m_fromEngine.Reset();
}

void EngineChild::Signal(int signal) const {
  kill(m_pid, signal);
}

int EngineChild::Wait() {
  int status = 0;
  if (!WaitUntil([&] { return waitpid(m_pid, &status, WNOHANG) != 0; })) {
    ADD_FAILURE() << "the engine does not end";
    return -1;
  }
  m_pid = -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

void EngineChild::WaitForLog(const std::string& line) const {
  EXPECT_TRUE(WaitUntil([&] { return std::ranges::count(Log(), line) > 0; })) << line << " is not in the log";
}

std::vector<std::string> EngineChild::Log() const {
  return ReadLines(m_folder / "log");
}

std::string EngineChild::StandardError() const {
  return ReadFile(m_folder / "stderr");
}

}  // namespace sim::framework
