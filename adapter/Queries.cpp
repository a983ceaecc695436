// SPDX-License-Identifier: Apache-2.0
/// What the application may ask about the picture.
#include "adapter/CPictureAdapter.h"
#include "adapter/PictureLog.h"
#include "adapter/Truncate.h"

namespace olm {
namespace {

/// The one code of `lumaview_get_zoom_ratio` that counts as a failure: nothing is decoded yet.
constexpr int kZoomRatioNotReady = -2;

}  // namespace

int CPictureAdapter::GetPictureSize(int* width, int* height) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (m_pPicture == nullptr) {
    LOG_RED(op, "m_pPicture == NULL\n");
    return 0;
  }
  if (width == nullptr || height == nullptr) {
    LOG_RED(op, "width == NULL or height == NULL!!!\n");
    return 0;
  }
  const int iFunRet = lumaview_get_size(m_pPicture, width, height);
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_get_size execute ERROR!!! iFunRet=%d\n", iFunRet);
    return 0;
  }
  LOG_BLUE(op, "Get width=%d, height=%d\n", *width, *height);
  LOG_LEAVE(op);
  return 1;
}

int CPictureAdapter::GetPictureType(picture_type_e* type) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (m_pPicture == nullptr) {
    LOG_RED(op, "m_pPicture == NULL\n");
    return 0;
  }
  if (type == nullptr) {
    LOG_RED(op, "type == NULL!!!\n");
    return 0;
  }
  const int iFunRet = lumaview_get_picture_type(m_pPicture, type);
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_get_picture_type error, iFunRet=%d\n", iFunRet);
    return 0;
  }
  LOG_BLUE(op, "Get type=%d\n", *type);
  LOG_LEAVE(op);
  return 1;
}

int CPictureAdapter::GetVideoResolution(unsigned int* pWidth, unsigned int* pHeight) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (m_pPicture == nullptr) {
    LOG_RED(op, "m_pPicture == NULL\n");
    return 0;
  }
  int width = 0;
  int height = 0;
  const int iFunRet = lumaview_get_size(m_pPicture, &width, &height);
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_get_size execute ERROR!!! iFunRet = %d\n", iFunRet);
    return 0;
  }
  *pWidth = static_cast<unsigned int>(width);
  *pHeight = static_cast<unsigned int>(height);
  LOG_BLUE(op, "pWidth=%d, pHeight=%d\n", width, height);
  LOG_LEAVE(op);
  return 1;
}

int CPictureAdapter::GetThumbnail(_lumaview_thumbnail_s* thumbnail) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (m_pPicture == nullptr) {
    LOG_RED(op, "m_pPicture == NULL\n");
    return 0;
  }
  const int iFunRet = lumaview_get_thumbnail(thumbnail);
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_get_thumbnail execute ERROR!!! iFunRet = %d\n", iFunRet);
    return 0;
  }
  LOG_LEAVE(op);
  return 1;
}

int CPictureAdapter::GetZoomRatio(int* ratio) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (m_pPicture == nullptr) {
    LOG_RED(op, "m_pPicture == NULL\n");
    return 0;
  }
  float value = 0.0F;
  const int iFunRet = lumaview_get_zoom_ratio(m_pPicture, &value);
  if (iFunRet == kZoomRatioNotReady) {
    LOG_RED(op, "lumaview_get_zoom_ratio ERROR!!! iFunRet = %d\n", iFunRet);
    return 0;
  }
  *ratio = TruncateToInt(value);
  LOG_BLUE(op, "GetZoomRatio is %d!\n", *ratio);
  LOG_LEAVE(op);
  return 1;
}

}  // namespace olm
