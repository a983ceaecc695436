// SPDX-License-Identifier: Apache-2.0
/// The television's closed libraries, doing nothing: these tests are about the X server, which is real.
#include "platform/lumaview.h"
#include "platform/olm_emp.h"
#include "platform/vconf.h"

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
void CEmpEngineBase::SetAppInfo(int, std::string, std::string, std::string) {}
std::string CEmpEngineBase::GetAppInfo(eAPP_INFO_TYPE) {
  return {};
}
void CEmpEngineBase::SetReturnValueASCII(std::string&, const char*) {}
void CEmpEngineBase::SetReturnValueASCII(std::string&, std::string&) {}
void CEmpEngineBase::SetReturnValueInteger(std::string&, int) {}
void CEmpEngineBase::SendEvent(int, std::string, std::string) {}

CEmpAppBase::CEmpAppBase() : m_iReserved(0) {}
CEmpAppBase::~CEmpAppBase() = default;
bool CEmpAppBase::Open(const std::string&, const std::string&, const std::string&, const std::string&) {
  return false;
}
bool CEmpAppBase::Close(const std::string&, EmpType::type) {
  return false;
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
  return false;
}
bool CEmpAppBase::Close(int) {
  return false;
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

void COLMDebug::PrintLog(unsigned int, unsigned int, const char*, ...) {}

}  // namespace olm

extern "C" {

int lumaview_pre_loading() {
  return 0;
}
int lumaview_create_from_url(const char*, _lumaview_s**) {
  return -1;
}
int lumaview_destroy(_lumaview_s**) {
  return 0;
}
int lumaview_parse(_lumaview_s*) {
  return -1;
}
int lumaview_decode(_lumaview_s*, int) {
  return -1;
}
int lumaview_add_event_callback(void*, lumaview_event_type_e, lumaview_event_cb) {
  return -1;
}
int lumaview_init_display(Window*) {
  return 0;
}
int lumaview_destroy_display(Window*) {
  return 0;
}
int lumaview_set_window(_lumaview_s*, Window) {
  return -1;
}
int lumaview_set_3d_mode(_lumaview_s*, int) {
  return -1;
}
int lumaview_get_picture_type(_lumaview_s*, picture_type_e*) {
  return -1;
}
int lumaview_get_size(_lumaview_s*, int*, int*) {
  return -1;
}
int lumaview_get_thumbnail(_lumaview_thumbnail_s*) {
  return -1;
}
int lumaview_get_zoom_ratio(_lumaview_s*, float*) {
  return -1;
}
int lumaview_set_zoom_move(_lumaview_s*, lumaview_key_direction_e, int*, int*) {
  return -1;
}
int lumaview_set_display_param(_lumaview_s*, lumaview_display_param_s) {
  return -1;
}
int lumaview_set_display_lock(_lumaview_s*, Window, int) {
  return -1;
}
int lumaview_create_transition_effect(int, _lumaview_effect_s**) {
  return -1;
}
int lumaview_destroy_transition_effect(_lumaview_effect_s**) {
  return 0;
}
int lumaview_set_effect_window_handle(_lumaview_effect_s*, Window) {
  return -1;
}
int lumaview_set_effect_type(_lumaview_effect_s*, effect_type_e) {
  return -1;
}
int lumaview_run_transition_effect(_lumaview_effect_s*, const char*) {
  return -1;
}
int lumaview_is_transition_effect_available(_lumaview_s*, _lumaview_effect_s*, Window) {
  return -1;
}
int lumaview_get_transition_effect_list(char*) {
  return -1;
}

int vconf_notify_key_changed(const char*, vconf_callback_fn, void*) {
  return 0;
}
int vconf_ignore_key_changed(const char*, vconf_callback_fn) {
  return 0;
}

}  // extern "C"
