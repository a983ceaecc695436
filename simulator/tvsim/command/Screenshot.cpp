// SPDX-License-Identifier: Apache-2.0
#include <filesystem>

#include "simulator/tvsim/Console.h"
#include "simulator/tvsim/command/Command.h"
#include "simulator/tvsim/control/ControlClient.h"
#include "simulator/tvsim/engine/Wire.h"

namespace sim::tvsim {
namespace {

struct ScreenshotOptions {
  std::string session = "tv";
  std::string file;
};

int TakeScreenshot(const ScreenshotOptions& options) {
  const auto client = ControlClient::Connect(options.session);
  if (!client) {
    return Fail(kNotReady, client.error().reason);
  }
  // The session has a working folder of its own.
  const std::string file = std::filesystem::absolute(options.file);
  const rpc::Answer answer = (*client)->Call(
      "session.screenshot", rpc::ObjectWriter().Add("file", rpc::Quote(file, rpc::ForeignBytes::kKeep)).Take());
  if (const auto* error = std::get_if<rpc::CallError>(&answer)) {
    return Fail(kFailed, error->message);
  }
  return kDone;
}

}  // namespace

std::function<int()> ConfigureScreenshot(CLI::App& app) {
  auto options = std::make_shared<ScreenshotOptions>();
  AddSessionName(app, options->session);
  app.add_option("FILE", options->file, "The PNG file to write")->required();
  return [options] { return TakeScreenshot(*options); };
}

}  // namespace sim::tvsim
