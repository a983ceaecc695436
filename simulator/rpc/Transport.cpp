// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/Transport.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "simulator/rpc/LineBuffer.h"

namespace sim::rpc {
namespace {

constexpr size_t kReadBytes = 64 << 10;
/// Messages handled before other sources of the context get their turn.
constexpr int kBurst = 16;

}  // namespace

struct Transport::Source {
  GSource base;
  Transport* transport;
  bool stepping;  ///< a callback is running, perhaps one that runs the context
};

std::shared_ptr<Transport> Transport::Create(GMainContext* context, UniqueFd in, UniqueFd out, TransportLimits limits) {
  auto lines = std::make_unique<LineBuffer>(limits.message);
  return std::shared_ptr<Transport>(new Transport(context, std::move(in), std::move(out), std::move(lines), limits));
}

Result<std::shared_ptr<Transport>> Transport::Create(GMainContext* context, UniqueFd socket, TransportLimits limits) {
  return Create(context, std::move(socket), std::make_unique<LineBuffer>(limits.message), limits);
}

Result<std::shared_ptr<Transport>> Transport::Create(GMainContext* context, UniqueFd socket,
                                                     std::unique_ptr<Framing> framing, TransportLimits limits) {
  UniqueFd out(fcntl(socket.Get(), F_DUPFD_CLOEXEC, 0));
  if (!out) {
    return Error{errno, std::string("cannot duplicate the connection's descriptor: ") + std::strerror(errno)};
  }
  return std::shared_ptr<Transport>(
      new Transport(context, std::move(socket), std::move(out), std::move(framing), limits));
}

Transport::Transport(GMainContext* context, UniqueFd in, UniqueFd out, std::unique_ptr<Framing> framing,
                     TransportLimits limits)
    : m_context(context),
      m_limits(limits),
      m_in(std::move(in)),
      m_inIsSocket(IsSocket(m_in.Get())),
      m_framing(std::move(framing)),
      m_output(std::move(out), limits.queue) {}

void Transport::Start(Callbacks callbacks) {
  static GSourceFuncs functions = {OnPrepare, OnCheck, OnDispatch, nullptr, nullptr, nullptr};
  m_callbacks = std::move(callbacks);
  m_source = g_source_new(&functions, sizeof(Source));
  reinterpret_cast<Source*>(m_source)->transport = this;
  g_source_set_name(m_source, "rpc transport");
  // GLib takes the descriptors of any other source out of the context and puts them back around each dispatch, and
  // wakes the context up each time. That callbacks do not nest is seen to by `stepping`.
  g_source_set_can_recurse(m_source, TRUE);
  g_source_attach(m_source, m_context);
}

bool Transport::Send(std::string_view message) {
  const Framing::Envelope around = m_framing->Around(message);
  if (m_source != nullptr && g_main_context_is_owner(m_context)) {
    return m_output.SendLater(message, around.before, around.after);
  }
  const bool sent = m_output.Send(message, around.before, around.after);
  if (!sent || m_output.Waiting() > 0) {
    g_main_context_wakeup(m_context);  // the loop has to wait for the peer, or to see that he is gone
  }
  return sent;
}

void Transport::Close() {
  if (m_source != nullptr && !m_finished) {
    SendRaw(m_framing->Farewell());
    m_output.Flush();
  }
  if (m_source != nullptr) {
    g_source_destroy(m_source);
    g_source_unref(std::exchange(m_source, nullptr));
  }
  m_finished = true;
}

gboolean Transport::OnPrepare(GSource* source, gint* timeout) {
  Transport& transport = *reinterpret_cast<Source*>(source)->transport;
  *timeout = -1;
  transport.m_output.Flush();
  transport.UpdatePolling();
  return transport.HasWork();
}

gboolean Transport::OnCheck(GSource* source) {
  const Transport& transport = *reinterpret_cast<Source*>(source)->transport;
  const bool peerReads =
      transport.m_outTag != nullptr && g_source_query_unix_fd(source, transport.m_outTag) != GIOCondition{};
  return transport.HasWork() || transport.InputIsReady() || peerReads;
}

gboolean Transport::OnDispatch(GSource* source, GSourceFunc, gpointer) {
  auto* own = reinterpret_cast<Source*>(source);
  if (!own->stepping) {
    own->stepping = true;  // the context holds the source while it is dispatched, whatever becomes of the transport
    own->transport->Step();
    own->stepping = false;
  }
  return G_SOURCE_CONTINUE;
}

/// Polls for input unless the peer has too much to read already, and for room when something waits to be sent.
void Transport::UpdatePolling() {
  const size_t waiting = m_output.Waiting();
  const auto poll = [this](gpointer& tag, bool wanted, int fd, GIOCondition condition) {
    if (wanted && tag == nullptr) {
      tag = g_source_add_unix_fd(m_source, fd, condition);
    } else if (!wanted && tag != nullptr) {
      g_source_remove_unix_fd(m_source, std::exchange(tag, nullptr));
    }
  };
  const bool stepping = reinterpret_cast<const Source*>(m_source)->stepping;
  poll(m_inTag, !stepping && !m_atEnd && waiting <= m_limits.unread, m_in.Get(), G_IO_IN);
  poll(m_outTag, !stepping && waiting > 0 && !m_output.IsBroken(), m_output.Descriptor(), G_IO_OUT);
}

/// Whether `Step` has something to do without input.
bool Transport::HasWork() const {
  return !m_finished && !reinterpret_cast<const Source*>(m_source)->stepping &&
         (m_framing->HasNext() || m_atEnd || m_output.IsBroken());
}

bool Transport::InputIsReady() const {
  return m_inTag != nullptr && g_source_query_unix_fd(m_source, m_inTag) != GIOCondition{};
}

void Transport::Step() {
  const std::shared_ptr<Transport> keep = shared_from_this();
  if (!m_output.Flush()) {
    m_atEnd = true;
    return Finish(m_output.BreakReason());
  }
  if (!m_framing->HasNext() && !m_atEnd && InputIsReady()) {
    ReadSome();
  }
  for (int i = 0; i < kBurst && m_source != nullptr; ++i) {
    const std::optional<Framing::Message> message = m_framing->Next();
    if (!message) {
      break;
    }
    Deliver(*message);
  }
  if (m_source != nullptr && m_atEnd && !m_framing->HasNext()) {
    Finish(m_endReason);
  }
}

void Transport::Deliver(const Framing::Message& message) {
  if (message.oversized) {
    m_callbacks.onOversized();
  } else {
    m_callbacks.onMessage(message.text);
  }
}

void Transport::SendRaw(const std::string& bytes) {
  if (!bytes.empty()) {
    m_output.Send(bytes, "", "");
  }
}

void Transport::ReadSome() {
  static thread_local std::array<char, kReadBytes> bytes;  // nobody reads two at once on one thread
  const ssize_t count = ReadNow(bytes);
  if (count > 0) {
    m_framing->Append({bytes.data(), static_cast<size_t>(count)});
    SendRaw(m_framing->TakeReplies());
    if (const auto over = m_framing->IsOver()) {
      m_endReason = *over;
      m_atEnd = true;
    }
  } else if (count == 0 || (errno != EINTR && errno != EAGAIN)) {
    m_endReason = count == 0 ? "" : std::string("cannot read: ") + std::strerror(errno);
    m_atEnd = true;
    m_framing->End();
  }
}

/// From a socket a system call of its own reads, which costs less than the one for all files.
ssize_t Transport::ReadNow(std::span<char> bytes) const {
  return m_inIsSocket ? recv(m_in.Get(), bytes.data(), bytes.size(), MSG_DONTWAIT)
                      : read(m_in.Get(), bytes.data(), bytes.size());
}

void Transport::Finish(const CloseReason& reason) {
  if (!std::exchange(m_finished, true)) {
    m_callbacks.onClosed(reason);
  }
}

}  // namespace sim::rpc
