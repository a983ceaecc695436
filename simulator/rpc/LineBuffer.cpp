// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/LineBuffer.h"

#include <utility>

namespace sim::rpc {

void LineBuffer::Append(std::string_view bytes) {
  for (size_t end; (end = bytes.find('\n')) != std::string_view::npos; bytes.remove_prefix(end + 1)) {
    Extend(bytes.substr(0, end));
    FinishLine();
  }
  Extend(bytes);
}

std::optional<LineBuffer::Line> LineBuffer::Next() {
  if (m_lines.empty()) {
    return std::nullopt;
  }
  Line line = std::move(m_lines.front());
  m_lines.pop_front();
  return line;
}

void LineBuffer::Reuse(Line line) {
  constexpr size_t kUsualLine = 4 << 10;
  if (line.text.capacity() <= kUsualLine) {
    m_room = std::move(line.text);
    m_room.clear();
  }
}

void LineBuffer::Extend(std::string_view piece) {
  if (m_current.oversized || m_current.text.size() + piece.size() > m_limit) {
    m_current = {.text = {}, .oversized = true};
  } else {
    m_current.text += piece;
  }
}

void LineBuffer::FinishLine() {
  if (m_current.text.ends_with('\r')) {
    m_current.text.pop_back();
  }
  if (m_current.oversized || !m_current.text.empty()) {
    m_lines.push_back(std::move(m_current));
  }
  m_current = {.text = std::exchange(m_room, {}), .oversized = false};
}

}  // namespace sim::rpc
