// SPDX-License-Identifier: Apache-2.0
// usage: television_storm PICTURES-FOLDER [--engines N] [--commands N] [--seed N]   (with an X server on ":0")
//
// Engine after engine on the simulator's own libraries: real pictures are decoded, windows come and go, while eight
// threads send commands and an application pauses, resumes and, more often than not, is destroyed at a random moment.
// Every command is answered, nothing is reported once an engine has gone, and no thread stays behind.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "platform/lumaview.h"
#include "simulator/vconf/include/Store.h"
#include "simulator/vconf/include/vconf_simulator.h"
#include "tests/engine/storm/Commands.h"
#include "tests/engine/storm/Storm.h"

namespace storm {
namespace {

namespace fs = std::filesystem;

constexpr size_t kCommandThreads = 8;
constexpr int kPictureShown = 8;
constexpr std::chrono::seconds kThreadsEnd(20);
constexpr const char* kStateKey = "db/KestWebApp/storm";

std::atomic<bool> g_engineGone{true};
std::atomic<size_t> g_shown{0};
std::atomic<size_t> g_events{0};

struct Options {
  std::string folder;
  size_t engines = 20;
  size_t commands = 400;  ///< of an engine
  unsigned int seed = 1;
};

size_t Threads() {
  const fs::directory_iterator tasks("/proc/self/task");
  return static_cast<size_t>(std::distance(begin(tasks), end(tasks)));
}

/// Those of the folder, one that is damaged and one that is missing.
std::vector<std::string> PicturesIn(const fs::path& folder) {
  std::vector<std::string> pictures;
  for (const auto& entry : fs::directory_iterator(folder)) pictures.push_back(fs::absolute(entry.path()));
  if (pictures.empty()) throw std::runtime_error("no pictures in " + folder.string());
  pictures.emplace_back("/proc/self/status");
  pictures.emplace_back("/no/such/picture.jpg");
  return pictures;
}

/// The folder of this process's key-value store and log, which goes with it.
class Session {
 public:
  Session() {
    std::string name = (fs::temp_directory_path() / "storm.XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    m_folder = name;
    setenv("VCONF_SESSION", name.c_str(), 1);
    setenv("OLM_LOG_FILE", (m_folder / "log").c_str(), 1);
    auto store = sim::vconf::Store::Create(m_folder);
    if (!store) throw std::runtime_error(store.error().reason);
    m_store = std::move(*store);
  }
  ~Session() { fs::remove_all(m_folder); }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  void SetState(const char* state) {
    const auto set = m_store->Set(kStateKey, state);
    Check(bool(set), "the state is not set");
  }

 private:
  fs::path m_folder;
  std::unique_ptr<sim::vconf::Store> m_store;
};

/// One engine from its making to its end.
class Life {
 public:
  Life(Session& session, const std::vector<std::string>& pictures, Random& random)
      : m_session(session), m_pictures(pictures), m_random(random) {
    g_engineGone = false;
    m_engine->SetAppInfo(0, "org.example.storm", "storm.television", "");
  }
  ~Life() {
    vconf_stop_deliveries();
    m_engine->Destroy();
    m_engine.reset();
    g_engineGone = true;
  }
  Life(const Life&) = delete;
  Life& operator=(const Life&) = delete;

  void Run(size_t commands, Watchdog& watchdog) {
    Send(*m_engine, "InitPlayer", m_pictures.front());  // takes the application's identity: the key is followed
    std::vector<std::thread> threads;
    for (size_t i = 0; i < kCommandThreads; ++i) {
      threads.emplace_back(
          [this, commands, seed = m_random(), &watchdog] { SendCommands(commands / kCommandThreads, seed, watchdog); });
    }
    SetStates(commands);
    for (auto& thread : threads) thread.join();
  }

 private:
  void SendCommands(size_t count, unsigned int seed, Watchdog& watchdog) {
    Random random(seed);
    for (size_t i = 0; i < count; ++i) {
      const Command& command = PickCommand(random);
      const bool names_picture = std::strstr(command.params[0], "/pictures/") != nullptr;
      const std::string first = names_picture ? m_pictures[Pick(random, Count())] : command.params[0];
      const std::string result =
          Send(*m_engine, command.name, first, command.params[1], command.params[2], command.params[3]);
      Check(!result.empty(), std::string(command.name) + " writes no result");
      m_sent += 1;
      m_sent.notify_one();
      watchdog.Progress();
    }
  }

  /// One state for every few commands; the last is "destroy", unless the commands end before.
  void SetStates(size_t commands) {
    constexpr size_t kCommandsAState = 8;
    const size_t all = commands / kCommandThreads * kCommandThreads;
    const size_t end_at = Pick(m_random, static_cast<unsigned int>(commands + commands / 2));
    for (size_t seen = 0; seen < all; seen = Await(seen, std::min(seen + kCommandsAState, all))) {
      if (seen >= end_at) {
        m_session.SetState("destroy");
        return;
      }
      m_session.SetState(Pick(m_random, 2) == 0 ? "pause" : "resume");
    }
  }

  size_t Await(size_t seen, size_t wanted) {
    while (seen < wanted) {
      m_sent.wait(seen);
      seen = m_sent;
    }
    return seen;
  }

  unsigned int Count() const { return static_cast<unsigned int>(m_pictures.size()); }

  Session& m_session;
  const std::vector<std::string>& m_pictures;
  Random& m_random;
  std::unique_ptr<olm::CEmpEnginePicture> m_engine = std::make_unique<olm::CEmpEnginePicture>();
  std::atomic<size_t> m_sent{0};
};

/// A thread is listed for a moment after its function has returned.
bool AwaitThreads(size_t expected) {
  const auto deadline = std::chrono::steady_clock::now() + kThreadsEnd;
  while (Threads() > expected && std::chrono::steady_clock::now() < deadline) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return Threads() <= expected;
}

/// What the libraries start once, they have started after the first engines.
bool Storm(const Options& options) {
  constexpr size_t kFirstEngines = 3;
  const std::vector<std::string> pictures = PicturesIn(options.folder);
  Session session;
  lumaview_pre_loading();  // while there is one thread: decoders get processes of their own
  Watchdog watchdog("television");
  Random random(options.seed);
  size_t threads = 0;
  for (size_t number = 0; number < options.engines; ++number) {
    Life(session, pictures, random).Run(options.commands, watchdog);
    if (number + 1 == kFirstEngines) threads = Threads();
  }
  if (options.engines > kFirstEngines) {
    Check(AwaitThreads(threads),
          "threads remain: " + std::to_string(Threads()) + ", before " + std::to_string(threads));
  }
  Check(g_shown > 0, "no picture was ever shown: the storm met nothing");
  std::printf("%zu engines, %zu commands each: %zu events, %zu pictures shown\n", options.engines, options.commands,
              g_events.load(), g_shown.load());
  return FailedChecks() == 0;
}

bool Read(int argc, char** argv, Options& options) {
  if (argc < 2 || argc % 2 != 0) return false;
  options.folder = argv[1];
  for (int i = 2; i < argc; i += 2) {
    const std::string name = argv[i];
    const unsigned long value = std::strtoul(argv[i + 1], nullptr, 10);
    if (name == "--engines") {
      options.engines = value;
    } else if (name == "--commands") {
      options.commands = value;
    } else if (name == "--seed") {
      options.seed = static_cast<unsigned int>(value);
    } else {
      return false;
    }
  }
  return true;
}

}  // namespace
}  // namespace storm

/// In the place of the framework's, which has no application to send to here: events end where they are counted.
void olm::CEmpEngineBase::SendEvent(int event, std::string, std::string) {
  storm::Check(!storm::g_engineGone, "an event after the engine has gone");
  storm::g_events += 1;
  storm::g_shown += event == storm::kPictureShown ? 1 : 0;
}

int main(int argc, char** argv) {
  storm::Options options;
  if (!storm::Read(argc, argv, options)) {
    std::fprintf(stderr, "usage: television_storm PICTURES-FOLDER [--engines N] [--commands N] [--seed N]\n");
    return 2;
  }
  std::printf("seed %u\n", options.seed);
  try {
    const bool passed = storm::Storm(options);
    std::printf("%s\n", passed ? "passed" : "FAILED");
    return passed ? 0 : 1;
  } catch (const std::exception& error) {
    std::printf("FAILED: %s\n", error.what());
    return 1;
  }
}
