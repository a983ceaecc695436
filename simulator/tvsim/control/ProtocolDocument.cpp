// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/control/ProtocolDocument.h"

#include "simulator/tvsim/control/Errors.h"
#include "simulator/tvsim/control/Methods.h"
#include "simulator/tvsim/control/Notifications.h"

namespace sim::tvsim {
namespace {

constexpr const char* kIntroduction = R"(# The protocol of a session

`tvsim help protocol` prints this page; a test keeps the two equal. `rpc.discover` gives the same as an OpenRPC
document.

A session speaks JSON-RPC 2.0, one message a line, on the Unix socket `control` in its folder
(`$XDG_RUNTIME_DIR/tvsim/NAME`, or `/tmp/tvsim-UID/NAME`), for its own user alone. `tvsim serve` speaks it too on a
WebSocket, one message a text frame, at `ws://127.0.0.1:PORT/ws?token=TOKEN`; `tvsim url` prints the page's address
with the token that may do everything, `tvsim url --view` the one that may only look on. `GET /screen.jpg?token=TOKEN`
shows the screen; its header `X-Screen-Number` is the number of the change that it shows.

- Parameters come as an object or as a list in the order given here. Those in *italics* may be left out.
- A message has at most 1 MiB and 64 levels, a batch at most 100 requests. What is longer, deeper or no JSON gets an
  error, and the connection lives.
- Commands of all clients run one at a time, in the order in which they come.
- A client that does not read loses notifications, never replies, and is told how many by `session.lost`. One that
  leaves 16 MiB unread is dropped.
- After a lost connection, `events.since` with the last `sequence` that was seen gives what was missed.

```
> {"jsonrpc":"2.0","id":1,"method":"command.InitPlayer","params":{"url":"/pictures/a.jpg"}}
< {"jsonrpc":"2.0","result":1,"id":1}
> {"jsonrpc":"2.0","id":2,"method":"command.StartPlayback"}
< {"jsonrpc":"2.0","result":1,"id":2}
< {"jsonrpc":"2.0","method":"engine.event","params":{"sequence":1,"time":1790000000000,"picture":"/pictures/a.jpg","event":10,"name":"DECODE_COMPLETED","param1":"","param2":""}}
```

)";

/// What stands in a cell of a table.
std::string Cell(const std::string& text) {
  std::string cell;
  for (const char c : text) {
    cell += c == '|' || c == '*' ? std::string("\\") + c : std::string(1, c);
  }
  return cell;
}

std::string Code(const std::string& text) {
  return "`" + text + "`";
}

std::string TypeOf(const rpc::JsonText& schema) {
  const std::string key = "\"type\":\"";
  const size_t at = schema.text.find(key);
  if (at == std::string::npos) {
    return "any";
  }
  const size_t begin = at + key.size();
  const std::string type = schema.text.substr(begin, schema.text.find('"', begin) - begin);
  return type == "array" && schema.text.find("\"items\"") != std::string::npos ? "list of texts" : type;
}

std::string TypesOf(const std::vector<rpc::FieldInfo>& fields) {
  std::string text;
  for (const rpc::FieldInfo& field : fields) {
    const std::string name = field.required ? Code(field.name) : "*" + field.name + "*";
    const std::string type = field.schema.text == "{}" ? "any" : TypeOf(field.schema);
    text += (text.empty() ? "" : "; ") + name + " " + type + (field.summary.empty() ? "" : ": " + Cell(field.summary));
  }
  return text.empty() ? "none" : text;
}

std::string ErrorsOf(const rpc::MethodEntry& method) {
  std::string text;
  for (const rpc::ErrorKind& error : method.notes.errors) {
    text += (text.empty() ? "" : ", ") + std::to_string(error.code);
  }
  return text;
}

std::string ResultOf(const rpc::MethodEntry& method) {
  return method.notes.resultText.empty() ? "true" : Cell(method.notes.resultText);
}

std::string ExampleOf(const rpc::MethodEntry& method) {
  return method.notes.exampleParams.text.empty()
             ? ""
             : Code(method.notes.exampleParams.text) + " → " + Code(method.notes.exampleResult.text);
}

}  // namespace

std::string ProtocolDocument() {
  std::string text = kIntroduction;
  text += "## Methods\n\nThose marked with an eye may be called by who may only look on.\n\n";
  text += "| Method | Does | Parameters | Result | Errors | Example |\n|---|---|---|---|---|---|\n";
  for (const rpc::MethodEntry& method : ControlMethods(nullptr, nullptr, {})) {
    text += "| " + Code(method.name) + (method.notes.readOnly ? " 👁" : "") + " | " + Cell(method.summary) + " | " +
            TypesOf(method.fields) + " | " + ResultOf(method) + " | " + ErrorsOf(method) + " | " + ExampleOf(method) +
            " |\n";
  }
  text += "\n## Notifications\n\n| Notification | Means | Parameters |\n|---|---|---|\n";
  for (const NotificationInfo& one : Notifications()) {
    text += "| " + Code(one.name) + " | " + Cell(one.summary) + " | " + TypesOf(one.fields) + " |\n";
  }
  text +=
      "\n## Errors\n\nAn error's `data` name the `stage` at which it came about, a `hint`, and where they are known "
      "the "
      "`method`,\nthe `command` and the `path` of the picture.\n\n"
      "| Code | Means | Stage | Hint |\n|---:|---|---|---|\n";
  for (const ControlError& error : ControlErrors()) {
    text += "| " + std::to_string(error.code) + " | " + error.meaning + " | " + error.stage + " | " + Cell(error.hint) +
            " |\n";
  }
  return text;
}

}  // namespace sim::tvsim
