// SPDX-License-Identifier: Apache-2.0
/// From a path to the screen and down again.
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "adapter/CPictureAdapter.h"
#include "adapter/PictureLog.h"

namespace olm {
namespace {

constexpr std::string_view kFileScheme = "file://";

struct FreeDeleter {
  void operator()(char* text) const { std::free(text); }
};
using MallocedText = std::unique_ptr<char, FreeDeleter>;

/// A copy of `url`, without "file://" in front of it; null where there is no memory.
MallocedText CopyPath(const char* url) {
  const size_t size = std::strlen(url) + 1;
  MallocedText path(static_cast<char*>(std::malloc(size)));
  if (path == nullptr) {
    return nullptr;
  }
  std::memset(path.get(), 0, size);
  const bool stripped = std::string_view(url).starts_with(kFileScheme);
  std::strcpy(path.get(), stripped ? url + kFileScheme.size() : url);
  return path;
}

}  // namespace

int CPictureAdapter::InitPlayer(const char* pURL) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (pURL == nullptr) {
    LOG_RED(op, "pURL == NULL\n");
    return 0;
  }
  if (!EnsureDefaultWindow(op)) {
    return 0;
  }
  LOG_BLUE(op, "InitPlayer pURL is '%s', length=%d\n", pURL, static_cast<int>(std::strlen(pURL)));
  MallocedText path = CopyPath(pURL);
  if (path == nullptr) {
    LOG_RED(op, "malloc failed!!!!\n");
    return 0;
  }
  LOG_BLUE(op, "Got URL is '%s'\n", path.get());
  const int prepared = PreparePicture(op, path.get());
  path.reset();
  LOG_RED(op, "free(URL);\n");
  if (!prepared) {
    return 0;
  }
  LOG_LEAVE(op);
  return 1;
}

/// Picture, key, worker, effect and path. What exists already is kept as it is.
int CPictureAdapter::PreparePicture(const Operation& op, const char* path) {
  if (m_pPicture == nullptr) {
    const int iFunRet = lumaview_create_from_url(path, &m_pPicture);
    if (iFunRet != 0) {
      LOG_RED(op, "lumaview_create_from_url, iFunRet=%d\n", iFunRet);
      return 0;
    }
  }
  LOG_BLUE(op, "ready to RegisterVconfKeys");
  if (!RegisterVconfKeys()) {
    LOG_RED(op, "[picture-emp] RegisterVconfKeys failed");
  }
  if (m_thread_id == 0) {
    StartWorker();
    LOG_RED(op, "m_thread_id: 0x%x\n", Hex32(m_thread_id));
  }
  if (!EnsureTransitionEffect(op)) {
    return 0;
  }
  SetPictureFlag();
  StoreUrl(path);
  return 1;
}

int CPictureAdapter::StartPlayback(unsigned int sec) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (m_pPicture == nullptr) {
    LOG_RED(op, "m_pPicture == NULL\n");
    return 0;
  }
  LOG_BLUE(op, "sec %u\n", sec);
  LogDisplayState(op);
  if (NeedsLibraryDisplay()) {
    LOG_RED(op, "Ready to lumaview_init_display, m_cWin=0x%x\n", Hex32(m_cWin));
    if (!InitLibraryDisplay(op)) {
      return 0;
    }
  }
  LOG_RED(op, "lumaview_set_window 0x%x", Hex32(m_cWin));
  lumaview_set_window(m_pPicture, m_cWin);
  LOG_RED(op, "Back from lumaview_set_window\n");
  if (m_b3DSettingChanged) {
    LOG_RED(op, "lumaview_set_3d_mode to %d", m_i3DSetting);
    lumaview_set_3d_mode(m_pPicture, m_i3DSetting);
    LOG_RED(op, "Back from lumaview_set_3d_mode\n");
    m_b3DSettingChanged = false;
  }
  SetPictureFlag();
  RegisterParseCallback();
  LOG_RED(op, "Read to lumaview_parse");
  const int iFunRet = lumaview_parse(m_pPicture);
  LOG_RED(op, "Return from lumaview_parse");
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_parse error, iFunRet=%d\n", iFunRet);
    return 0;
  }
  LOG_LEAVE(op);
  return 1;
}

int CPictureAdapter::Play(const char* pURL, unsigned int sec) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (pURL == nullptr) {
    LOG_RED(op, "pURL == NULL\n");
    return 0;
  }
  LOG_BLUE(op, "pURL is '%s', sec %u\n", pURL, sec);
  LogDisplayState(op);
  if (!EnsureLibraryDisplay(op)) {
    return 0;
  }
  LOG_BLUE(op, "Play pURL is '%s'\n", pURL);
  if (m_pPicture == nullptr) {
    LOG_RED(op, "Read to lumaview_create_from_url\n");
    const int iFunRet = lumaview_create_from_url(pURL, &m_pPicture);
    LOG_RED(op, "Back from lumaview_create_from_url\n");
    if (iFunRet != 0) {
      LOG_RED(op, "lumaview_create_from_url, iFunRet=%d\n", iFunRet);
      return 0;
    }
  }
  SetPictureFlag();
  StoreUrl(pURL);
  lumaview_set_window(m_pPicture, m_cWin);
  RegisterParseCallback();
  if (!StartParsing(op)) {
    return 0;
  }
  LOG_LEAVE(op);
  return 1;
}

int CPictureAdapter::Stop() {
  const Operation op{__FUNCTION__};
  LOG_ENTER(op);
  int result = 0;
  {
    TRACED_LOCK(op, m_AdapterMut);
    const FieldLock fields(m_fields);
    result = ReleaseAll(op);
  }
  LOG_LEAVE(op);
  return result;
}

/// Effect, key, worker, picture, and with the picture the library's display and the window.
int CPictureAdapter::ReleaseAll(const Operation& op) {
  ClearUrl();
  ReleaseEffectTraced(op);
  LOG_YELLOW(op, "UnregisterVconfKeys...\n");
  UnregisterVconfKeys();
  LOG_BLUE(op, "m_thread_id 0x%x", Hex32(m_thread_id));
  if (m_thread_id != 0) {
    LOG_RED(op, "ready to g_main_loop_quit");
    LetWorkerGo();
    LOG_RED(op, "g_main_loop_quit & pthread join ok");
  }
  if (m_pPicture == nullptr) {
    LOG_YELLOW(op, "m_pPicture == NULL, did not need destory it\n");
    return 1;
  }
  LOG_RED(op, "Read to lumaview_destroy\n");
  const int iFunRet = lumaview_destroy(&m_pPicture);
  LOG_RED(op, "Return form lumaview_destroy\n");
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_destroy error, iFunRet=%d\n", iFunRet);
    return 0;
  }
  m_pPicture = nullptr;
  ReleaseWindow(op);
  return 1;
}

int CPictureAdapter::ChangePlayingURL(const char* pURL) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (pURL == nullptr) {
    LOG_RED(op, "m_pPicture == NULL or pURL == NULL\n");
    return 0;
  }
  LOG_BLUE(op, "ChangePlayingURL: pURL is '%s' \n", pURL);
  if (m_pPicture != nullptr) {
    LOG_RED(op, "Read to lumaview_destroy\n");
    const int iFunRet = lumaview_destroy(&m_pPicture);
    LOG_RED(op, "Back from lumaview_destroy\n");
    if (iFunRet != 0) {
      LOG_RED(op, "lumaview_destroy error, iFunRet=%d\n", iFunRet);
      return 0;
    }
    m_pPicture = nullptr;
  }
  if (!InitPlayer(pURL)) {
    LOG_RED(op, "InitPlayer '%s' failed!!!\n", pURL);
    return 0;
  }
  LOG_LEAVE(op);
  return 1;
}

void CPictureAdapter::DecodePicture(_lumaview_s* picture) {
  const Operation op{__FUNCTION__};
  LOG_BLUE(op, "CPictureAdapter::DecodePicture");
  if (picture == nullptr) {
    LOG_RED(op, "NULL == picture");
    return;
  }
  std::atomic_ref(picture->user_data).store(this);
  lumaview_add_event_callback(picture, LUMAVIEW_EVENT_DECODE, OnDecodeEventCB);
  LOG_RED(op, "Read to lumaview_decode\n");
  const int iFunRet = lumaview_decode(picture, 0);
  LOG_RED(op, "Return form lumaview_decode\n");
  if (iFunRet != 0) {
    LOG_RED(op, "lumaview_decode error, iFunRet=%d\n", iFunRet);
  }
}

picture_type_e CPictureAdapter::ParsePictureType(char* url) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_BLUE(op, "m_ParsePictureType url is '%s', length : '%d' ", url, static_cast<int>(std::strlen(url)));
  _lumaview_s* picture = nullptr;
  picture_type_e type = LUMAVIEW_TYPE_UNKNOWN;
  lumaview_create_from_url(url, &picture);
  const int windowSet = lumaview_set_window(picture, m_cWin);
  LOG_BLUE(op, "######res=[%d]######", windowSet);
  const int iFunRet = lumaview_parse(picture);
  LOG_BLUE(op, "lumaview_parse %d", iFunRet);
  if (iFunRet == 0) {
    lumaview_get_picture_type(picture, &type);
  }
  lumaview_destroy(&picture);
  LOG_LEAVE(op);
  return type;
}

}  // namespace olm
