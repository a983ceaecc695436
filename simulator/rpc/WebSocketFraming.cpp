// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/WebSocketFraming.h"

#include <glib.h>

#include <algorithm>
#include <utility>

namespace sim::rpc {
namespace {

constexpr uint8_t kLast = 0x80, kReserved = 0x70, kOpcode = 0x0F, kMasked = 0x80, kLength = 0x7F;
constexpr uint8_t kTwoByteLength = 126, kEightByteLength = 127;
constexpr size_t kMostControlBytes = 125;
constexpr uint16_t kGoingAway = 1001, kProtocolError = 1002, kNotText = 1003, kNotUtf8 = 1007;

uint8_t ByteAt(std::string_view text, size_t index) {
  return static_cast<uint8_t>(text[index]);
}

std::string BigEndian(uint64_t value, int bytes) {
  std::string text;
  for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8) {
    text += static_cast<char>(value >> shift & 0xFF);
  }
  return text;
}

std::string FrameHeader(uint8_t opcode, size_t length) {
  std::string header(1, static_cast<char>(kLast | opcode));
  if (length < kTwoByteLength) {
    return header += static_cast<char>(length);
  }
  if (length <= 0xFFFF) {
    return (header += static_cast<char>(kTwoByteLength)) += BigEndian(length, 2);
  }
  return (header += static_cast<char>(kEightByteLength)) += BigEndian(length, 8);
}

}  // namespace

void WebSocketFraming::Append(std::string_view bytes) {
  while (!bytes.empty() && !m_over) {
    bytes = m_inFrame ? TakePayload(bytes) : TakeHeader(bytes);
  }
}

std::optional<Framing::Message> WebSocketFraming::Next() {
  if (m_messages.empty()) {
    m_taken = {};
    return std::nullopt;
  }
  m_taken = std::move(m_messages.front());
  m_messages.pop_front();
  return Message{m_taken.text, m_taken.oversized};
}

Framing::Envelope WebSocketFraming::Around(std::string_view message) const {
  return {FrameHeader(static_cast<uint8_t>(Opcode::kText), message.size()), ""};
}

std::string WebSocketFraming::TakeReplies() {
  return std::exchange(m_replies, {});
}

std::string WebSocketFraming::Farewell() const {
  return m_over ? "" : FrameHeader(static_cast<uint8_t>(Opcode::kClose), 2) + BigEndian(kGoingAway, 2);
}

/// Of the header whose beginning has come; at least two, and only right once that many are there.
size_t WebSocketFraming::HeaderSize() const {
  if (m_header.size() < 2) {
    return 2;
  }
  const uint8_t length = ByteAt(m_header, 1) & kLength;
  const size_t lengthBytes = length == kTwoByteLength ? 2 : length == kEightByteLength ? 8 : 0;
  const size_t maskBytes = (ByteAt(m_header, 1) & kMasked) != 0 ? 4 : 0;
  return 2 + lengthBytes + maskBytes;
}

std::string_view WebSocketFraming::TakeHeader(std::string_view bytes) {
  while (!bytes.empty() && m_header.size() < HeaderSize()) {
    m_header += bytes.front();
    bytes.remove_prefix(1);
  }
  if (m_header.size() == HeaderSize()) {
    BeginFrame();
  }
  return bytes;
}

void WebSocketFraming::BeginFrame() {
  const std::string header = std::exchange(m_header, {});
  const uint8_t first = ByteAt(header, 0), second = ByteAt(header, 1);
  const size_t maskAt = header.size() - 4;
  m_frame = {
      .opcode = static_cast<Opcode>(first & kOpcode), .last = (first & kLast) != 0, .left = uint64_t{second} & kLength};
  if ((second & kMasked) == 0) {
    return Break(kProtocolError, "a client's frame has to be masked");
  }
  if (m_frame.left >= kTwoByteLength) {
    m_frame.left = 0;
    for (size_t i = 2; i < maskAt; ++i) {
      m_frame.left = m_frame.left << 8 | ByteAt(header, i);
    }
  }
  if (m_frame.left >> 63 != 0) {
    return Break(kProtocolError, "a frame's length has 63 bits");
  }
  for (size_t i = 0; i < m_frame.mask.size(); ++i) {
    m_frame.mask[i] = ByteAt(header, maskAt + i);
  }
  const uint8_t opcode = first & kOpcode;
  if ((first & kReserved) != 0 || (opcode > 2 && opcode < 8) || opcode > 10) {
    return Break(kProtocolError, "a frame of no known kind");
  }
  if (IsControl(m_frame.opcode)) {
    if (!m_frame.last || m_frame.left > kMostControlBytes) {
      return Break(kProtocolError, "a control frame has to be whole and of at most 125 bytes");
    }
    m_control.clear();
  } else if (m_frame.opcode == Opcode::kBinary) {
    return Break(kNotText, "messages have to be text");
  } else if ((m_frame.opcode == Opcode::kContinuation) != m_inMessage) {
    return Break(kProtocolError, "a message has to begin once and go on after that");
  }
  m_inMessage = m_inMessage || m_frame.opcode == Opcode::kText;
  m_inFrame = true;
  if (m_frame.left == 0) {
    FinishFrame();
  }
}

std::string_view WebSocketFraming::TakePayload(std::string_view bytes) {
  const size_t count = static_cast<size_t>(std::min<uint64_t>(bytes.size(), m_frame.left));
  std::string& target = IsControl(m_frame.opcode) ? m_control : m_current.text;
  if (!IsControl(m_frame.opcode) && (m_current.oversized || target.size() + m_frame.left > m_limit)) {
    m_current = {.text = {}, .oversized = true};
  } else {
    const size_t begin = target.size();
    target.append(bytes.substr(0, count));
    for (size_t i = begin; i < target.size(); ++i) {
      target[i] = static_cast<char>(ByteAt(target, i) ^ m_frame.mask[m_frame.masked++ % 4]);
    }
  }
  m_frame.left -= count;
  if (m_frame.left == 0) {
    FinishFrame();
  }
  return bytes.substr(count);
}

void WebSocketFraming::FinishFrame() {
  m_inFrame = false;
  switch (m_frame.opcode) {
    case Opcode::kClose:
      return OnClose();
    case Opcode::kPing:
      m_replies += FrameHeader(static_cast<uint8_t>(Opcode::kPong), m_control.size()) + m_control;
      return;
    case Opcode::kPong:
      return;
    default:
      if (m_frame.last) {
        FinishMessage();
      }
  }
}

void WebSocketFraming::FinishMessage() {
  m_inMessage = false;
  Text message = std::exchange(m_current, {});
  if (!g_utf8_validate_len(message.text.data(), message.text.size(), nullptr)) {
    return Break(kNotUtf8, "a text has to be UTF-8");
  }
  if (message.oversized || !message.text.empty()) {
    m_messages.push_back(std::move(message));
  }
}

void WebSocketFraming::OnClose() {
  m_replies += FrameHeader(static_cast<uint8_t>(Opcode::kClose), m_control.size()) + m_control;
  m_over = "";
}

void WebSocketFraming::Break(uint16_t code, const char* reason) {
  const std::string text = BigEndian(code, 2) + reason;
  m_replies += FrameHeader(static_cast<uint8_t>(Opcode::kClose), text.size()) + text;
  m_over = reason;
}

}  // namespace sim::rpc
