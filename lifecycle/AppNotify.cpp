// SPDX-License-Identifier: Apache-2.0
/// From a changed state key to pause, resume or destroy. Correct on whatever thread the store delivers.
#include <string_view>

#include "adapter/CPictureAdapter.h"
#include "adapter/PictureLog.h"
#include "host/CEmpEnginePicture.h"

namespace olm {
namespace {

bool Pause(const Operation& op, CPictureAdapter& adapter) {
  LOG_RED(op, "[picture-emp] receive app pause notify");
  if (!adapter.AppPause()) {
    LOG_RED(op, "AppPause failed");
    return false;
  }
  LOG_BLUE(op, "AppPause succeed");
  return true;
}

bool Resume(const Operation& op, CPictureAdapter& adapter) {
  LOG_BLUE(op, "[picture-emp] receive app resume notify");
  if (!adapter.AppResume()) {
    LOG_RED(op, "AppResume failed");
    return false;
  }
  LOG_BLUE(op, "AppResume succeed");
  return true;
}

/// The engine deletes its adapter: nothing of it may be touched after this.
bool Destroy(const Operation& op, CEmpEnginePicture& engine) {
  LOG_BLUE(op, "[picture-emp] receive app destroy notify");
  if (!engine.AppDestroy()) {
    LOG_RED(op, "AppDestroy failed");
    return false;
  }
  LOG_BLUE(op, "AppDestroy succeed");
  return true;
}

bool Follow(const Operation& op, std::string_view state, CEmpEnginePicture& engine, CPictureAdapter& adapter) {
  if (state == "pause") {
    return Pause(op, adapter);
  }
  if (state == "resume") {
    return Resume(op, adapter);
  }
  if (state == "destroy") {
    return Destroy(op, engine);
  }
  return true;
}

}  // namespace

void CPictureAdapter::AppNotifyCB(keynode_t* key, void* userData) {
  const Operation op{__FUNCTION__};
  LOG_ENTER(op);
  LOG_RED(op, "[picture-emp] AppNotifyCB");
  auto* pEngine = static_cast<CEmpEnginePicture*>(userData);
  if (pEngine == nullptr) {
    LOG_RED(op, "pEngine is ull");
    return;
  }
  // Notifications come one at a time and only they delete the adapter while they come, so it stays while this runs.
  CPictureAdapter* pAdapter = pEngine->GetAdapter();
  if (pAdapter == nullptr) {
    LOG_RED(op, "pAdapter is ull");
    return;
  }
  if (key == nullptr || key->value.s == nullptr) {
    LOG_RED(op, "APP NotifyCB key is null");
    return;
  }
  LOG_BLUE(op, "keyname: %s  key type: %d  value: %s", key->keyname, key->type, key->value.s);
  if (Follow(op, key->value.s, *pEngine, *pAdapter)) {
    LOG_LEAVE(op);
  }
}

}  // namespace olm
