// SPDX-License-Identifier: Apache-2.0
/// What an application object inherits. This framework opens and closes one application by its handle and sends its
/// commands to the engine object; the other operations are here because they have their places in the table.
#include "platform/olm_emp.h"

namespace olm {

CEmpAppBase::CEmpAppBase() : m_iReserved(0) {}

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

bool CEmpAppBase::Open(int, const std::string&, const std::string&, const std::string&) {
  return true;
}

bool CEmpAppBase::Close(int) {
  return true;
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

}  // namespace olm
