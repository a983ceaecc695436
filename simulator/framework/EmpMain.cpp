// SPDX-License-Identifier: Apache-2.0
#include <malloc.h>

#include <atomic>
#include <csignal>
#include <cstdlib>
#include <memory>

#include "platform/olm_emp.h"
#include "simulator/base/Log.h"
#include "simulator/framework/EngineProcess.h"

namespace olm {
namespace {

/// Of this size on, memory is the system's again when it is freed. The C library raises the limit to the largest block
/// that was freed, and then the images of windows of many sizes leave holes in a heap that never gets smaller.
constexpr int kOwnMapping = 128 << 10;

std::atomic<bool> s_is_running{false};

/// Xlib does so when its connection is lost, and behind another error handler without a word.
void TellEarlyExit() {
  if (s_is_running) {
    sim::Log(sim::LogLevel::kError, "framework", "a library ends the process, as Xlib does when the X server has gone");
  }
}

}  // namespace

int EmpMain(int /*argc*/, char** /*argv*/, CEmpAppBase* app) {
  mallopt(M_MMAP_THRESHOLD, kOwnMapping);
  // Without it ecore, when the engine first asks for the focused window, loads modules that fill the log.
  setenv("ECORE_NO_SYSTEM_MODULES", "1", 1);
  // An application that is gone is seen at the write that fails.
  std::signal(SIGPIPE, SIG_IGN);

  s_is_running = true;
  std::atexit(TellEarlyExit);

  sim::framework::EngineProcess process{std::unique_ptr<CEmpAppBase>(app)};
  const sim::Status started = process.Start();
  if (started) {
    process.Run();
  } else {
    sim::Log(sim::LogLevel::kError, "framework", "cannot start: " + started.error().reason);
  }
  process.End();
  s_is_running = false;
  return started ? 0 : 1;
}

}  // namespace olm
