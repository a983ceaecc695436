// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/Binder.h"

#include <algorithm>
#include <bitset>
#include <nlohmann/json.hpp>

#include "simulator/rpc/JsonParse.h"

namespace sim::rpc {
namespace {

using Json = nlohmann::json;

/// More than any method has; one with more is read from a document.
constexpr size_t kMostPlainFields = 64;

std::optional<CallError> Invalid(const std::string& what) {
  return CallError{kInvalidParams, what};
}

std::string Named(const FieldInfo& field) {
  return "parameter \"" + field.name + "\"";
}

/// The value of `field`, which is the one at `index` of a list; null when it is not there.
const Json* Select(const Json& params, const FieldInfo& field, size_t index) {
  if (params.is_array()) {
    return index < params.size() ? &params[index] : nullptr;
  }
  const auto found = params.find(field.name);
  return found != params.end() ? &*found : nullptr;
}

std::optional<CallError> RefuseUnknown(const Json& params, const std::vector<FieldInfo>& fields) {
  if (params.is_array()) {
    return params.size() <= fields.size() ? std::nullopt
                                          : Invalid("more than " + std::to_string(fields.size()) + " parameters");
  }
  for (const auto& item : params.items()) {
    if (std::ranges::find(fields, item.key(), &FieldInfo::name) == fields.end()) {
      return Invalid("parameter \"" + item.key() + "\" is not known");
    }
  }
  return std::nullopt;
}

JsonText ListOf(const std::string& items) {
  return {"[" + items + "]"};
}

void Append(std::string& list, const JsonText& item) {
  list += (list.empty() ? "" : ",") + item.text;
}

JsonText Describe(const FieldInfo& field) {
  ObjectWriter object;
  object.Add("name", Quote(field.name));
  if (!field.summary.empty()) {
    object.Add("summary", Quote(field.summary));
  }
  return object.Add("required", Boolean(field.required)).Add("schema", field.schema).Take();
}

JsonText DescribeResult(const MethodNotes& notes) {
  ObjectWriter object;
  object.Add("name", Quote("result"));
  if (!notes.resultText.empty()) {
    object.Add("description", Quote(notes.resultText));
  }
  return object.Add("schema", notes.result).Take();
}

JsonText DescribeExample(const MethodEntry& method) {
  std::string params;
  const Json given = Parse(method.notes.exampleParams.text);
  for (const auto& item : given.items()) {
    Append(params, ObjectWriter().Add("name", Quote(item.key())).Add("value", {Dump(item.value())}).Take());
  }
  const JsonText result = ObjectWriter().Add("name", Quote("result")).Add("value", method.notes.exampleResult).Take();
  return ObjectWriter().Add("name", Quote(method.name)).Add("params", ListOf(params)).Add("result", result).Take();
}

JsonText Describe(const MethodEntry& method) {
  std::string params, errors;
  for (const FieldInfo& field : method.fields) {
    Append(params, Describe(field));
  }
  for (const ErrorKind& error : method.notes.errors) {
    Append(errors, ObjectWriter().Add("code", Number(error.code)).Add("message", Quote(error.message)).Take());
  }
  ObjectWriter object;
  object.Add("name", Quote(method.name))
      .Add("summary", Quote(method.summary))
      .Add("paramStructure", Quote("either"))
      .Add("params", ListOf(params))
      .Add("result", DescribeResult(method.notes))
      .Add("errors", ListOf(errors));
  if (!method.notes.exampleParams.text.empty()) {
    object.Add("examples", ListOf(DescribeExample(method).text));
  }
  return object.Add("x-readOnly", Boolean(method.notes.readOnly)).Take();
}

}  // namespace

bool ReadParam(const Json& json, std::string& value) {
  if (json.is_string()) {
    value = TextOf(json);
  }
  return json.is_string();
}

bool ReadParam(const Json& json, int64_t& value) {
  if (json.is_number_integer()) {
    value = json.get<int64_t>();
  }
  return json.is_number_integer();
}

bool ReadParam(const Json& json, bool& value) {
  if (json.is_boolean()) {
    value = json.get<bool>();
  }
  return json.is_boolean();
}

bool ReadParam(const Json& json, std::vector<std::string>& value) {
  return json.is_array() &&
         std::ranges::all_of(json, [&](const Json& item) { return ReadParam(item, value.emplace_back()); });
}

bool ReadParam(const Json& json, JsonText& value) {
  value = {Dump(json)};
  return true;
}

bool ReadParam(PlainReader& reader, std::string& value) {
  std::string_view text;
  const bool taken = reader.TakeText(text);
  value = text;
  return taken;
}

bool ReadParam(PlainReader& reader, int64_t& value) {
  return reader.TakeInteger(value);
}

bool ReadParam(PlainReader& reader, bool& value) {
  return reader.TakeBoolean(value);
}

bool ReadParam(PlainReader& reader, std::vector<std::string>& value) {
  return reader.TakeList([&] { return ReadParam(reader, value.emplace_back()); });
}

bool ReadParam(PlainReader&, JsonText&) {
  return false;
}

JsonText SchemaOf(const std::string*) {
  return {R"({"type":"string"})"};
}
JsonText SchemaOf(const int64_t*) {
  return {R"({"type":"integer"})"};
}
JsonText SchemaOf(const bool*) {
  return {R"({"type":"boolean"})"};
}
JsonText SchemaOf(const std::vector<std::string>*) {
  return {R"({"type":"array","items":{"type":"string"}})"};
}
JsonText SchemaOf(const JsonText*) {
  return {"{}"};
}

std::optional<CallError> MatchParams(const Json* params, const std::vector<FieldInfo>& fields,
                                     const std::function<bool(size_t index, const Json&)>& read) {
  static const Json none = Json::object();
  const Json& given = params != nullptr ? *params : none;
  for (size_t index = 0; index < fields.size(); ++index) {
    const Json* value = Select(given, fields[index], index);
    if (value == nullptr && fields[index].required) {
      return Invalid(Named(fields[index]) + " is missing");
    }
    if (value != nullptr && !read(index, *value)) {
      return Invalid(Named(fields[index]) + " has to be " + fields[index].schema.text);
    }
  }
  return RefuseUnknown(given, fields);
}

bool MatchPlain(const Params& params, const std::vector<FieldInfo>& fields,
                const std::function<bool(size_t index, PlainReader& reader)>& read) {
  if (!params.IsPlain() || fields.size() > kMostPlainFields) {
    return false;
  }
  PlainReader reader(params.Plain().empty() ? "[]" : params.Plain());
  std::bitset<kMostPlainFields> isGiven;
  const auto readOne = [&](size_t index) {
    if (index >= fields.size() || isGiven[index]) {
      return false;
    }
    isGiven.set(index);
    return read(index, reader);
  };
  const auto readNamed = [&](std::string_view name) {
    return readOne(static_cast<size_t>(std::ranges::find(fields, name, &FieldInfo::name) - fields.begin()));
  };
  size_t next = 0;
  const bool isList = reader.Next() == '[';
  const bool isRead = isList ? reader.TakeList([&] { return readOne(next++); }) : reader.TakeObject(readNamed);
  const auto isMissing = [&](const FieldInfo& field) {
    return field.required && !isGiven[static_cast<size_t>(&field - fields.data())];
  };
  return isRead && reader.IsAtEnd() && std::ranges::none_of(fields, isMissing);
}

std::optional<CallError> WithParsed(const JsonText& text,
                                    const std::function<std::optional<CallError>(const Json&)>& use) {
  const Json json = Parse(text.text);
  return json.is_structured() ? use(json) : Invalid("parameters have to be an object or a list");
}

CallError Explained(CallError error, std::string_view method, const std::vector<FieldInfo>& fields) {
  std::string takes;
  for (const FieldInfo& field : fields) {
    takes += (takes.empty() ? "" : ", ") + field.name + (field.required ? "" : " (may be left out)");
  }
  const std::string hint = fields.empty() ? "it takes no parameters" : "it takes " + takes;
  error.data = DataOf({.stage = "parameters", .method = method, .hint = hint});
  return error;
}

const MethodEntry* Binder::Find(std::string_view name) const {
  const auto found = std::ranges::find(m_methods, name, &MethodEntry::name);
  return found != m_methods.end() ? &*found : nullptr;
}

JsonText Binder::Describe() const {
  std::string methods;
  for (const MethodEntry& method : m_methods) {
    methods += (methods.empty() ? "" : ",") + rpc::Describe(method).text;
  }
  return {"[" + methods + "]"};
}

}  // namespace sim::rpc
