// SPDX-License-Identifier: Apache-2.0
/// Messages on a descriptor: framing and flow, nothing of what they say.
#ifndef SIMULATOR_RPC_TRANSPORT_H
#define SIMULATOR_RPC_TRANSPORT_H

#include <glib.h>

#include <chrono>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <string_view>

#include "simulator/base/Result.h"
#include "simulator/base/UniqueFd.h"
#include "simulator/rpc/Framing.h"
#include "simulator/rpc/MessageSink.h"
#include "simulator/rpc/OutputQueue.h"

namespace sim::rpc {

struct TransportLimits {
  size_t message = 1 << 20;  ///< bytes; enough for a command with four paths of any length
  size_t unread = 1 << 20;   ///< above this many bytes that the peer has not read, nothing more is read from him
  size_t queue = 16 << 20;   ///< above this many bytes that the peer has not read, the connection is closed
};

/// Why a connection ended. No reason: the peer closed it.
using CloseReason = std::string;

/// One connection. Made, started, closed and released on the thread that runs its context, the loop thread.
class Transport : public MessageSink, public std::enable_shared_from_this<Transport> {
 public:
  /// Called on the loop thread, one message after the other. A callback may close or release the transport.
  struct Callbacks {
    std::function<void(std::string_view message)> onMessage;  ///< never empty
    std::function<void()> onOversized;                        ///< a message above the limit came and was thrown away
    std::function<void(const CloseReason&)> onClosed;         ///< once, after the last message
  };

  /// Messages are lines. Reads from `in` and writes to `out`: pipes, terminals, files or sockets, blocking or not,
  /// `out` with no other writer. `context` outlives the transport.
  static std::shared_ptr<Transport> Create(GMainContext* context, UniqueFd in, UniqueFd out,
                                           TransportLimits limits = {});
  /// Both directions on one socket. Fails when no descriptor is left.
  static Result<std::shared_ptr<Transport>> Create(GMainContext* context, UniqueFd socket, TransportLimits limits = {});
  /// The same with messages that are no lines.
  static Result<std::shared_ptr<Transport>> Create(GMainContext* context, UniqueFd socket,
                                                   std::unique_ptr<Framing> framing, TransportLimits limits = {});

  /// Begins to read.
  void Start(Callbacks callbacks);

  /// Sends `message`, which holds no line end. Any thread; never blocks: what the peer does not take waits. False when
  /// the connection is closed. After the end of input the peer may still listen, so that messages can still be sent.
  /// What is sent while the context is running leaves in one write, before the context sleeps.
  bool Send(std::string_view message) override;

  /// Sends now what was to leave before the context sleeps. Any thread.
  void Flush() { m_output.Flush(); }

  /// Waits until all is sent, at most for `limit`. Any thread. False when something is left.
  bool Drain(std::chrono::milliseconds limit) { return m_output.Drain(limit); }

  /// Bytes that the peer has not taken. Any thread.
  size_t Waiting() const { return m_output.Waiting(); }

  /// Ends the connection without a call of `onClosed`. What still waits is lost.
  void Close();

  ~Transport() override { Close(); }
  Transport(const Transport&) = delete;
  Transport& operator=(const Transport&) = delete;

 private:
  struct Source;
  Transport(GMainContext* context, UniqueFd in, UniqueFd out, std::unique_ptr<Framing> framing, TransportLimits limits);

  static gboolean OnPrepare(GSource* source, gint* timeout);
  static gboolean OnCheck(GSource* source);
  static gboolean OnDispatch(GSource* source, GSourceFunc, gpointer);

  void UpdatePolling();
  bool HasWork() const;
  bool InputIsReady() const;
  void Step();
  void Deliver(const Framing::Message& message);
  void ReadSome();
  ssize_t ReadNow(std::span<char> bytes) const;
  void SendRaw(const std::string& bytes);
  void Finish(const CloseReason& reason);

  GMainContext* const m_context;
  const TransportLimits m_limits;
  GSource* m_source = nullptr;
  gpointer m_inTag = nullptr;   ///< set while input is waited for
  gpointer m_outTag = nullptr;  ///< set while the peer is waited for
  Callbacks m_callbacks;
  const UniqueFd m_in;
  const bool m_inIsSocket;
  const std::unique_ptr<Framing> m_framing;
  OutputQueue m_output;
  CloseReason m_endReason;
  bool m_atEnd = false;     ///< no more input comes
  bool m_finished = false;  ///< `onClosed` was called
};

}  // namespace sim::rpc

#endif
