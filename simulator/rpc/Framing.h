// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_RPC_FRAMING_H
#define SIMULATOR_RPC_FRAMING_H

#include <optional>
#include <string>
#include <string_view>

namespace sim::rpc {

/// How messages stand in a stream of bytes, in both directions. Holds at most one unfinished message, and of one that
/// is too long nothing. Loop thread only, but for `Around`.
class Framing {
 public:
  struct Message {
    std::string_view text;   ///< empty when the message was oversized; good until the next `Append` or `Next`
    bool oversized = false;  ///< it was longer than the limit and has been thrown away
  };
  /// What is sent before and after a message.
  struct Envelope {
    std::string before;
    std::string_view after;
  };

  virtual ~Framing() = default;

  virtual void Append(std::string_view bytes) = 0;
  /// No more bytes come.
  virtual void End() = 0;

  virtual bool HasNext() const = 0;
  /// The next message that is not empty, in the order of the stream.
  virtual std::optional<Message> Next() = 0;

  /// Any thread.
  virtual Envelope Around(std::string_view message) const = 0;

  /// What the protocol itself has to answer to the bytes so far; to be sent as it is.
  virtual std::string TakeReplies() { return {}; }
  /// The last bytes to a peer that is left without his asking.
  virtual std::string Farewell() const { return {}; }
  /// Set once the peer has ended the stream by a message, or broken its rules; empty reason: in good order.
  virtual std::optional<std::string> IsOver() const { return std::nullopt; }
};

}  // namespace sim::rpc

#endif
