// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/command/Command.h"

namespace sim::tvsim {
namespace {

constexpr int kLargestSide = 16384;

/// "1920x1080".
std::string ParseSize(const std::string& text, ScreenSize& size) {
  int width = 0, height = 0, end = 0;
  const bool whole = std::sscanf(text.c_str(), "%dx%d%n", &width, &height, &end) == 2 && text.c_str()[end] == '\0';
  if (!whole || width < 1 || height < 1 || width > kLargestSide || height > kLargestSide) {
    return "a size is written like 1920x1080";
  }
  size = {width, height};
  return "";
}

}  // namespace

void AddSessionName(CLI::App& app, std::string& name) {
  app.add_option("--session", name, "The session's name, for several at once")->capture_default_str();
}

void AddSessionOptions(CLI::App& app, SessionOptions& options) {
  AddSessionName(app, options.name);
  auto* headless = app.add_flag_callback(
      "--headless", [&options] { options.display = DisplayChoice::kOwn; },
      "On a screen of its own that nobody sees, also when there is an X server on \":0\"");
  app.add_flag_callback(
         "--on-screen", [&options] { options.display = DisplayChoice::kExisting; },
         "On the X server on \":0\", and nowhere else")
      ->excludes(headless);
  app.add_option_function<std::string>(
      "--size",
      [&options](const std::string& text) {
        if (const std::string wrong = ParseSize(text, options.size); !wrong.empty()) {
          throw CLI::ValidationError("--size", wrong);
        }
      },
      "Width and height of a screen of its own [1920x1080]");
  app.add_flag("--compositor", options.compositor, "With the compositor xcompmgr on a screen of its own");
  app.add_option("--engine", options.engine, "The engine's program")->capture_default_str();
  app.add_option("--engine-log", options.engine_log, "File for the engine's log (added to)")->envname("OLM_LOG_FILE");
  app.add_option("--record", options.record, "File for a scenario of all that happens; exec plays it again");
  app.add_option("--answer-limit", options.answer_limit_ms,
                 "Milliseconds after which a command without an answer failed")
      ->capture_default_str()
      ->check(CLI::Range(1, 3600000));
  app.add_option(
         "--quick-restarts", options.quick_restarts,
         "How often within a minute an engine or X server that has ended is started again at once; then it waits")
      ->capture_default_str()
      ->check(CLI::Range(0, 1000000));
  app.add_option("--application", options.application.id, "The application's id")->capture_default_str();
  app.add_option("--widget", options.application.widget, "The widget's id; its part before a dot names the state key")
      ->capture_default_str();
}

}  // namespace sim::tvsim
