// SPDX-License-Identifier: Apache-2.0
/// usage: effects_bench [--no-xfade] [--instructions SSE4|AVX2|AVX3] [--only EFFECT]
/// Measures every effect at 1920x1080 and 3840x2160 next to what memory allows and to ffmpeg's xfade, prints a table,
/// the bars that do not hold and a summary line. Exit status 1 when one does not hold, 2 for wrong use.
#include <hwy/targets.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "bench/effects_measure.h"
#include "bench/effects_xfade.h"
#include "simulator/lumaview/effect/Effect.h"
#include "simulator/lumaview/effect/Kernels.h"

namespace bench {
namespace {

using sim::lumaview::kEffectCount;
using sim::lumaview::Size;

/// What is asked of a family of effects. A bar of 0 is none.
struct Family {
  const char* prefix;    ///< of the names it goes for
  double over_limit;     ///< at most so many times the memory limit, at both sizes
  double milliseconds;   ///< at most, at 1920x1080
  double against_xfade;  ///< at least so many times as fast
};

constexpr Family kFamilies[] = {
    {"fadeblack", 0, 0, 10},  {"fadewhite", 0, 0, 10}, {"fade", 1.3, 0, 10}, {"dissolve", 0, 1.5, 10},
    {"pixelize", 0, 1.5, 10}, {"wipe", 2, 0, 4},       {"slide", 2, 0, 4},   {"smooth", 0, 1.5, 10},
    {"circle", 0, 1.5, 10},   {"radial", 0, 2.5, 10},  {"diag", 0, 1.5, 10}, {"squeezeh", 2, 0, 4},
    {"squeezev", 0, 3.5, 4},  {"zoom", 0, 3.5, 4},     {"blur", 0, 3.5, 0},
};
/// Four times the pixels and a little, where neither size comes out of a cache.
constexpr double kLargeOverSmall = 4.5;
/// Two cores at 3840x2160, milliseconds: leaves time for the X server in a frame of 16.7.
constexpr double kOnTwo = 10;

const Family& FamilyOf(const std::string& name) {
  for (const Family& family : kFamilies) {
    if (name.starts_with(family.prefix)) {
      return family;
    }
  }
  std::fprintf(stderr, "effects_bench: no bars for %s\n", name.c_str());
  std::exit(2);
}

/// Counts the bars and keeps those that do not hold.
class Bars {
 public:
  void AtMost(const std::string& what, double value, double bar) { Check(what, value, "at most", bar, value <= bar); }
  void AtLeast(const std::string& what, double value, double bar) { Check(what, value, "at least", bar, value >= bar); }

  bool AreMet() const { return m_missed.empty(); }

  /// Prints what does not hold and the summary. True when all hold.
  bool Report(const char* kernels) const {
    for (const std::string& line : m_missed) {
      std::printf("%s\n", line.c_str());
    }
    std::printf("effects (%s): %d bars, %zu missed\n", kernels, m_count, m_missed.size());
    return m_missed.empty();
  }

 private:
  void Check(const std::string& what, double value, const char* relation, double bar, bool holds) {
    ++m_count;
    if (!holds) {
      char line[200];
      std::snprintf(line, sizeof line, "MISSED: %s is %.2f, %s %.2f wanted", what.c_str(), value, relation, bar);
      m_missed.emplace_back(line);
    }
  }

  int m_count = 0;
  std::vector<std::string> m_missed;
};

/// How often all is measured anew: other work disturbs a machine for seconds, so what belongs together is measured in
/// turn and the fastest counts.
constexpr int kPasses = 3;
constexpr int kAttempts = 3;

/// One size of pictures.
struct Scene {
  Scene(Size size, bool with_xfade) : place(size) {
    if (with_xfade) {
      xfade.emplace(size);
    }
  }

  std::string Name() const {
    return std::to_string(place.GetSize().width) + "x" + std::to_string(place.GetSize().height);
  }

  Workplace place;
  double limit = std::numeric_limits<double>::infinity();  ///< milliseconds, the least seen
  std::optional<Xfade> xfade;
};

/// One effect at one size, milliseconds a frame.
struct Times {
  double effect = std::numeric_limits<double>::infinity();
  double uncached = std::numeric_limits<double>::infinity();
  double on_two = std::numeric_limits<double>::infinity();
  std::optional<double> xfade;
};

struct Row {
  std::string name;
  Times small;
  Times large;
};

void MeasureOnce(Scene& scene, int effect, Times& times) {
  scene.limit = std::min(scene.limit, scene.place.MeasureLimit());
  times.effect = std::min(times.effect, scene.place.MeasureEffect(effect));
  times.uncached = std::min(times.uncached, scene.place.MeasureEffectUncached(effect));
}

void PrintTimes(const Scene& scene, const Times& times) {
  std::printf(" %8.2f %8.2f", times.effect, times.effect / scene.limit);
  if (times.xfade) {
    std::printf(" %8.2f %8.1f", *times.xfade, *times.xfade / times.effect);
  } else {
    std::printf(" %8s %8s", "-", "-");
  }
}

void CheckTimes(const std::string& name, const Scene& scene, const Times& times, Bars& bars) {
  const Family& family = FamilyOf(name);
  const std::string what = name + " at " + scene.Name();
  if (family.over_limit > 0) {
    bars.AtMost(what + ", times the memory limit,", times.effect / scene.limit, family.over_limit);
  }
  if (times.xfade) {
    bars.AtLeast(what + ", times as fast as xfade,", *times.xfade / times.effect, family.against_xfade);
  }
}

void CheckRow(const Row& row, const Scene& small, const Scene& large, Bars& bars) {
  CheckTimes(row.name, small, row.small, bars);
  CheckTimes(row.name, large, row.large, bars);
  if (const double bar = FamilyOf(row.name).milliseconds; bar > 0) {
    bars.AtMost(row.name + " at " + small.Name() + ", milliseconds,", row.small.effect, bar);
  }
  const std::string what = row.name + " at " + large.Name();
  bars.AtMost(what + ", times " + small.Name() + ", both uncached,", row.large.uncached / row.small.uncached,
              kLargeOverSmall);
  bars.AtMost(what + " on two cores, milliseconds,", row.large.on_two, kOnTwo);
}

/// The least that was seen so far.
void MeasureXfade(const Scene& scene, const std::string& name, std::optional<double>& least) {
  const auto time = scene.xfade ? scene.xfade->Measure(name) : std::nullopt;
  least = least && time ? std::min(*least, *time) : time;
}

void MeasurePasses(Scene& small, Scene& large, int effect, Row& row) {
  for (int pass = 0; pass < kPasses; ++pass) {
    MeasureOnce(small, effect, row.small);
    MeasureOnce(large, effect, row.large);
    row.large.on_two = std::min(row.large.on_two, large.place.MeasureEffectOnTwo(effect));
  }
  MeasureXfade(small, row.name, row.small.xfade);
  MeasureXfade(large, row.name, row.large.xfade);
}

/// Where a bar does not hold, effect, limit and xfade are measured again: a machine may be busy for minutes.
Row Measure(Scene& small, Scene& large, int effect) {
  Row row{std::string(sim::lumaview::EffectName(effect)), {}, {}};
  bool holds = false;
  for (int attempt = 0; attempt < kAttempts && !holds; ++attempt) {
    std::fprintf(stderr, "effects_bench: %s%s\n", row.name.c_str(), attempt == 0 ? "" : " again");
    MeasurePasses(small, large, effect, row);
    Bars bars;
    CheckRow(row, small, large, bars);
    holds = bars.AreMet();
  }
  return row;
}

void PrintHead(const Scene& small, const Scene& large) {
  std::printf(
      "milliseconds of processor time a frame, %s; /small: larger over smaller size, as measured and uncached\n",
      sim::lumaview::BestKernels().name);
  std::printf("%-12s %35s %35s\n", "", small.Name().c_str(), large.Name().c_str());
  std::printf("%-12s %8s %8s %8s %8s %8s %8s %8s %8s %8s %8s %8s\n", "effect", "ms", "/limit", "xfade", "times", "ms",
              "/limit", "xfade", "times", "/small", "uncached", "on two");
  std::printf("%-12s %8.2f %8.2f %8s %8s %8.2f %8.2f %8s %8s %8.2f\n", "avg(a, b)", small.limit, 1.0, "", "",
              large.limit, 1.0, "", "", large.limit / small.limit);
}

struct Options {
  bool with_xfade = true;
  std::optional<int> only;  ///< one effect
};

bool Run(const Options& options) {
  const bool with_xfade = options.with_xfade;
  Scene small({1920, 1080}, with_xfade);
  Scene large({3840, 2160}, with_xfade);
  std::vector<Row> rows;
  const int first = options.only.value_or(0);
  const int last = options.only.value_or(kEffectCount - 1);
  for (int effect = first; effect <= last; ++effect) {
    rows.push_back(Measure(small, large, effect));
  }
  Bars bars;
  PrintHead(small, large);
  for (const Row& row : rows) {
    std::printf("%-12s", row.name.c_str());
    PrintTimes(small, row.small);
    PrintTimes(large, row.large);
    std::printf(" %8.2f %8.2f %8.2f\n", row.large.effect / row.small.effect, row.large.uncached / row.small.uncached,
                row.large.on_two);
    CheckRow(row, small, large, bars);
  }
  if (with_xfade && !small.xfade->IsComparable()) {
    std::printf("ffmpeg could not be run: nothing was compared with xfade\n");
  }
  return bars.Report(sim::lumaview::BestKernels().name);
}

/// Limits the kernels to an instruction set that Highway knows by that name. False: this processor has none such.
bool LimitTo(const char* instructions) {
  for (int64_t rest = hwy::SupportedTargets(); rest != 0; rest &= rest - 1) {
    if (std::strcmp(hwy::TargetName(rest & -rest), instructions) == 0) {
      hwy::SetSupportedTargetsForTest(rest & -rest);
      return true;
    }
  }
  return false;
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  bench::Options options;
  bool known = true;
  for (int i = 1; i < argc && known; ++i) {
    const std::string option = argv[i];
    if (option == "--no-xfade") {
      options.with_xfade = false;
    } else if (option == "--only" && i + 1 < argc) {
      options.only = sim::lumaview::FindEffect(argv[++i]);
      known = options.only >= 0;
    } else {
      known = option == "--instructions" && i + 1 < argc && bench::LimitTo(argv[++i]);
    }
  }
  if (!known) {
    std::fprintf(stderr, "usage: effects_bench [--no-xfade] [--instructions SSE4|AVX2|AVX3] [--only EFFECT]\n");
    return 2;
  }
  return bench::Run(options) ? 0 : 1;
}
