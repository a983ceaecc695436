// SPDX-License-Identifier: Apache-2.0
/// Making the window: below the application's, with the window manager's hints, its first contents black.
#include <Ecore_X.h>
#include <X11/Xatom.h>
#include <X11/Xutil.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "adapter/CPictureAdapter.h"
#include "adapter/PictureLog.h"
#include "display/WindowSize.h"

namespace olm {
namespace {

constexpr size_t kHintCapacity = 200;

/// Left out where there is no window.
void ChangeProperty(Display* display, Window window, Atom property, Atom type, int format, int mode, const void* data,
                    int count) {
  if (window != kNoWindow) {
    XChangeProperty(display, window, property, type, format, mode, static_cast<const unsigned char*>(data), count);
  }
}

void SetStateBelow(const Operation& op, Display* display, Window window) {
  const Atom state = XInternAtom(display, "_NET_WM_STATE", False);
  const Atom below = XInternAtom(display, "_NET_WM_STATE_BELOW", False);
  if (state == None || below == None) {
    LOG_YELLOW(op, "wm_state or wm_state_below value is None");
  }
  ChangeProperty(display, window, state, XA_ATOM, 32, PropModeReplace, &below, 1);
}

/// The application's window, which has the focus when the player is started; 0 = not known.
Window FocusedWindow(const Operation& op) {
  if (ecore_x_init(nullptr) == 0) {
    return 0;
  }
  const Window focused = ecore_x_window_focus_get();
  LOG_BLUE(op, "Ecore WIN ID : 0x%x", Hex32(focused));
  return focused;
}

Window CreateBlackWindow(Display* display, int x, int y, int width, int height) {
  // Screen 0, whatever the default screen is.
  return XCreateSimpleWindow(display, RootWindow(display, 0), x, y, static_cast<unsigned int>(width),
                             static_cast<unsigned int>(height), 0, 0, BlackPixel(display, DefaultScreen(display)));
}

/// Waits for the first event of the connection; where it is the window's first Expose, paints it black.
void PaintFirstContents(Display* display, Window window, int width, int height) {
  GC gc = XCreateGC(display, window, 0, nullptr);
  if (gc != nullptr) {
    XSetForeground(display, gc, BlackPixel(display, DefaultScreen(display)));
  }
  XEvent event;
  XNextEvent(display, &event);
  if (event.type == Expose && gc != nullptr) {
    XFillRectangle(display, window, gc, 0, 0, static_cast<unsigned int>(width), static_cast<unsigned int>(height));
  }
  XFlush(display);
  XSync(display, False);
  if (gc != nullptr) {
    XFreeGC(display, gc);
  }
}

}  // namespace

int CPictureAdapter::CreateWindow(Display* display, int x, int y, int width, int height) {
  const Operation op{__FUNCTION__};
  const FieldLock fields(m_fields);
  const Window window = IsCarried(width, height) ? CreateBlackWindow(display, x, y, width, height) : kNoWindow;
  LOG_BLUE(op, "create window ID : 0x%x", Hex32(window));
  if (window != kNoWindow) {
    XSetWindowAttributes attributes{};
    attributes.override_redirect = False;
    XChangeWindowAttributes(display, window, CWOverrideRedirect, &attributes);
  }
  SetStateBelow(op, display, window);
  const Atom hintSupport = XInternAtom(display, "_E_WINDOW_AUX_HINT_SUPPORT", False);
  const Atom hint = XInternAtom(display, "_E_WINDOW_AUX_HINT", False);
  const Window focused = FocusedWindow(op);
  const unsigned long supported = 1;
  ChangeProperty(display, window, hintSupport, XA_CARDINAL, 32, PropModeAppend, &supported, 1);
  auto* hints = static_cast<char*>(std::malloc(kHintCapacity));
  if (hints == nullptr) {
    LOG_RED(op, "malloc hints failed.");
    if (window != kNoWindow) {
      XDestroyWindow(display, window);
    }
    return 0;
  }
  std::memset(hints, 0, kHintCapacity);
  const unsigned int parent = m_taskID != 0 ? Hex32(m_taskID) : Hex32(focused);
  LOG_BLUE(op, "set parent win_id: %x", parent);
  std::snprintf(hints, kHintCapacity - 1,
                "0:wm.policy.win.zone.desk.layout.launch.parent:%x,1:wm.policy.win.user.geometry:1", parent);
  // The terminating zero is part of the property.
  const int hintBytes = static_cast<int>(std::strlen(hints)) + 1;
  ChangeProperty(display, window, hint, XA_STRING, 8, PropModeAppend, hints, hintBytes);
  std::free(hints);
  if (window != kNoWindow) {
    XSelectInput(display, window, ExposureMask);
    XLowerWindow(display, window);
    XMapWindow(display, window);
    PaintFirstContents(display, window, width, height);
  } else {
    XFlush(display);
    XSync(display, False);
  }
  m_cWin = window;
  m_madeWindow = window;
  return 1;
}

}  // namespace olm
