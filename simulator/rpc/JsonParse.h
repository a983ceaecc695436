// SPDX-License-Identifier: Apache-2.0
/// The border to the JSON library; included by the sources of this folder only.
#ifndef SIMULATOR_RPC_JSONPARSE_H
#define SIMULATOR_RPC_JSONPARSE_H

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <string_view>

namespace sim::rpc {

/// Levels of arrays and objects. No message of ours has more than four, and a reader that follows 200,000 of them runs
/// out of stack.
inline constexpr int kMaxDepth = 64;

/// The value that `text` is; a discarded one when `text` is not one JSON value, or nested deeper than `kMaxDepth`.
/// Bytes that are not UTF-8 are taken as they come; `TextOf` gives them back.
nlohmann::json Parse(std::string_view text);

/// The bytes of a text value that `Parse` has read.
std::string TextOf(const nlohmann::json& value);

/// `value` on one line, U+FFFD for each byte that is not UTF-8.
std::string Dump(const nlohmann::json& value);
std::string Dump(std::string_view text);

}  // namespace sim::rpc

#endif
