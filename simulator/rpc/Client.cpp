// SPDX-License-Identifier: Apache-2.0
#include "simulator/rpc/Client.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

#include "simulator/rpc/JsonParse.h"
#include "simulator/rpc/PlainMessage.h"
#include "simulator/rpc/PlainReader.h"

namespace sim::rpc {
namespace {

using Json = nlohmann::json;

CallError ReadError(const Json& error) {
  CallError read{kInternalError, "the reply's error has not the form of one"};
  if (error.is_object() && error.contains("code") && error["code"].is_number_integer() && error.contains("message") &&
      error["message"].is_string()) {
    read.code = error["code"].get<int>();
    read.message = TextOf(error["message"]);
    read.data.text = error.contains("data") ? Dump(error["data"]) : "";
  }
  return read;
}

Answer ReadAnswer(const Json& reply) {
  if (reply.contains("result")) {
    return JsonText{Dump(reply["result"])};
  }
  return ReadError(reply.value("error", Json()));
}

}  // namespace

Client::Client(std::shared_ptr<Transport> transport, Callbacks callbacks)
    : m_transport(std::move(transport)), m_callbacks(std::move(callbacks)) {
  m_transport->Start({
      .onMessage = [this](std::string_view message) { HandleMessage(message); },
      .onOversized = [] {},  // whose reply it was cannot be said; that call ends when its caller's patience does
      .onClosed = [this](const CloseReason& reason) { HandleClosed(reason); },
  });
}

Client::~Client() {
  m_transport->Close();
}

Client::CallId Client::Call(std::string_view method, JsonText params, OnAnswer onAnswer) {
  const CallId id = ++m_lastId;
  OpenCall call{id, std::string(method), std::move(params), std::move(onAnswer), Clock::now()};
  if (m_closed) {
    Lose(std::move(call), "the connection is closed");
    return id;
  }
  const std::string request = WriteRequest(method, call.params, Number(id));
  m_open.push_back(std::move(call));
  m_transport->Send(request);
  return id;
}

void Client::Abandon(CallId id, const CallError& error) {
  Finish(id, error);
}

void Client::Notify(std::string_view method, const JsonText& params) {
  m_transport->Send(WriteRequest(method, params));
}

/// What is neither a notification nor the reply to an open call is thrown away: a client answers nothing.
void Client::HandleMessage(std::string_view message) {
  CallId plainId = 0;
  if (const auto plain = PlainMessage::Read(message);
      plain && plain->IsResult() && PlainReader(plain->id).TakeInteger(plainId)) {
    return Finish(plainId, JsonText{std::string(plain->result)});
  }
  const Json json = Parse(message);
  if (!json.is_object()) {
    return;
  }
  const Json method = json.value("method", Json());
  const Json id = json.value("id", Json());
  if (method.is_string() && !json.contains("id")) {
    m_callbacks.onNotification(TextOf(method), {json.contains("params") ? Dump(json["params"]) : ""});
  } else if (!method.is_string() && id.is_number_integer()) {
    Finish(id.get<CallId>(), ReadAnswer(json));
  }
}

void Client::HandleClosed(const CloseReason& reason) {
  m_closed = true;
  while (!m_open.empty()) {
    OpenCall call = std::move(m_open.front());
    m_open.pop_front();
    Lose(std::move(call), "the connection was lost" + (reason.empty() ? "" : ": " + reason));
  }
  const auto onClosed = m_callbacks.onClosed;  // outlives a client that is released in there
  onClosed(reason);
}

void Client::Finish(CallId id, const Answer& answer) {
  const auto found = std::ranges::lower_bound(m_open, id, {}, &OpenCall::id);
  if (found == m_open.end() || found->id != id) {
    return;
  }
  const OnAnswer onAnswer = std::move(found->onAnswer);
  m_open.erase(found);
  onAnswer(answer);
}

void Client::Lose(OpenCall call, const std::string& reason) {
  if (m_callbacks.onLost) {
    m_callbacks.onLost(std::move(call));
  } else {
    call.onAnswer(CallError{kConnectionLost, reason});
  }
}

std::optional<Client::Clock::time_point> Client::OldestCall() const {
  return m_open.empty() ? std::nullopt : std::optional(m_open.front().since);
}

}  // namespace sim::rpc
