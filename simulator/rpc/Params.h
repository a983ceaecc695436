// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_RPC_PARAMS_H
#define SIMULATOR_RPC_PARAMS_H

#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <string_view>

namespace sim::rpc {

/// A call's parameters: an object, a list, or none. They are read from their text where that is plain, and a document
/// is made of it for those alone who ask for one. Lives as long as the call runs.
class Params {
 public:
  /// `plain`: see PlainReader; empty for none.
  explicit Params(std::string_view plain);
  /// `document`: null for none; outlives these parameters.
  explicit Params(const nlohmann::json* document);
  ~Params();
  Params(const Params&) = delete;
  Params& operator=(const Params&) = delete;

  bool IsPlain() const { return m_isPlain; }
  std::string_view Plain() const { return m_plain; }
  /// Null for none.
  const nlohmann::json* Document() const;

 private:
  const bool m_isPlain;
  const std::string_view m_plain;
  mutable const nlohmann::json* m_document = nullptr;
  mutable std::unique_ptr<const nlohmann::json> m_made;
};

}  // namespace sim::rpc

#endif
