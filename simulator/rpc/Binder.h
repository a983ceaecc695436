// SPDX-License-Identifier: Apache-2.0
/// Methods with typed parameters. The one list that a Binder is made of shows the whole interface of a server:
///
///     struct MoveParams { int64_t x = 0; std::vector<std::string> notes; };
///     const Fields<MoveParams> kMoveParams = {Required("x", &MoveParams::x), Optional("notes", &MoveParams::notes)};
///     Binder binder({
///         Method("box.move", "Moves the box", kMoveParams, [&](MoveParams p) { return Success(Boolean(Move(p.x))); }),
///         Method("box.wait", "Answers when it stands", kNoFields, [&](NoParams, Reply reply) { Keep(std::move(reply));
///         }),
///     });
#ifndef SIMULATOR_RPC_BINDER_H
#define SIMULATOR_RPC_BINDER_H

#include <functional>
#include <initializer_list>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "simulator/rpc/Answer.h"
#include "simulator/rpc/Params.h"
#include "simulator/rpc/PlainReader.h"
#include "simulator/rpc/Reply.h"

namespace sim::rpc {

/// Reads one parameter; false when `json` is of another type. Texts keep bytes that are not UTF-8.
bool ReadParam(const nlohmann::json& json, std::string& value);
bool ReadParam(const nlohmann::json& json, int64_t& value);
bool ReadParam(const nlohmann::json& json, bool& value);
bool ReadParam(const nlohmann::json& json, std::vector<std::string>& value);
bool ReadParam(const nlohmann::json& json, JsonText& value);  ///< any type

/// The same without a document; false also when it is not plain.
bool ReadParam(PlainReader& reader, std::string& value);
bool ReadParam(PlainReader& reader, int64_t& value);
bool ReadParam(PlainReader& reader, bool& value);
bool ReadParam(PlainReader& reader, std::vector<std::string>& value);
bool ReadParam(PlainReader& reader, JsonText& value);  ///< false: it may have to be put into order

/// A type as JSON Schema.
JsonText SchemaOf(const std::string*);
JsonText SchemaOf(const int64_t*);
JsonText SchemaOf(const bool*);
JsonText SchemaOf(const std::vector<std::string>*);
JsonText SchemaOf(const JsonText*);

struct FieldInfo {
  std::string name;
  bool required = false;
  JsonText schema;
  std::string summary{};
};

template <typename P>
struct Field {
  FieldInfo info;
  std::function<bool(const nlohmann::json&, P&)> read;
  std::function<bool(PlainReader&, P&)> readPlain;
};

template <typename P, typename T>
Field<P> MakeField(const char* name, T P::*member, bool required, const char* summary) {
  return {{name, required, SchemaOf(static_cast<const T*>(nullptr)), summary},
          [member](const nlohmann::json& json, P& params) { return ReadParam(json, params.*member); },
          [member](PlainReader& reader, P& params) { return ReadParam(reader, params.*member); }};
}

template <typename P, typename T>
Field<P> Required(const char* name, T P::*member, const char* summary = "") {
  return MakeField(name, member, true, summary);
}

template <typename P, typename T>
Field<P> Optional(const char* name, T P::*member, const char* summary = "") {
  return MakeField(name, member, false, summary);
}

/// Matches `params` (an object, a list, or null for none) with `fields`, and hands each to `read` with its field's
/// index. An error of kInvalidParams names the first parameter that is missing, of another type or unknown.
std::optional<CallError> MatchParams(const nlohmann::json* params, const std::vector<FieldInfo>& fields,
                                     const std::function<bool(size_t index, const nlohmann::json&)>& read);

/// The same without a document. False when the parameters do not fit or are not plain; some may have been read by then.
bool MatchPlain(const Params& params, const std::vector<FieldInfo>& fields,
                const std::function<bool(size_t index, PlainReader& reader)>& read);

/// The parameters of a method, in the order in which they stand when they come as a list.
template <typename P>
class Fields {
 public:
  Fields(std::initializer_list<Field<P>> fields) {
    for (const Field<P>& field : fields) {
      m_infos.push_back(field.info);
      m_reads.push_back(field.read);
      m_plainReads.push_back(field.readPlain);
    }
  }

  const std::vector<FieldInfo>& Infos() const { return m_infos; }

  /// Fills `params`, where what was not given keeps its value.
  std::optional<CallError> Read(const nlohmann::json* json, P& params) const {
    return MatchParams(json, m_infos, [&](size_t i, const nlohmann::json& value) { return m_reads[i](value, params); });
  }

  std::optional<CallError> Read(const Params& given, P& params) const {
    if (MatchPlain(given, m_infos, [&](size_t i, PlainReader& reader) { return m_plainReads[i](reader, params); })) {
      return std::nullopt;
    }
    params = {};
    return Read(given.Document(), params);
  }

 private:
  std::vector<FieldInfo> m_infos;
  std::vector<std::function<bool(const nlohmann::json&, P&)>> m_reads;
  std::vector<std::function<bool(PlainReader&, P&)>> m_plainReads;
};

struct NoParams {};
inline const Fields<NoParams> kNoFields = {};

/// Parses `text`, the parameters of a notification for example, and hands it to `use`.
std::optional<CallError> WithParsed(const JsonText& text,
                                    const std::function<std::optional<CallError>(const nlohmann::json&)>& use);

/// The parameters in `text`; nothing when they do not fit.
template <typename P>
std::optional<P> ReadParams(const JsonText& text, const Fields<P>& fields) {
  P params{};
  const auto error = WithParsed(text, [&](const nlohmann::json& json) { return fields.Read(&json, params); });
  return error ? std::nullopt : std::optional<P>(std::move(params));
}

struct ErrorKind {
  int code = 0;
  std::string message;
};

/// What a method is besides what it does: nothing here is looked at when it is called.
struct MethodNotes {
  JsonText result{"{}"};     ///< JSON Schema
  std::string resultText{};  ///< what the result says
  std::vector<ErrorKind> errors{};
  JsonText exampleParams{};  ///< an object; empty: no example
  JsonText exampleResult{};
  bool readOnly = false;  ///< calling it changes nothing for anybody else
};

struct MethodEntry {
  std::string name;
  std::string summary;
  std::vector<FieldInfo> fields;
  std::function<void(const Params& params, Reply reply)> run;
  MethodNotes notes{};

  MethodEntry With(MethodNotes with) && {
    notes = std::move(with);
    return std::move(*this);
  }
};

/// Adds to an error of the parameters of `method` what it takes.
CallError Explained(CallError error, std::string_view method, const std::vector<FieldInfo>& fields);

/// One row of the list. `function` takes the parameters and returns an Answer, or takes a Reply too and keeps it, and
/// the parameters as they came if it wants them.
template <typename P, typename F>
MethodEntry Method(const char* name, const char* summary, const Fields<P>& fields, F function) {
  MethodEntry entry{name, summary, fields.Infos(), {}};
  entry.run = [name, fields, function = std::move(function)](const Params& given, Reply reply) {
    P params{};
    if (std::optional<CallError> error = fields.Read(given, params)) {
      reply(Answer(Explained(std::move(*error), name, fields.Infos())));
    } else if constexpr (std::is_invocable_v<F, P, Reply, const Params&>) {
      function(std::move(params), std::move(reply), given);
    } else if constexpr (std::is_invocable_v<F, P, Reply>) {
      function(std::move(params), std::move(reply));
    } else {
      reply(function(std::move(params)));
    }
  };
  return entry;
}

class Binder {
 public:
  explicit Binder(std::vector<MethodEntry> methods) : m_methods(std::move(methods)) {}

  const std::vector<MethodEntry>& Methods() const { return m_methods; }

  /// The method of that name, or null.
  const MethodEntry* Find(std::string_view name) const;

  /// The list as the `methods` of an OpenRPC document.
  JsonText Describe() const;

 private:
  const std::vector<MethodEntry> m_methods;
};

}  // namespace sim::rpc

#endif
