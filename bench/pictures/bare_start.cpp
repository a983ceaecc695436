// SPDX-License-Identifier: Apache-2.0
/// bare_start: what any program with the engine's three large libraries costs to start. Links GLib, Xlib and ecore_x,
/// calls ecore_x_init, says "ready" on a line and waits for the end of its input.
#include <Ecore_X.h>
#include <X11/Xlib.h>
#include <glib.h>

#include <cstdio>
#include <cstdlib>

int main() {
  setenv("ECORE_NO_SYSTEM_MODULES", "1", 1);
  GMainContext* context = g_main_context_new();
  Display* display = XOpenDisplay(nullptr);
  if (display == nullptr || ecore_x_init(nullptr) == 0) {
    std::fprintf(stderr, "bare_start: no X server; set DISPLAY\n");
    return 2;
  }
  std::puts("ready");
  std::fflush(stdout);
  std::getchar();
  XCloseDisplay(display);
  g_main_context_unref(context);
  return 0;
}
