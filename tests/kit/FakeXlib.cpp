// SPDX-License-Identifier: Apache-2.0
/// Connections, atoms, events and graphics contexts of the faked X server.
#include "tests/kit/FakeXlib.h"

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <mutex>
#include <type_traits>
#include <vector>

#include "tests/kit/Journal.h"
#include "tests/kit/Names.h"
#include "tests/kit/Script.h"
#include "tests/kit/World.h"

struct _XGC {
  Display* display;
};

namespace kit {

/// A connection: what Xlib's macros read of a Display, and nothing else.
struct FakeDisplay {
  std::remove_pointer_t<_XPrivDisplay> part{};
  Screen screens[kScreens]{};
  Visual visuals[kScreens]{};
};

namespace {

struct Server {
  std::mutex mutex;
  std::map<Display*, std::unique_ptr<FakeDisplay>> displays;
  std::vector<std::unique_ptr<_XGC>> contexts;
  std::vector<std::string> atoms;  ///< of these the first is atom 101
};

constexpr Atom kFirstAtom = 101;

Server& TheServer() {
  static auto& server = *new Server;  // never destroyed: what is called while the process ends asks for it too
  return server;
}

std::unique_ptr<FakeDisplay> MakeDisplay() {
  auto display = std::make_unique<FakeDisplay>();
  // Lines print the low half of its address, and a half of zeros would read as no display.
  if (static_cast<uint32_t>(reinterpret_cast<uintptr_t>(display.get())) == 0) {
    const auto unreadable = std::move(display);
    display = std::make_unique<FakeDisplay>();
  }
  for (int i = 0; i < kScreens; ++i) {
    Screen& screen = display->screens[i];
    screen.root = kFirstRoot + static_cast<Window>(i);
    screen.black_pixel = kFirstBlack + static_cast<unsigned long>(i);
    screen.white_pixel = 0xFFFFFF;
    screen.width = world().screenWidth;
    screen.height = world().screenHeight;
    screen.root_visual = &display->visuals[i];
    screen.root_depth = 24;
    screen.display = reinterpret_cast<Display*>(display.get());
  }
  display->part.screens = display->screens;
  display->part.nscreens = kScreens;
  display->part.default_screen = world().defaultScreen;
  return display;
}

const char* EventName(int type) {
  switch (type) {
    case Expose:
      return "Expose";
    case MapNotify:
      return "MapNotify";
    case PropertyNotify:
      return "PropertyNotify";
    case ConfigureNotify:
      return "ConfigureNotify";
    default:
      return "other event";
  }
}

}  // namespace

FakeDisplay* Find(Display* display) {
  if (display == nullptr) return nullptr;
  if (IsAlive(Kind::kDisplay, display)) return reinterpret_cast<FakeDisplay*>(display);
  Violation("a connection that is not open is used");
  return nullptr;
}

std::string DisplayName(Display* display) {
  Find(display);
  return NameOf(Kind::kDisplay, display);
}

std::string WindowName(Window window) {
  if (static_cast<unsigned int>(window) == 0xFFFFFFFFU) return "-1";
  if (window >= kFirstRoot && window < kFirstRoot + kScreens) {
    return "root(" + std::to_string(window - kFirstRoot) + ")";
  }
  char text[32];
  std::snprintf(text, sizeof text, "0x%lx", window);
  return text;
}

std::string AtomName(Atom atom) {
  if (atom == None) return "None";
  const std::lock_guard<std::mutex> lock(TheServer().mutex);
  const auto& atoms = TheServer().atoms;
  return atom >= kFirstAtom && atom < kFirstAtom + atoms.size() ? atoms[atom - kFirstAtom] : std::to_string(atom);
}

std::string GCName(Display* display, GC gc) {
  if (gc != nullptr && !IsAlive(Kind::kGC, gc)) {
    Violation("a graphics context that does not exist is used");
  } else if (gc != nullptr && gc->display != display) {
    Violation("a graphics context of another connection is used");
  }
  return NameOf(Kind::kGC, gc);
}

std::string PixelName(unsigned long pixel) {
  if (pixel >= kFirstBlack && pixel < kFirstBlack + kScreens)
    return "black(" + std::to_string(pixel - kFirstBlack) + ")";
  return std::to_string(pixel);
}

std::string VisualName(const FakeDisplay* display, const Visual* visual) {
  for (int i = 0; display != nullptr && i < kScreens; ++i) {
    if (visual == &display->visuals[i]) return "visual(" + std::to_string(i) + ")";
  }
  return visual == nullptr ? "NULL" : "visual (unknown)";
}

void ResetXlib() {
  const std::lock_guard<std::mutex> lock(TheServer().mutex);
  TheServer().displays.clear();
  TheServer().contexts.clear();
  TheServer().atoms.clear();
}

}  // namespace kit

using namespace kit;

Status XInitThreads() {
  Call call("XInitThreads", "x");
  const int result = call.Fails() ? 0 : 1;
  call.Done(std::to_string(result));
  return result;
}

Display* XOpenDisplay(const char* name) {
  Call call("XOpenDisplay", "x");
  call.Arg(name == nullptr ? "NULL" : Quoted(name));
  if (call.Fails()) {
    call.Done("NULL");
    return nullptr;
  }
  auto made = MakeDisplay();
  auto* display = reinterpret_cast<Display*>(made.get());
  {
    const std::lock_guard<std::mutex> lock(TheServer().mutex);
    TheServer().displays[display] = std::move(made);
  }
  call.Done(NameNew(Kind::kDisplay, display));
  return display;
}

int XCloseDisplay(Display* display) {
  Call("XCloseDisplay", "x").Arg(DisplayName(display)).DoneVoid();
  Release(Kind::kDisplay, display);
  const std::lock_guard<std::mutex> lock(TheServer().mutex);
  // As in Xlib, what was made on the connection goes with it.
  std::erase_if(TheServer().contexts, [display](const auto& gc) {
    if (gc->display != display) return false;
    Release(Kind::kGC, gc.get());
    return true;
  });
  TheServer().displays.erase(display);
  return 0;
}

int XSetCloseDownMode(Display* display, int mode) {
  const std::string name = mode == RetainTemporary   ? "RetainTemporary"
                           : mode == RetainPermanent ? "RetainPermanent"
                                                     : "DestroyAll";
  Call("XSetCloseDownMode", "x").Arg(DisplayName(display)).Arg(name).DoneVoid();
  return 1;
}

Atom XInternAtom(Display* display, const char* name, Bool onlyIfExists) {
  Call call("XInternAtom", "x");
  call.Arg(DisplayName(display)).Arg(Quoted(name)).Arg(onlyIfExists != False ? "True" : "False");
  if (call.Fails()) {
    call.Done("None");
    return None;
  }
  Atom atom = None;
  {
    const std::lock_guard<std::mutex> lock(TheServer().mutex);
    auto& atoms = TheServer().atoms;
    const auto found = std::find(atoms.begin(), atoms.end(), name);
    atom = kFirstAtom + static_cast<Atom>(found - atoms.begin());
    if (found == atoms.end()) atoms.emplace_back(name);
  }
  call.Done(name);
  return atom;
}

GC XCreateGC(Display* display, Drawable drawable, unsigned long mask, XGCValues* values) {
  Call call("XCreateGC", "x");
  call.Arg(DisplayName(display)).Arg(WindowName(drawable)).Arg(static_cast<long>(mask));
  call.Arg(values == nullptr ? "NULL" : "values");
  if (call.Fails()) {
    call.Done("NULL");
    return nullptr;
  }
  auto made = std::make_unique<_XGC>(_XGC{display});
  const GC gc = made.get();
  {
    const std::lock_guard<std::mutex> lock(TheServer().mutex);
    TheServer().contexts.push_back(std::move(made));
  }
  call.Done(NameNew(Kind::kGC, gc));
  return gc;
}

int XSetForeground(Display* display, GC gc, unsigned long pixel) {
  Call("XSetForeground", "x").Arg(DisplayName(display)).Arg(GCName(display, gc)).Arg(PixelName(pixel)).DoneVoid();
  return 1;
}

int XFreeGC(Display* display, GC gc) {
  Call("XFreeGC", "x").Arg(DisplayName(display)).Arg(GCName(display, gc)).DoneVoid();
  Release(Kind::kGC, gc);
  const std::lock_guard<std::mutex> lock(TheServer().mutex);
  std::erase_if(TheServer().contexts, [gc](const auto& context) { return context.get() == gc; });
  return 1;
}

int XNextEvent(Display* display, XEvent* event) {
  *event = XEvent{};
  event->type = world().firstEvent;
  if (world().eventsQueued > 0) --world().eventsQueued;
  Call("XNextEvent", "x").Arg(DisplayName(display)).Out(EventName(event->type)).DoneVoid();
  return 0;
}

/// Asks nobody outside the process, so that it leaves no trace.
int XEventsQueued(Display*, int) {
  return world().eventsQueued;
}

int XFlush(Display* display) {
  Call("XFlush", "x").Arg(DisplayName(display)).DoneVoid();
  return 1;
}

int XSync(Display* display, Bool discard) {
  Call("XSync", "x").Arg(DisplayName(display)).Arg(discard != False ? "True" : "False").DoneVoid();
  return 1;
}

// The macros of these read the same members.
int XDefaultScreen(Display* display) {
  return Find(display)->part.default_screen;
}
int XDisplayWidth(Display* display, int screen) {
  return Find(display)->screens[screen].width;
}
int XDisplayHeight(Display* display, int screen) {
  return Find(display)->screens[screen].height;
}
Window XRootWindow(Display* display, int screen) {
  return Find(display)->screens[screen].root;
}
Window XDefaultRootWindow(Display* display) {
  return XRootWindow(display, XDefaultScreen(display));
}
unsigned long XBlackPixel(Display* display, int screen) {
  return Find(display)->screens[screen].black_pixel;
}
Visual* XDefaultVisual(Display* display, int screen) {
  return Find(display)->screens[screen].root_visual;
}
int XDefaultDepth(Display* display, int screen) {
  return Find(display)->screens[screen].root_depth;
}
Screen* XScreenOfDisplay(Display* display, int screen) {
  return &Find(display)->screens[screen];
}
Screen* XDefaultScreenOfDisplay(Display* display) {
  return XScreenOfDisplay(display, XDefaultScreen(display));
}
int XWidthOfScreen(Screen* screen) {
  return screen->width;
}
int XHeightOfScreen(Screen* screen) {
  return screen->height;
}
Window XRootWindowOfScreen(Screen* screen) {
  return screen->root;
}
unsigned long XBlackPixelOfScreen(Screen* screen) {
  return screen->black_pixel;
}
