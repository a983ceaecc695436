// SPDX-License-Identifier: Apache-2.0
/// The framework's classes, without a process loop. PrintLog is in LogFold.cpp.
#include "platform/olm_emp.h"
#include "tests/kit/Journal.h"
#include "tests/kit/Names.h"
#include "tests/kit/Script.h"
#include "tests/kit/World.h"

namespace {

const char* YesOrNo(bool yes) {
  return yes ? "true" : "false";
}

}  // namespace

namespace olm {

CEmpEngineBase::CEmpEngineBase() : m_iDesktopId(0) {
  kit::EngineBorn(this);
}
CEmpEngineBase::~CEmpEngineBase() {
  kit::EngineGone(this);
}

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
  m_strAppId = appId;
  m_strWidgetId = widgetId;
}

/// An engine that nobody gave an identity has the world's.
std::string CEmpEngineBase::GetAppInfo(eAPP_INFO_TYPE type) {
  const bool known = !m_strWidgetId.empty();
  kit::World world = kit::world();
  if (known) {
    world.desktopId = std::to_string(m_iDesktopId);
    world.appId = m_strAppId;
    world.widgetId = m_strWidgetId;
  }
  const std::string& answer = type == E_APP_INFO_APP_ID      ? world.appId
                              : type == E_APP_INFO_WIDGET_ID ? world.widgetId
                                                             : world.desktopId;
  kit::Call("GetAppInfo").Arg(type).Done(kit::Quoted(answer));
  return answer;
}

void CEmpEngineBase::SetReturnValueASCII(std::string& result, const char* text) {
  result = text;
  kit::Append("result text " + kit::Quoted(result));
}
void CEmpEngineBase::SetReturnValueASCII(std::string& result, std::string& text) {
  SetReturnValueASCII(result, text.c_str());
}
void CEmpEngineBase::SetReturnValueInteger(std::string& result, int value) {
  result = std::to_string(value);
  kit::Append("result int " + result);
}

void CEmpEngineBase::SendEvent(int event, std::string param1, std::string param2) {
  kit::Event(event, param1, param2);
}

CEmpAppBase::CEmpAppBase() : m_iReserved(4711) {}
CEmpAppBase::~CEmpAppBase() = default;
bool CEmpAppBase::Open(const std::string&, const std::string&, const std::string&, const std::string&) {
  return true;
}
bool CEmpAppBase::Close(const std::string&, EmpType::type) {
  return true;
}
bool CEmpAppBase::Execute(std::string&, const std::string&, const std::string&, const std::string&, const std::string&,
                          const std::string&, const std::string&) {
  return false;
}
bool CEmpAppBase::ExecuteWithParamList(std::string&, const std::string&, const std::string&, const ParamList&) {
  return false;
}
void CEmpAppBase::Destroy() {}

bool CEmpAppBase::Open(int handle, const std::string& appId, const std::string& widgetId, const std::string& param) {
  const bool answer = kit::world().openResult;
  kit::Call call("CEmpAppBase::Open");
  call.Arg(handle).Arg(kit::Quoted(appId)).Arg(kit::Quoted(widgetId)).Arg(kit::Quoted(param)).Done(YesOrNo(answer));
  return answer;
}
bool CEmpAppBase::Close(int handle) {
  const bool answer = kit::world().closeResult;
  kit::Call("CEmpAppBase::Close").Arg(handle).Done(YesOrNo(answer));
  return answer;
}

bool CEmpAppBase::Execute(std::string&, int, const std::string&, const std::string&, const std::string&,
                          const std::string&, const std::string&) {
  return false;
}
bool CEmpAppBase::ExecuteWithParamList(std::string&, int, const std::string&, const ParamList&) {
  return false;
}
CEmpEngineBase* CEmpAppBase::CreateEmpEngine() {
  return nullptr;
}
void CEmpAppBase::OnAppEvent(std::string) {}
void CEmpAppBase::OnSystemEvent(std::string) {}

int EmpMain(int argc, char**, CEmpAppBase* app) {
  return kit::Call("EmpMain").Arg(argc).Arg("argv").Arg(app == nullptr ? "NULL" : "<app>").Done(0);
}

}  // namespace olm
