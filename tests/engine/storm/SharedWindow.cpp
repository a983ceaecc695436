// SPDX-License-Identifier: Apache-2.0
/// Two adapters in one process: commands on one thread, keys waited for, and after each step the window that they
/// share is where the counts say.
#include <array>
#include <memory>

#include "adapter/CPictureAdapter.h"
#include "tests/engine/storm/Keys.h"
#include "tests/engine/storm/Storm.h"
#include "tests/kit/Journal.h"
#include "tests/kit/Names.h"
#include "tests/kit/Workers.h"

namespace storm {
namespace {

using olm::CPictureAdapter;

/// One of the two applications with its engine.
class Application {
 public:
  explicit Application(std::string widgetId) : m_widgetId(std::move(widgetId)) { Start(); }
  ~Application() { End(); }

  void Step(Random& random) {
    switch (Pick(random, 12)) {
      case 0:
      case 1:
        Send(*m_engine, "InitPlayer", "/pictures/a.jpg");
        break;
      case 2:
      case 3:
        Send(*m_engine, "StartPlayback");
        break;
      case 4:
        Send(*m_engine, "Stop");
        break;
      case 5:
        Send(*m_engine, "SetDisplayArea", "0", "0", "16", "9");
        break;
      case 6:
        Send(*m_engine, "EffectShow", "3");
        break;
      case 7:
        Send(*m_engine, "ClearScreen");
        break;
      case 8:
      case 9:
        Deliver("pause");
        break;
      case 10:
        Deliver("resume");
        break;
      default:
        if (Pick(random, 4) == 0) Restart(Pick(random, 2) == 0);
    }
  }

  bool HoldsWindow() const { return Adapter() != nullptr && Adapter()->m_bInitWindow; }
  bool HoldsLibraryDisplay() const { return Adapter() != nullptr && Adapter()->m_bInitDisplay; }
  bool SeesWindow(Window window) const { return !HoldsWindow() || Adapter()->m_cWin == window; }

 private:
  const CPictureAdapter* Adapter() const { return m_engine->GetAdapter(); }

  void Start() {
    m_engine = std::make_unique<olm::CEmpEnginePicture>();
    m_engine->SetAppInfo(0, "org.example.photos", m_widgetId, "");
  }
  void End() {
    StopDeliveries(m_engine.get());
    m_engine.reset();
  }
  void Restart(bool byKey) {
    if (byKey) Deliver("destroy");
    End();
    Start();
  }
  void Deliver(const char* value) {
    if (SetKey(m_engine.get(), value)) Check(AwaitDeliveries(m_engine.get()), "a key is not delivered");
  }

  const std::string m_widgetId;
  std::unique_ptr<olm::CEmpEnginePicture> m_engine;
};

void CheckSharedState(const Application& one, const Application& other) {
  const int holders = (one.HoldsWindow() ? 1 : 0) + (other.HoldsWindow() ? 1 : 0);
  Check(CPictureAdapter::winNum == holders, "winNum is not the number of holders");
  Check((CPictureAdapter::window_id != olm::kNoWindow) == (holders > 0), "window_id does not follow the holders");
  Check(kit::Alive(kit::Kind::kWindow) == (holders > 0 ? 1U : 0U), "another number of windows than the holders need");
  Check(one.SeesWindow(CPictureAdapter::window_id) && other.SeesWindow(CPictureAdapter::window_id),
        "a holder has another window");
  Check(!(one.HoldsLibraryDisplay() && other.HoldsLibraryDisplay()), "both have initialised the library's display");
}

}  // namespace

bool SharedWindow(size_t operations, unsigned int seed) {
  Watchdog watchdog("shared window");
  Random random(seed);
  const size_t failedBefore = FailedChecks();
  const size_t violationsBefore = kit::Violations();
  {
    Application one("one.Viewer");
    Application other("other.Viewer");
    for (size_t i = 0; i < operations && FailedChecks() == failedBefore; ++i) {
      (Pick(random, 2) == 0 ? one : other).Step(random);
      CheckSharedState(one, other);
      watchdog.Progress();
    }
  }
  Check(kit::AwaitWorkers(), "a worker does not return");
  Check(CPictureAdapter::winNum == 0 && CPictureAdapter::window_id == olm::kNoWindow, "a window remains at the end");
  Check(kit::Alive(kit::Kind::kDisplay) == 0, "a connection remains at the end");
  return FailedChecks() == failedBefore && kit::Violations() == violationsBefore;
}

}  // namespace storm
