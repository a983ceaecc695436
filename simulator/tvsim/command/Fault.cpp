// SPDX-License-Identifier: Apache-2.0
#include "simulator/base/Faults.h"

#include "simulator/tvsim/Console.h"
#include "simulator/tvsim/command/Command.h"
#include "simulator/tvsim/control/ControlClient.h"

namespace sim::tvsim {
namespace {

struct FaultOptions {
  std::string session = "tv";
  std::vector<std::string> rules;
};

int SetFaults(const FaultOptions& options) {
  for (const std::string& rule : options.rules) {
    if (const auto parsed = ParseFaultRule(rule); !parsed) {
      return Fail(kNotReady, parsed.error().reason);
    }
  }
  const auto client = ControlClient::Connect(options.session);
  if (!client) {
    return Fail(kNotReady, client.error().reason);
  }
  const rpc::Answer answer =
      (*client)->Call("session.setFaults", rpc::ObjectWriter().Add("rules", rpc::Quote(options.rules)).Take());
  if (const auto* error = std::get_if<rpc::CallError>(&answer)) {
    return Fail(kFailed, error->message);
  }
  return kDone;
}

}  // namespace

std::function<int()> ConfigureFault(CLI::App& app) {
  auto options = std::make_shared<FaultOptions>();
  AddSessionName(app, options->session);
  app.add_option("RULE", options->rules,
                 "\"WHAT WHICH ACTION [VALUE]\": \"lumaview_parse 3 fail 7\", \"lumaview_decode 1 hang\", \"event:8 * "
                 "drop\", \"event:10 1 delay 500ms\", \"store * fail\"; the rules replace those before, none end all");
  return [options] { return SetFaults(*options); };
}

}  // namespace sim::tvsim
