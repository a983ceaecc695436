// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/Console.h"
#include "simulator/tvsim/command/Command.h"
#include "simulator/tvsim/control/ControlClient.h"
#include "simulator/tvsim/engine/Wire.h"

namespace sim::tvsim {
namespace {

struct StateOptions {
  std::string session = "tv";
  std::string state;
};

int SetState(const StateOptions& options) {
  const auto client = ControlClient::Connect(options.session);
  if (!client) {
    return Fail(kNotReady, client.error().reason);
  }
  const rpc::Answer answer =
      (*client)->Call("app.setState", rpc::ObjectWriter().Add("state", rpc::Quote(options.state)).Take());
  if (const auto* error = std::get_if<rpc::CallError>(&answer)) {
    return Fail(kFailed, error->message);
  }
  return kDone;
}

}  // namespace

std::function<int()> ConfigureState(CLI::App& app) {
  auto options = std::make_shared<StateOptions>();
  AddSessionName(app, options->session);
  app.add_option("STATE", options->state, "pause, resume or destroy")
      ->required()
      ->check(CLI::IsMember({"pause", "resume", "destroy"}));
  return [options] { return SetState(*options); };
}

}  // namespace sim::tvsim
