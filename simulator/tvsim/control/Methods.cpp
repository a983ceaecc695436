// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/control/Methods.h"

#include <filesystem>

#include "simulator/tvsim/control/Errors.h"
#include "simulator/tvsim/control/Notifications.h"
#include "simulator/tvsim/control/TypedCommands.h"
#include "simulator/tvsim/slideshow/PictureList.h"

namespace sim::tvsim {
namespace {

using rpc::NoParams;
using rpc::Reply;

struct Command {
  std::string command;
  std::vector<std::string> params;
};
const rpc::Fields<Command> kCommandFields = {
    rpc::Required("command", &Command::command, "the command's name, case-sensitive"),
    rpc::Optional("params", &Command::params, "its texts"),
};

const rpc::Fields<Application> kApplicationFields = {
    rpc::Required("applicationId", &Application::id, "any text"),
    rpc::Required("widgetId", &Application::widget, "its part before a dot names the state key"),
};

struct State {
  std::string state;
};
const rpc::Fields<State> kStateFields = {rpc::Required("state", &State::state, "pause, resume or destroy")};

struct ScreenshotFile {
  std::string file;
};
const rpc::Fields<ScreenshotFile> kScreenshotFields = {
    rpc::Required("file", &ScreenshotFile::file, "a path; an existing file is replaced")};

struct Folder {
  std::string folder;
};
const rpc::Fields<Folder> kFolderFields = {rpc::Required("folder", &Folder::folder, "a path")};

struct FaultRules {
  std::vector<std::string> rules;
};
const rpc::Fields<FaultRules> kFaultFields = {
    rpc::Required("rules", &FaultRules::rules, "each \"WHAT WHICH ACTION [VALUE]\"; none end all faults")};

struct Since {
  int64_t sequence = 0;
};
const rpc::Fields<Since> kSinceFields = {
    rpc::Required("sequence", &Since::sequence, "of the last event that is known; 0 for all")};

struct Follow {
  bool on = true;
};
const rpc::Fields<Follow> kFollowFields = {rpc::Required("on", &Follow::on, "true to begin, false to end")};

rpc::JsonText Document(const rpc::JsonText& methods) {
  const rpc::JsonText info = rpc::ObjectWriter()
                                 .Add("title", rpc::Quote("A picture player's television"))
                                 .Add("version", rpc::Quote("1.1.0"))
                                 .Take();
  return rpc::ObjectWriter()
      .Add("openrpc", rpc::Quote("1.3.2"))
      .Add("info", info)
      .Add("methods", methods)
      .Add("x-notifications", DescribeNotifications())
      .Take();
}

rpc::Answer AnswerOf(const Status& status, const std::string& path = "") {
  return status ? rpc::Success(rpc::Boolean(true))
                : rpc::Answer(MakeError(kSessionFailed, status.error().reason, "", path));
}

rpc::Answer SetState(Television& television, const std::string& state) {
  if (state != "pause" && state != "resume" && state != "destroy") {
    return MakeError(rpc::kInvalidParams, "parameter \"state\" has to be pause, resume or destroy");
  }
  return AnswerOf(television.SetState(state));
}

/// What gives an answer of the engine to the client that waits for it.
rpc::Client::OnAnswer Into(Reply reply) {
  auto kept = std::make_shared<Reply>(std::move(reply));
  return [kept](const rpc::Answer& answer) { (*kept)(WithPlace(answer, "", "")); };
}

/// The engine takes what these methods take, so that plain parameters go on as they came.
auto Forward(ControlContext* context, const char* method) {
  return [context, method](Command command, Reply reply, const rpc::Params& given) {
    SendCommand(context->television, method, std::move(command.command), command.params, std::move(reply),
                {std::string(given.Plain())});
  };
}

/// `missing` says how many after that sequence number are forgotten already.
rpc::Answer EventsSince(const Television& television, int64_t sequence) {
  std::vector<rpc::JsonText> events;
  int64_t oldest = 0;
  for (const SessionEvent& event : television.History()) {
    oldest = oldest == 0 ? event.sequence : oldest;
    if (event.sequence > sequence) {
      events.push_back(ParamsOf(event));
    }
  }
  const int64_t missing = std::max<int64_t>(0, oldest - 1 - std::max<int64_t>(0, sequence));
  return rpc::Success(rpc::ObjectWriter().Add("events", ListOf(events)).Add("missing", rpc::Number(missing)).Take());
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

rpc::JsonText PictureListOf(const std::vector<std::string>& paths) {
  std::vector<rpc::JsonText> pictures;
  for (const std::string& path : paths) {
    const std::string name = std::filesystem::path(path).filename();
    pictures.push_back(rpc::ObjectWriter().Add("path", rpc::Quote(path)).Add("name", rpc::Quote(name)).Take());
  }
  return ListOf(pictures);
}

rpc::Answer PicturesIn(const std::string& folder) {
  std::error_code error;
  if (!std::filesystem::is_directory(folder, error)) {
    return MakeError(kSessionFailed, folder + " is no folder", "", folder);
  }
  const auto pictures = ListPictures({folder});
  return pictures ? rpc::Success(PictureListOf(*pictures))
                  : rpc::Answer(MakeError(kSessionFailed, pictures.error().reason, "", folder));
}

rpc::Answer FollowScreen(ControlContext& context, Subscriptions& subscriptions, bool on) {
  subscriptions.screen = on;
  const auto screen = context.WatchScreen();
  return screen ? rpc::Success(rpc::Number((*screen)->Number()))
                : rpc::Answer(MakeError(kSessionFailed, screen.error().reason));
}

const rpc::JsonText kTrue = {R"({"const":true})"};
const rpc::JsonText kAny = {"{}"};
const rpc::JsonText kObject = {R"({"type":"object"})"};
const rpc::JsonText kList = {R"({"type":"array"})"};

const std::vector<rpc::ErrorKind> kEngineErrors =
    ErrorsOf({rpc::kInvalidParams, rpc::kConnectionLost, kNoAnswerInTime, kForbidden});
const std::vector<rpc::ErrorKind> kCommandErrors =
    ErrorsOf({rpc::kMethodNotFound, rpc::kInvalidParams, rpc::kConnectionLost, kNoAnswerInTime, kForbidden});
const std::vector<rpc::ErrorKind> kSessionErrors = ErrorsOf({rpc::kInvalidParams, kSessionFailed, kForbidden});
const std::vector<rpc::ErrorKind> kLookErrors = ErrorsOf({rpc::kInvalidParams});
const std::vector<rpc::ErrorKind> kScreenErrors = ErrorsOf({rpc::kInvalidParams, kSessionFailed});

}  // namespace

std::vector<rpc::MethodEntry> ControlMethods(ControlContext* context, Subscriptions* subscriptions,
                                             std::function<rpc::JsonText()> describe) {
  std::vector<rpc::MethodEntry> methods = {
      rpc::Method("engine.execute", "Runs a command of the engine with up to four texts", kCommandFields,
                  Forward(context, "engine.execute"))
          .With({.result = kAny,
                 .resultText = "the command's result, an integer or a text",
                 .errors = kCommandErrors,
                 .exampleParams = {R"({"command":"InitPlayer","params":["/pictures/a.jpg"]})"},
                 .exampleResult = {"1"}}),
      rpc::Method("engine.executeWithParamList", "Runs a command of the engine with any number of texts",
                  kCommandFields, Forward(context, "engine.executeWithParamList"))
          .With({.result = kAny,
                 .resultText = "the command's result",
                 .errors = kCommandErrors,
                 .exampleParams = {R"({"command":"SetDisplayArea","params":["100","50","640","360","720"]})"},
                 .exampleResult = {"1"}}),
      rpc::Method("app.open", "Opens an application in the engine, and again in every engine that is started later",
                  kApplicationFields,
                  [context](const Application& application, Reply reply) {
                    context->television.SendOpen(application, Into(std::move(reply)));
                  })
          .With({.result = {R"({"type":"boolean"})"},
                 .resultText = "whether the engine has taken it",
                 .errors = kEngineErrors,
                 .exampleParams = {R"({"applicationId":"org.example.show","widgetId":"show.tv"})"},
                 .exampleResult = {"true"}}),
      rpc::Method("app.close", "Closes the application", rpc::kNoFields,
                  [context](NoParams, Reply reply) { context->television.SendClose(Into(std::move(reply))); })
          .With({.result = {R"({"type":"boolean"})"},
                 .resultText = "whether there was one",
                 .errors = kEngineErrors,
                 .exampleParams = {"{}"},
                 .exampleResult = {"true"}}),
      rpc::Method("app.setState", "Announces the application's state through the key store", kStateFields,
                  [context](const State& state) { return SetState(context->television, state.state); })
          .With({.result = kTrue,
                 .errors = kSessionErrors,
                 .exampleParams = {R"({"state":"pause"})"},
                 .exampleResult = {"true"}}),
      rpc::Method("session.screenshot", "Writes what the screen shows to a PNG file", kScreenshotFields,
                  [context](const ScreenshotFile& shot) {
                    return AnswerOf(context->television.TakeScreenshot(shot.file), shot.file);
                  })
          .With({.result = kTrue,
                 .errors = kSessionErrors,
                 .exampleParams = {R"({"file":"/tmp/screen.png"})"},
                 .exampleResult = {"true"}}),
      rpc::Method("session.status", "What the session runs on", rpc::kNoFields,
                  [context](NoParams) { return Describe(context->television); })
          .With({.result = kObject,
                 .resultText = "display, engineProcess, engineRestarts, engineLog, and application where one is open",
                 .errors = kLookErrors,
                 .exampleParams = {"{}"},
                 .exampleResult = {R"({"display":"screen 1920x1080 of its own","engineProcess":12,"engineRestarts":0,)"
                                   R"("engineLog":"/run/user/1000/tvsim/tv/engine.log"})"},
                 .readOnly = true}),
      rpc::Method("events.since", "The events after a sequence number, of the last thousand", kSinceFields,
                  [context](const Since& since) { return EventsSince(context->television, since.sequence); })
          .With({.result = kObject,
                 .resultText = "events, oldest first, each as engine.event brings it; missing: how many are forgotten",
                 .errors = kLookErrors,
                 .exampleParams = {R"({"sequence":41})"},
                 .exampleResult = {R"({"events":[{"sequence":42,"time":1790000000000,"picture":"/pictures/a.jpg",)"
                                   R"("event":8,"name":"RENDER_COMPLETED","param1":"","param2":""}],"missing":0})"},
                 .readOnly = true}),
      rpc::Method("session.followLog", "Turns notifications of the engine's log lines on or off", kFollowFields,
                  [context, subscriptions](const Follow& follow) {
                    subscriptions->log = follow.on;
                    if (follow.on) {
                      context->log_wanted();
                    }
                    return rpc::Success(rpc::Boolean(true));
                  })
          .With({.result = kTrue,
                 .errors = kLookErrors,
                 .exampleParams = {R"({"on":true})"},
                 .exampleResult = {"true"},
                 .readOnly = true}),
      rpc::Method(
          "session.followScreen", "Turns notifications of a changed screen on or off", kFollowFields,
          [context, subscriptions](const Follow& follow) { return FollowScreen(*context, *subscriptions, follow.on); })
          .With({.result = {R"({"type":"integer"})"},
                 .resultText = "the number of the newest change",
                 .errors = kScreenErrors,
                 .exampleParams = {R"({"on":true})"},
                 .exampleResult = {"1"},
                 .readOnly = true}),
      rpc::Method("session.setFaults", "Lets calls of the libraries fail or hang, and events get lost or come late",
                  kFaultFields,
                  [context](const FaultRules& faults) { return AnswerOf(context->television.SetFaults(faults.rules)); })
          .With({.result = kTrue,
                 .errors = kSessionErrors,
                 .exampleParams = {R"({"rules":["lumaview_parse 3 fail 7","event:8 1 delay 500ms"]})"},
                 .exampleResult = {"true"}}),
      rpc::Method("pictures.list", "The pictures that the session was given", rpc::kNoFields,
                  [context](NoParams) { return rpc::Success(PictureListOf(context->pictures)); })
          .With({.result = kList,
                 .resultText = "path and name of each",
                 .errors = kLookErrors,
                 .exampleParams = {"{}"},
                 .exampleResult = {R"([{"path":"/pictures/a.jpg","name":"a.jpg"}])"},
                 .readOnly = true}),
      rpc::Method("pictures.inFolder", "The pictures in a folder", kFolderFields,
                  [](const Folder& folder) { return PicturesIn(folder.folder); })
          .With({.result = kList,
                 .resultText = "path and name of each, by name",
                 .errors = kSessionErrors,
                 .exampleParams = {R"({"folder":"/pictures"})"},
                 .exampleResult = {R"([{"path":"/pictures/a.jpg","name":"a.jpg"}])"}}),
      rpc::Method("rpc.discover", "This interface as an OpenRPC document", rpc::kNoFields,
                  [describe = std::move(describe)](NoParams) { return rpc::Success(Document(describe())); })
          .With({.result = kObject, .resultText = "the document", .errors = kLookErrors, .readOnly = true}),
  };
  for (rpc::MethodEntry& command : TypedCommands(context)) {
    methods.push_back(std::move(command));
  }
  return methods;
}

std::vector<rpc::MethodEntry> Restricted(std::vector<rpc::MethodEntry> methods, Rights rights) {
  if (rights == Rights::kControl) {
    return methods;
  }
  for (rpc::MethodEntry& method : methods) {
    if (!method.notes.readOnly) {
      method.run = [name = method.name](const rpc::Params&, Reply reply) {
        reply(rpc::Answer(MakeError(kForbidden, "this client may only look on, not call " + name)));
      };
    }
  }
  return methods;
}

}  // namespace sim::tvsim
