// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/session/Television.h"

#include <glib.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <utility>

#include "simulator/base/Faults.h"
#include "simulator/rpc/EagerPoll.h"
#include "simulator/tvsim/Console.h"
#include "simulator/tvsim/engine/CrashRecord.h"
#include "simulator/tvsim/engine/LogTail.h"

namespace sim::tvsim {
namespace {

constexpr Television::Patience kCalmScreen(1000);
constexpr size_t kLastLines = 8, kRecordedLines = 100;

}  // namespace

Television::Television(TelevisionOptions options)
    : m_options(std::move(options)),
      m_signal_watch(m_signals.Descriptor(), FdWatch::For::kInput, [this] { OnSignal(); }) {
  rpc::PollEagerly(g_main_context_default());
}

Result<std::unique_ptr<Television>> Television::SwitchOn(TelevisionOptions options) {
  std::unique_ptr<Television> television(new Television(std::move(options)));
  SIM_TRY(television->StartDisplay());
  SIM_TRY(television->StartEngine());
  return television;
}

Television::~Television() {
  m_engine.reset();
}

void Television::OnSignal() {
  if (m_signals.Take()) {
    Interrupt("interrupted");
  }
}

void Television::Interrupt(const std::string& reason) {
  if (m_interruption.empty()) {
    m_interruption = reason;
  }
}

Status Television::StartDisplay() {
  auto display = Display::Open(
      m_options.display, {[this](const std::string& reason) { OnScreenLost(reason); }, [this] { OnScreenBack(); }});
  if (!display) {
    return display.error();
  }
  m_display = std::move(*display);
  return Ok();
}

/// The engine's window has gone, and with it all that it shows; not every engine ends by itself. Its end is told before
/// all wait for another X server.
void Television::OnScreenLost(const std::string& reason) {
  m_screen_was_lost = true;
  Complain(reason + "; the engine follows it");
  m_engine->Suspend(reason);
  if (!m_engine->IsRunning()) {
    m_display->ComeBack();
  }
}

void Television::OnScreenBack() {
  Complain("there is a screen again");
  Tell(&Observer::on_new_screen);
  m_engine->Resume();
}

std::string Television::FaultsFile() const {
  return m_options.folder + "/faults";
}

Status Television::StartEngine() {
  auto store = vconf::Store::Create(m_options.folder);
  if (!store) {
    return store.error();
  }
  m_store = std::move(*store);
  setenv("OLM_FAULTS", FaultsFile().c_str(), 1);  // for the store here, and for the engine
  EngineOptions options = m_options.engine;
  options.environment.emplace_back("VCONF_SESSION", m_options.folder);
  auto engine = Engine::Start(std::move(options),
                              {[this](const EngineEvent& event) { OnEvent(event); },
                               [this](const ProcessEnd& end, bool restarted) { OnEngineExit(end, restarted); },
                               [this] { OnLateStart(); }, [this] { return m_display->IsThere(); }});
  if (!engine) {
    return engine.error();
  }
  m_engine = std::move(*engine);
  return Ok();
}

void Television::OnEvent(const EngineEvent& event) {
  m_events.push_back(event);
  m_history.push_back({++m_last_sequence, g_get_real_time() / 1000, m_picture, event});
  if (m_events.size() > kRememberedEvents) {
    m_events.pop_front();
  }
  if (m_history.size() > kRememberedEvents) {
    m_history.pop_front();
  }
  Tell(&Observer::on_event, m_history.back());
}

void Television::OnEngineExit(const ProcessEnd& end, bool restarted) {
  Complain("the engine has ended: " + end.Text() +
           (restarted ? "; it is started again" : "; it is started again later"));
  for (const std::string& line : LastLines(m_engine->LogFile(), kLastLines)) {
    Complain("  " + line);
  }
  if (m_display->IsThere()) {
    RecordCrash(end);  // without a screen an engine ends as it should
  }
  if (restarted) {
    OpenAgain();
  }
  Tell(&Observer::on_engine_exit, end, restarted);
  m_display->ComeBack();
}

void Television::RecordCrash(const ProcessEnd& end) const {
  const auto file = WriteCrashRecord(
      {end.Text(), m_engine->InterruptedCall(), m_picture, LastLines(m_engine->LogFile(), kRecordedLines)});
  Complain(file ? "  what is known of it: " + *file : file.error().reason);
}

void Television::OnLateStart() {
  OpenAgain();
  Tell(&Observer::on_late_start);
}

void Television::OpenAgain() {
  if (m_application) {
    m_engine->Call("app.open", ParamsOf(*m_application), [](const rpc::Answer&) {});
  }
}

Status Television::SetFaults(const std::vector<std::string>& rules) {
  SIM_TRY(WriteFaultRules(FaultsFile(), rules));
  m_faults = rules;
  return Ok();
}

bool Television::PauseUntil(Patience patience, const std::function<bool()>& condition) {
  bool over = false;
  const guint timer = g_timeout_add(
      static_cast<guint>(patience.count()),
      [](gpointer flag) -> gboolean {
        *static_cast<bool*>(flag) = true;
        return G_SOURCE_CONTINUE;
      },
      &over);
  bool holds = false;
  while (!(holds = condition()) && !over && m_interruption.empty()) {
    g_main_context_iteration(nullptr, TRUE);
  }
  g_source_remove(timer);
  return holds;
}

bool Television::ScreenWasLost() {
  m_display->IsThere();  // an engine that has lost it may tell so sooner than the main context
  const bool was_lost = std::exchange(m_screen_was_lost, false);
  if (was_lost) {
    PauseUntil(m_options.engine.answer_limit, [this] { return m_engine->TakesCommands(); });
  }
  return was_lost;
}

rpc::Answer Television::Await(const std::function<void(rpc::Client::OnAnswer)>& send) {
  // A screen is waited for, or a slide show would run through its pictures while there is none.
  PauseUntil(m_options.engine.answer_limit, [this] { return m_engine->TakesCommands() || m_display->IsThere(); });
  auto answer = std::make_shared<std::optional<rpc::Answer>>();  // outlives this call when it is interrupted
  send([answer](const rpc::Answer& given) { *answer = given; });
  // The engine's own limit ends the call earlier.
  PauseUntil(m_options.engine.answer_limit * 2, [&] { return answer->has_value(); });
  return answer->value_or(rpc::Failure(rpc::kConnectionLost, m_interruption));
}

void Television::SendCommand(const std::string& method, const std::string& command,
                             const std::vector<std::string>& params, rpc::Client::OnAnswer on_answer,
                             rpc::JsonText written) {
  if (!params.empty() && (command == "InitPlayer" || command == "ChangePlayingURL" || command == "Play")) {
    m_picture = params[0];
  }
  if (written.text.empty()) {
    written = ParamsOf(command, params);
  }
  if (std::ranges::none_of(m_observers, [](const Observer& observer) { return bool(observer.on_command); })) {
    m_engine->Call(method, std::move(written), std::move(on_answer));
    return;
  }
  std::vector<std::string> words = {command};
  words.insert(words.end(), params.begin(), params.end());
  m_engine->Call(method, std::move(written),
                 [this, method, words = std::move(words), on_answer = std::move(on_answer)](const rpc::Answer& answer) {
                   Tell(&Observer::on_command, method, words, answer);
                   on_answer(answer);
                 });
}

void Television::SendOpen(const Application& application, rpc::Client::OnAnswer on_answer) {
  m_application = application;
  m_engine->Call("app.open", ParamsOf(application), std::move(on_answer));
}

void Television::SendClose(rpc::Client::OnAnswer on_answer) {
  m_application.reset();
  m_engine->Call("app.close", {}, std::move(on_answer));
}

Status Television::OpenApplication(const Application& application) {
  const auto send = [&](rpc::Client::OnAnswer on_answer) { SendOpen(application, std::move(on_answer)); };
  const rpc::Answer answer = Await(send);
  if (const auto* error = std::get_if<rpc::CallError>(&answer)) {
    return Error{error->code, "the engine does not open the application: " + error->message};
  }
  return Ok();
}

Status Television::CloseApplication() {
  const auto send = [&](rpc::Client::OnAnswer on_answer) { SendClose(std::move(on_answer)); };
  const rpc::Answer answer = Await(send);
  if (const auto* error = std::get_if<rpc::CallError>(&answer)) {
    return Error{error->code, "the engine does not close the application: " + error->message};
  }
  return Ok();
}

rpc::Answer Television::Execute(const std::string& command, const std::vector<std::string>& params) {
  return Await(
      [&](rpc::Client::OnAnswer on_answer) { SendCommand("engine.execute", command, params, std::move(on_answer)); });
}

rpc::Answer Television::ExecuteWithParamList(const std::string& command, const std::vector<std::string>& params) {
  return Await([&](rpc::Client::OnAnswer on_answer) {
    SendCommand("engine.executeWithParamList", command, params, std::move(on_answer));
  });
}

std::optional<EngineEvent> Television::TakeEvent(Patience patience) {
  if (!PauseUntil(patience, [this] { return !m_events.empty(); })) {
    return std::nullopt;
  }
  EngineEvent event = m_events.front();
  m_events.pop_front();
  return event;
}

/// Without a timer, as even one that is hours away costs every turn of the loop.
void Television::RunUntilInterrupted() {
  while (m_interruption.empty()) {
    g_main_context_iteration(nullptr, TRUE);
  }
}

void Television::Pause(Patience time) {
  PauseUntil(time, [] { return false; });
}

Status Television::SetState(const std::string& state) {
  if (!m_application) {
    return Error{ENOENT, "no application is open whose state could change"};
  }
  const Status set = m_store->Set(StateKeyOf(*m_application), state);
  if (set) {
    Tell(&Observer::on_state, state);
  }
  return set;
}

Status Television::TakeScreenshot(const std::string& file) {
  const Result<Picture> picture = GetScreen().CaptureWhenCalm(kCalmScreen, [this](Patience time) { Pause(time); });
  return picture ? WritePng(*picture, file) : Status(picture.error());
}

std::string Television::Describe() const {
  return "screen " + std::to_string(m_display->GetScreen().Width()) + "x" +
         std::to_string(m_display->GetScreen().Height()) + (m_display->IsOwn() ? " of its own" : " on :0");
}

}  // namespace sim::tvsim
