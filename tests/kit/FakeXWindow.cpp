// SPDX-License-Identifier: Apache-2.0
/// Windows and images of the faked X server, and ecore_x.
#include <X11/Xatom.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <mutex>
#include <set>

#include "tests/kit/FakeXlib.h"
#include "tests/kit/Journal.h"
#include "tests/kit/Names.h"
#include "tests/kit/Script.h"
#include "tests/kit/World.h"

using namespace kit;

extern "C" {
// As Ecore_X.h declares them; that header would bring the whole library with it.
int ecore_x_init(const char* name);
unsigned int ecore_x_window_focus_get(void);
}

namespace {

constexpr Window kWindowBase = 0x400000;
constexpr int kDepth = 24;

const void* AsAddress(Window window) {
  return reinterpret_cast<const void*>(window);
}

/// A window's number counts from the base.
Window NewWindow() {
  static auto& mutex = *new std::mutex;  // never destroyed: what is called while the process ends asks for it too
  const std::lock_guard<std::mutex> lock(mutex);
  const Window window = kWindowBase + static_cast<Window>(NextNumber(Kind::kWindow));
  NameNew(Kind::kWindow, AsAddress(window));
  return window;
}

std::string PropertyType(Atom type) {
  switch (type) {
    case XA_ATOM:
      return "ATOM";
    case XA_CARDINAL:
      return "CARDINAL";
    case XA_STRING:
      return "STRING";
    default:
      return AtomName(type);
  }
}

std::string PropertyData(Atom type, int format, const unsigned char* data, int elements) {
  if (format == 8) return Quoted({reinterpret_cast<const char*>(data), static_cast<size_t>(elements)});
  std::string text;
  for (int i = 0; i < elements; ++i) {
    unsigned long element = 0;  // elements of format 32 are longs in the client's memory
    std::copy_n(data + static_cast<size_t>(i) * sizeof element, sizeof element,
                reinterpret_cast<unsigned char*>(&element));
    text += (text.empty() ? "" : ", ") + (type == XA_ATOM ? AtomName(element) : std::to_string(element));
  }
  return "{" + text + "}";
}

std::string EventMask(long mask) {
  return mask == ExposureMask ? "ExposureMask" : std::to_string(mask);
}

std::string ImageName(const XImage* image) {
  if (image != nullptr && !IsAlive(Kind::kImage, image)) Violation("an image that does not exist is used");
  return NameOf(Kind::kImage, image);
}

std::string ImageState(const XImage* image) {
  const std::string name = ImageName(image);
  if (!IsAlive(Kind::kImage, image)) return name;
  if (image->data == nullptr) return name + "{no data}";
  if (!Recording()) return name;
  const size_t bytes = static_cast<size_t>(image->bytes_per_line) * static_cast<size_t>(image->height);
  const bool zero = std::all_of(image->data, image->data + bytes, [](char byte) { return byte == 0; });
  return name + (zero ? "" : "{not zero}");
}

constexpr unsigned int kBytesPerPixel = 4;

/// Images that exist. One whose connection is never closed stays, by rule, until the process ends; it is known here.
std::set<XImage*>& Images() {
  static auto& images = *new std::set<XImage*>;
  return images;
}
std::mutex& ImagesMutex() {
  static auto& mutex = *new std::mutex;
  return mutex;
}

XImage* KeepImage(XImage* image) {
  const std::lock_guard lock(ImagesMutex());
  Images().insert(image);
  return image;
}

int DestroyImage(XImage* image) {
  Call("XDestroyImage", "x").Arg(ImageName(image)).DoneVoid();
  Release(Kind::kBlock, image->data);
  Release(Kind::kImage, image);
  {
    const std::lock_guard lock(ImagesMutex());
    Images().erase(image);
  }
  std::free(image->data);
  delete image;
  return 1;
}

}  // namespace

Window XCreateSimpleWindow(Display* display, Window parent, int x, int y, unsigned int width, unsigned int height,
                           unsigned int borderWidth, unsigned long border, unsigned long background) {
  Call call("XCreateSimpleWindow", "x");
  call.Arg(DisplayName(display)).Arg(WindowName(parent)).Arg(x).Arg(y).Arg(width).Arg(height).Arg(borderWidth);
  call.Arg(PixelName(border)).Arg(PixelName(background));
  const Window window = call.Fails() ? None : NewWindow();
  call.Done(WindowName(window));
  return window;
}

int XChangeWindowAttributes(Display* display, Window window, unsigned long mask, XSetWindowAttributes* attributes) {
  Call call("XChangeWindowAttributes", "x");
  call.Arg(DisplayName(display)).Arg(WindowName(window));
  if (mask == CWOverrideRedirect) {
    const bool on = attributes->override_redirect != False;
    call.Arg("CWOverrideRedirect").Arg(std::string("{override_redirect=") + (on ? "True" : "False") + "}");
  } else {
    call.Arg(static_cast<long>(mask)).Arg("attributes");
  }
  call.DoneVoid();
  return 1;
}

int XChangeProperty(Display* display, Window window, Atom property, Atom type, int format, int mode,
                    const unsigned char* data, int elements) {
  Call call("XChangeProperty", "x");
  call.Arg(DisplayName(display)).Arg(WindowName(window)).Arg(AtomName(property)).Arg(PropertyType(type)).Arg(format);
  call.Arg(mode == PropModeReplace ? "PropModeReplace" : mode == PropModeAppend ? "PropModeAppend" : "PropModePrepend");
  call.Arg(PropertyData(type, format, data, elements)).Arg(elements).DoneVoid();
  return 1;
}

int XSelectInput(Display* display, Window window, long mask) {
  Call("XSelectInput", "x").Arg(DisplayName(display)).Arg(WindowName(window)).Arg(EventMask(mask)).DoneVoid();
  return 1;
}

int XLowerWindow(Display* display, Window window) {
  Call("XLowerWindow", "x").Arg(DisplayName(display)).Arg(WindowName(window)).DoneVoid();
  return 1;
}

int XMapWindow(Display* display, Window window) {
  Call("XMapWindow", "x").Arg(DisplayName(display)).Arg(WindowName(window)).DoneVoid();
  return 1;
}

int XMoveResizeWindow(Display* display, Window window, int x, int y, unsigned int width, unsigned int height) {
  Call call("XMoveResizeWindow", "x");
  call.Arg(DisplayName(display)).Arg(WindowName(window)).Arg(x).Arg(y).Arg(width).Arg(height).DoneVoid();
  return 1;
}

int XDestroyWindow(Display* display, Window window) {
  Call("XDestroyWindow", "x").Arg(DisplayName(display)).Arg(WindowName(window)).DoneVoid();
  if (window != None && !IsAlive(Kind::kWindow, AsAddress(window)))
    Violation("a window that does not exist is destroyed");
  Release(Kind::kWindow, AsAddress(window));
  return 1;
}

int XFillRectangle(Display* display, Drawable drawable, GC gc, int x, int y, unsigned int width, unsigned int height) {
  Call call("XFillRectangle", "x");
  call.Arg(DisplayName(display)).Arg(WindowName(drawable)).Arg(GCName(display, gc));
  call.Arg(x).Arg(y).Arg(width).Arg(height).DoneVoid();
  return 1;
}

XImage* XCreateImage(Display* display, Visual* visual, unsigned int depth, int format, int offset, char* data,
                     unsigned int width, unsigned int height, int bitmapPad, int bytesPerLine) {
  Call call("XCreateImage", "x");
  call.Arg(DisplayName(display)).Arg(VisualName(Find(display), visual)).Arg(depth);
  call.Arg(format == ZPixmap ? "ZPixmap" : std::to_string(format)).Arg(offset).Arg(data == nullptr ? "NULL" : "data");
  call.Arg(width).Arg(height).Arg(bitmapPad).Arg(bytesPerLine);
  if (call.Fails() || width > INT_MAX / kBytesPerPixel) {  // as Xlib: a row that no int can measure makes no image
    call.Done("NULL");
    return nullptr;
  }
  auto* image = KeepImage(new XImage{});
  image->width = static_cast<int>(width);
  image->height = static_cast<int>(height);
  image->depth = kDepth;
  image->bits_per_pixel = 32;
  image->bytes_per_line = bytesPerLine != 0 ? bytesPerLine : static_cast<int>(width * kBytesPerPixel);
  image->data = data;
  image->f.destroy_image = &DestroyImage;
  call.Done(NameNew(Kind::kImage, image));
  return image;
}

int XPutImage(Display* display, Drawable drawable, GC gc, XImage* image, int fromX, int fromY, int x, int y,
              unsigned int width, unsigned int height) {
  Call call("XPutImage", "x");
  call.Arg(DisplayName(display)).Arg(WindowName(drawable)).Arg(GCName(display, gc)).Arg(ImageState(image));
  call.Arg(fromX).Arg(fromY).Arg(x).Arg(y).Arg(width).Arg(height).DoneVoid();
  return 1;
}

int ecore_x_init(const char* name) {
  Call call("ecore_x_init");
  call.Arg(name == nullptr ? "NULL" : Quoted(name));
  const int result = call.Fails() ? 0 : 1;
  call.Done(std::to_string(result));
  return result;
}

unsigned int ecore_x_window_focus_get() {
  const unsigned int window = world().focusedWindow;
  Call("ecore_x_window_focus_get").Done(WindowName(window));
  return window;
}
