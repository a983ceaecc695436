// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/engine/Engine.h"

#include <fcntl.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "simulator/base/Log.h"
#include "simulator/base/LogFile.h"
#include "simulator/rpc/Binder.h"
#include "simulator/tvsim/engine/Timer.h"
#include "simulator/tvsim/engine/WaitReport.h"

namespace sim::tvsim {
namespace {

constexpr int kChannel = 3, kLogStage = 4;  // the descriptors' numbers in the engine process
constexpr std::chrono::milliseconds kOrderlyEnd(5000);
constexpr std::chrono::milliseconds kSlowAnswer(2000);  // only a command that waits for something takes as long
constexpr std::chrono::milliseconds kSilence(50);       // so long a command may keep its log's lines back
constexpr std::chrono::milliseconds kLastWords(50);     // its end is to be reported within a tenth of a second

const rpc::Fields<EngineEvent> kEventFields = {
    rpc::Required("event", &EngineEvent::number),
    rpc::Optional("name", &EngineEvent::name),
    rpc::Optional("param1", &EngineEvent::param1),
    rpc::Optional("param2", &EngineEvent::param2),
};

}  // namespace

Engine::Engine(EngineOptions options, Callbacks callbacks)
    : m_options(std::move(options)), m_callbacks(std::move(callbacks)), m_pace(m_options.quick_restarts) {}

Result<std::unique_ptr<Engine>> Engine::Start(EngineOptions options, Callbacks callbacks) {
  std::unique_ptr<Engine> engine(new Engine(std::move(options), std::move(callbacks)));
  auto alarm = Alarm::Create([raw = engine.get()] { raw->LookAfterCalls(); });
  if (!alarm) {
    return alarm.error();
  }
  engine->m_answer_alarm = std::move(*alarm);
  SIM_TRY(engine->Launch());
  return engine;
}

Engine::~Engine() {
  m_end.reset();
  m_client.reset();  // end of input: the engine ends in good order
  if (m_process && !m_process->Wait(kOrderlyEnd)) {
    m_process->End(std::chrono::milliseconds(0));
  }
  WriteLastLines();
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
  const Result<UniqueFd> log_memory = LogStage::MakeMemory();
  if (!log_memory) {
    return log_memory.error();
  }
  auto log_stage = LogStage::Open(log_memory->Get());
  if (!log_stage) {
    return log_stage.error();
  }
  ProcessRequest request{{m_options.program},
                         m_options.environment,
                         {{theirs.Get(), kChannel}, {log_memory->Get(), kLogStage}, {log.Get(), 1}, {log.Get(), 2}}};
  request.environment.emplace_back("OLM_CHANNEL_FD", std::to_string(kChannel));
  request.environment.emplace_back("OLM_LOG_FILE", m_options.log_file);
  request.environment.emplace_back("OLM_LOG_STAGE", std::to_string(kLogStage));
  Result<ChildProcess> process = ChildProcess::Start(request);
  if (!process) {
    return process.error();
  }
  auto transport = rpc::Transport::Create(g_main_context_default(), std::move(ours));
  if (!transport) {
    return transport.error();
  }
  m_process = std::make_unique<ChildProcess>(std::move(*process));
  m_log_stage = std::move(*log_stage);
  m_process_ended = m_channel_closed = false;
  m_client = std::make_unique<rpc::Client>(
      *transport,
      rpc::Client::Callbacks{[this](const std::string& method, const rpc::JsonText& p) { OnNotification(method, p); },
                             [this](const rpc::CloseReason&) { OnChannelClosed(); },
                             [this](rpc::Client::OpenCall call) { m_lost_calls.push_back(std::move(call)); }});
  m_end = std::make_unique<FdWatch>(m_process->EndDescriptor(), FdWatch::For::kInput, [this] { OnProcessEnd(); });
  return Ok();
}

void Engine::Call(std::string_view method, rpc::JsonText params, rpc::Client::OnAnswer on_answer) {
  if (!m_client) {
    on_answer(rpc::Failure(
        rpc::kConnectionLost,
        m_suspended.empty() ? "the engine has ended too often; it is started again in some seconds" : m_suspended));
    return;
  }
  m_client->Call(method, std::move(params), std::move(on_answer));
  if (!m_answer_alarm->IsSet()) {
    LookAgainWithin(m_options.answer_limit);
  }
}

/// One alarm looks after all calls: one for each would cost more than most calls do.
void Engine::LookAgainWithin(std::chrono::nanoseconds longest_wait) {
  m_answer_alarm->RingAfter(
      std::chrono::ceil<std::chrono::milliseconds>(std::min<std::chrono::nanoseconds>(kSilence, longest_wait)));
}

void Engine::LookAfterCalls() {
  const auto oldest = m_client ? m_client->OldestCall() : std::nullopt;
  if (!oldest) {
    return;
  }
  const auto age = rpc::Client::Clock::now() - *oldest;
  if (age >= m_options.answer_limit) {
    return GiveUp();
  }
  if (age >= kSilence) {
    WriteLastLines();  // what a command has said before it hangs is of interest now
  }
  if (age >= kSlowAnswer && m_told_of_call != *oldest) {
    m_told_of_call = *oldest;
    TellOfSlowAnswer();
  }
  LookAgainWithin(m_options.answer_limit - age);
}

/// The log's lines that the engine keeps back, or has not come to write.
void Engine::WriteLastLines() {
  if (m_log_stage) {
    m_log_stage->Flush([this](std::string_view lines) { sim::LogFile(m_options.log_file, kMaxLogFile).Write(lines); });
  }
}

/// Below the lines that say which command it is at.
void Engine::TellOfSlowAnswer() {
  const std::string milliseconds = std::to_string(kSlowAnswer.count());
  sim::LogFile(m_options.log_file, kMaxLogFile)
      .Write("[tvsim] the engine has not answered for " + milliseconds + " ms; " + WhatItWaitsFor(m_process->Id()) +
             "\n");
}

/// An engine that hangs is ended, so that the next command finds one that does not.
void Engine::GiveUp() {
  const std::string limit = std::to_string(m_options.answer_limit.count());
  Kill({kNoAnswerInTime, "the engine has not answered within " + limit + " ms", {}});
}

void Engine::Kill(rpc::CallError reason) {
  if (!m_killed) {
    m_killed = std::move(reason);
  }
  m_process->Signal(SIGKILL);
}

void Engine::Suspend(const std::string& reason) {
  m_suspended = reason;
  m_late_start.reset();
  if (m_process) {
    Kill({rpc::kConnectionLost, "the engine was ended: " + reason, {}});
  }
}

void Engine::Resume() {
  m_suspended.clear();
  if (!Launch()) {
    LaunchLater();
    return;
  }
  ++m_restarts;
  m_callbacks.on_late_start();
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
  if (!m_callbacks.may_start()) {
    return false;
  }
  if (!m_pace.MayStartNow() || !Launch()) {
    LaunchLater();
    return false;
  }
  m_pace.StartedNow();
  ++m_restarts;
  return true;
}

void Engine::LaunchLater() {
  m_late_start = std::make_unique<Timer>(m_pace.NextWait(), [this] {
    if (!m_callbacks.may_start()) {
      return;
    }
    if (!Launch()) {
      LaunchLater();
      return;
    }
    m_pace.StartedLate();
    ++m_restarts;
    m_callbacks.on_late_start();
  });
}

/// What the engine said before it ended is still read, unless a process that it left holds the channel open.
void Engine::OnProcessEnd() {
  m_end.reset();
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
  WriteLastLines();
  m_dead_client = std::move(m_client);
  const auto lost_calls = std::exchange(m_lost_calls, {});
  m_interrupted_call = lost_calls.empty() ? "" : lost_calls.front().method + " " + lost_calls.front().params.text;
  const bool restarted = LaunchAgain();
  m_callbacks.on_exit(end, restarted);
  const rpc::Answer failure =
      std::exchange(m_killed, std::nullopt)
          .value_or(rpc::CallError{rpc::kConnectionLost, "the engine has ended: " + end.Text(), {}});
  for (const rpc::Client::OpenCall& call : lost_calls) {
    call.onAnswer(failure);
  }
}

}  // namespace sim::tvsim
