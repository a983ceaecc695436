// SPDX-License-Identifier: Apache-2.0
/// Carries bytes that are not UTF-8 through a JSON library that accepts nothing else.
///
/// Each such byte becomes two of the 32 noncharacters U+FDD0..U+FDEF, which Unicode reserves for a program's own use:
/// one for the high half, one for the low. Noncharacters that are already in the text are carried byte by byte like
/// foreign bytes, so the way back is exact.
#ifndef SIMULATOR_RPC_JSONBYTES_H
#define SIMULATOR_RPC_JSONBYTES_H

#include <string>
#include <string_view>

namespace sim::rpc {

std::string WrapForeignBytes(std::string_view text);

/// Undoes `WrapForeignBytes` on a part of its outcome.
std::string UnwrapForeignBytes(std::string_view text);

}  // namespace sim::rpc

#endif
