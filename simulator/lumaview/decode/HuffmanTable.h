// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_HUFFMANTABLE_H
#define SIMULATOR_LUMAVIEW_DECODE_HUFFMANTABLE_H

#include <array>
#include <cstdint>
#include <span>

#include "simulator/lumaview/decode/BitReader.h"

namespace sim::lumaview {

/// A code table of a baseline JPEG, made for taking a coefficient with one look where its code and its value together
/// are short, as most are.
class HuffmanTable {
 public:
  enum class Kind { kDc, kAc };

  struct Coefficient {
    int value = 0;
    int run = 0;  ///< zeros in front of it, or `kEnd`
  };
  /// There are only zeros up to the block's end.
  static constexpr int kEnd = 64;
  /// There is no such code.
  static constexpr int kNoCode = 65;

  /// `counts[n]` codes of n bits, 1 to 16, for `symbols` one after the other. False when they are no table that
  /// libjpeg would take; the object is of no use then.
  bool Build(std::span<const uint8_t, 17> counts, std::span<const uint8_t, 256> symbols, Kind kind);

  /// Takes a code and its value from `bits`, 31 bits at most; as many are at hand.
  Coefficient Read(BitReader& bits) const {
    const Look& look = m_looks[bits.Peek(kLookBits)];
    if (look.bits != 0) {
      bits.Drop(look.bits);
      return {look.value, look.run};
    }
    const Symbol symbol = look.run != 0 ? Symbol{look.value, look.run} : FindLongSymbol(bits.Peek(kMostBits));
    if (symbol.bits == 0) {
      return {0, kNoCode};
    }
    bits.Drop(symbol.bits);
    const int value_bits = symbol.symbol & 15;
    if (value_bits == 0) {
      return {0, RunWithoutValue(symbol.symbol)};
    }
    const int value = SignedValue(bits.Peek(value_bits), value_bits);
    bits.Drop(value_bits);
    return {value, symbol.symbol >> 4};
  }

 private:
  static constexpr int kLookBits = 10;  // 4 KB a table: those of a picture stay in the processor's nearest cache
  static constexpr int kMostBits = 16;
  static constexpr int kSixteenZeros = 0xF0;

  /// What the next `kLookBits` bits tell.
  struct Look {
    int16_t value = 0;  ///< the coefficient's; where `bits` is 0, the symbol
    uint8_t run = 0;    ///< the coefficient's; where `bits` is 0, the bits of the code, 0 when it is longer than a look
    uint8_t bits = 0;   ///< of code and value together; 0: they are longer than a look
  };

  /// The zeros in front are the upper half, the bits of the value the lower one.
  struct Symbol {
    int symbol = 0;
    int bits = 0;  ///< of its code; 0: there is none
  };

  /// What `bits` bits stand for: those with a leading zero are the negative numbers.
  static int SignedValue(uint32_t value, int bits) {
    return static_cast<int>(value) - (value >> (bits - 1) == 0 ? (1 << bits) - 1 : 0);
  }
  /// The sixteenth zero is the coefficient itself.
  static int RunWithoutValue(int symbol) { return symbol == kSixteenZeros ? 15 : kEnd; }

  void AddCode(uint32_t code, int length, int symbol, Kind kind);
  /// `next`: `kMostBits` bits that begin with a code longer than a look.
  Symbol FindLongSymbol(uint32_t next) const;

  std::array<Look, 1 << kLookBits> m_looks{};
  std::array<uint32_t, kMostBits + 1> m_ends{};    ///< by length: behind the last code, as the upper of 16 bits
  std::array<int32_t, kMostBits + 1> m_offsets{};  ///< by length: from a code to the place of its symbol
  std::array<uint8_t, 256> m_symbols{};
};

}  // namespace sim::lumaview

#endif
