// SPDX-License-Identifier: Apache-2.0
/// Transition effects and the slide-show status.
#include <cstring>

#include "adapter/CPictureAdapter.h"
#include "adapter/PictureLog.h"

/// Exported under exactly this name for who may look for it; nothing here reads or writes it.
OLM_EXPORT int32_t duration = 0;

namespace olm {
namespace {

/// What an application sends to leave the choice of the effect to the library.
constexpr int kApplicationsChoose = -2;

}  // namespace

int CPictureAdapter::EffectShow(effect_type_e type) {
  const Operation op{__FUNCTION__};
  LOG_ENTER(op);
  if (!HasUrl()) {
    LOG_RED(op, "strlen m_cURL is 0!!! Please check the URL\n");
    return 0;
  }
  int result = 0;
  {
    TRACED_LOCK(op, m_AdapterMut);
    const FieldLock fields(m_fields);
    result = RunEffect(op, type);
  }
  LOG_LEAVE(op);
  return result;
}

int CPictureAdapter::RunEffect(const Operation& op, effect_type_e type) {
  if (!EnsureTransitionEffect(op)) {
    return 0;
  }
  LogDisplayState(op);
  if (NeedsLibraryDisplay()) {
    LOG_RED(op, "Read to lumaview_init_display m_cWin=0x%x thread: 0x%x\n", Hex32(m_cWin), Hex32(pthread_self()));
    if (!InitLibraryDisplay(op)) {
      return 0;
    }
  }
  LOG_RED(op, "Read to lumaview_set_effect_window_handle, m_cWin=0x%x\n", Hex32(m_cWin));
  int iFunRet = lumaview_set_effect_window_handle(m_pTransitionEffect, m_cWin);
  LOG_RED(op, "Back from lumaview_set_effect_window_handle\n");
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_set_effect_window_handle execute ERROR!!! iFunRet = %d\n", iFunRet);
    return 0;
  }
  // A second effect in a row finds no picture; the library is told all the same.
  LOG_RED(op, "lumaview_set_window 0x%x", Hex32(m_cWin));
  lumaview_set_window(m_pPicture, m_cWin);
  if (m_b3DSettingChanged) {
    LOG_RED(op, "lumaview_set_3d_mode to 0x%x !!!", Hex32(m_i3DSetting));
    lumaview_set_3d_mode(m_pPicture, m_i3DSetting);
    LOG_RED(op, "Back from lumaview_set_3d_mode!!!");
    m_b3DSettingChanged = false;
  }
  if (m_pPicture != nullptr) {
    LOG_RED(op, "Read to lumaview_destroy!!!");
    ReleasePicture();
    LOG_RED(op, "Back from lumaview_destroy!!!");
  }
  LOG_BLUE(op, "EffectShow: set effect_type to %d\n", type);
  lumaview_set_effect_type(m_pTransitionEffect, type);
  if (m_pTransitionEffect != nullptr) {
    std::atomic_ref(m_pTransitionEffect->user_data).store(this);
  }
  iFunRet = lumaview_add_event_callback(m_pTransitionEffect, LUMAVIEW_EVENT_EFFECT, OnEffectEventCB);
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_add_event_callback execute ERROR!!! iFunRet = %d\n", iFunRet);
    return 0;
  }
  LOG_RED(op, "Read to lumaview_run_transition_effect\n");
  iFunRet = lumaview_run_transition_effect(m_pTransitionEffect, m_cURL);
  LOG_RED(op, "Return form lumaview_run_transition_effect\n");
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_run_transition_effect execute ERROR!!! iFunRet = %d\n", iFunRet);
    return 0;
  }
  return 1;
}

int CPictureAdapter::SetTransitionEffect(int type) {
  const Operation op{__FUNCTION__};
  LOG_ENTER(op);
  {
    // Let go before EffectShow, which takes the adapter's mutex first.
    const FieldLock fields(m_fields);
    LOG_BLUE(op, "SetTransitionEffect:effect_type = %d effect show URL is '%s'.\n", type, m_cURL);
  }
  return EffectShow(type == kApplicationsChoose ? LUMAVIEW_EFFECT_CHOOSE : static_cast<effect_type_e>(type));
}

int CPictureAdapter::IsTransitionEffectAvailable() {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (m_pPicture == nullptr) {
    LOG_RED(op, "m_pPicture == NULL\n");
    return 0;
  }
  const int iFunRet = lumaview_is_transition_effect_available(m_pPicture, m_pTransitionEffect, m_cWin);
  LOG_BLUE(op, "lumaview_is_transition_effect_available return %d.\n", iFunRet);
  return iFunRet == 0 ? 1 : 0;
}

int CPictureAdapter::GetTransitionEffectList(char** list) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (m_pPicture == nullptr) {
    LOG_RED(op, "m_pPicture == NULL\n");
    return 0;
  }
  char names[kEffectListCapacity];
  const int iFunRet = lumaview_get_transition_effect_list(names);
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_get_transition_effect_list ERROR!!! iFunRet = %d\n", iFunRet);
    return 0;
  }
  // The library may fill the buffer without a NUL; so may the copy, and nobody reads past it.
  std::memset(*list, 0, kEffectListCapacity);
  std::memcpy(*list, names, strnlen(names, kEffectListCapacity));
  LOG_BLUE(op, "GetTransitionEffectList is %.400s!\n", *list);
  LOG_LEAVE(op);
  return 1;
}

int CPictureAdapter::SetSlideShowStatus(bool slideShow) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  LOG_BLUE(op, "SetSlideShowStatus:bSlideShow = %d\n", slideShow);
  if (m_bSlideShow == slideShow) {
    LOG_BLUE(op, "Slide show status is already %d \n", slideShow);
    return 1;
  }
  m_bSlideShow = slideShow;
  LOG_LEAVE(op);
  return 1;
}

}  // namespace olm
