// SPDX-License-Identifier: Apache-2.0
#include "adapter/CPictureAdapter.h"

#include <glib.h>

#include "adapter/PictureLog.h"

namespace olm {

CPictureAdapter::CPictureAdapter(CEmpEnginePicture* pEngine)
    : m_pEmpEngine(pEngine),
      m_pPicture(nullptr),
      m_thread_id(0),
      m_pMainLoop(nullptr),
      m_pTransitionEffect(nullptr),
      m_pDisplay(nullptr),
      m_cWin(kNoWindow),
      m_GC(nullptr),
      m_pImage(nullptr),
      m_bInitWindow(false),
      m_bInitDisplay(false),
      m_bSlideShow(false),
      m_bVconfRegistered(false),
      m_taskID(0),
      m_pEventCallback(nullptr) {
  lumaview_pre_loading();
  m_iScreenWidth = 0;
  m_iScreenHeight = 0;
  m_i3DSetting = 0;
  m_b3DSettingChanged = false;
  pthread_mutex_init(&m_AdapterMut, nullptr);
  GetScreenSize(&m_iScreenWidth, &m_iScreenHeight);
  ClearUrl();
}

CPictureAdapter::~CPictureAdapter() {
  const Operation op{__FUNCTION__};
  LOG_YELLOW(op, "UnregisterVconfKeys...thread: 0x%x\n", Hex32(pthread_self()));
  UnregisterVconfKeys();
  // Destroyed before the worker is stopped: nothing that may still run on the worker takes it.
  pthread_mutex_destroy(&m_AdapterMut);
  LOG_BLUE(op, "m_thread_id 0x%x", Hex32(m_thread_id));
  if (m_thread_id != 0) {
    LOG_BLUE(op, "ready to g_main_loop_quit");
    JoinWorker();
    LOG_BLUE(op, "g_main_loop_quit & pthread join");
  }
  LOG_BLUE(op, "~CPictureAdapter\n");
  if (m_pPicture != nullptr) {
    ReleasePicture();
  }
  if (m_pTransitionEffect != nullptr) {
    ReleaseTransitionEffect();
  }
  if (m_pDisplay != nullptr && m_cWin != kNoWindow) {
    LOG_BLUE(op, "lumaview_destroy_display\n");
    if (m_bInitDisplay) {
      LOG_RED(op, "lumaview_destroy_display m_cWin = 0x%x\n", Hex32(m_cWin));
      NoteLibraryDisplayDestroyed(op, lumaview_destroy_display(&m_cWin));
    }
    LOG_BLUE(op, "DestoryDisplaywin and CloseDisplay are starting\n");
    DestroyDisplayWin();
    CloseDisplay();
  }
}

}  // namespace olm
