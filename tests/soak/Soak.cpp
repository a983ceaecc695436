// SPDX-License-Identifier: Apache-2.0
// usage: soak PLAYER PICTURES-FOLDER [--slides N] [--rounds N]   (with an X server on ":0")
//
// A television that stays on: slides over the pictures of a folder, with effects, pauses and new players among them;
// then as many rounds of resizing, of pauses, and of a damaged file. What the engine holds is counted at moments of
// equal phase: memory may not grow, everything else must be exactly the same. Exit status 1 when something grew.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "simulator/vconf/include/Store.h"
#include "tests/soak/Census.h"
#include "tests/soak/Player.h"

namespace soak {
namespace {

namespace fs = std::filesystem;

constexpr int kShown = 8;
constexpr int kNotShown = 6;
constexpr int kEffectEvery = 3;
constexpr int kPauseEvery = 500;
constexpr int kPlayerEvery = 1000;
constexpr int kEffects = 24;
constexpr const char* kEffectMs = "20";
constexpr const char* kStateKey = "db/KestWebApp/soak";

// What memory may do.
constexpr double kBytesAStep = 1;
constexpr double kBytesInAll = 4 << 20;
/// Pools and caches fill up first: the first part of the samples does not count.
constexpr int kWarmUpPart = 5;
constexpr int kSamples = 50;
constexpr std::chrono::milliseconds kLookAgain(10);
constexpr int kQuietLooks = 5;
constexpr std::chrono::seconds kPatience(5);

/// A folder that goes when the soak does; after an exception it stays, for what stands in the engine's log.
class Folder {
 public:
  Folder() {
    std::string name = (fs::temp_directory_path() / "soak.XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("no temporary folder");
    m_path = name;
  }
  ~Folder() {
    if (std::uncaught_exceptions() > 0) {
      std::printf("the engine's log: %s\n", (m_path / "log").c_str());
    } else {
      fs::remove_all(m_path);
    }
  }
  Folder(const Folder&) = delete;
  Folder& operator=(const Folder&) = delete;
  const fs::path& Path() const { return m_path; }

 private:
  fs::path m_path;
};

std::vector<std::string> PicturesIn(const fs::path& folder) {
  std::vector<std::string> pictures;
  for (const auto& entry : fs::directory_iterator(folder)) pictures.push_back(fs::absolute(entry.path()));
  std::sort(pictures.begin(), pictures.end());
  if (pictures.empty()) throw std::runtime_error("no pictures in " + folder.string());
  return pictures;
}

class Soak {
 public:
  Soak(const std::string& program, std::vector<std::string> pictures)
      : m_pictures(std::move(pictures)), m_store(MakeStore(m_folder.Path())), m_player(program, Environment()) {
    m_player.Open("soak", "soak.television");
    m_damaged = m_folder.Path() / "damaged.png";
    std::ofstream(m_damaged) << "\x89PNG\r\n\x1a\n and nothing more";
  }

  void Slides(int count) {
    const auto slide = [this](int number) { Slide(number); };
    // Twice: the first may have been decoded for the size that the window had before, and once more for the one it has.
    const auto settle = [this] {
      for (int times = 0; times < 2; ++times) {
        m_player.Do("ChangePlayingURL", {m_pictures.front()});
        Show();
      }
    };
    Run("slides", count, slide, settle);
  }

  void Areas(int rounds) {
    ShowFirst();
    std::uniform_int_distribution<int> corner(0, 200);
    std::uniform_int_distribution<int> size(1, 500);
    Run("display areas", rounds, [&](int round) {
      // The same at each census, so that what it needs is the same.
      const bool fixed = round % std::max(rounds / kSamples, 1) == 0;
      const auto text = [&](auto& numbers) { return std::to_string(fixed ? 100 : numbers(m_random)); };
      m_player.Do("SetDisplayArea", {text(corner), text(corner), text(size), text(size)});
    });
    m_player.Do("SetDisplayArea", {"0", "0", "0", "0"});
  }

  void Pauses(int rounds) {
    ShowFirst();
    Run("pauses", rounds, [this](int) { PauseAndResume(); });
  }

  void DamagedFiles(int rounds) {
    ShowFirst();
    Run("damaged files", rounds, [this](int) {
      m_player.Do("ChangePlayingURL", {m_damaged});
      m_player.Execute("StartPlayback");
      m_player.AwaitEvent(kNotShown);
    });
  }

  bool End() {
    m_player.Do("Stop");
    const int status = m_player.End();
    if (status != 0) std::printf("FAILED: the engine ended with %d\n", status);
    return status == 0 && !m_grew;
  }

 private:
  static std::unique_ptr<sim::vconf::Store> MakeStore(const fs::path& folder) {
    auto store = sim::vconf::Store::Create(folder);
    if (!store) throw std::runtime_error(store.error().reason);
    return std::move(*store);
  }

  std::map<std::string, std::string> Environment() const {
    return {{"VCONF_SESSION", m_folder.Path()},
            {"OLM_LOG_FILE", m_folder.Path() / "log"},
            {"LUMAVIEW_EFFECT_MS", kEffectMs}};
  }

  const std::string& PictureOf(int slide) const { return m_pictures[static_cast<size_t>(slide) % m_pictures.size()]; }

  void Show() {
    m_player.Do("StartPlayback");
    m_player.AwaitEvent(kShown);
  }

  void ShowFirst() {
    m_player.Do("Stop");
    m_player.Do("InitPlayer", {m_pictures.front()});
    Show();
  }

  void Slide(int slide) {
    if (slide % kPlayerEvery == 0) {
      m_player.Do("Stop");
      m_player.Do("InitPlayer", {PictureOf(slide)});
      MakeWindowSmall();
    } else {
      m_player.Do("ChangePlayingURL", {PictureOf(slide)});
    }
    if (slide % kEffectEvery == 1) {
      m_player.Do("EffectShow", {std::to_string(slide / kEffectEvery % kEffects)});
      m_player.AwaitEvent(kShown);
      return;
    }
    Show();
    if (slide % kPauseEvery == 0) {
      PauseAndResume();
      MakeWindowSmall();
    }
  }

  /// A slide costs its pixels above all; few of them grow as many would.
  void MakeWindowSmall() { m_player.Do("SetDisplayArea", {"0", "0", "640", "360"}); }

  /// The resumed picture is shown anew, which is reported.
  void PauseAndResume() {
    for (const char* state : {"pause", "resume"}) {
      if (const auto set = m_store->Set(kStateKey, state); !set) throw std::runtime_error(set.error().reason);
    }
    m_player.AwaitEvent(kShown);
  }

  /// `step` is called with 0 to `count`; the census is taken after every `count / kSamples` steps, from the first. What
  /// it is compared with is the first one after the warm-up: a thread that was never needed before is started then.
  /// `settle` brings the same onto the screen before each of them.
  void Run(const char* name, int count, const std::function<void(int)>& step,
           const std::function<void()>& settle = {}) {
    const int every = std::max(count / kSamples, 1);
    const int warm_at = count / kWarmUpPart / every * every;
    std::vector<double> steps, bytes;
    Census first;
    for (int at = 0; at <= count; ++at) {
      step(at);
      if (at % every != 0 || at < warm_at) continue;
      if (settle) settle();
      if (at == warm_at) first = AwaitQuiet();
      const Census census = AwaitSame(first);
      if (!census.HoldsTheSameAs(first)) {
        Fail(std::string(name) + " " + std::to_string(at) + ": " + census.Text() + "\n  before: " + first.Text() +
             "\n  descriptors:" + DescriptorChanges(first, census));
        return;
      }
      steps.push_back(at);
      bytes.push_back(static_cast<double>(census.anonymous_bytes));
    }
    const double slope = MedianSlope(steps, bytes);
    const double grown = bytes.back() - bytes.front();
    std::printf("%s: %d; memory %+.2f bytes a step (median slope), %+.0f kB in all; %s\n", name, count, slope,
                grown / 1024, first.Text().c_str());
    std::fflush(stdout);
    // Over few steps a page more or less is a slope of its own.
    if (count >= kLong && slope > kBytesAStep) Fail(std::string(name) + ": memory grows");
    if (grown > kBytesInAll) Fail(std::string(name) + ": memory has grown");
  }

  /// The picture is reported when it is seen; what it took may be let go a moment later.
  Census AwaitQuiet() const {
    Census census = Take(m_player.Pid());
    for (int quiet = 0; quiet < kQuietLooks;) {
      std::this_thread::sleep_for(kLookAgain);
      const Census again = Take(m_player.Pid());
      quiet = again.HoldsTheSameAs(census) ? quiet + 1 : 0;
      census = again;
    }
    return census;
  }

  Census AwaitSame(const Census& first) const {
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    Census census = Take(m_player.Pid());
    while (!census.HoldsTheSameAs(first) && std::chrono::steady_clock::now() < deadline) {
      std::this_thread::sleep_for(kLookAgain);
      census = Take(m_player.Pid());
    }
    return census;
  }

  void Fail(const std::string& what) {
    std::printf("FAILED: %s\n", what.c_str());
    m_grew = true;
  }

  static constexpr int kLong = 10000;

  const Folder m_folder;
  const std::vector<std::string> m_pictures;
  const std::unique_ptr<sim::vconf::Store> m_store;
  Player m_player;
  std::string m_damaged;
  std::mt19937 m_random{1};
  bool m_grew = false;
};

int NumberAfter(const char* option, int otherwise, int argc, char** argv) {
  for (int at = 3; at + 1 < argc; ++at) {
    if (std::strcmp(argv[at], option) == 0) return std::atoi(argv[at + 1]);
  }
  return otherwise;
}

}  // namespace
}  // namespace soak

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: soak PLAYER PICTURES-FOLDER [--slides N] [--rounds N]\n");
    return 2;
  }
  const int slides = soak::NumberAfter("--slides", 100000, argc, argv);
  const int rounds = soak::NumberAfter("--rounds", 10000, argc, argv);
  try {
    soak::Soak soak(argv[1], soak::PicturesIn(argv[2]));
    soak.Slides(slides);
    soak.Areas(rounds);
    soak.Pauses(rounds);
    soak.DamagedFiles(rounds);
    const bool good = soak.End();
    std::printf("%s: %d slides, %d rounds each of areas, pauses and damaged files\n", good ? "ok" : "FAILED", slides,
                rounds);
    return good ? 0 : 1;
  } catch (const std::exception& error) {
    std::printf("FAILED: %s\n", error.what());
    return 1;
  }
}
