// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/LineBuffer.h"

#include <utility>

namespace sim::rpc {
namespace {

/// Room that is kept for later lines: for many usual ones at once.
constexpr size_t kUsualRoom = 16 << 10;

}  // namespace

void LineBuffer::Append(std::string_view bytes) {
  if (m_next) {
    m_bytes += bytes;
    return;
  }
  ForgetTaken();
  m_bytes += bytes;
  FindNext();
}

std::optional<Framing::Message> LineBuffer::Next() {
  if (!m_next) {
    ForgetTaken();
    return std::nullopt;
  }
  const Line line = *m_next;
  FindNext();
  return Message{std::string_view(m_bytes).substr(line.begin, line.size), line.oversized};
}

void LineBuffer::FindNext() {
  m_next.reset();
  for (size_t end; !m_next && (end = m_bytes.find('\n', m_begin + m_searched)) != std::string::npos;) {
    Line line{m_begin, end - m_begin, std::exchange(m_isOversized, false) || end - m_begin > m_limit};
    m_begin = end + 1;
    m_searched = 0;
    if (line.size > 0 && m_bytes[end - 1] == '\r') {
      --line.size;
    }
    if (line.oversized) {
      m_next = {.begin = line.begin, .size = 0, .oversized = true};
    } else if (line.size > 0) {
      m_next = line;
    }
  }
  if (m_next) {
    return;
  }
  m_searched = m_bytes.size() - m_begin;
  if (m_isOversized || m_searched > m_limit) {
    m_isOversized = true;
    m_bytes.resize(m_begin);
    m_searched = 0;
  }
}

/// Nobody has a part of it any more.
void LineBuffer::ForgetTaken() {
  m_bytes.erase(0, std::exchange(m_begin, 0));
  if (m_bytes.empty() && m_bytes.capacity() > kUsualRoom) {
    m_bytes.shrink_to_fit();
  }
}

}  // namespace sim::rpc
