// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/control/Notifications.h"

#include "simulator/rpc/Binder.h"

namespace sim::tvsim {
namespace {

/// As it travels.
struct FlatEvent {
  int64_t sequence = 0, time = 0, event = 0;
  std::string picture, name, param1, param2;
};
const rpc::Fields<FlatEvent> kEventFields = {
    rpc::Required("sequence", &FlatEvent::sequence), rpc::Required("time", &FlatEvent::time),
    rpc::Required("picture", &FlatEvent::picture),   rpc::Required("event", &FlatEvent::event),
    rpc::Required("name", &FlatEvent::name),         rpc::Required("param1", &FlatEvent::param1),
    rpc::Required("param2", &FlatEvent::param2),
};

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
