// SPDX-License-Identifier: Apache-2.0
/// Steps that several operations share.
#include <cstring>

#include "adapter/CPictureAdapter.h"
#include "adapter/PictureLog.h"

namespace olm {

int CPictureAdapter::EnsureDefaultWindow(const Operation& op) {
  if (m_bInitWindow) {
    return 1;
  }
  if (!InitWindow(0, 0, kDefaultWindowWidth, kDefaultWindowHeight)) {
    LOG_BLUE(op, "InitWindow Fail!!!\n");
    return 0;
  }
  m_bInitWindow = true;
  if (m_cWin == 0) {
    LOG_RED(op, "InitWindow Failed!!! m_cWin=0\n");
    return 0;
  }
  return 1;
}

int CPictureAdapter::EnsureTransitionEffect(const Operation& op) {
  if (m_pTransitionEffect != nullptr) {
    return 1;
  }
  LOG_RED(op, "Read to lumaview_create_transition_effect\n");
  const int iFunRet = lumaview_create_transition_effect(kCreateEffectType, &m_pTransitionEffect);
  LOG_RED(op, "Back from lumaview_create_transition_effect\n");
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_create_transition_effect execute ERROR!!! iFunRet = %d\n", iFunRet);
    return 0;
  }
  return 1;
}

int CPictureAdapter::StaticInitDisplay() {
  return std::atomic_ref(lumaviewInitFlag).load() == 0 ? 1 : 0;
}

void CPictureAdapter::LogDisplayState(const Operation& op) const {
  LOG_RED(op, "m_bInitDisplay = %d StaticInitDisplay()=%d\n", m_bInitDisplay, StaticInitDisplay());
}

int CPictureAdapter::EnsureLibraryDisplay(const Operation& op) {
  if (!NeedsLibraryDisplay()) {
    return 1;
  }
  LOG_RED(op, "Read to lumaview_init_display\n");
  return InitLibraryDisplay(op);
}

int CPictureAdapter::InitLibraryDisplay(const Operation& op) {
  const int iFunRet = lumaview_init_display(&m_cWin);
  LOG_RED(op, "Back from lumaview_init_display\n");
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_init_display, m_cWin = 0x%x iFunRet=%d\n", Hex32(m_cWin), iFunRet);
    return 0;
  }
  StaticSetDisplayFlag(op, true);
  return 1;
}

void CPictureAdapter::NoteLibraryDisplayDestroyed(const Operation& op, int iFunRet) {
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_destroy_display ERROR!!! iFunRet = %d\n", iFunRet);
    return;
  }
  StaticSetDisplayFlag(op, false);
}

void CPictureAdapter::StaticSetDisplayFlag(const Operation& op, bool initialised) {
  if (initialised) {
    LOG_RED(op, "StaticSetDisplayFlag(1);\n");
  } else {
    LOG_RED(op, "StaticSetDisplayFlag(0);\n");
  }
  m_bInitDisplay = initialised;
  std::atomic_ref(lumaviewInitFlag).store(initialised ? 1 : 0);
}

int CPictureAdapter::ReleasePicture() {
  const int iFunRet = lumaview_destroy(&m_pPicture);
  m_pPicture = nullptr;
  return iFunRet;
}

int CPictureAdapter::ReleaseTransitionEffect() {
  const int iFunRet = lumaview_destroy_transition_effect(&m_pTransitionEffect);
  m_pTransitionEffect = nullptr;
  return iFunRet;
}

void CPictureAdapter::ReleaseEffectTraced(const Operation& op) {
  if (m_pTransitionEffect != nullptr) {
    LOG_RED(op, "Read to lumaview_destroy_transition_effect\n");
    ReleaseTransitionEffect();
    LOG_RED(op, "Back from lumaview_destroy_transition_effect\n");
  }
}

void CPictureAdapter::ReleaseWindow(const Operation& op) {
  if (m_pDisplay == nullptr || m_cWin == kNoWindow) {
    return;
  }
  LOG_BLUE(op, "DestoryDisplaywin and CloseDisplay are starting\n");
  if (m_bInitDisplay) {
    LOG_RED(op, "lumaview_destroy_display m_cWin = 0x%x thread: 0x%x\n", Hex32(m_cWin), Hex32(pthread_self()));
    const int iFunRet = lumaview_destroy_display(&m_cWin);
    LOG_RED(op, "Back from lumaview_destroy_display\n");
    NoteLibraryDisplayDestroyed(op, iFunRet);
  }
  DestroyDisplayWin();
  CloseDisplay();
  m_bInitWindow = false;
}

void CPictureAdapter::SetPictureUserData() {
  if (m_pPicture != nullptr) {
    std::atomic_ref(m_pPicture->user_data).store(this);
  }
}

void CPictureAdapter::SetPictureFlag() {
  if (m_pPicture != nullptr) {
    std::atomic_ref(m_pPicture->flag).store(1);
  }
}

void CPictureAdapter::RegisterParseCallback() {
  SetPictureUserData();
  lumaview_add_event_callback(m_pPicture, LUMAVIEW_EVENT_PARSE, OnParseEventCB);
}

int CPictureAdapter::StartParsing(const Operation& op) {
  LOG_RED(op, "Read to lumaview_parse\n");
  const int iFunRet = lumaview_parse(m_pPicture);
  LOG_RED(op, "Back from lumaview_parse\n");
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_parse error, iFunRet=%d\n", iFunRet);
    return 0;
  }
  return 1;
}

bool CPictureAdapter::HasUrl() const {
  const FieldLock fields(m_fields);
  return m_cURL[0] != '\0';
}

void CPictureAdapter::StoreUrl(const char* url) {
  // A path that does not fit is never cut: the process ends as a detected buffer overflow. The builtin is called by
  // name because the C library's own check depends on the level of optimisation.
  __builtin___strcpy_chk(m_cURL, url, kUrlCapacity);
}

void CPictureAdapter::ClearUrl() {
  std::memset(m_cURL, 0, sizeof m_cURL);
}

}  // namespace olm
