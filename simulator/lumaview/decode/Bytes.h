// SPDX-License-Identifier: Apache-2.0
/// Numbers in the bytes of a file. The caller has checked that the bytes are there.
#ifndef SIMULATOR_LUMAVIEW_DECODE_BYTES_H
#define SIMULATOR_LUMAVIEW_DECODE_BYTES_H

#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace sim::lumaview {

using Bytes = std::span<const uint8_t>;

constexpr uint16_t BigEndian16(const uint8_t* p) {
  return static_cast<uint16_t>(p[0] << 8 | p[1]);
}
constexpr uint32_t BigEndian32(const uint8_t* p) {
  return uint32_t{p[0]} << 24 | uint32_t{p[1]} << 16 | uint32_t{p[2]} << 8 | uint32_t{p[3]};
}
constexpr uint16_t LittleEndian16(const uint8_t* p) {
  return static_cast<uint16_t>(p[1] << 8 | p[0]);
}
constexpr uint32_t LittleEndian32(const uint8_t* p) {
  return uint32_t{p[3]} << 24 | uint32_t{p[2]} << 16 | uint32_t{p[1]} << 8 | uint32_t{p[0]};
}

/// Whether `text` stands at `offset`.
inline bool HasText(Bytes bytes, size_t offset, std::string_view text) {
  return offset <= bytes.size() && bytes.size() - offset >= text.size() &&
         std::memcmp(bytes.data() + offset, text.data(), text.size()) == 0;
}

}  // namespace sim::lumaview

#endif
