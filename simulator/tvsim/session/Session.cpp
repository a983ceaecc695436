// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/session/Session.h"

#include <sys/file.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "simulator/tvsim/Console.h"
#include "simulator/tvsim/control/ControlServer.h"
#include "simulator/tvsim/process/Guard.h"
#include "simulator/tvsim/process/Namespaces.h"
#include "simulator/tvsim/scenario/Recorder.h"
#include "simulator/tvsim/session/RuntimeFolder.h"

namespace sim::tvsim {
namespace {

bool DisplayIsTaken() {
  return bool(Screen::Connect());
}

struct Place {
  bool own_display = false;
  bool own_namespaces = false;
};

/// Where the session can be, on this machine and now.
Result<Place> ChoosePlace(DisplayChoice choice) {
  const bool taken = DisplayIsTaken();
  if (choice == DisplayChoice::kExisting || (choice == DisplayChoice::kAuto && taken)) {
    return taken ? Result<Place>(Place{})
                 : Error{ENOTCONN, "no X server answers on \":0\"; start one there, or use --headless"};
  }
  if (FindProgram("Xvfb").empty()) {
    return Error{ENOENT, "no X server on \":0\" and no Xvfb to make a screen with; install the package xvfb"};
  }
  if (NamespacesAllowed()) {
    return Place{true, true};
  }
  if (taken) {
    return Error{EBUSY,
                 "\":0\" is taken and this machine allows no namespaces, so that there is no place for a second "
                 "one; run as root, or without --headless on the X server that is there"};
  }
  return Place{true, false};
}

int RunJob(const SessionOptions& options, const Place& place, const std::string& folder,
           const std::function<int(const OpenSession&)>& work) {
  signal(SIGPIPE, SIG_IGN);
  TelevisionOptions television_options;
  television_options.folder = folder;
  television_options.display.own = place.own_display ? std::optional(options.size) : std::nullopt;
  television_options.display.compositor = options.compositor;
  television_options.display.folder = folder;
  television_options.display.quick_restarts = options.quick_restarts;
  television_options.engine.program = options.engine;
  television_options.engine.log_file = options.engine_log.empty() ? EngineLogIn(folder) : options.engine_log;
  television_options.engine.answer_limit = std::chrono::milliseconds(options.answer_limit_ms);
  television_options.engine.quick_restarts = options.quick_restarts;
  auto television = Television::SwitchOn(std::move(television_options));
  if (!television) {
    return Fail(kNotReady, television.error().reason);
  }
  auto server = ControlServer::Start(**television, ControlSocketIn(folder));
  if (!server) {
    return Fail(kNotReady, server.error().reason);
  }
  std::unique_ptr<Recorder> recorder;
  if (!options.record.empty()) {
    auto started = Recorder::Start(**television, options.record);
    if (!started) {
      return Fail(kNotReady, started.error().reason);
    }
    recorder = std::move(*started);
  }
  if (const Status opened = (*television)->OpenApplication(options.application); !opened) {
    return Fail(kNotReady, opened.error().reason);
  }
  const int status = work({**television, **server, folder});
  if ((*television)->Interruption().empty()) {
    (void)(*television)->CloseApplication();
    return status;
  }
  return Fail(kFailed, (*television)->Interruption());
}

}  // namespace

int RunInSession(const SessionOptions& options, const std::function<int(Television&)>& work) {
  return RunInSession(options, [&work](const OpenSession& session) { return work(session.television); });
}

int RunInSession(const SessionOptions& options, const std::function<int(const OpenSession&)>& work) {
  if (FindProgram(options.engine).empty()) {
    return Fail(kNotReady, "no engine '" + options.engine + "' beside tvsim or in PATH; name it with --engine");
  }
  const Result<Place> place = ChoosePlace(options.display);
  if (!place) {
    return Fail(kNotReady, place.error().reason);
  }
  const Result<RuntimeFolder> folder = RuntimeFolder::Create(options.name);
  if (!folder) {
    return Fail(kNotReady, folder.error().reason);
  }
  return RunGuarded(
      place->own_namespaces, [&] { return RunJob(options, *place, folder->Path(), work); }, [&] { folder->Remove(); });
}

}  // namespace sim::tvsim
