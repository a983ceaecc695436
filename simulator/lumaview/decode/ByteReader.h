// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_DECODE_BYTEREADER_H
#define SIMULATOR_LUMAVIEW_DECODE_BYTEREADER_H

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {

/// Reads a source from `position` on, a buffer at a time, for formats that look at single bytes.
/// The end is remembered: reading behind it gives zeros, and `IsAtEnd` tells.
class ByteReader {
 public:
  ByteReader(Source& source, uint64_t position) : m_source(source), m_position(position) {}

  uint8_t Get() {
    if (m_next == m_filled && !Fill()) {
      return 0;
    }
    return m_buffer[m_next++];
  }

  /// -1 at the end, which does not count as asking for more than is there.
  int TryGet() {
    const bool was_at_end = std::exchange(m_is_at_end, false);
    const uint8_t byte = Get();
    return std::exchange(m_is_at_end, was_at_end) ? -1 : byte;
  }

  /// Fills all of `to`, with zeros behind the end.
  void Read(std::span<uint8_t> to) {
    while (!to.empty()) {
      if (m_next == m_filled && !Fill()) {
        std::memset(to.data(), 0, to.size());
        return;
      }
      const size_t count = std::min(to.size(), m_filled - m_next);
      std::memcpy(to.data(), &m_buffer[m_next], count);
      m_next += count;
      to = to.subspan(count);
    }
  }

  /// Passes over bytes that need not be there.
  void Skip(size_t count) {
    for (; count > 0; --count) {
      TryGet();
    }
  }

  /// Whether something was asked for that was not there.
  bool IsAtEnd() const { return m_is_at_end; }
  /// kDamaged when it was.
  Status CheckEnd() const {
    return m_is_at_end ? Status(Error{kDamaged, "the file ends in the middle of the picture"}) : Ok();
  }

 private:
  bool Fill() {
    m_source.Seek(m_position);
    m_filled = m_source.Read(m_buffer);
    m_next = 0;
    m_position += m_filled;
    m_is_at_end = m_is_at_end || m_filled == 0;
    return m_filled > 0;
  }

  Source& m_source;
  uint64_t m_position;
  size_t m_next = 0;
  size_t m_filled = 0;
  bool m_is_at_end = false;
  std::array<uint8_t, 16 * 1024> m_buffer;
};

}  // namespace sim::lumaview

#endif
