// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/control/Methods.h"

#include "simulator/tvsim/control/Notifications.h"
#include "simulator/tvsim/control/TypedCommands.h"

namespace sim::tvsim {
namespace {

struct Command {
  std::string command;
  std::vector<std::string> params;
};
const rpc::Fields<Command> kCommandFields = {
    rpc::Required("command", &Command::command),
    rpc::Optional("params", &Command::params),
};

const rpc::Fields<Application> kApplicationFields = {
    rpc::Required("applicationId", &Application::id),
    rpc::Required("widgetId", &Application::widget),
};

struct State {
  std::string state;
};
const rpc::Fields<State> kStateFields = {rpc::Required("state", &State::state)};

struct ScreenshotFile {
  std::string file;
};
const rpc::Fields<ScreenshotFile> kScreenshotFields = {rpc::Required("file", &ScreenshotFile::file)};

struct Since {
  int64_t sequence = 0;
};
const rpc::Fields<Since> kSinceFields = {rpc::Required("sequence", &Since::sequence)};

struct Follow {
  bool on = true;
};
const rpc::Fields<Follow> kFollowFields = {rpc::Required("on", &Follow::on)};

rpc::JsonText Document(const rpc::JsonText& methods) {
  const rpc::JsonText info = rpc::ObjectWriter()
                                 .Add("title", rpc::Quote("A picture player's television"))
                                 .Add("version", rpc::Quote("1.0.0"))
                                 .Take();
  return rpc::ObjectWriter().Add("openrpc", rpc::Quote("1.3.2")).Add("info", info).Add("methods", methods).Take();
}

rpc::Answer AnswerOf(const Status& status) {
  return status ? rpc::Success(rpc::Boolean(true)) : rpc::Failure(kSessionFailed, status.error().reason);
}

/// What gives an answer of the engine to the client that waits for it.
rpc::Client::OnAnswer Into(rpc::Reply reply) {
  auto kept = std::make_shared<rpc::Reply>(std::move(reply));
  return [kept](const rpc::Answer& answer) { (*kept)(answer); };
}

auto Forward(Television& television, const char* method) {
  return [&television, method](const Command& command, rpc::Reply reply) {
    television.SendCommand(method, command.command, command.params, Into(std::move(reply)));
  };
}

rpc::Answer EventsSince(const Television& television, int64_t sequence) {
  std::vector<rpc::JsonText> events;
  for (const SessionEvent& event : television.History()) {
    if (event.sequence > sequence) {
      events.push_back(ParamsOf(event));
    }
  }
  return rpc::Success(ListOf(events));
}

rpc::Answer Describe(const Television& television) {
  const Engine& engine = television.GetEngine();
  rpc::ObjectWriter status;
  status.Add("display", rpc::Quote(television.Describe()))
      .Add("engineProcess", rpc::Number(engine.ProcessId()))
      .Add("engineRestarts", rpc::Number(engine.Restarts()))
      .Add("engineLog", rpc::Quote(engine.LogFile()));
  if (const auto& application = television.OpenedApplication()) {
    status.Add("application", ParamsOf(*application));
  }
  return rpc::Success(status.Take());
}

}  // namespace

std::vector<rpc::MethodEntry> ControlMethods(Television& television, Subscriptions& subscriptions,
                                             std::function<rpc::JsonText()> describe) {
  std::vector<rpc::MethodEntry> methods = {
      rpc::Method("engine.execute", "Runs a command of the engine with up to four texts", kCommandFields,
                  Forward(television, "engine.execute")),
      rpc::Method("engine.executeWithParamList", "Runs a command of the engine with any number of texts",
                  kCommandFields, Forward(television, "engine.executeWithParamList")),
      rpc::Method("app.open", "Opens an application in the engine", kApplicationFields,
                  [&television](const Application& application, rpc::Reply reply) {
                    television.SendOpen(application, Into(std::move(reply)));
                  }),
      rpc::Method("app.close", "Closes the application", rpc::kNoFields,
                  [&television](rpc::NoParams, rpc::Reply reply) { television.SendClose(Into(std::move(reply))); }),
      rpc::Method("app.setState", "Announces the application's state: pause, resume or destroy", kStateFields,
                  [&television](const State& state) { return AnswerOf(television.SetState(state.state)); }),
      rpc::Method("session.screenshot", "Writes what the screen shows to a PNG file", kScreenshotFields,
                  [&television](const ScreenshotFile& shot) { return AnswerOf(television.TakeScreenshot(shot.file)); }),
      rpc::Method("session.status", "What the session runs on", rpc::kNoFields,
                  [&television](rpc::NoParams) { return Describe(television); }),
      rpc::Method("session.events", "The events after a sequence number, of the last thousand", kSinceFields,
                  [&television](const Since& since) { return EventsSince(television, since.sequence); }),
      rpc::Method("session.followLog", "Turns notifications of the engine's log lines on or off", kFollowFields,
                  [&subscriptions](const Follow& follow) {
                    subscriptions.log = follow.on;
                    return rpc::Success(rpc::Boolean(true));
                  }),
      rpc::Method("rpc.discover", "This interface as an OpenRPC document", rpc::kNoFields,
                  [describe = std::move(describe)](rpc::NoParams) { return rpc::Success(Document(describe())); }),
  };
  for (rpc::MethodEntry& command : TypedCommands(television)) {
    methods.push_back(std::move(command));
  }
  return methods;
}

}  // namespace sim::tvsim
