// SPDX-License-Identifier: Apache-2.0
/// GLib's main loop, with nothing in it: it runs until it is told to quit. As with the real one, a quit that comes
/// before the run is lost.
#include <glib.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>

#include "tests/kit/Journal.h"
#include "tests/kit/Names.h"
#include "tests/kit/Script.h"
#include "tests/kit/World.h"

struct _GMainLoop {
  std::mutex mutex;
  std::condition_variable changed;
  bool running = false;
};

namespace kit {
namespace {

struct Loops {
  std::mutex mutex;
  std::deque<_GMainLoop> all;  ///< nobody unreferences a loop
};

Loops& TheLoops() {
  static auto& loops = *new Loops;  // never destroyed: what is called while the process ends asks for it too
  return loops;
}

}  // namespace

bool LoopRuns(GMainLoop* loop) {
  return g_main_loop_is_running(loop) != FALSE;
}

void QuitLoop(GMainLoop* loop) {
  g_main_loop_quit(loop);
}

void ResetGlib() {
  const std::lock_guard<std::mutex> lock(TheLoops().mutex);
  TheLoops().all.clear();
}

}  // namespace kit

using namespace kit;

GMainLoop* g_main_loop_new(GMainContext* context, gboolean is_running) {
  Call call("g_main_loop_new");
  call.Arg(context == nullptr ? "NULL" : "context").Arg(is_running != FALSE ? "TRUE" : "FALSE");
  const std::lock_guard<std::mutex> lock(TheLoops().mutex);
  GMainLoop* loop = call.Fails() ? nullptr : &TheLoops().all.emplace_back();
  call.Done(loop == nullptr ? "NULL" : NameNew(Kind::kLoop, loop));
  return loop;
}

void g_main_loop_run(GMainLoop* loop) {
  Call("g_main_loop_run").Arg(NameOf(Kind::kLoop, loop)).DoneVoid();
  if (loop == nullptr) return;
  std::unique_lock<std::mutex> lock(loop->mutex);
  loop->running = true;
  loop->changed.wait(lock, [loop] { return !loop->running; });
}

void g_main_loop_quit(GMainLoop* loop) {
  Call("g_main_loop_quit").Arg(NameOf(Kind::kLoop, loop)).DoneVoid();
  if (loop == nullptr) return;
  const std::lock_guard<std::mutex> lock(loop->mutex);
  loop->running = false;
  loop->changed.notify_all();
}

gboolean g_main_loop_is_running(GMainLoop* loop) {
  const std::lock_guard<std::mutex> lock(loop->mutex);
  return loop->running ? TRUE : FALSE;
}
