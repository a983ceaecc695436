// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/Binder.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "simulator/rpc/JsonParse.h"

namespace sim::rpc {
namespace {

using Json = nlohmann::json;

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

JsonText Describe(const FieldInfo& field) {
  return ObjectWriter()
      .Add("name", Quote(field.name))
      .Add("required", Boolean(field.required))
      .Add("schema", field.schema)
      .Take();
}

JsonText Describe(const MethodEntry& method) {
  std::string params;
  for (const FieldInfo& field : method.fields) {
    params += (params.empty() ? "" : ",") + Describe(field).text;
  }
  return ObjectWriter()
      .Add("name", Quote(method.name))
      .Add("summary", Quote(method.summary))
      .Add("params", {"[" + params + "]"})
      .Add("result", {R"({"name":"result","schema":{}})"})
      .Take();
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

std::optional<CallError> WithParsed(const JsonText& text,
                                    const std::function<std::optional<CallError>(const Json&)>& use) {
  const Json json = Parse(text.text);
  return json.is_structured() ? use(json) : Invalid("parameters have to be an object or a list");
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
