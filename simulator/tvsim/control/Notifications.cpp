// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/control/Notifications.h"

namespace sim::tvsim {
namespace {

/// As it travels.
struct FlatEvent {
  int64_t sequence = 0, time = 0, event = 0;
  std::string picture, name, param1, param2;
};
const rpc::Fields<FlatEvent> kEventFields = {
    rpc::Required("sequence", &FlatEvent::sequence, "1, 2, 3 ... within the session"),
    rpc::Required("time", &FlatEvent::time, "milliseconds since 1970"),
    rpc::Required("picture", &FlatEvent::picture, "the path of the last command that named one"),
    rpc::Required("event", &FlatEvent::event, "10 decoded, 8 shown, 6 cannot be shown"),
    rpc::Required("name", &FlatEvent::name, "the same as a word"),
    rpc::Required("param1", &FlatEvent::param1),
    rpc::Required("param2", &FlatEvent::param2),
};

struct FlatExit {
  int64_t signal = 0, status = 0;
  bool restarted = false;
  std::vector<std::string> log;
};
const rpc::Fields<FlatExit> kExitFields = {
    rpc::Optional("signal", &FlatExit::signal, "that ended it, or"),
    rpc::Optional("status", &FlatExit::status, "with which it exited"),
    rpc::Required("restarted", &FlatExit::restarted,
                  "a new engine takes commands already; else engine.started follows"),
    rpc::Required("log", &FlatExit::log, "the last lines of its log"),
};

struct FlatLine {
  std::string line;
};
const rpc::Fields<FlatLine> kLineFields = {rpc::Required("line", &FlatLine::line, "with its terminal colours")};

struct FlatNumber {
  int64_t number = 0;
};
const rpc::Fields<FlatNumber> kScreenFields = {rpc::Required("number", &FlatNumber::number, "of the change")};
const rpc::Fields<FlatNumber> kLostFields = {rpc::Required("count", &FlatNumber::number, "of notifications")};

struct FlatStatus {
  std::string display, log;
  int64_t process = 0, restarts = 0;
  rpc::JsonText application;
};
const rpc::Fields<FlatStatus> kStatusFields = {
    rpc::Required("display", &FlatStatus::display),         rpc::Required("engineProcess", &FlatStatus::process),
    rpc::Required("engineRestarts", &FlatStatus::restarts), rpc::Required("engineLog", &FlatStatus::log),
    rpc::Optional("application", &FlatStatus::application),
};

}  // namespace

std::span<const NotificationInfo> Notifications() {
  static const std::vector<NotificationInfo> kNotifications = {
      {kEventMethod, "An event of the engine; to every client", kEventFields.Infos()},
      {kExitMethod, "The engine has ended; to every client", kExitFields.Infos()},
      {kStartMethod, "An engine was started some time after the last one; to every client", {}},
      {kLogMethod, "A line of the engine's log; to who asked by session.followLog", kLineFields.Infos()},
      {kScreenMethod, "The screen has changed; to who asked by session.followScreen", kScreenFields.Infos()},
      {kLostMethod, "So many notifications were not sent, because the client did not read", kLostFields.Infos()},
  };
  return kNotifications;
}

rpc::JsonText DescribeNotifications() {
  std::vector<rpc::JsonText> list;
  for (const NotificationInfo& one : Notifications()) {
    std::vector<rpc::JsonText> params;
    for (const rpc::FieldInfo& field : one.fields) {
      params.push_back(rpc::ObjectWriter()
                           .Add("name", rpc::Quote(field.name))
                           .Add("summary", rpc::Quote(field.summary))
                           .Add("required", rpc::Boolean(field.required))
                           .Add("schema", field.schema)
                           .Take());
    }
    list.push_back(rpc::ObjectWriter()
                       .Add("name", rpc::Quote(one.name))
                       .Add("summary", rpc::Quote(one.summary))
                       .Add("params", ListOf(params))
                       .Take());
  }
  return ListOf(list);
}

std::optional<SessionEvent> ReadEvent(const rpc::JsonText& params) {
  const auto flat = rpc::ReadParams(params, kEventFields);
  if (!flat) {
    return std::nullopt;
  }
  return SessionEvent{flat->sequence, flat->time, flat->picture, {flat->event, flat->name, flat->param1, flat->param2}};
}

std::string EngineLogOf(const rpc::JsonText& status) {
  const auto flat = rpc::ReadParams(status, kStatusFields);
  return flat ? flat->log : "";
}

rpc::JsonText ParamsOf(const SessionEvent& event) {
  return rpc::ObjectWriter()
      .Add("sequence", rpc::Number(event.sequence))
      .Add("time", rpc::Number(event.milliseconds))
      .Add("picture", rpc::Quote(event.picture))
      .Add("event", rpc::Number(event.event.number))
      .Add("name", rpc::Quote(event.event.name))
      .Add("param1", rpc::Quote(event.event.param1))
      .Add("param2", rpc::Quote(event.event.param2))
      .Take();
}

rpc::JsonText ParamsOf(const ProcessEnd& end, bool restarted, const std::vector<std::string>& last_lines) {
  return rpc::ObjectWriter()
      .Add(end.signalled ? "signal" : "status", rpc::Number(end.status))
      .Add("restarted", rpc::Boolean(restarted))
      .Add("log", rpc::Quote(last_lines))
      .Take();
}

rpc::JsonText ListOf(const std::vector<rpc::JsonText>& values) {
  std::string text = "[";
  for (const rpc::JsonText& value : values) {
    text += (text.size() > 1 ? "," : "") + value.text;
  }
  return {text + "]"};
}

}  // namespace sim::tvsim
