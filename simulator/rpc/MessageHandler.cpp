// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/MessageHandler.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "simulator/rpc/JsonParse.h"
#include "simulator/rpc/PlainMessage.h"

namespace sim::rpc {
namespace {

using Json = nlohmann::json;

const Json* Member(const Json& request, const char* name) {
  const auto found = request.find(name);
  return found != request.end() ? &*found : nullptr;
}

bool IsId(const Json& id) {
  return id.is_string() || id.is_number() || id.is_null();
}

/// The id to answer with; null where the request's own cannot be made out, and nothing for a notification.
JsonText ReplyId(const Json& request, bool isValid) {
  const Json* id = request.is_object() ? Member(request, "id") : nullptr;
  if (id != nullptr && IsId(*id)) {
    return {Dump(*id)};
  }
  return {isValid ? "" : "null"};
}

/// What is wrong with the request's form; null when it is right.
const char* FindFault(const Json& request) {
  if (!request.is_object()) {
    return "a request has to be an object";
  }
  const Json* version = Member(request, "jsonrpc");
  const Json* method = Member(request, "method");
  const Json* params = Member(request, "params");
  const Json* id = Member(request, "id");
  if (version == nullptr || *version != "2.0") {
    return "\"jsonrpc\" has to be \"2.0\"";
  }
  if (method == nullptr || !method->is_string()) {
    return "\"method\" has to be a text";
  }
  if (params != nullptr && !params->is_structured()) {
    return "\"params\" has to be an object or a list";
  }
  if (id != nullptr && !IsId(*id)) {
    return "\"id\" has to be a text, a number or null";
  }
  return nullptr;
}

const char* FindBatchFault(const Json& batch) {
  if (batch.empty()) {
    return "a batch has to hold a request";
  }
  static const std::string tooMany = "a batch may hold " + std::to_string(kMaxBatch) + " requests";
  return batch.size() > kMaxBatch ? tooMany.c_str() : nullptr;
}

constexpr const char* kRequestHint = R"(send {"jsonrpc":"2.0","method":...,"params":...,"id":...})";

/// A server that describes itself says so; the methods of any other are few.
std::string MethodHint(const Binder& binder) {
  if (binder.Find("rpc.discover") != nullptr) {
    return "rpc.discover lists the methods";
  }
  std::string names;
  for (const MethodEntry& method : binder.Methods()) {
    names += (names.empty() ? "there are " : ", ") + method.name;
  }
  return names;
}

void Refuse(std::shared_ptr<MessageSink> sink, int code, const char* reason, const char* hint = kRequestHint) {
  Reply(std::make_shared<ReplyCollector>(std::move(sink), false),
        {"null"})(Failure(code, reason, {.stage = "message", .hint = hint}));
}

}  // namespace

void MessageHandler::Handle(std::string_view message, std::shared_ptr<MessageSink> sink) const {
  if (const auto plain = PlainMessage::Read(message); plain && plain->IsCall()) {
    Reply reply(std::make_shared<ReplyCollector>(std::move(sink), false), {std::string(plain->id)});
    return Run(plain->MethodName(), Params(plain->params), std::move(reply));
  }
  const Json json = Parse(message);
  if (json.is_discarded()) {
    return Refuse(std::move(sink), kParseError, "the message is not JSON, or nested too deep");
  }
  if (!json.is_array()) {
    return HandleOne(json, std::make_shared<ReplyCollector>(std::move(sink), false));
  }
  if (const char* fault = FindBatchFault(json)) {
    return Refuse(std::move(sink), kInvalidRequest, fault);
  }
  const auto collector = std::make_shared<ReplyCollector>(std::move(sink), true);
  for (const Json& request : json) {
    HandleOne(request, collector);
  }
}

void MessageHandler::RefuseOversized(std::shared_ptr<MessageSink> sink) {
  Refuse(std::move(sink), kInvalidRequest, "the message is too long", "a message may have 1 MiB");
}

void MessageHandler::HandleOne(const Json& request, const std::shared_ptr<ReplyCollector>& collector) const {
  const char* fault = FindFault(request);
  Reply reply(collector, ReplyId(request, fault == nullptr));
  if (fault != nullptr) {
    return reply(Failure(kInvalidRequest, fault, {.stage = "message", .hint = kRequestHint}));
  }
  Run(TextOf(*Member(request, "method")), Params(Member(request, "params")), std::move(reply));
}

void MessageHandler::Run(std::string_view name, const Params& params, Reply reply) const {
  const MethodEntry* method = m_binder.Find(name);
  if (method == nullptr) {
    return reply(Failure(kMethodNotFound, "there is no method \"" + std::string(name) + "\"",
                         {.stage = "method", .method = name, .hint = MethodHint(m_binder)}));
  }
  method->run(params, std::move(reply));
}

void Serve(const std::shared_ptr<Transport>& transport, const MessageHandler& handler,
           std::function<void(const CloseReason&)> onClosed) {
  // The callbacks belong to the transport, so they must not keep it; the replies do.
  const std::weak_ptr<Transport> connection = transport;
  transport->Start({
      .onMessage = [&handler, connection](std::string_view line) { handler.Handle(line, connection.lock()); },
      .onOversized = [connection] { MessageHandler::RefuseOversized(connection.lock()); },
      .onClosed = std::move(onClosed),
  });
}

}  // namespace sim::rpc
