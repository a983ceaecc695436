// SPDX-License-Identifier: Apache-2.0
/// JSON values as their text, the form in which they travel between the layers: nobody above needs a JSON library to
/// hand on a result that he does not look at.
#ifndef SIMULATOR_RPC_JSONTEXT_H
#define SIMULATOR_RPC_JSONTEXT_H

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace sim::rpc {

/// One complete JSON value on one line. Empty: no value.
struct JsonText {
  std::string text;
  bool operator==(const JsonText&) const = default;
};

/// What becomes of bytes that are not UTF-8; file names are bytes and need not be.
enum class ForeignBytes {
  kReplace,  ///< U+FFFD instead of each: what any reader of JSON understands
  kKeep,     ///< as they are: between our own programs, so that every file name gets through
};

JsonText Quote(std::string_view text, ForeignBytes foreign = ForeignBytes::kReplace);
JsonText Quote(const std::vector<std::string>& texts, ForeignBytes foreign = ForeignBytes::kReplace);
JsonText Number(int64_t number);
JsonText Boolean(bool value);

/// Whether `json` is exactly one JSON value, within the limits of a message.
bool IsJson(std::string_view json);

/// The value of a JSON text, integer or flag; nothing when `json` is of another type. Foreign bytes are kept.
std::optional<std::string> ReadText(std::string_view json);
std::optional<int64_t> ReadInteger(std::string_view json);
std::optional<bool> ReadBoolean(std::string_view json);

/// Writes one object: `ObjectWriter().Add("event", Number(8)).Take()`.
class ObjectWriter {
 public:
  ObjectWriter();
  ObjectWriter& Add(std::string_view name, const JsonText& value);
  ObjectWriter& AddText(std::string_view name, std::string_view text, ForeignBytes foreign = ForeignBytes::kReplace);
  JsonText Take();

 private:
  std::string m_text;
};

/// A request, or without an `id` a notification. `params`: an object or a list, or empty.
std::string WriteRequest(std::string_view method, const JsonText& params, const JsonText& id = {});

}  // namespace sim::rpc

#endif
