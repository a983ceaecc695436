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
template <typename Source>
bool ReadAsText(ParamKind kind, Source& source, std::string& text) {
  int64_t number = 0;
  if (!IsNumeric(kind)) {
    return rpc::ReadParam(source, text);
  }
  if (!rpc::ReadParam(source, number)) {
    return false;
  }
  text = std::to_string(number);
  return true;
}

/// The texts that the engine gets. Errors: the parameters do not fit.
std::optional<rpc::CallError> ReadTexts(const EngineCommand& command, const std::vector<rpc::FieldInfo>& fields,
                                        const rpc::Params& given, std::vector<std::string>& texts) {
  const auto read = [&](size_t index, auto& source) {
    return ReadAsText(command.params[index].kind, source, texts[index]);
  };
  texts.assign(fields.size(), "");
  if (rpc::MatchPlain(given, fields, read)) {
    return std::nullopt;
  }
  texts.assign(fields.size(), "");
  return rpc::MatchParams(given.Document(), fields, read);
}

bool TakesPath(const std::string& name) {
  const EngineCommand* command = FindCommand(name);
  return command != nullptr && command->params[0].name != nullptr && command->params[0].kind == ParamKind::kPath;
}

/// What the answer to a command needs.
struct Sent {
  Sent(rpc::Reply a_reply, std::string a_command, std::string a_path)
      : reply(std::move(a_reply)), command(std::move(a_command)), path(std::move(a_path)) {}

  rpc::Reply reply;
  const std::string command;
  const std::string path;
};

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
  entry.run = [context, &command, fields = entry.fields, name = entry.name](const rpc::Params& given,
                                                                            rpc::Reply reply) {
    std::vector<std::string> params;
    if (const auto wrong = ReadTexts(command, fields, given, params)) {
      reply(rpc::Answer(rpc::Explained(*wrong, name, fields)));
      return;
    }
    SendCommand(context->television, "engine.execute", command.name, params, std::move(reply));
  };
  return entry;
}

}  // namespace

void SendCommand(Television& television, const char* method, std::string command,
                 const std::vector<std::string>& params, rpc::Reply reply, rpc::JsonText written) {
  const bool takes_path = !params.empty() && TakesPath(command);
  const auto sent = std::make_shared<Sent>(std::move(reply), std::move(command), takes_path ? params[0] : "");
  television.SendCommand(
      method, sent->command, params,
      [sent](const rpc::Answer& answer) { sent->reply(WithPlace(answer, sent->command, sent->path)); },
      std::move(written));
}

std::vector<rpc::MethodEntry> TypedCommands(ControlContext* context) {
  std::vector<rpc::MethodEntry> methods;
  for (const EngineCommand& command : EngineCommands()) {
    methods.push_back(TypedCommand(context, command));
  }
  return methods;
}

}  // namespace sim::tvsim
