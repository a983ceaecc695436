// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/engine/Engine.h"

#include <fcntl.h>
#include <glib-unix.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "simulator/rpc/Binder.h"
#include "simulator/tvsim/engine/Timer.h"

namespace sim::tvsim {
namespace {

constexpr int kChannel = 3;  // the descriptor's number in the engine process
constexpr std::chrono::milliseconds kOrderlyEnd(5000);
constexpr std::chrono::milliseconds kLastWords(50);  // its end is to be reported within a tenth of a second
constexpr std::chrono::seconds kRestartWindow(60);
constexpr std::chrono::milliseconds kFirstBackOff(1000), kLongestBackOff(30000);

const rpc::Fields<EngineEvent> kEventFields = {
    rpc::Required("event", &EngineEvent::number),
    rpc::Optional("name", &EngineEvent::name),
    rpc::Optional("param1", &EngineEvent::param1),
    rpc::Optional("param2", &EngineEvent::param2),
};

}  // namespace

Engine::Engine(EngineOptions options, Callbacks callbacks)
    : m_options(std::move(options)), m_callbacks(std::move(callbacks)) {}

Result<std::unique_ptr<Engine>> Engine::Start(EngineOptions options, Callbacks callbacks) {
  std::unique_ptr<Engine> engine(new Engine(std::move(options), std::move(callbacks)));
  SIM_TRY(engine->Launch());
  return engine;
}

Engine::~Engine() {
  if (m_end_source != 0) {
    g_source_remove(m_end_source);
  }
  m_client.reset();  // end of input: the engine ends in good order
  if (m_process && !m_process->Wait(kOrderlyEnd)) {
    m_process->End(std::chrono::milliseconds(0));
  }
}

Status Engine::Launch() {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) {
    return Error{errno, std::string("no channel to the engine: ") + std::strerror(errno)};
  }
  UniqueFd ours(ends[0]), theirs(ends[1]);
  // What the engine's libraries print stands among its log lines, and not in what tvsim says.
  const UniqueFd log(open(m_options.log_file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600));
  if (!log) {
    return Error{errno, "cannot write " + m_options.log_file + ": " + std::strerror(errno)};
  }
  ProcessRequest request{
      {m_options.program}, m_options.environment, {{theirs.Get(), kChannel}, {log.Get(), 1}, {log.Get(), 2}}};
  request.environment.emplace_back("OLM_CHANNEL_FD", std::to_string(kChannel));
  request.environment.emplace_back("OLM_LOG_FILE", m_options.log_file);
  Result<ChildProcess> process = ChildProcess::Start(request);
  if (!process) {
    return process.error();
  }
  auto transport = rpc::Transport::Create(g_main_context_default(), std::move(ours));
  if (!transport) {
    return transport.error();
  }
  m_process = std::make_unique<ChildProcess>(std::move(*process));
  m_process_ended = m_channel_closed = false;
  m_client = std::make_unique<rpc::Client>(
      *transport,
      rpc::Client::Callbacks{[this](const std::string& method, const rpc::JsonText& p) { OnNotification(method, p); },
                             [this](const rpc::CloseReason&) { OnChannelClosed(); }});
  m_end_source = g_unix_fd_add(
      m_process->EndDescriptor(), G_IO_IN,
      [](gint, GIOCondition, gpointer self) -> gboolean {
        static_cast<Engine*>(self)->OnProcessEnd();
        return G_SOURCE_REMOVE;
      },
      this);
  return Ok();
}

void Engine::Call(std::string_view method, const rpc::JsonText& params, rpc::Client::OnAnswer on_answer) {
  if (!m_client) {
    on_answer(
        rpc::Failure(rpc::kConnectionLost, "the engine has ended too often; it is started again in some seconds"));
    return;
  }
  // The timer goes with the answer.
  auto timer = std::make_shared<std::unique_ptr<Timer>>();
  m_client->Call(method, params, [this, timer, on_answer](const rpc::Answer& answer) {
    timer->reset();
    const auto* error = std::get_if<rpc::CallError>(&answer);
    if (error != nullptr && error->code == rpc::kConnectionLost) {
      m_lost_calls.push_back(on_answer);  // until it is known how the engine ended
    } else {
      on_answer(answer);
    }
  });
  if (m_channel_closed) {
    return;
  }
  *timer = std::make_unique<Timer>(m_options.answer_limit, [this] { GiveUp(); });
}

/// An engine that hangs is ended, so that the next command finds one that does not.
void Engine::GiveUp() {
  m_hung = true;
  m_process->Signal(SIGKILL);
}

void Engine::OnNotification(const std::string& method, const rpc::JsonText& params) {
  if (method != "engine.event") {
    return;
  }
  if (const auto event = rpc::ReadParams(params, kEventFields)) {
    m_callbacks.on_event(*event);
  }
}

/// False when it has to wait: it was done too often lately, or cannot be done now.
bool Engine::LaunchAgain() {
  const auto now = std::chrono::steady_clock::now();
  while (!m_recent_restarts.empty() && now - m_recent_restarts.front() > kRestartWindow) {
    m_recent_restarts.pop_front();
  }
  if (m_recent_restarts.size() >= static_cast<size_t>(m_options.quick_restarts) || !Launch()) {
    return false;
  }
  m_recent_restarts.push_back(now);
  m_back_off = std::chrono::milliseconds(0);
  ++m_restarts;
  return true;
}

void Engine::LaunchLater() {
  m_back_off = std::clamp(m_back_off * 2, kFirstBackOff, kLongestBackOff);
  m_late_start = std::make_unique<Timer>(m_back_off, [this] {
    if (!Launch()) {
      LaunchLater();
      return;
    }
    m_recent_restarts.push_back(std::chrono::steady_clock::now());
    ++m_restarts;
    m_callbacks.on_late_start();
  });
}

/// What the engine said before it ended is still read, unless a process that it left holds the channel open.
void Engine::OnProcessEnd() {
  m_end_source = 0;
  m_process_ended = true;
  if (m_channel_closed) {
    Finish();
  } else {
    m_patience = std::make_unique<Timer>(kLastWords, [this] { Finish(); });
  }
}

/// An engine without its channel is of no use any more.
void Engine::OnChannelClosed() {
  m_channel_closed = true;
  if (m_process_ended) {
    Finish();
  } else {
    m_patience = std::make_unique<Timer>(kOrderlyEnd, [this] { m_process->Signal(SIGKILL); });
  }
}

void Engine::Finish() {
  m_patience.reset();
  const ProcessEnd end = m_process->Wait(std::chrono::milliseconds(0)).value_or(ProcessEnd{});
  m_process.reset();
  m_dead_client = std::move(m_client);
  const bool restarted = LaunchAgain();
  if (!restarted) {
    LaunchLater();
  }
  m_callbacks.on_exit(end, restarted);
  const std::string limit = std::to_string(m_options.answer_limit.count());
  const rpc::Answer failure = std::exchange(m_hung, false)
                                  ? rpc::Failure(kNoAnswerInTime, "the engine has not answered within " + limit + " ms")
                                  : rpc::Failure(rpc::kConnectionLost, "the engine has ended: " + end.Text());
  for (const auto& on_answer : std::exchange(m_lost_calls, {})) {
    on_answer(failure);
  }
}

}  // namespace sim::tvsim
