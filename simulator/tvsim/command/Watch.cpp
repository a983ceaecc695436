// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/Console.h"
#include "simulator/tvsim/command/Command.h"
#include "simulator/tvsim/control/ControlClient.h"
#include "simulator/tvsim/control/Notifications.h"

namespace sim::tvsim {
namespace {

struct WatchOptions {
  std::string session = "tv";
  bool json = false;
};

/// "event 8 RENDER_COMPLETED  /pictures/a.jpg", or as it came where it is nothing that this knows.
std::string LineOf(const std::string& method, const rpc::JsonText& params) {
  if (method == kEventMethod) {
    if (const auto event = ReadEvent(params)) {
      return "event " + std::to_string(event->event.number) + " " + event->event.name + "  " + event->picture;
    }
  }
  return method + " " + params.text;
}

int Watch(const WatchOptions& options) {
  const bool json = options.json;
  const auto client =
      ControlClient::Connect(options.session, [json](const std::string& method, const rpc::JsonText& params) {
        Say(json ? rpc::WriteRequest(method, params) : LineOf(method, params));
      });
  if (!client) {
    return Fail(kNotReady, client.error().reason);
  }
  (*client)->RunUntilClosed();
  return kDone;
}

}  // namespace

std::function<int()> ConfigureWatch(CLI::App& app) {
  auto options = std::make_shared<WatchOptions>();
  AddSessionName(app, options->session);
  app.add_flag("--json", options->json, "The notifications as they come");
  return [options] { return Watch(*options); };
}

}  // namespace sim::tvsim
