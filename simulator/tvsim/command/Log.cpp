// SPDX-License-Identifier: Apache-2.0
#include <glib.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "simulator/tvsim/Console.h"
#include "simulator/tvsim/command/Command.h"
#include "simulator/tvsim/control/ControlClient.h"
#include "simulator/tvsim/control/Notifications.h"
#include "simulator/tvsim/engine/LogFilter.h"
#include "simulator/tvsim/engine/LogFollower.h"
#include "simulator/tvsim/engine/LogTail.h"

namespace sim::tvsim {
namespace {

struct LogOptions {
  std::string session = "tv";
  std::string file;
  LogFilter filter;
  bool follow = false;
  std::string colour = "auto";
};

bool IsColoured(const std::string& colour) {
  if (colour != "auto") {
    return colour == "always";
  }
  return isatty(STDOUT_FILENO) != 0 && std::getenv("NO_COLOR") == nullptr;
}

LogFollower::OnLine Printer(const LogOptions& options) {
  return [filter = options.filter, coloured = IsColoured(options.colour)](const std::string& line) {
    if (filter.Wants(line)) {
      std::puts((coloured ? line : WithoutColours(line)).c_str());
      std::fflush(stdout);
    }
  };
}

/// The lines that are there, and with --follow those that come until `is_over`.
int Show(const LogOptions& options, const std::string& file, const std::function<void()>& wait) {
  const auto follower = LogFollower::Create(file, true, Printer(options));
  if (!follower) {
    return Fail(kNotReady, follower.error().reason);
  }
  if (options.follow) {
    wait();
    (*follower)->Read();
  }
  return kDone;
}

int ShowFile(const LogOptions& options) {
  if (access(options.file.c_str(), R_OK) != 0 && !options.follow) {
    return Fail(kNotReady, "cannot read " + options.file);
  }
  return Show(options, options.file, [] {
    for (;;) {
      g_main_context_iteration(nullptr, TRUE);
    }
  });
}

int ShowSession(const LogOptions& options) {
  const auto client = ControlClient::Connect(options.session);
  if (!client) {
    return Fail(kNotReady, client.error().reason + ", or name a log with --file");
  }
  const rpc::Answer answer = (*client)->Call("session.status", {});
  const auto* status = std::get_if<rpc::JsonText>(&answer);
  const std::string file = status != nullptr ? EngineLogOf(*status) : "";
  if (file.empty()) {
    return Fail(kFailed, "the session does not name its log");
  }
  return Show(options, file, [&] { (*client)->RunUntilClosed(); });
}

}  // namespace

std::function<int()> ConfigureLog(CLI::App& app) {
  auto options = std::make_shared<LogOptions>();
  AddSessionName(app, options->session);
  app.add_option("--file", options->file, "A log file, instead of a running session's");
  app.add_flag("--follow,-f", options->follow, "Go on with the lines that come");
  app.add_option("--function", options->filter.function, "Only lines of this function");
  app.add_option("--text", options->filter.text, "Only lines with this text");
  app.add_flag("--failures", options->filter.failures, "Only red and yellow lines");
  app.add_flag("--no-traces", options->filter.no_traces, "Without Enter, Leave and the lines around locks");
  app.add_option("--color", options->colour, "auto, always or never")
      ->capture_default_str()
      ->check(CLI::IsMember({"auto", "always", "never"}));
  return [options] { return options->file.empty() ? ShowSession(*options) : ShowFile(*options); };
}

}  // namespace sim::tvsim
