// SPDX-License-Identifier: Apache-2.0
/// How the shown picture is looked at: pan, zoom, rotation, display lock, and the 3D setting of the next one.
#include "adapter/CPictureAdapter.h"
#include "adapter/PictureLog.h"

namespace olm {
namespace {

constexpr int kPropertyType3D = 2;

/// A rotation always comes with zoom ratio 1 and a zoom ratio always with rotation 0; the other numbers stay 0.
lumaview_display_param_s DisplayParam(int zoomRatio, int rotation) {
  lumaview_display_param_s param{};
  param.field[kDisplayParamZoomRatio] = zoomRatio;
  param.field[kDisplayParamRotation] = rotation;
  return param;
}

}  // namespace

int CPictureAdapter::SetZoomMove(lumaview_key_direction_e direction) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (m_pPicture == nullptr) {
    LOG_RED(op, "m_pPicture == NULL\n");
    return 0;
  }
  LOG_BLUE(op, "SetZoomMove(0-Up; 1-Dowm; 2-Left; 3-Right): set direction = %d!\n", direction);
  int x = 0;
  int y = 0;
  const int iFunRet = lumaview_set_zoom_move(m_pPicture, direction, &x, &y);
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_set_zoom_move execute ERROR!!! iFunRet = %d\n", iFunRet);
    return 0;
  }
  LOG_LEAVE(op);
  return 1;
}

int CPictureAdapter::SetZoomRatio(int ratio) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (m_pPicture == nullptr) {
    LOG_RED(op, "m_pPicture == NULL\n");
    return 0;
  }
  LOG_BLUE(op, "SetZoomRatio: set zoom ratio to %d\n", ratio);
  const int iFunRet = lumaview_set_display_param(m_pPicture, DisplayParam(ratio, 0));
  // Logged whatever the result, and never a failure: a zoom request counts as done wherever there is a picture.
  LOG_BLUE(op, "lumaview_set_display_param execute ERROR!!! iFunRet = %d\n", iFunRet);
  LOG_LEAVE(op);
  return 1;
}

int CPictureAdapter::SetRotation(int rotation, bool) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (m_pPicture == nullptr) {
    LOG_RED(op, "m_pPicture == NULL\n");
    return 0;
  }
  LOG_BLUE(op, "Read to lumaview_set_display_param SetRotation: %d\n", rotation);
  const int iFunRet = lumaview_set_display_param(m_pPicture, DisplayParam(1, rotation));
  LOG_BLUE(op, "Back from lumaview_set_display_param\n");
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_set_display_param execute ERROR!!! iFunRet = %d\n", iFunRet);
    return 0;
  }
  LOG_LEAVE(op);
  return 1;
}

int CPictureAdapter::SetDisplayLock(bool lock) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (m_pPicture == nullptr) {
    LOG_RED(op, "m_pPicture == NULL\n");
    return 0;
  }
  LOG_BLUE(op, "SetDisplayLock: set booleanVal to %d!\n", lock);
  const int iFunRet = lumaview_set_display_lock(m_pPicture, m_cWin, lock);
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_set_display_lock execute ERROR!!! iFunRet = %d\n", iFunRet);
    return 0;
  }
  LOG_LEAVE(op);
  return 1;
}

int CPictureAdapter::SetPlayerProperty(int propertyType, const char* param1, int param2) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  if (param1 == nullptr || param2 < 0) {
    LOG_YELLOW(op, "SetPlayerProperty with bad params\n");
    return 0;
  }
  LOG_BLUE(op, "SetPlayerProperty param1=%s, param2=%d\n", param1, param2);
  if (propertyType != kPropertyType3D) {
    LOG_BLUE(op, "propertyType %d need to implement\n", propertyType);
    return 1;
  }
  LOG_RED(op, "set m_i3DSetting to %d", param2);
  m_i3DSetting = param2;
  m_b3DSettingChanged = true;
  LOG_BLUE(op, "Keep 3D setting - %d\n", param2);
  return 1;
}

}  // namespace olm
