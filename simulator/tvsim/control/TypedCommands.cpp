// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/control/TypedCommands.h"

#include "simulator/tvsim/control/CommandTable.h"

namespace sim::tvsim {
namespace {

bool IsNumeric(ParamKind kind) {
  return kind == ParamKind::kNumber || kind == ParamKind::kEffect;
}

std::vector<rpc::FieldInfo> FieldsOf(const EngineCommand& command) {
  std::vector<rpc::FieldInfo> fields;
  for (const CommandParam& param : command.params) {
    if (param.name != nullptr) {
      const rpc::JsonText schema = IsNumeric(param.kind) ? rpc::SchemaOf(static_cast<const int64_t*>(nullptr))
                                                         : rpc::SchemaOf(static_cast<const std::string*>(nullptr));
      fields.push_back({param.name, param.required, schema});
    }
  }
  return fields;
}

/// The engine takes texts; a number becomes its decimal digits.
bool ReadAsText(ParamKind kind, const nlohmann::json& json, std::string& text) {
  int64_t number = 0;
  if (!IsNumeric(kind)) {
    return rpc::ReadParam(json, text);
  }
  if (!rpc::ReadParam(json, number)) {
    return false;
  }
  text = std::to_string(number);
  return true;
}

rpc::MethodEntry TypedCommand(Television& television, const EngineCommand& command) {
  rpc::MethodEntry entry{std::string("command.") + command.name, command.summary, FieldsOf(command), {}};
  entry.run = [&television, &command, fields = entry.fields](const nlohmann::json* json, rpc::Reply reply) {
    std::vector<std::string> params(fields.size());
    const auto wrong = rpc::MatchParams(json, fields, [&](size_t index, const nlohmann::json& value) {
      return ReadAsText(command.params[index].kind, value, params[index]);
    });
    if (wrong) {
      reply(rpc::Answer(*wrong));
      return;
    }
    auto kept = std::make_shared<rpc::Reply>(std::move(reply));
    television.SendCommand("engine.execute", command.name, params,
                           [kept](const rpc::Answer& answer) { (*kept)(answer); });
  };
  return entry;
}

}  // namespace

std::vector<rpc::MethodEntry> TypedCommands(Television& television) {
  std::vector<rpc::MethodEntry> methods;
  for (const EngineCommand& command : EngineCommands()) {
    methods.push_back(TypedCommand(television, command));
  }
  return methods;
}

}  // namespace sim::tvsim
