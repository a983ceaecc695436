// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_RPC_WEBSOCKETFRAMING_H
#define SIMULATOR_RPC_WEBSOCKETFRAMING_H

#include <array>
#include <cstdint>
#include <deque>

#include "simulator/rpc/Framing.h"

namespace sim::rpc {

/// A server's side of RFC 6455 after the handshake, without extensions: each text message is one of ours. Pings are
/// answered, a close is returned, and a peer that breaks the rules or sends binary is told so and left.
class WebSocketFraming final : public Framing {
 public:
  /// `limit`: bytes of a message, over all its frames.
  explicit WebSocketFraming(size_t limit) : m_limit(limit) {}

  void Append(std::string_view bytes) override;
  void End() override {}
  bool HasNext() const override { return !m_messages.empty(); }
  std::optional<Message> Next() override;
  Envelope Around(std::string_view message) const override;
  std::string TakeReplies() override;
  std::string Farewell() const override;
  std::optional<std::string> IsOver() const override { return m_over; }

 private:
  enum class Opcode : uint8_t { kContinuation = 0, kText = 1, kBinary = 2, kClose = 8, kPing = 9, kPong = 10 };
  struct Frame {
    Opcode opcode = Opcode::kText;
    bool last = true;
    uint64_t left = 0;  ///< bytes of the payload still to come
    std::array<uint8_t, 4> mask{};
    size_t masked = 0;  ///< bytes unmasked so far
  };

  struct Text {
    std::string text;
    bool oversized = false;
  };

  static bool IsControl(Opcode opcode) { return opcode >= Opcode::kClose; }
  std::string_view TakeHeader(std::string_view bytes);
  size_t HeaderSize() const;
  void BeginFrame();
  std::string_view TakePayload(std::string_view bytes);
  void FinishFrame();
  void FinishMessage();
  void OnClose();
  void Break(uint16_t code, const char* reason);

  const size_t m_limit;
  std::string m_header;    ///< what has come of a frame's header
  bool m_inFrame = false;  ///< the header is complete, its payload is not
  Frame m_frame;
  bool m_inMessage = false;  ///< a text message has begun and its last frame has not ended
  Text m_current;
  std::string m_control;  ///< the payload of a control frame
  std::deque<Text> m_messages;
  Text m_taken;  ///< that `Next` has given a view of
  std::string m_replies;
  std::optional<std::string> m_over;
};

}  // namespace sim::rpc

#endif
