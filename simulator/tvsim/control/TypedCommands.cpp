// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/control/TypedCommands.h"

#include "simulator/tvsim/control/CommandTable.h"
#include "simulator/tvsim/control/Errors.h"

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
      fields.push_back({param.name, param.required, schema, param.summary});
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

bool TakesPath(const std::string& name) {
  const EngineCommand* command = FindCommand(name);
  return command != nullptr && command->params[0].name != nullptr && command->params[0].kind == ParamKind::kPath;
}

rpc::JsonText ResultSchema(ResultKind kind) {
  switch (kind) {
    case ResultKind::kDone:
      return {R"({"enum":[1,0]})"};
    case ResultKind::kNumber:
      return {R"({"type":"integer"})"};
    case ResultKind::kSize:
      return {R"({"oneOf":[{"type":"string","pattern":"^[0-9]+[*][0-9]+$"},{"const":0}]})"};
    case ResultKind::kText:
      return {R"({"oneOf":[{"type":"string"},{"const":0}]})"};
    case ResultKind::kTextOrZero:
      return {R"({"enum":["1",0]})"};
  }
  return {"{}"};
}

std::string ResultText(const EngineCommand& command) {
  const std::string events = *command.events == '\0' ? "" : std::string("; events follow: ") + command.events;
  switch (command.result) {
    case ResultKind::kDone:
      return "1, or 0 when it failed; the log says why" + events;
    case ResultKind::kNumber:
      return "an integer" + events;
    case ResultKind::kSize:
      return "width*height in pixels, or 0" + events;
    case ResultKind::kText:
      return "a text, or 0" + events;
    case ResultKind::kTextOrZero:
      return "the text 1, or the integer 0" + events;
  }
  return "";
}

rpc::MethodEntry TypedCommand(ControlContext* context, const EngineCommand& command) {
  rpc::MethodEntry entry{std::string("command.") + command.name, command.summary, FieldsOf(command), {}};
  entry.notes = {.result = ResultSchema(command.result),
                 .resultText = ResultText(command),
                 .errors = ErrorsOf({rpc::kInvalidParams, rpc::kConnectionLost, kNoAnswerInTime, kForbidden}),
                 .exampleParams = {command.example_params},
                 .exampleResult = {command.example_result}};
  entry.run = [context, &command, fields = entry.fields, name = entry.name](const nlohmann::json* json,
                                                                            rpc::Reply reply) {
    std::vector<std::string> params(fields.size());
    const auto wrong = rpc::MatchParams(json, fields, [&](size_t index, const nlohmann::json& value) {
      return ReadAsText(command.params[index].kind, value, params[index]);
    });
    if (wrong) {
      reply(rpc::Answer(rpc::Explained(*wrong, name, fields)));
      return;
    }
    SendCommand(context->television, "engine.execute", command.name, params, std::move(reply));
  };
  return entry;
}

}  // namespace

void SendCommand(Television& television, const char* method, const std::string& command,
                 const std::vector<std::string>& params, rpc::Reply reply) {
  auto kept = std::make_shared<rpc::Reply>(std::move(reply));
  const std::string path = TakesPath(command) && !params.empty() ? params[0] : "";
  television.SendCommand(method, command, params, [kept, command, path](const rpc::Answer& answer) {
    (*kept)(WithPlace(answer, command, path));
  });
}

std::vector<rpc::MethodEntry> TypedCommands(ControlContext* context) {
  std::vector<rpc::MethodEntry> methods;
  for (const EngineCommand& command : EngineCommands()) {
    methods.push_back(TypedCommand(context, command));
  }
  return methods;
}

}  // namespace sim::tvsim
