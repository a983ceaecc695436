// SPDX-License-Identifier: Apache-2.0
#include "host/CEmpAppPicturePlayer.h"

#include "adapter/PictureLog.h"
#include "host/CEmpEnginePicture.h"

namespace olm {

CEmpAppPicturePlayer::CEmpAppPicturePlayer() {
  m_strEngineName = "Picture";
  m_strEngineId = "0001";
  m_strVersion = "0.1";
  m_strEngineType = "Picture";
}

bool CEmpAppPicturePlayer::Open(int handle, const std::string& appId, const std::string& widgetId,
                                const std::string& param) {
  const Operation op{__FUNCTION__};
  LOG_PLAIN(op, 0, "[picture-emp] Open() starts.  picture-emp build at %s %s\n", __DATE__, __TIME__);
  return CEmpAppBase::Open(handle, appId, widgetId, param);
}

bool CEmpAppPicturePlayer::Close(int handle) {
  const Operation op{__FUNCTION__};
  LOG_PLAIN(op, 0, "[picture-emp] Close() starts.\n");
  return CEmpAppBase::Close(handle);
}

CEmpEngineBase* CEmpAppPicturePlayer::CreateEmpEngine() {
  const Operation op{__FUNCTION__};
  // Compiled with -fcheck-new: an allocator that returns null makes no object.
  auto* pEmpEngine = new CEmpEnginePicture;
  if (pEmpEngine != nullptr) {
    LOG_PLAIN(op, 0, "[picture-emp] CreateEmpEngine() starts pEmpEngine=%p.  picture-emp build at %s %s\n",
              static_cast<void*>(pEmpEngine), __DATE__, __TIME__);
  } else {
    LOG_PLAIN(op, 0, "NULL == pEmpEngine");
  }
  return pEmpEngine;
}

}  // namespace olm
