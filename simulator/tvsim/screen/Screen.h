// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_TVSIM_SCREEN_SCREEN_H
#define SIMULATOR_TVSIM_SCREEN_SCREEN_H

#include <xcb/xcb.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "simulator/base/CHandle.h"
#include "simulator/base/Result.h"
#include "simulator/tvsim/screen/Picture.h"

namespace sim::tvsim {

/// The display that the engine always uses.
inline constexpr const char* kDisplay = ":0";

/// tvsim's own connection to the television's X server; what it set up there lasts as long as the connection.
class Screen {
 public:
  /// Errors: no X server answers on ":0".
  static Result<std::unique_ptr<Screen>> Connect();

  /// A new connection in the place of one that is lost; what was set up has to be set up again. Errors: as `Connect`;
  /// the lost one stays.
  Status Reconnect();
  /// Whether the server has closed the connection. Does not wait.
  bool IsLost() const;
  /// Waits for the server's answer to a question, the end of the connection, or the end of `patience`.
  void AwaitAnswer(std::chrono::milliseconds patience);
  /// Of the connection; polls as hung up once it is lost.
  int Descriptor() const { return xcb_get_file_descriptor(m_connection.get()); }
  /// The X server's process; 0 where that cannot be seen from here.
  pid_t ServerProcess() const;

  int Width() const { return m_screen->width_in_pixels; }
  int Height() const { return m_screen->height_in_pixels; }

  /// A black background that compositors show too.
  void PaintBackgroundBlack();

  /// True once a window that somebody makes is mapped and exposed, which is what the engine waits for without end;
  /// false after `patience`. A window manager that has just announced itself may still lose such a request.
  bool AwaitWindowsAppear(std::chrono::milliseconds patience);

  /// True once a window manager, or a compositor, has announced itself; false after `patience`.
  bool AwaitWindowManager(std::chrono::milliseconds patience);
  bool AwaitCompositor(std::chrono::milliseconds patience);

  bool HasWindowManager();
  bool HasCompositor();

  /// Holds the root's windows redirected from now on: without that a window which another one covers is never exposed,
  /// and the engine waits for its window's first exposure.
  /// Errors: the server lacks the Composite extension.
  Status EnsureRedirected();

  /// What the screen shows now, in the size that it has by now. Errors: the connection is lost, or the screen is not of
  /// 24 or 32 bits.
  Result<Picture> Capture();

  /// What the screen shows once two captures in a row agree: a compositor paints some milliseconds after its clients.
  /// The newest capture when that has not happened within `patience`, in an animation for example.
  /// `wait` lets a time pass.
  Result<Picture> CaptureWhenCalm(std::chrono::milliseconds patience,
                                  const std::function<void(std::chrono::milliseconds)>& wait);

 private:
  struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
  };

  Screen(xcb_connection_t* connection, xcb_screen_t* screen) : m_connection(connection), m_screen(screen) {}

  xcb_atom_t Atom(const std::string& name);
  bool WindowAppears();
  bool RootHas(const std::string& property);

  std::unique_ptr<xcb_connection_t, Disconnect> m_connection;
  xcb_screen_t* m_screen;
};

}  // namespace sim::tvsim

#endif
