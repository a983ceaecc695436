// SPDX-License-Identifier: Apache-2.0
/// What the faked outside answers. A test writes it before it acts; nothing guards it.
#ifndef TESTS_KIT_WORLD_H
#define TESTS_KIT_WORLD_H

#include <X11/Xlib.h>

#include <string>

#include "platform/vconf.h"

typedef struct _GMainLoop GMainLoop;

namespace kit {

struct World {
  int screenWidth = 1920;
  int screenHeight = 1080;
  int defaultScreen = 0;  ///< of two; both are of the size above
  unsigned int focusedWindow = 0x600001;
  int firstEvent = Expose;  ///< type of every event that XNextEvent brings
  int eventsQueued = 0;     ///< that have come already; XNextEvent takes one of them
  int pictureWidth = 640;
  int pictureHeight = 480;
  int pictureType = 0;
  float zoomRatio = 1.0F;
  std::string effectList = "fade\nwipe\n";  ///< of 400 bytes and more the first 400 are filled, without a NUL
  int effectAvailable = 0;                  ///< the library's answer; 0 = available
  std::string desktopId = "7";
  std::string appId = "org.example.photos";
  std::string widgetId = "abcd1234.Viewer";
  bool openResult = true;
  bool closeResult = true;
};

World& world();

/// Runs the parse, decode or effect callback that was registered last on a live record, on this thread; false when
/// there is none.
bool FireParse(int result);
bool FireDecode(int result);
bool FireEffect(int result);

/// Hands `value` (null: a key without a value) to the subscribed callback, on this thread; false when nobody follows a
/// key.
bool DeliverKey(const char* value);
/// Hands over this very record, which may be null.
bool DeliverNode(keynode_t* node);

/// The faked main loop from a test's side.
bool LoopRuns(GMainLoop* loop);
void QuitLoop(GMainLoop* loop);

/// Everything of the fakes as it is in a fresh process.
void ResetWorld();
void ResetLumaview();
void ResetVconf();
void ResetXlib();
void ResetGlib();

}  // namespace kit

#endif
