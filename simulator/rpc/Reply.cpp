// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/Reply.h"

#include <cassert>
#include <utility>

namespace sim::rpc {
namespace {

JsonText WriteError(const CallError& error) {
  ObjectWriter object;
  object.Add("code", Number(error.code)).Add("message", Quote(error.message));
  if (!error.data.text.empty()) {
    object.Add("data", error.data);
  }
  return object.Take();
}

/// More bytes than a reply has besides its result and its id.
constexpr size_t kMostAround = 64;

std::string WriteReply(const JsonText& id, const Answer& answer) {
  const auto* result = std::get_if<JsonText>(&answer);
  const JsonText error = result == nullptr ? WriteError(std::get<CallError>(answer)) : JsonText{};
  const std::string& content = result != nullptr ? result->text : error.text;
  std::string reply;
  reply.reserve(kMostAround + content.size() + id.text.size());
  reply.append(R"({"jsonrpc":"2.0",)").append(result != nullptr ? R"("result":)" : R"("error":)").append(content);
  reply.append(R"(,"id":)").append(id.text).append("}");
  return reply;
}

}  // namespace

JsonText DataOf(const ErrorPlace& place) {
  ObjectWriter object;
  const auto add = [&object](const char* name, std::string_view text) {
    if (!text.empty()) {
      object.Add(name, Quote(text));
    }
  };
  add("stage", place.stage);
  add("method", place.method);
  add("command", place.command);
  add("path", place.path);
  add("hint", place.hint);
  return object.Take();
}

ReplyCollector::~ReplyCollector() {
  if (m_isBatch && !m_replies.empty()) {
    m_replies.insert(0, "[").append("]");
  }
  if (!m_replies.empty()) {
    m_sink->Send(m_replies);
  }
}

void ReplyCollector::Add(std::string reply) {
  if (m_replies.empty()) {
    m_replies = std::move(reply);
  } else {
    m_replies.append(",").append(reply);
  }
}

Reply::Reply(std::shared_ptr<ReplyCollector> collector, JsonText id)
    : m_collector(std::move(collector)), m_id(std::move(id)) {}

Reply::~Reply() {
  if (m_collector != nullptr) {
    (*this)(Failure(kInternalError, "the request was given up without an answer"));
  }
}

void Reply::operator()(const Answer& answer) {
  assert(m_collector != nullptr);
  const std::shared_ptr<ReplyCollector> collector = std::exchange(m_collector, nullptr);
  if (!m_id.text.empty()) {
    collector->Add(WriteReply(m_id, answer));
  }
}

}  // namespace sim::rpc
