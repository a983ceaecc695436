// SPDX-License-Identifier: Apache-2.0
#include "host/CEmpEnginePicture.h"

#include <atomic>

#include "adapter/CPictureAdapter.h"
#include "adapter/PictureLog.h"

namespace olm {

CEmpEnginePicture* m_pEngine = nullptr;
CEmpAppBase* m_pBase = nullptr;
int s_initPlayerCount = 0;
int s_playCount = 0;

CEmpEnginePicture::CEmpEnginePicture() : m_pAdapter(nullptr) {
  const Operation op{__FUNCTION__};
  m_pEngine = this;
  LOG_RED(op, "picture-emp build at %s %s\n", __DATE__, __TIME__);
  pthread_mutex_init(&m_EngineMut, nullptr);
  m_pAdapter = new CPictureAdapter(m_pEngine);
}

CEmpEnginePicture::~CEmpEnginePicture() {
  const Operation op{__FUNCTION__};
  LOG_BLUE(op, "Destructor starts.\n");
  {
    TRACED_LOCK(op, m_EngineMut);
    if (m_pAdapter != nullptr) {
      delete m_pAdapter;
      std::atomic_ref(m_pAdapter).store(nullptr);
    }
  }
  pthread_mutex_destroy(&m_EngineMut);
}

bool CEmpEnginePicture::AppDestroy() {
  const Operation op{__FUNCTION__};
  LOG_ENTER(op);
  {
    TRACED_LOCK(op, m_EngineMut);
    if (m_pAdapter != nullptr) {
      LOG_RED(op, "m_pAdapter->AppDestroy()");
      m_pAdapter->AppDestroy();
      LOG_RED(op, "ready to delete Adapter");
      delete m_pAdapter;
      LOG_RED(op, "delete Adapter ok");
      std::atomic_ref(m_pAdapter).store(nullptr);
    }
  }
  LOG_LEAVE(op);
  return true;
}

CPictureAdapter* CEmpEnginePicture::GetAdapter() const {
  return std::atomic_ref(const_cast<CPictureAdapter*&>(m_pAdapter)).load();
}

}  // namespace olm
