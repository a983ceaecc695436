// SPDX-License-Identifier: Apache-2.0
/// What a session tells its clients unasked, as JSON.
#ifndef SIMULATOR_TVSIM_CONTROL_NOTIFICATIONS_H
#define SIMULATOR_TVSIM_CONTROL_NOTIFICATIONS_H

#include <span>

#include "simulator/rpc/Binder.h"
#include "simulator/tvsim/session/Television.h"

namespace sim::tvsim {

inline constexpr const char* kEventMethod = "engine.event";
inline constexpr const char* kExitMethod = "engine.exited";
inline constexpr const char* kStartMethod = "engine.started";
inline constexpr const char* kLogMethod = "engine.log";
inline constexpr const char* kScreenMethod = "session.screenChanged";
inline constexpr const char* kLostMethod = "session.lost";

/// What comes unasked, for the documentation.
struct NotificationInfo {
  std::string name;
  std::string summary;
  std::vector<rpc::FieldInfo> fields;
};
std::span<const NotificationInfo> Notifications();

/// As a JSON list.
rpc::JsonText DescribeNotifications();

/// {sequence, time, picture, event, name, param1, param2}
rpc::JsonText ParamsOf(const SessionEvent& event);

/// Back again; nothing when it has not that form.
std::optional<SessionEvent> ReadEvent(const rpc::JsonText& params);

/// The log's path in an answer to "session.status"; empty when there is none.
std::string EngineLogOf(const rpc::JsonText& status);

/// {status} or {signal}, and {restarted, log: the last lines}
rpc::JsonText ParamsOf(const ProcessEnd& end, bool restarted, const std::vector<std::string>& last_lines);

/// A list of JSON values.
rpc::JsonText ListOf(const std::vector<rpc::JsonText>& values);

}  // namespace sim::tvsim

#endif
