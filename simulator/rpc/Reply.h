// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_RPC_REPLY_H
#define SIMULATOR_RPC_REPLY_H

#include <memory>
#include <string>
#include <utility>

#include "simulator/rpc/Answer.h"
#include "simulator/rpc/MessageSink.h"

namespace sim::rpc {

/// Gathers the replies to one message and sends them as one when the last of its requests is answered: the reply
/// itself, or for a batch their list. Sends nothing when there were notifications only. Loop thread only.
class ReplyCollector {
 public:
  ReplyCollector(std::shared_ptr<MessageSink> sink, bool isBatch) : m_sink(std::move(sink)), m_isBatch(isBatch) {}
  ~ReplyCollector();
  ReplyCollector(const ReplyCollector&) = delete;
  ReplyCollector& operator=(const ReplyCollector&) = delete;

  void Add(std::string reply);

 private:
  const std::shared_ptr<MessageSink> m_sink;
  const bool m_isBatch;
  std::string m_replies;
};

/// The duty to answer one request: exactly once, now or later, whatever happens. Who lets it go without an answer has
/// answered with an internal error. The answer to a notification goes nowhere. Loop thread only.
class Reply {
 public:
  /// `id`: the request's, as it came; empty for a notification.
  Reply(std::shared_ptr<ReplyCollector> collector, JsonText id);
  Reply(Reply&&) = default;
  Reply& operator=(Reply&&) = delete;
  ~Reply();

  void operator()(const Answer& answer);

 private:
  std::shared_ptr<ReplyCollector> m_collector;  ///< null when answered
  JsonText m_id;
};

}  // namespace sim::rpc

#endif
