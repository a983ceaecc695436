// SPDX-License-Identifier: Apache-2.0
/// What the engine gives up while its application is in the background, takes up again, and lets go at the end.
#include "adapter/CPictureAdapter.h"
#include "adapter/PictureLog.h"

namespace olm {

int CPictureAdapter::AppPause() {
  const Operation op{__FUNCTION__};
  LOG_ENTER(op);
  {
    TRACED_LOCK(op, m_AdapterMut);
    const FieldLock fields(m_fields);
    ReleaseForPause(op);
  }
  LOG_LEAVE(op);
  return 1;
}

/// Picture and effect first, the display last; path, worker and key stay.
void CPictureAdapter::ReleaseForPause(const Operation& op) {
  if (m_pPicture != nullptr) {
    LOG_RED(op, "Ready to lumaview_destroy\n");
    ReleasePicture();
    LOG_RED(op, "Ready to lumaview_destroy\n");
  }
  if (m_pTransitionEffect != nullptr) {
    LOG_RED(op, "Ready to lumaview_destroy_transition_effect\n");
    ReleaseTransitionEffect();
    LOG_RED(op, "Return from lumaview_destroy_transition_effect\n");
  }
  if (m_pDisplay == nullptr || m_cWin == kNoWindow) {
    return;
  }
  LOG_BLUE(op, "lumaview_destroy_display\n");
  if (m_bInitDisplay) {
    LOG_RED(op, "Read to lumaview_destroy_display m_cWin = 0x%x\n", Hex32(m_cWin));
    const int iFunRet = lumaview_destroy_display(&m_cWin);
    LOG_RED(op, "Return from lumaview_destroy_display\n");
    NoteLibraryDisplayDestroyed(op, iFunRet);
  }
  DestroyDisplayWin();
  CloseDisplay();
  m_bInitWindow = false;
}

int CPictureAdapter::AppResume() {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (!EnsureDefaultWindow(op)) {
    return 0;
  }
  LOG_BLUE(op, "InitPlayer pURL is '%s'\n", m_cURL);
  if (m_pPicture == nullptr) {
    const int iFunRet = lumaview_create_from_url(m_cURL, &m_pPicture);
    if (iFunRet != 0) {
      LOG_RED(op, "lumaview_create_from_url, iFunRet=%d\n", iFunRet);
      return 0;
    }
  }
  if (!EnsureTransitionEffect(op)) {
    return 0;
  }
  LogDisplayState(op);
  if (!EnsureLibraryDisplay(op)) {
    return 0;
  }
  lumaview_set_window(m_pPicture, m_cWin);
  SetPictureFlag();
  RegisterParseCallback();
  if (!StartParsing(op)) {
    return 0;
  }
  LOG_LEAVE(op);
  return 1;
}

int CPictureAdapter::AppDestroy() {
  const Operation op{__FUNCTION__};
  LOG_ENTER(op);
  {
    TRACED_LOCK(op, m_AdapterMut);
    const FieldLock fields(m_fields);
    ReleaseForDestroy(op);
  }
  LOG_LEAVE(op);
  return 1;
}

/// The display first, then key, worker and path, the effect and the picture last.
void CPictureAdapter::ReleaseForDestroy(const Operation& op) {
  ReleaseWindow(op);
  LOG_YELLOW(op, "UnregisterVconfKeys...\n");
  UnregisterVconfKeys();
  LOG_BLUE(op, "m_thread_id 0x%x", Hex32(m_thread_id));
  if (m_thread_id != 0) {
    LOG_RED(op, "ready to g_main_loop_quit");
    LetWorkerGo();
    LOG_RED(op, "g_main_loop_quit & pthread join");
  }
  ClearUrl();
  ReleaseEffectTraced(op);
  if (m_pPicture != nullptr) {
    LOG_RED(op, "Read to lumaview_destroy\n");
    const int iFunRet = ReleasePicture();
    LOG_RED(op, "Return form lumaview_destroy\n");
    if (iFunRet != 0) {
      LOG_RED(op, "lumaview_destroy error, iFunRet=%d\n", iFunRet);
    }
  }
}

}  // namespace olm
