// SPDX-License-Identifier: Apache-2.0
#include "simulator/framework/EngineProcess.h"

#include <chrono>
#include <utility>

#include "simulator/base/Log.h"
#include "simulator/base/LogStage.h"
#include "simulator/framework/Channel.h"
#include "simulator/framework/EventSender.h"
#include "simulator/rpc/EagerPoll.h"
#include "simulator/vconf/include/vconf_simulator.h"

namespace sim::framework {
namespace {

constexpr size_t kMaxParams = 4;

/// How long the end waits for an application that still has replies or events to read.
constexpr std::chrono::seconds kLastWords{2};

}  // namespace

EngineProcess::EngineProcess(std::unique_ptr<olm::CEmpAppBase> app)
    : m_context(g_main_context_new()),
      m_loop(g_main_loop_new(m_context.get(), FALSE)),
      m_signals(m_context.get(), [this] { Quit(LogLevel::kInfo, "a signal asks for the end"); }),
      m_binder(Methods()),
      m_handler(m_binder),
      m_app(std::move(app)) {}

EngineProcess::~EngineProcess() = default;

/// The whole interface of an engine's process.
std::vector<rpc::MethodEntry> EngineProcess::Methods() {
  static const rpc::Fields<OpenParams> openParams = {rpc::Required("applicationId", &OpenParams::applicationId),
                                                     rpc::Required("widgetId", &OpenParams::widgetId)};
  static const rpc::Fields<CommandParams> commandParams = {rpc::Required("command", &CommandParams::command),
                                                           rpc::Optional("params", &CommandParams::params)};
  return {
      rpc::Method("app.open", "Opens the application that the commands after it come from", openParams,
                  [this](const OpenParams& params) { return OpenApp(params); }),
      rpc::Method("app.close", "Closes the application", rpc::kNoFields,
                  [this](rpc::NoParams) { return rpc::Success(rpc::Boolean(CloseApp())); }),
      rpc::Method("engine.execute", "Runs a command with up to four parameters", commandParams,
                  [this](CommandParams params) { return Execute(std::move(params)); }),
      rpc::Method("engine.executeWithParamList", "Runs a command with a list of parameters", commandParams,
                  [this](const CommandParams& params) { return ExecuteWithParamList(params); }),
  };
}

Status EngineProcess::Start() {
  auto channel = OpenChannel(m_context.get());
  if (!channel) {
    return channel.error();
  }
  m_channel = std::move(*channel);
  EventSender::OfProcess().Connect(m_channel);
  m_engine.reset(m_app->CreateEmpEngine());
  return m_engine != nullptr ? Ok() : Error{1, "the application object has made no engine"};
}

void EngineProcess::Run() {
  rpc::Serve(m_channel, m_handler, [this](const rpc::CloseReason& reason) {
    if (reason.empty()) {
      Quit(LogLevel::kInfo, "the application has closed the channel");
    } else {
      Quit(LogLevel::kError, "the channel is lost: " + reason);
    }
  });
  rpc::PollEagerly(m_context.get());
  g_main_loop_run(m_loop.get());
}

void EngineProcess::Quit(LogLevel level, const std::string& reason) {
  Log(level, "framework", reason);
  g_main_loop_quit(m_loop.get());
}

/// Deliveries end first: a key that is being delivered may wait for the engine's lock or delete its adapter, and an
/// engine that is deleted waits for the worker that delivers it. No lock is held here, so both come to an end.
void EngineProcess::End() {
  vconf_stop_deliveries();
  CloseApp();
  if (m_engine != nullptr) {
    m_engine->Destroy();
    m_engine.reset();
  }
  m_app->Destroy();
  EventSender::OfProcess().Connect(nullptr);
  if (m_channel != nullptr && !m_channel->Drain(kLastWords)) {
    Log(LogLevel::kWarning, "framework", "the last replies and events were not read");
  }
}

rpc::Answer EngineProcess::OpenApp(const OpenParams& params) {
  CloseApp();
  m_engine->SetAppInfo(0, params.applicationId, params.widgetId, "");
  m_isOpen = m_app->Open(++m_handle, params.applicationId, params.widgetId, "");
  return rpc::Success(rpc::Boolean(m_isOpen));
}

/// False when none is open, or its object refuses.
bool EngineProcess::CloseApp() {
  return std::exchange(m_isOpen, false) && m_app->Close(m_handle);
}

/// What commands have answered has left before the next one runs, however long that takes and even if it crashes.
rpc::Answer EngineProcess::Execute(CommandParams params) {
  if (params.params.size() > kMaxParams) {
    return rpc::Failure(rpc::kInvalidParams, "a command has up to " + std::to_string(kMaxParams) + " parameters");
  }
  m_channel->Flush();
  const HeldLog held;
  params.params.resize(kMaxParams);
  const std::vector<std::string>& texts = params.params;
  std::string result;
  const bool supported = m_engine->Execute(result, params.command, texts[0], texts[1], texts[2], texts[3]);
  return FinishCommand(params.command, supported, result);
}

rpc::Answer EngineProcess::ExecuteWithParamList(const CommandParams& params) {
  m_channel->Flush();
  const HeldLog held;
  olm::ParamList list;
  list.push_back(params.command);
  for (const std::string& text : params.params) {
    list.push_back(text);
  }
  std::string result;
  const bool supported = m_engine->ExecuteWithParamList(result, params.command, list);
  return FinishCommand(params.command, supported, result);
}

rpc::Answer EngineProcess::FinishCommand(const std::string& command, bool supported, const std::string& result) {
  if (!supported) {
    return rpc::CallError{rpc::kMethodNotFound, "the engine does not support this command",
                          rpc::ObjectWriter().Add("command", rpc::Quote(command)).Take()};
  }
  if (!rpc::IsJson(result)) {
    return rpc::Failure(rpc::kInternalError, "the engine has set no result");
  }
  return rpc::Success({result});
}

}  // namespace sim::framework
