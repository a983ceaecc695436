// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "platform/olm_emp.h"
#include "simulator/framework/EventSender.h"
#include "simulator/rpc/JsonText.h"

namespace olm {

CEmpEngineBase::CEmpEngineBase() : m_iDesktopId(0) {}

CEmpEngineBase::~CEmpEngineBase() = default;

bool CEmpEngineBase::Execute(std::string&, const std::string&, const std::string&, const std::string&,
                             const std::string&, const std::string&) {
  return false;
}

bool CEmpEngineBase::ExecuteWithParamList(std::string&, const std::string&, const ParamList&) {
  return false;
}

void CEmpEngineBase::Destroy() {}

void CEmpEngineBase::SetAppInfo(int desktopId, std::string appId, std::string widgetId, std::string) {
  m_iDesktopId = desktopId;
  m_strAppId = std::move(appId);
  m_strWidgetId = std::move(widgetId);
}

std::string CEmpEngineBase::GetAppInfo(eAPP_INFO_TYPE type) {
  switch (type) {
    case E_APP_INFO_DESKTOP_ID:
      return std::to_string(m_iDesktopId);
    case E_APP_INFO_APP_ID:
      return m_strAppId;
    case E_APP_INFO_WIDGET_ID:
      return m_strWidgetId;
  }
  return {};
}

// A result is kept as its JSON text, which tells a number from a text.

void CEmpEngineBase::SetReturnValueASCII(std::string& result, const char* text) {
  result = sim::rpc::Quote(text != nullptr ? text : "").text;
}

void CEmpEngineBase::SetReturnValueASCII(std::string& result, std::string& text) {
  result = sim::rpc::Quote(text).text;
}

void CEmpEngineBase::SetReturnValueInteger(std::string& result, int value) {
  result = sim::rpc::Number(value).text;
}

void CEmpEngineBase::SendEvent(int event, std::string param1, std::string param2) {
  sim::framework::EventSender::OfProcess().Send(event, param1, param2);
}

}  // namespace olm
