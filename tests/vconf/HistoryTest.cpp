// SPDX-License-Identifier: Apache-2.0
/// The history of a session as everybody saw it, while writers are killed and everyone is stopped now and then.
#include <gmock/gmock.h>
#include <sys/mman.h>
#include <sys/prctl.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <csignal>
#include <fstream>
#include <map>
#include <random>
#include <sstream>
#include <thread>
#include <vector>

#include "platform/vconf.h"
#include "simulator/vconf/StoreFile.h"
#include "tests/vconf/SessionFixture.h"

namespace sim::vconf {
namespace {

namespace fs = std::filesystem;

constexpr std::array kKeys = {"one", "two", "three"};
constexpr int kWriters = 4;
constexpr int kSetsOfEach = 20000;
constexpr size_t kWatchers = 6;
constexpr const char* kLast = "last";

using History = std::map<std::string, std::vector<std::string>>;  ///< values by key

/// Memory that the processes share: how far each writer has come, whether it is killed or not.
struct Progress {
  std::atomic<int> sets[kWriters];
};

Progress* MakeProgress() {
  void* memory = mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  EXPECT_NE(memory, MAP_FAILED);
  return new (memory) Progress{};
}

/// A watching process: follows every key through the library, writes down what it sees, ends at the last value of all.
class Watcher {
 public:
  explicit Watcher(const fs::path& file) : m_file(file) {}

  bool Run() {
    for (const char* key : kKeys) {
      if (vconf_notify_key_changed(key, &Watcher::OnValue, this) != 0) return false;
    }
    m_file << "ready" << std::endl;
    while (m_lasts < kKeys.size()) g_main_context_iteration(nullptr, TRUE);
    return true;
  }

 private:
  static void OnValue(keynode_t* node, void* user) {
    auto* self = static_cast<Watcher*>(user);
    self->m_file << node->keyname << ' ' << node->value.s << std::endl;
    self->m_lasts += std::string(node->value.s) == kLast ? 1 : 0;
  }

  std::ofstream m_file;
  size_t m_lasts = 0;
};

struct Watching {
  pid_t pid;
  fs::path seen;
};

class GivenHistory : public SessionFixture {
 protected:
  GivenHistory() : m_progress(MakeProgress()) {}
  ~GivenHistory() override { munmap(m_progress, sizeof(Progress)); }

  /// Goes on where the writer before it was killed; what that one was about to set may be set or not.
  pid_t StartWriter(int writer) {
    return Fork([this, writer] {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      const auto store = Store::Open(m_folder);
      std::mt19937 random(static_cast<unsigned>(getpid()));
      while (store && m_progress->sets[writer] < kSetsOfEach) {
        const int number = ++m_progress->sets[writer];
        const std::string value = std::to_string(writer) + ":" + std::to_string(number);
        if (!(*store)->Set(kKeys[random() % kKeys.size()], value)) return false;
      }
      return static_cast<bool>(store);
    });
  }

  Watching StartWatcher() {
    Watching watching{0, m_folder / ("seen-" + std::to_string(m_watched++))};
    watching.pid = Fork([&watching] {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      return Watcher(watching.seen).Run();
    });
    return watching;
  }

  void RestartIfKilled(pid_t* writer, int number) {
    int status = 0;
    if (*writer == 0 || waitpid(*writer, &status, WNOHANG) != *writer) return;
    EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0) << "a writer failed";
    *writer = WIFSIGNALED(status) ? StartWriter(number) : 0;
  }

  /// What stands in the file.
  History Truth() const {
    History truth;
    const auto file = StoreFile::Open(File());
    EXPECT_TRUE(file);
    RecordReader reader(*file);
    for (auto record = reader.Next(); record && *record; record = reader.Next()) {
      truth[(*record)->key].push_back((*record)->value);
    }
    return truth;
  }

  /// Without a line that was being written when the watcher was killed.
  static History Seen(const fs::path& file) {
    History seen;
    std::stringstream text;
    text << std::ifstream(file).rdbuf();
    std::string whole = text.str();
    whole.erase(whole.rfind('\n') + 1);
    std::istringstream lines(whole);
    std::string key, value;
    std::getline(lines, key);  // "ready"
    while (lines >> key >> value) seen[key].push_back(value);
    return seen;
  }

  static bool IsPartOf(const std::vector<std::string>& part, const std::vector<std::string>& whole) {
    return std::search(whole.begin(), whole.end(), part.begin(), part.end()) != whole.end();
  }

  Progress* const m_progress;
  int m_watched = 0;
  std::mt19937 m_random{std::random_device{}()};
};

/// Each value of a writer stands there once at most, and they rise: a killed one was set wholly or not at all.
void ExpectEveryWriterInOrder(const std::vector<std::string>& values) {
  std::array<int, kWriters> newest{};
  for (const std::string& value : values) {
    int writer = 0, number = 0;
    if (std::sscanf(value.c_str(), "%d:%d", &writer, &number) != 2) continue;
    ASSERT_GT(number, newest.at(static_cast<size_t>(writer))) << value;
    newest.at(static_cast<size_t>(writer)) = number;
  }
}

TEST_F(GivenHistory, EveryWatcherSawEachKeysValuesInOrderOnceToTheLast) {
  ASSERT_TRUE(Store::Create(m_folder));
  std::vector<Watching> watching, gone;
  for (size_t i = 0; i < kWatchers; ++i) watching.push_back(StartWatcher());
  std::array<pid_t, kWriters> writers{};
  for (int i = 0; i < kWriters; ++i) writers.at(static_cast<size_t>(i)) = StartWriter(i);

  const auto running = [&] { return std::any_of(writers.begin(), writers.end(), [](pid_t pid) { return pid != 0; }); };
  int kills = 0, stops = 0;
  while (running()) {
    for (int i = 0; i < kWriters; ++i) RestartIfKilled(&writers.at(static_cast<size_t>(i)), i);
    const pid_t writer = writers.at(m_random() % kWriters);
    Watching& watcher = watching[m_random() % kWatchers];
    switch (m_random() % 4) {
      case 0:
        if (writer != 0) kills += kill(writer, SIGKILL) == 0 ? 1 : 0;
        break;
      case 1:
      case 2: {
        const pid_t stopped = m_random() % 2 == 0 && writer != 0 ? writer : watcher.pid;
        kill(stopped, SIGSTOP);
        g_usleep(m_random() % 2000);
        kill(stopped, SIGCONT);
        ++stops;
        break;
      }
      default:
        if (m_random() % 8 == 0) {
          kill(watcher.pid, SIGKILL);
          waitpid(watcher.pid, nullptr, 0);
          gone.push_back(watcher);
          watcher = StartWatcher();
        }
    }
    g_usleep(m_random() % 2000);
  }

  // A watcher that was started a moment ago must have begun before the last values come.
  for (const Watching& watcher : watching) {
    RunUntil(nullptr, [&] {
      std::ifstream file(watcher.seen);
      std::string line;
      return std::getline(file, line) && line == "ready";
    });
  }
  const auto store = OpenStore();
  for (const char* key : kKeys) Set(*store, key, kLast);
  for (const Watching& watcher : watching) EXPECT_EQ(ExitStatus(watcher.pid), 0);

  const History truth = Truth();
  for (const char* key : kKeys) {
    const auto& values = truth.at(key);
    ExpectEveryWriterInOrder(values);
    for (const Watching& watcher : watching) {
      const auto seen = Seen(watcher.seen)[key];
      ASSERT_LE(seen.size(), values.size());
      EXPECT_TRUE(std::equal(seen.rbegin(), seen.rend(), values.rbegin())) << watcher.seen << " " << key;
    }
    for (const Watching& watcher : gone) EXPECT_TRUE(IsPartOf(Seen(watcher.seen)[key], values)) << watcher.seen;
  }
  std::printf("%d writers killed, %d stops, %zu watchers gone\n", kills, stops, gone.size());
}

}  // namespace
}  // namespace sim::vconf
