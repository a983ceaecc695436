// SPDX-License-Identifier: Apache-2.0
/// The one window that all adapters of the process share, from the connection to its end, on the X side.
#include <X11/Xutil.h>

#include <cstdlib>

#include "adapter/CPictureAdapter.h"
#include "adapter/PictureLog.h"
#include "display/WindowSize.h"

namespace olm {

Display* CPictureAdapter::pDisplay = nullptr;
Window CPictureAdapter::window_id = kNoWindow;
int CPictureAdapter::displayNum = 0;
int CPictureAdapter::winNum = 0;
int CPictureAdapter::lumaviewInitFlag = 0;

namespace {

constexpr int kImageDepth = 24;
constexpr int kImagePad = 32;

/// Each change of size uncovers the window, and nobody reads what the server says of it: Xlib would keep it all.
/// One event stays: a window that is made on this connection later waits for an event, and has always found one.
void DropEvents(Display* display) {
  XEvent event;
  while (XEventsQueued(display, QueuedAlready) > 1) {
    XNextEvent(display, &event);
  }
}

}  // namespace

Window CPictureAdapter::StaticGetWindow(const Operation& op) {
  if (window_id != kNoWindow) {
    ++winNum;
  }
  LOG_BLUE(op, "StaticGetWindow return 0x%x", Hex32(window_id));
  return window_id;
}

void CPictureAdapter::StaticSetWindow(const Operation& op) const {
  window_id = m_cWin;
  if (window_id != kNoWindow) {
    ++winNum;
  }
  LOG_BLUE(op, "StaticSetWindow 0x%x", Hex32(m_cWin));
}

bool CPictureAdapter::StaticDestroyWindow() {
  --winNum;
  return winNum <= 0 && window_id != kNoWindow;
}

int CPictureAdapter::InitWindow(int x, int y, int width, int height) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_BLUE(op, "before create win!!\n");
  LOG_BLUE(op, "before XOpenDisplay!!\n");
  if (!Connect(op)) {
    return 0;
  }
  LOG_BLUE(op, "before create_window!!x=%d, y=%d, width=%d, height=%d\n", x, y, width, height);
  m_cWin = StaticGetWindow(op);
  if (m_cWin == kNoWindow) {
    CreateWindow(m_pDisplay, x, y, width, height);
    StaticSetWindow(op);
  } else {
    LOG_PLAIN(op, 0, "m_cWin already exist: 0x%x\n", Hex32(m_cWin));
    XMapWindow(m_pDisplay, m_cWin);
    LOG_PLAIN(op, 0, "XMapWindow(m_pDisplay,m_cWin); over\n");
  }
  LOG_BLUE(op, "before XCreateGC!!\n");
  ReleaseGC();
  m_GC = XCreateGC(m_pDisplay, m_cWin, 0, nullptr);
  m_bOwnsGC = m_GC != nullptr;
  LOG_BLUE(op, "before make_transparent_image!!\n");
  XSync(m_pDisplay, False);
  LOG_BLUE(op, "InitWindow end\n");
  return 1;
}

bool CPictureAdapter::Connect(const Operation& op) {
  if (m_pDisplay != nullptr) {
    LOG_PLAIN(op, 0, "m_pDisplay is already exist:%p\n", static_cast<void*>(m_pDisplay));
    return true;
  }
  if (XInitThreads() == 0) {
    LOG_PLAIN(op, 0, "XInitThreads failed\n");
    return false;
  }
  m_pDisplay = XOpenDisplay(nullptr);
  LOG_BLUE(op, "m_pDisplay = %p\n", static_cast<void*>(m_pDisplay));
  if (m_pDisplay == nullptr) {
    LOG_PLAIN(op, 0, "XOpenDisplay failed11\n");
    return false;
  }
  LOG_BLUE(op, "StaticSetDisplay 0x%x", Hex32(m_pDisplay));
  return true;
}

int CPictureAdapter::make_transparent_image(Display* display, int width, int height) {
  const FieldLock fields(m_fields);
  if (display == nullptr || !IsCarried(width, height)) {
    return 1;
  }
  XImage* image =
      XCreateImage(display, DefaultVisual(display, DefaultScreen(display)), kImageDepth, ZPixmap, 0, nullptr,
                   static_cast<unsigned int>(width), static_cast<unsigned int>(height), kImagePad, 0);
  if (image != nullptr) {
    image->data =
        static_cast<char*>(std::calloc(static_cast<size_t>(height), static_cast<size_t>(image->bytes_per_line)));
  }
  ReleaseImage();
  m_pImage = image;
  m_bOwnsImage = image != nullptr;
  return 1;
}

int CPictureAdapter::ResizeWindow(int x, int y, int width, int height) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_BLUE(op, "ResizeWindow start\n");
  if (m_pDisplay != nullptr) {
    const bool carried = IsCarried(width, height);
    if (carried) {
      XMoveResizeWindow(m_pDisplay, m_cWin, x, y, static_cast<unsigned int>(width), static_cast<unsigned int>(height));
    }
    make_transparent_image(m_pDisplay, width, height);
    if (carried && m_bOwnsImage && m_pImage->data != nullptr && m_bOwnsGC) {
      XPutImage(m_pDisplay, m_cWin, m_GC, m_pImage, 0, 0, 0, 0, static_cast<unsigned int>(width),
                static_cast<unsigned int>(height));
    }
    XSync(m_pDisplay, False);
    DropEvents(m_pDisplay);
  }
  LOG_BLUE(op, "ResizeWindow end\n");
  return 1;
}

int CPictureAdapter::DestroyDisplayWin() {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  LOG_ENTER(op);
  if (m_pDisplay == nullptr || m_cWin == kNoWindow) {
    LOG_RED(op, "m_pDisplay == NULL || (int)m_cWin == -1");
    return 0;
  }
  if (!StaticDestroyWindow()) {
    LOG_BLUE(op, "StaticDestroyWindow() == -1\n");
    LOG_LEAVE(op);
    return 1;
  }
  LOG_BLUE(op, "DestroyDisplayWin m_cWin = 0x%x\n", Hex32(m_cWin));
  XDestroyWindow(m_pDisplay, m_cWin);
  XSync(m_pDisplay, False);
  LOG_BLUE(op, "DestroyDisplayWin over\n");
  m_cWin = kNoWindow;
  window_id = kNoWindow;
  LOG_LEAVE(op);
  return 1;
}

int CPictureAdapter::CloseDisplay() {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  if (m_pDisplay == nullptr) {
    LOG_RED(op, "m_pDisplay is NULL.");
    return 0;
  }
  LOG_BLUE(op, "XCloseDisplay\tm_pDisplay= %p\n", static_cast<void*>(m_pDisplay));
  ReleaseGC();
  ReleaseImage();
  if (m_madeWindow != kNoWindow && m_madeWindow == window_id) {
    // Another adapter still holds the window that this connection made; it has to outlive the connection.
    XSetCloseDownMode(m_pDisplay, RetainTemporary);
  }
  XCloseDisplay(m_pDisplay);
  m_pDisplay = nullptr;
  m_madeWindow = kNoWindow;
  LOG_BLUE(op, "XCloseDisplay\tover\n");
  return 1;
}

/// `m_GC` keeps its value; whether it still names something is known by `m_bOwnsGC` alone.
void CPictureAdapter::ReleaseGC() {
  if (m_bOwnsGC) {
    XFreeGC(m_pDisplay, m_GC);
    m_bOwnsGC = false;
  }
}

/// As `ReleaseGC`, for `m_pImage`.
void CPictureAdapter::ReleaseImage() {
  if (m_bOwnsImage) {
    XDestroyImage(m_pImage);
    m_bOwnsImage = false;
  }
}

int CPictureAdapter::GetScreenSize(int* pWidth, int* pHeight) {
  const Operation op{__FUNCTION__};
  if (pWidth == nullptr || pHeight == nullptr) {
    LOG_RED(op, "pWidth == NULL || pHeight == NULL!!!");
    return 0;
  }
  Display* display = XOpenDisplay(nullptr);
  if (display == nullptr) {
    LOG_RED(op, "XOpenDisplay Failed!!!");
    return 0;
  }
  const int screen = XDefaultScreen(display);
  const int width = XDisplayWidth(display, screen);
  const int height = XDisplayHeight(display, screen);
  XCloseDisplay(display);
  LOG_BLUE(op, "Set screen size as screen_width=%d,screen_height=%d***********", width, height);
  *pWidth = width;
  *pHeight = height;
  return 1;
}

}  // namespace olm
