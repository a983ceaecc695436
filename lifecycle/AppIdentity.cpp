// SPDX-License-Identifier: Apache-2.0
/// Which application the adapter serves, and following its state key.
#include "adapter/CPictureAdapter.h"
#include "adapter/PictureLog.h"
#include "platform/vconf.h"

namespace olm {
namespace {

constexpr const char* kStateKeyFolder = "db/KestWebApp/";

}  // namespace

void CPictureAdapter::SetAppID(int taskID, std::string appID, std::string widgetID) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  LOG_PLAIN(op, 4, "SetAppID(%d, %s, %s) starts.", taskID, appID.c_str(), widgetID.c_str());
  if (m_taskID != 0) {
    LOG_PLAIN(op, 0, "m_taskID is already exist, and app is trying to change it.");
  }
  m_taskID = taskID;
  m_strAppID = appID;
  m_strAppName = widgetID;
  m_strAppShortName = widgetID.substr(0, widgetID.find('.'));
  LOG_LEAVE(op);
}

int CPictureAdapter::RegisterVconfKeys() {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  // Rebuilt also while the old key is followed: the next subscription is the one that takes it.
  m_strVconfKey = kStateKeyFolder + m_strAppShortName;
  if (m_bVconfRegistered) {
    LOG_YELLOW(op, "VconfKeys already registered");
    return 1;
  }
  LOG_BLUE(op, "ready to register key_value [%s] ", m_strVconfKey.c_str());
  if (vconf_notify_key_changed(m_strVconfKey.c_str(), AppNotifyCB, m_pEmpEngine) != 0) {
    LOG_RED(op, "vconf_notify_key_changed appID failed");
    return 0;
  }
  LOG_BLUE(op, "vconf_notify_key_changed appID succeeded");
  m_bVconfRegistered = true;
  LOG_LEAVE(op);
  return 1;
}

int CPictureAdapter::UnregisterVconfKeys() {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (!m_bVconfRegistered) {
    return 1;
  }
  vconf_ignore_key_changed(m_strVconfKey.c_str(), AppNotifyCB);
  LOG_RED(op, "Unregister KeyValue [%s]", m_strVconfKey.c_str());
  m_bVconfRegistered = false;
  return 1;
}

}  // namespace olm
