// SPDX-License-Identifier: Apache-2.0
/// Commands from eight threads, keys from the store, reports of the library and the end of the application, all at
/// random against each other.
#include <array>
#include <memory>
#include <vector>

#include "tests/engine/storm/Commands.h"
#include "tests/engine/storm/Keys.h"
#include "tests/engine/storm/Storm.h"
#include "tests/kit/Journal.h"
#include "tests/kit/Workers.h"
#include "tests/kit/World.h"

namespace storm {
namespace {

constexpr size_t kCommandThreads = 8;
constexpr size_t kOperationsOfAnEngine = 400;

/// Whether the adapter of the present engine is known to be gone.
std::atomic<bool> g_adapterGone{true};
std::atomic<size_t> g_events{0};
thread_local size_t t_events = 0;

void CountEvent(int) {
  t_events += 1;
  g_events += 1;
  Check(!g_adapterGone, "an event after the adapter is gone");
}

/// Keeps the others at the commands' pace: each command pays for a few of their steps.
class Pace {
 public:
  void Pay(int steps) {
    m_steps += steps;
    m_steps.notify_all();
  }
  /// Waits for a step that is paid for.
  void Take() {
    int steps = m_steps;
    while (steps <= 0 || !m_steps.compare_exchange_weak(steps, steps - 1)) {
      if (steps <= 0) m_steps.wait(steps);
      steps = m_steps;
    }
  }

 private:
  std::atomic<int> m_steps{0};
};

Pace g_reports;
Pace g_keys;
std::atomic<size_t> g_commands{0};  ///< that the present engine has had

void SendCommands(olm::CEmpEnginePicture& engine, size_t count, unsigned int seed, Watchdog& watchdog) {
  Random random(seed);
  for (size_t i = 0; i < count; ++i) {
    const Command& command = PickCommand(random);
    const auto& params = command.params;
    const std::string result = Send(engine, command.name, params[0], params[1], params[2], params[3]);
    Check(!result.empty(), std::string(command.name) + " writes no result");
    g_commands += 1;
    g_reports.Pay(4);
    g_keys.Pay(1);
    watchdog.Progress();
  }
}

/// The library's reporting thread: whatever record has a callback may report at any time.
class Reporter {
 public:
  explicit Reporter(unsigned int seed) : m_random(seed), m_thread([this] { Report(); }) {}
  ~Reporter() {
    m_over = true;
    g_reports.Pay(1);
    m_thread.join();
  }

 private:
  void Report() {
    while (!m_over) {
      g_reports.Take();
      ReportOne();
    }
  }
  /// Sends exactly the events that belong to the report, before the callback returns.
  void ReportOne() {
    const size_t before = t_events;
    const unsigned int kind = Pick(m_random, 6);
    const std::array<size_t, 6> events = {0, 1, 2, 1, 2, 2};
    const bool reported = Fire(kind);
    const size_t expected = reported ? events[kind] : 0;
    Check(t_events - before == expected, "events lost or too many for report " + std::to_string(kind));
  }
  static bool Fire(unsigned int kind) {
    switch (kind) {
      case 0:
        return kit::FireParse(0);
      case 1:
        return kit::FireParse(1);
      case 2:
        return kit::FireDecode(3);
      case 3:
        return kit::FireDecode(4);
      case 4:
        return kit::FireEffect(8);
      default:
        return kit::FireEffect(9);
    }
  }

  Random m_random;
  std::atomic<bool> m_over{false};
  std::thread m_thread;
};

/// The application: sets its state key until the engine has ended; more often than not it ends itself before.
class Application {
 public:
  Application(const void* engine, unsigned int seed)
      : m_engine(engine), m_random(seed), m_thread([this] { SetKeys(); }) {}
  ~Application() {
    m_over = true;
    g_keys.Pay(1);
    m_thread.join();
  }

 private:
  void SetKeys() {
    constexpr std::array<const char*, 4> kStates = {"pause", "resume", "resume", "Pause"};
    const size_t lastCommand = Pick(m_random, kOperationsOfAnEngine);
    while (!m_over) {
      g_keys.Take();
      const bool ends = g_commands >= lastCommand;
      SetKey(m_engine, ends ? "destroy" : kStates[Pick(m_random, kStates.size())]);
      Check(AwaitDeliveries(m_engine), "a key is not delivered");
    }
  }

  const void* const m_engine;
  Random m_random;
  std::atomic<bool> m_over{false};
  std::thread m_thread;
};

void LiveOfOneEngine(size_t operations, Random& random, Watchdog& watchdog) {
  g_adapterGone = false;
  g_commands = 0;
  auto engine = std::make_unique<olm::CEmpEnginePicture>();
  // Takes the application's identity, so that every subscription is to its key. A "ChangePlayingURL" before it would
  // follow the nameless key, and no later Stop would find that one again.
  Send(*engine, "InitPlayer", "");
  {
    const Application application(engine.get(), random());
    std::vector<std::thread> threads;
    for (size_t i = 0; i < kCommandThreads; ++i) {
      threads.emplace_back(SendCommands, std::ref(*engine), operations / kCommandThreads, random(), std::ref(watchdog));
    }
    for (auto& thread : threads) thread.join();
    if (Pick(random, 2) == 0) StopDeliveries(engine.get());
  }
  StopDeliveries(engine.get());
  engine.reset();
  g_adapterGone = true;
}

}  // namespace

bool Crossfire(size_t operations, unsigned int seed) {
  Watchdog watchdog("crossfire");
  Random random(seed);
  const size_t failedBefore = FailedChecks();
  const size_t violationsBefore = kit::Violations();
  kit::OnEvent(&CountEvent);
  size_t destroyed = 0;
  OnDelivered([&destroyed](const void*, const std::string& value) {
    if (value != "destroy") return;
    g_adapterGone = true;
    destroyed += 1;
  });
  {
    const Reporter reporter(seed + 1);
    for (size_t done = 0; done < operations; done += kOperationsOfAnEngine) {
      LiveOfOneEngine(kOperationsOfAnEngine, random, watchdog);
    }
  }
  kit::OnEvent(nullptr);
  OnDelivered(nullptr);
  Check(kit::AwaitWorkers(), "a worker does not return");
  Check(g_events > 0, "no event at all: the storm met nothing");
  std::printf("crossfire: %zu events, %zu adapters destroyed by their application\n", g_events.load(), destroyed);
  return FailedChecks() == failedBefore && kit::Violations() == violationsBefore;
}

}  // namespace storm
