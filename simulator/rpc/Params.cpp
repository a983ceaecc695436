// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/Params.h"

#include <nlohmann/json.hpp>

#include "simulator/rpc/JsonParse.h"

namespace sim::rpc {

Params::Params(std::string_view plain) : m_isPlain(true), m_plain(plain) {}
Params::Params(const nlohmann::json* document) : m_isPlain(false), m_document(document) {}
Params::~Params() = default;

const nlohmann::json* Params::Document() const {
  if (m_document == nullptr && !m_plain.empty()) {
    m_made = std::make_unique<const nlohmann::json>(Parse(m_plain));
    m_document = m_made.get();
  }
  return m_document;
}

}  // namespace sim::rpc
