// SPDX-License-Identifier: Apache-2.0
/// usage: show_transitions PICTURE PICTURE...   (on a running X server of 1920x1080)
/// Plays the pictures as a slide show with every effect by turns in random order, twice: first undisturbed, for the
/// frames that come on time, as the picture library logs them; then with looks at the window on the way, each of which
/// has to be the effect's frame between the two pictures at some progress that never falls. Prints both, the processor
/// time and the memory, the bars that do not hold and a summary line.
/// Exit status 1 when a bar does not hold, 2 for wrong use or without an X server.
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <future>
#include <limits>
#include <map>
#include <numeric>
#include <optional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "bench/show_screen.h"
#include "platform/lumaview.h"
#include "simulator/lumaview/effect/Effect.h"

namespace bench {
namespace {

using Clock = std::chrono::steady_clock;
using sim::lumaview::ConstImageView;
using sim::lumaview::ImageView;
using sim::lumaview::Size;
using std::chrono::milliseconds;

constexpr Size kWindow{1920, 1080};
/// A picture stands this long; the next one is decoded meanwhile.
constexpr milliseconds kStands(500);
/// Between two looks at a transition.
constexpr milliseconds kBetweenLooks(120);
/// The library's own: a second at 60 a second.
constexpr int kFrames = 60;
constexpr double kOnTimeBar = 99.5;   // per cent of the frames
constexpr double kLikenessBar = 35;   // dB
constexpr unsigned int kShuffle = 1;  // the same show every time

std::promise<int>* g_shown = nullptr;

int OnDecode(void*, lumaview_event_type_e, lumaview_event_result_e result) {
  g_shown->set_value(result);
  return 0;
}

int OnParse(void* record, lumaview_event_type_e, lumaview_event_result_e) {
  auto* picture = static_cast<_lumaview_s*>(record);
  lumaview_add_event_callback(picture, LUMAVIEW_EVENT_DECODE, OnDecode);
  return lumaview_decode(picture, 0);
}

[[noreturn]] void GiveUp(const std::string& reason) {
  std::fprintf(stderr, "show_transitions: %s\n", reason.c_str());
  std::exit(2);
}

/// Drives the picture library as the engine does.
class Show {
 public:
  explicit Show(Window window) : m_window(window) {
    if (lumaview_init_display(&m_window) != 0 ||
        lumaview_create_transition_effect(LUMAVIEW_EFFECT_CHOOSE, &m_effect) != 0 ||
        lumaview_set_effect_window_handle(m_effect, m_window) != 0) {
      GiveUp("the picture library has no display");
    }
    lumaview_add_event_callback(m_effect, LUMAVIEW_EVENT_EFFECT, OnDecode);
  }
  ~Show() {
    lumaview_destroy_transition_effect(&m_effect);
    lumaview_destroy_display(&m_window);
  }
  Show(const Show&) = delete;
  Show& operator=(const Show&) = delete;

  void Begin(const std::string& path) {
    std::promise<int> shown;
    g_shown = &shown;
    Prepare(path);
    lumaview_set_window(m_picture, m_window);
    lumaview_add_event_callback(m_picture, LUMAVIEW_EVENT_PARSE, OnParse);
    lumaview_parse(m_picture);
    if (shown.get_future().get() != LUMAVIEW_RESULT_DECODE_OK) {
      GiveUp(path + " cannot be shown");
    }
    lumaview_destroy(&m_picture);
  }

  /// The next picture is decoded while the present one stands.
  void Stand(const std::string& next) {
    Prepare(next);
    std::this_thread::sleep_for(kStands);
    lumaview_destroy(&m_picture);
  }

  /// Calls `look` on the way, again and again.
  template <typename Look>
  void Run(int effect, const std::string& path, const Look& look) {
    std::promise<int> shown;
    g_shown = &shown;
    lumaview_set_effect_type(m_effect, static_cast<effect_type_e>(effect));
    if (lumaview_run_transition_effect(m_effect, path.c_str()) != 0) {
      GiveUp("the transition to " + path + " does not start");
    }
    auto end = shown.get_future();
    while (end.wait_for(kBetweenLooks) != std::future_status::ready) {
      look();
    }
    if (end.get() != LUMAVIEW_RESULT_EFFECT_OK) {
      GiveUp("the transition to " + path + " failed");
    }
  }

 private:
  void Prepare(const std::string& path) {
    if (lumaview_create_from_url(path.c_str(), &m_picture) != 0) {
      GiveUp("cannot open " + path);
    }
  }

  Window m_window;
  _lumaview_s* m_picture = nullptr;
  _lumaview_effect_s* m_effect = nullptr;
};

/// Deals every effect once, then again in another order.
class Deck {
 public:
  int Next() {
    if (m_left.empty()) {
      m_left.resize(sim::lumaview::kEffectCount);
      std::iota(m_left.begin(), m_left.end(), 0);
      std::ranges::shuffle(m_left, m_random);
    }
    const int effect = m_left.back();
    m_left.pop_back();
    return effect;
  }

 private:
  std::mt19937 m_random{kShuffle};
  std::vector<int> m_left;
};

/// What the library has logged about its frames.
struct Frames {
  int shown = 0;
  int skipped = 0;
  int worst_gap_ms = 0;
  double OnTime() const { return shown == 0 ? 0 : 100.0 * shown / (shown + skipped); }
};

Frames ReadFrames(const std::string& log) {
  Frames all;
  std::ifstream lines(log);
  for (std::string line; std::getline(lines, line);) {
    Frames one;
    const size_t colon = line.rfind(": ");
    if (line.find(" effect ") != std::string::npos && colon != std::string::npos &&
        std::sscanf(line.c_str() + colon, ": %d frames shown, %d skipped, worst gap %d ms", &one.shown, &one.skipped,
                    &one.worst_gap_ms) == 3) {
      all.shown += one.shown;
      all.skipped += one.skipped;
      all.worst_gap_ms = std::max(all.worst_gap_ms, one.worst_gap_ms);
    }
  }
  return all;
}

/// The sum of squared differences of the colours, of every `step`th pixel.
double SquaredError(const Shot& one, const Shot& other, size_t step) {
  double sum = 0;
  for (size_t i = 0; i < one.size(); i += step) {
    for (const int shift : {0, 8, 16}) {
      const int difference = static_cast<int>(one[i] >> shift & 0xFF) - static_cast<int>(other[i] >> shift & 0xFF);
      sum += difference * difference;
    }
  }
  return sum;
}

double Decibels(const Shot& one, const Shot& other) {
  const double error = SquaredError(one, other, 1) / (3.0 * static_cast<double>(one.size()));
  return error == 0 ? std::numeric_limits<double>::infinity() : 10 * std::log10(255.0 * 255.0 / error);
}

/// Finds the moments of one transition to which looks belong.
class Moments {
 public:
  Moments(int effect, const Shot& from, const Shot& to) {
    for (int frame = 0; frame <= kFrames; ++frame) {
      Shot drawn(from.size());
      DrawEffect(effect, View(from), View(to), static_cast<float>(frame) / kFrames,
                 {drawn.data(), kWindow.width, kWindow.height, kWindow.width}, 0, kWindow.height);
      for (uint32_t& pixel : drawn) {
        pixel &= 0x00FFFFFF;
      }
      m_frames.push_back(std::move(drawn));
    }
  }

  struct Found {
    int frame = 0;
    double decibels = 0;
  };
  /// The most alike; of equal ones the first that is not before `earliest`.
  Found Find(const Shot& look, int earliest) const {
    constexpr size_t kSome = 61;  // of the pixels; divides no width
    std::vector<double> errors;
    for (const Shot& frame : m_frames) {
      errors.push_back(SquaredError(look, frame, kSome));
    }
    const double least = *std::ranges::min_element(errors);
    int found = static_cast<int>(std::ranges::find(errors, least) - errors.begin());
    for (int frame = found; frame <= kFrames && found < earliest; ++frame) {
      found = errors[static_cast<size_t>(frame)] == least ? frame : found;
    }
    return {found, Decibels(look, m_frames[static_cast<size_t>(found)])};
  }

 private:
  static ConstImageView View(const Shot& shot) { return {shot.data(), kWindow.width, kWindow.height, kWindow.width}; }

  std::vector<Shot> m_frames;
};

/// What came out of the looks.
struct Looks {
  int count = 0;
  int between = 0;  ///< those that show neither picture alone
  int unlike = 0;
  int fallen = 0;  ///< before the look that was taken earlier
  double least_decibels = std::numeric_limits<double>::infinity();
};

void Judge(int effect, const Shot& from, const Shot& to, const std::vector<Shot>& taken, Looks& looks) {
  const Moments moments(effect, from, to);
  int earliest = 0;
  for (const Shot& look : taken) {
    const auto found = moments.Find(look, earliest);
    ++looks.count;
    looks.between += found.frame > 0 && found.frame < kFrames ? 1 : 0;
    looks.unlike += found.decibels >= kLikenessBar ? 0 : 1;
    looks.fallen += found.frame >= earliest ? 0 : 1;
    looks.least_decibels = std::min(looks.least_decibels, found.decibels);
    if (found.decibels < kLikenessBar || found.frame < earliest) {
      std::printf("%s: a look is like frame %d by %.1f dB, the one before was like frame %d\n",
                  std::string(sim::lumaview::EffectName(effect)).c_str(), found.frame, found.decibels, earliest);
    }
    earliest = std::max(earliest, found.frame);
  }
}

/// Seconds of all threads of this process.
double ProcessorSeconds() {
  rusage used{};
  getrusage(RUSAGE_SELF, &used);
  const auto seconds = [](const timeval& time) { return double(time.tv_sec) + double(time.tv_usec) * 1e-6; };
  return seconds(used.ru_utime) + seconds(used.ru_stime);
}

double LargestMegabytes() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) {
      return std::atof(line.c_str() + 6) / 1024;
    }
  }
  return 0;
}

struct Undisturbed {
  double processor = 0;  ///< seconds
  double seconds = 0;
  double megabytes = 0;
};

Undisturbed PlayUndisturbed(Show& show, const std::vector<std::string>& pictures, Deck& deck) {
  const double before = ProcessorSeconds();
  const auto start = Clock::now();
  show.Begin(pictures[0]);
  for (size_t i = 1; i < pictures.size(); ++i) {
    show.Stand(pictures[i]);
    show.Run(deck.Next(), pictures[i], [] {});
  }
  const std::chrono::duration<double> took = Clock::now() - start;
  return {ProcessorSeconds() - before, took.count(), LargestMegabytes()};
}

/// Each effect once.
Looks PlayWithLooks(Show& show, ShowScreen& screen, const std::vector<std::string>& pictures, Deck& deck) {
  Looks looks;
  for (int i = 0; i < sim::lumaview::kEffectCount; ++i) {
    const std::string& next = pictures[static_cast<size_t>(i) % pictures.size()];
    show.Stand(next);
    const Shot from = screen.Capture();
    std::vector<Shot> taken;
    const int effect = deck.Next();
    show.Run(effect, next, [&] { taken.push_back(screen.Capture()); });
    Judge(effect, from, screen.Capture(), taken, looks);
  }
  return looks;
}

int Report(const Frames& frames, const Undisturbed& played, const Looks& looks, size_t pictures) {
  std::printf("%zu pictures: %d frames shown, %d skipped, %.2f %% on time, worst gap %d ms\n", pictures, frames.shown,
              frames.skipped, frames.OnTime(), frames.worst_gap_ms);
  std::printf("%.1f s of processor time in %.1f s (%.0f %% of one core), most memory %.0f MB\n", played.processor,
              played.seconds, 100 * played.processor / played.seconds, played.megabytes);
  std::printf("%d looks, %d of them between two pictures, the least alike by %.1f dB\n", looks.count, looks.between,
              looks.least_decibels);
  int missed = 0;
  const auto check = [&missed](bool holds, const std::string& what) {
    if (!holds) {
      ++missed;
      std::printf("MISSED: %s\n", what.c_str());
    }
  };
  check(frames.OnTime() >= kOnTimeBar,
        std::to_string(frames.OnTime()) + " % of the frames are on time, at least 99.5 % wanted");
  check(looks.unlike == 0, std::to_string(looks.unlike) + " looks show no frame of their effect, by 35 dB");
  check(looks.fallen == 0, std::to_string(looks.fallen) + " looks show an earlier frame than the look before");
  check(looks.between >= sim::lumaview::kEffectCount,
        std::to_string(looks.between) + " looks were taken between two pictures, one an effect wanted");
  std::printf("show: %.2f %% of %d frames on time, %d looks, 4 bars, %d missed\n", frames.OnTime(),
              frames.shown + frames.skipped, looks.count, missed);
  return missed == 0 ? 0 : 1;
}

int Play(const std::vector<std::string>& pictures, const std::string& log) {
  ShowScreen screen(kWindow);
  Show show(screen.GetWindow());
  Deck deck;
  const Undisturbed played = PlayUndisturbed(show, pictures, deck);
  const Frames frames = ReadFrames(log);
  Deck again;
  const Looks looks = PlayWithLooks(show, screen, pictures, again);
  return Report(frames, played, looks, pictures.size());
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: show_transitions PICTURE PICTURE...\n");
    return 2;
  }
  char log[] = "/tmp/show_transitions-XXXXXX";
  close(mkstemp(log));
  setenv("OLM_LOG_FILE", log, 1);
  unsetenv("OLM_LOG_LEVEL");
  unsetenv("LUMAVIEW_EFFECT_MS");
  const int status = bench::Play({argv + 1, argv + argc}, log);
  unlink(log);
  return status;
}
