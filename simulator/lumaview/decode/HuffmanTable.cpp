// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/decode/HuffmanTable.h"

#include <algorithm>

namespace sim::lumaview {
namespace {

constexpr int kMostDcBits = 15;

}  // namespace

bool HuffmanTable::Build(std::span<const uint8_t, 17> counts, std::span<const uint8_t, 256> symbols, Kind kind) {
  std::ranges::copy(symbols, m_symbols.begin());
  m_looks = {};
  uint32_t code = 0;
  size_t next = 0;
  for (int length = 1; length <= kMostBits; ++length, code <<= 1) {
    const auto at = static_cast<size_t>(length);
    const size_t count = counts[at];
    // No code is all ones, so one more than the last must fit too.
    if (count > 0 && (next + count > symbols.size() || code + count >= 1u << length)) {
      return false;
    }
    m_offsets[at] = static_cast<int32_t>(next) - static_cast<int32_t>(code);
    for (const uint8_t symbol : symbols.subspan(next, count)) {
      if (kind == Kind::kDc && symbol > kMostDcBits) {
        return false;
      }
      AddCode(code++, length, symbol, kind);
    }
    next += count;
    m_ends[at] = code << (kMostBits - length);
  }
  return true;
}

void HuffmanTable::AddCode(uint32_t code, int length, int symbol, Kind kind) {
  if (length > kLookBits) {
    return;
  }
  const int value_bits = symbol & 15;
  const int rest_bits = kLookBits - length;
  for (uint32_t rest = 0; rest < 1u << rest_bits; ++rest) {
    Look& look = m_looks[code << rest_bits | rest];
    if (value_bits > rest_bits) {
      look = {static_cast<int16_t>(symbol), static_cast<uint8_t>(length), 0};
    } else {
      const int run = kind == Kind::kAc && value_bits == 0 ? RunWithoutValue(symbol) : symbol >> 4;
      const int value = value_bits == 0 ? 0 : SignedValue(rest >> (rest_bits - value_bits), value_bits);
      look = {static_cast<int16_t>(value), static_cast<uint8_t>(run), static_cast<uint8_t>(length + value_bits)};
    }
  }
}

HuffmanTable::Symbol HuffmanTable::FindLongSymbol(uint32_t next) const {
  for (int length = kLookBits + 1; length <= kMostBits; ++length) {
    const auto at = static_cast<size_t>(length);
    if (next < m_ends[at]) {
      const int place = static_cast<int>(next >> (kMostBits - length)) + m_offsets[at];
      return {m_symbols[static_cast<size_t>(place)], length};
    }
  }
  return {};
}

}  // namespace sim::lumaview
