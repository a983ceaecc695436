// SPDX-License-Identifier: Apache-2.0
#ifndef HOST_CEMPAPPPICTUREPLAYER_H
#define HOST_CEMPAPPPICTUREPLAYER_H

#include "platform/olm_emp.h"

namespace olm {

/// The process's application object: names the engine to the framework and makes it.
class CEmpAppPicturePlayer : public CEmpAppBase {
 public:
  CEmpAppPicturePlayer();

  using CEmpAppBase::Close;
  using CEmpAppBase::Open;
  bool Open(int handle, const std::string& appId, const std::string& widgetId, const std::string& param) override;
  bool Close(int handle) override;
  CEmpEngineBase* CreateEmpEngine() override;
};

}  // namespace olm

#endif
