// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/doctor/Doctor.h"

#include "simulator/rpc/JsonText.h"
#include "simulator/tvsim/Console.h"
#include "simulator/tvsim/command/Command.h"

namespace sim::tvsim {
namespace {

struct DoctorOptions {
  std::string engine = "picture-player";
  bool json = false;
};

const char* NameOf(Health health) {
  switch (health) {
    case Health::kGood:
      return "good";
    case Health::kLacking:
      return "lacking";
    case Health::kMissing:
      return "missing";
  }
  return "";
}

std::string TextOf(const Finding& finding) {
  std::string name = NameOf(finding.health);
  name.resize(8, ' ');
  return name + finding.what + ": " + finding.found + (finding.mend.empty() ? "" : "\n        -> " + finding.mend);
}

std::string JsonOf(const Finding& finding) {
  return rpc::ObjectWriter()
      .Add("what", rpc::Quote(finding.what))
      .Add("health", rpc::Quote(NameOf(finding.health)))
      .Add("found", rpc::Quote(finding.found))
      .Add("mend", rpc::Quote(finding.mend))
      .Take()
      .text;
}

int Report(const DoctorOptions& options) {
  const std::vector<Finding> findings = Examine(options.engine);
  for (const Finding& finding : findings) {
    Say(options.json ? JsonOf(finding) : TextOf(finding));
  }
  return IsFit(findings) ? kDone : kNotReady;
}

}  // namespace

std::function<int()> ConfigureDoctor(CLI::App& app) {
  auto options = std::make_shared<DoctorOptions>();
  app.add_option("--engine", options->engine, "The engine's program")->capture_default_str();
  app.add_flag("--json", options->json, "One JSON object a finding");
  return [options] { return Report(*options); };
}

}  // namespace sim::tvsim
