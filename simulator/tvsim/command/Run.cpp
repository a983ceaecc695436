// SPDX-License-Identifier: Apache-2.0
#include <filesystem>

#include "simulator/tvsim/Console.h"
#include "simulator/tvsim/command/Command.h"
#include "simulator/tvsim/slideshow/PictureList.h"
#include "simulator/tvsim/slideshow/SlideShow.h"

namespace sim::tvsim {
namespace {

struct RunOptions {
  SessionOptions session;
  SlideShowOptions show;
  std::vector<std::string> arguments;
  double interval = 3;
  int transition_ms = 1000;
  const char* fit = nullptr;  ///< as LUMAVIEW_FIT has it; null: as it is set already
  bool ken_burns = false;
};

/// For how much longer than it stands a picture moves, so that it never comes to rest before the next one.
constexpr int kKenBurnsReserveMs = 2000;

/// "x,y,width,height".
std::string ParseArea(const std::string& text, std::array<int, 4>& area) {
  int end = 0;
  const bool read = std::sscanf(text.c_str(), "%d,%d,%d,%d%n", &area[0], &area[1], &area[2], &area[3], &end) == 4;
  return read && text.c_str()[end] == '\0' ? "" : "an area is written like 240,60,480,270";
}

/// What the engine's picture library takes from its environment, which stays as it is where no option says otherwise.
void SetLibrarysEnvironment(const RunOptions& options) {
  setenv("LUMAVIEW_EFFECT_MS", std::to_string(options.transition_ms).c_str(), 1);
  if (options.fit != nullptr) {
    setenv("LUMAVIEW_FIT", options.fit, 1);
  }
  if (options.ken_burns) {
    const auto moves_ms = options.show.interval.count() + kKenBurnsReserveMs;
    setenv("LUMAVIEW_KEN_BURNS", std::to_string(moves_ms).c_str(), 1);
  }
}

int Run(RunOptions& options) {
  Result<std::vector<std::string>> pictures = ListPictures(options.arguments);
  if (!pictures) {
    return Fail(kNotReady, pictures.error().reason);
  }
  options.show.pictures = std::move(*pictures);
  options.show.interval = std::chrono::milliseconds(static_cast<int64_t>(options.interval * 1000));
  std::error_code error;
  if (!options.show.screenshots.empty() && !std::filesystem::create_directories(options.show.screenshots, error) &&
      error) {
    return Fail(kNotReady, "cannot make the folder " + options.show.screenshots + ": " + error.message());
  }
  SetLibrarysEnvironment(options);
  const KeyboardMode keyboard;  // out here, so that the terminal is itself again however the session ends
  options.show.keys = keyboard.IsOn();
  return RunInSession(options.session, [&](Television& television) {
    if (!options.show.json) {
      Say("Playing " + std::to_string(options.show.pictures.size()) + " pictures: " + television.Describe());
    }
    const int status = SlideShow(television, options.show).Play();
    if (!options.show.json && !options.show.screenshots.empty()) {
      Say("Screenshots: " + std::filesystem::absolute(options.show.screenshots).string());
    }
    return status;
  });
}

void AddShowOptions(CLI::App& app, RunOptions& options) {
  app.add_option("--screenshots", options.show.screenshots, "Folder for a PNG of the screen per picture");
  app.add_option("--interval", options.interval, "Seconds for which each picture stands")
      ->capture_default_str()
      ->check(CLI::NonNegativeNumber);
  app.add_option("--effect", options.show.effect,
                 "Transition between pictures: a name or number of the engine's list, or \"random\" for a different "
                 "one each time");
  app.add_option("--duration", options.transition_ms, "Milliseconds that a transition takes")
      ->capture_default_str()
      ->check(CLI::Range(0, 60000));
  auto* fit = app.add_flag_callback(
      "--fit", [&options] { options.fit = "fit"; }, "The whole picture in the window; the default");
  app.add_flag_callback(
         "--fill", [&options] { options.fit = "fill"; }, "The whole window covered; what sticks out is cut off")
      ->excludes(fit);
  app.add_flag("--ken-burns", options.ken_burns, "Each picture covers the window, and pans and zooms while it stands")
      ->excludes(fit);
  app.add_flag("--loop", options.show.loop, "Begin again after the last picture");
  app.add_flag("--shuffle", options.show.shuffle, "In random order");
  auto* fullscreen = app.add_flag_callback(
      "--fullscreen", [&options] { options.show.area = {}; }, "Over the whole screen; the default");
  app.add_option_function<std::string>(
         "--area",
         [&options](const std::string& text) {
           if (const std::string wrong = ParseArea(text, options.show.area); !wrong.empty()) {
             throw CLI::ValidationError("--area", wrong);
           }
         },
         "x,y,width,height in a layout of 540 lines")
      ->excludes(fullscreen);
  app.add_flag("--json", options.show.json, "One JSON object a picture");
}

}  // namespace

std::function<int()> ConfigureRun(CLI::App& app) {
  auto options = std::make_shared<RunOptions>();
  app.add_option("PICTURES", options->arguments, "Pictures, or folders of pictures")->required();
  AddShowOptions(app, *options);
  AddSessionOptions(app, options->session);
  return [options] { return Run(*options); };
}

}  // namespace sim::tvsim
