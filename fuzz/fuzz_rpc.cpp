// SPDX-License-Identifier: Apache-2.0
// What a client sends, as lines and as a WebSocket's frames: framing, parsing, and the replies. The first byte chooses
// the framing and into what pieces the rest is cut. What is read of a message without a document has to be what the
// parser finds in it.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <string_view>

#include "simulator/rpc/LineBuffer.h"
#include "simulator/rpc/MessageHandler.h"
#include "simulator/rpc/PlainMessage.h"
#include "simulator/rpc/WebSocketFraming.h"

using namespace sim::rpc;

namespace {

constexpr size_t kLimit = 1 << 12;

struct Params {
  std::string text;
  int64_t number = 0;
  std::vector<std::string> list;
  bool flag = false;
};
const Fields<Params> kParams = {Required("text", &Params::text), Optional("number", &Params::number),
                                Optional("list", &Params::list), Optional("flag", &Params::flag)};

const Binder& GetBinder() {
  static const Binder binder({
      Method("a", "answers at once", kParams, [](const Params& params) { return Success(Quote(params.text)); }),
      Method("b", "never answers", kNoFields, [](NoParams, Reply) {}),
  });
  return binder;
}

/// A reply has to be JSON on one line.
struct CheckingSink final : MessageSink {
  bool Send(std::string_view reply) override {
    if (!IsJson(reply) || reply.find('\n') != std::string_view::npos) {
      std::abort();
    }
    return true;
  }
};

void CheckMember(const nlohmann::json& json, const char* name, std::string_view read) {
  const bool same =
      read.empty() ? !json.contains(name) : json.contains(name) && nlohmann::json::parse(read) == json[name];
  if (!same) {
    std::abort();
  }
}

void CheckPlain(std::string_view message) {
  const auto plain = PlainMessage::Read(message);
  if (!plain) {
    return;
  }
  const nlohmann::json json = nlohmann::json::parse(message);  // ends the run where it is no JSON
  CheckMember(json, "jsonrpc", plain->jsonrpc);
  CheckMember(json, "method", plain->method);
  CheckMember(json, "params", plain->params);
  CheckMember(json, "id", plain->id);
  CheckMember(json, "result", plain->result);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 1) {
    return -1;
  }
  std::unique_ptr<Framing> framing;
  if (data[0] % 2 == 0) {
    framing = std::make_unique<LineBuffer>(kLimit);
  } else {
    framing = std::make_unique<WebSocketFraming>(kLimit);
  }
  const size_t piece = 1 + data[0] / 2;
  const MessageHandler handler(GetBinder());
  const auto sink = std::make_shared<CheckingSink>();
  std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  while (!bytes.empty()) {
    framing->Append(bytes.substr(0, piece));
    bytes.remove_prefix(std::min(piece, bytes.size()));
    framing->TakeReplies();
  }
  framing->End();
  while (const auto message = framing->Next()) {
    if (message->text.size() > kLimit) {
      std::abort();
    }
    CheckPlain(message->text);
    handler.Handle(message->text, sink);
  }
  return 0;
}
