// SPDX-License-Identifier: Apache-2.0
/// Where the picture stands on the screen, and taking it off.
#include "adapter/CPictureAdapter.h"
#include "adapter/PictureLog.h"
#include "adapter/Truncate.h"

namespace olm {
namespace {

constexpr int kDefaultBaseResolution = 1080;

/// Classes of screens, by width alone. 0: a width without a class.
int NominalHeight(int screenWidth) {
  switch (screenWidth) {
    case 1920:
      return 1080;
    case 1280:
      return 720;
    default:
      return 0;
  }
}
constexpr int kNominalHeightOfOthers = 1080;

/// Single precision on purpose: a picture must stand on the same pixel as the layout that was scaled so.
int Scale(int value, float ratio) {
  return TruncateToInt(static_cast<float>(value) * ratio);
}

}  // namespace

int CPictureAdapter::SetDisplayArea(int x, int y, int width, int height, int baseRes, bool bAutoResume) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  LOG_BLUE(op, "x: %d   y: %d  width: %d  height: %d  baseRes: %d  bAutoResume: %d\n", x, y, width, height, baseRes,
           bAutoResume);
  if (baseRes <= 0) {
    baseRes = kDefaultBaseResolution;
  }
  if (m_iScreenWidth == 0 && !GetScreenSize(&m_iScreenWidth, &m_iScreenHeight)) {
    LOG_PLAIN(op, 0, "Get Screen size failed!!!\n");
    m_iScreenWidth = 0;
    m_iScreenHeight = 0;
  }
  int nominal = NominalHeight(m_iScreenWidth);
  if (nominal == 0) {
    nominal = kNominalHeightOfOthers;
    LOG_PLAIN(op, 0, "Please Check the Resolution ot the TV!!!!! width=%d height=%d\n", m_iScreenWidth,
              m_iScreenHeight);
  }
  const float ratio = static_cast<float>(nominal) / static_cast<float>(baseRes);
  LOG_BLUE(op, "Get the BaseResolution=%d ratio=%f.\n", nominal, static_cast<double>(ratio));
  int iDis_x = Scale(x, ratio);
  int iDis_y = Scale(y, ratio);
  int iDis_w = Scale(width, ratio);
  int iDis_h = Scale(height, ratio);
  LOG_BLUE(op, "iDis_x: %d\tiDis_y: %d\tiDis_w: %d\tiDis_h: %d\n", iDis_x, iDis_y, iDis_w, iDis_h);
  if (width <= 0 || height <= 0) {
    LOG_YELLOW(op, "width=%d, height=%d, set display area as full screen\n", width, height);
    iDis_x = 0;
    iDis_y = 0;
    FullScreen(op, &iDis_w, &iDis_h);
  }
  // Compared by size alone, and when one size is too large the other is reset to what the screen leaves too.
  if (m_iScreenWidth > 0 && m_iScreenHeight > 0 && (iDis_w > m_iScreenWidth || iDis_h > m_iScreenHeight)) {
    iDis_w = SubtractToInt(m_iScreenWidth, iDis_x);
    iDis_h = SubtractToInt(m_iScreenHeight, iDis_y);
  }
  LOG_BLUE(op, "iDis_x: %d   iDis_y: %d  iDis_w: %d  iDis_h: %d\n", iDis_x, iDis_y, iDis_w, iDis_h);
  if (m_bInitWindow) {
    ResizeWindow(iDis_x, iDis_y, iDis_w, iDis_h);
    LOG_BLUE(op, "iDis_x: %d   iDis_y: %d  iDis_w: %d  iDis_h: %d\n", iDis_x, iDis_y, iDis_w, iDis_h);
    LOG_BLUE(op, "Resize window!!!\n");
    return 1;
  }
  if (!InitWindow(iDis_x, iDis_y, iDis_w, iDis_h)) {
    LOG_RED(op, "InitWindow Fail!!!\n");
    return 0;
  }
  m_bInitWindow = true;
  LOG_BLUE(op, "before player_set_display!!\n");
  return 1;
}

void CPictureAdapter::FullScreen(const Operation& op, int* width, int* height) {
  if (m_iScreenWidth != 0 && m_iScreenHeight != 0) {
    *width = m_iScreenWidth;
    *height = m_iScreenHeight;
  } else if (!GetScreenSize(width, height)) {
    LOG_RED(op, "GetScreenSize Fail Set display area as 1920X1080!!!\n");
    *width = kDefaultWindowWidth;
    *height = kDefaultWindowHeight;
  }
}

int CPictureAdapter::ClearScreen() {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (m_pDisplay != nullptr && m_cWin != kNoWindow && m_bInitDisplay) {
    LOG_RED(op, "lumaview_destroy_display m_cWin = 0x%x\n", Hex32(m_cWin));
    const int iFunRet = lumaview_destroy_display(&m_cWin);
    LOG_RED(op, "Back from lumaview_destroy_display\n");
    if (iFunRet != 0) {
      LOG_RED(op, "lumaview_destroy_display ERROR!!! m_cWin = 0x%x iFunRet = %d\n", Hex32(m_cWin), iFunRet);
      return 0;
    }
    StaticSetDisplayFlag(op, false);
  }
  LOG_LEAVE(op);
  return 1;
}

int CPictureAdapter::ClearScreenForImage() {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  const int result = ClearScreen();
  LOG_LEAVE(op);
  return result;
}

}  // namespace olm
