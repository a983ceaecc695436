// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_BITREADER_H
#define SIMULATOR_LUMAVIEW_DECODE_BITREADER_H

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace sim::lumaview {

/// Reads bits, the highest of each byte first. It looks at whole words: behind the last byte that is read for its bits
/// there must be `kAhead` more that may be looked at.
class BitReader {
 public:
  static constexpr size_t kAhead = 16;
  /// What `Refill` makes sure of.
  static constexpr int kRefilled = 56;

  BitReader() = default;
  explicit BitReader(const uint8_t* bytes) : m_next(bytes) {}

  void Refill() {
    uint64_t word;
    std::memcpy(&word, m_next, sizeof word);
    if constexpr (std::endian::native == std::endian::little) {
      word = __builtin_bswap64(word);
    }
    m_bits |= word >> m_count;
    m_next += (63 - m_count) >> 3;
    m_count |= kRefilled;
  }

  int GetCount() const { return m_count; }
  /// The next `bits` bits, 1 to 32; as many are at hand.
  uint32_t Peek(int bits) const { return static_cast<uint32_t>(m_bits >> (64 - bits)); }
  void Drop(int bits) {
    m_bits <<= bits;
    m_count -= bits;
  }
  /// How many bits have been taken since `bytes`, which lie in front of what is read.
  int64_t BitsSince(const uint8_t* bytes) const { return (m_next - bytes) * 8 - m_count; }

 private:
  const uint8_t* m_next = nullptr;  ///< its bits may be in `m_bits` already
  uint64_t m_bits = 0;              ///< the next ones, from the highest bit on
  int m_count = 0;                  ///< of bits that count in `m_bits`, at most 63
};

}  // namespace sim::lumaview

#endif
