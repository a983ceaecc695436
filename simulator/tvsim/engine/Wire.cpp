// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/engine/Wire.h"

namespace sim::tvsim {

std::string StateKeyOf(const Application& application) {
  return "db/KestWebApp/" + application.widget.substr(0, application.widget.find('.'));
}

rpc::JsonText ParamsOf(const Application& application) {
  return rpc::ObjectWriter().AddText("applicationId", application.id).AddText("widgetId", application.widget).Take();
}

rpc::JsonText ParamsOf(const std::string& command, const std::vector<std::string>& params) {
  rpc::ObjectWriter texts;
  texts.AddText("command", command, rpc::ForeignBytes::kKeep);
  if (!params.empty()) {
    texts.Add("params", rpc::Quote(params, rpc::ForeignBytes::kKeep));
  }
  return texts.Take();
}

std::string TextOf(const rpc::Answer& answer) {
  if (const auto* error = std::get_if<rpc::CallError>(&answer)) {
    return "error " + std::to_string(error->code) + ": " + error->message;
  }
  const std::string& json = std::get<rpc::JsonText>(answer).text;
  return rpc::ReadText(json).value_or(json);
}

bool Succeeded(const rpc::Answer& answer) {
  const auto* result = std::get_if<rpc::JsonText>(&answer);
  return result != nullptr && rpc::ReadInteger(result->text) == 1;
}

}  // namespace sim::tvsim
