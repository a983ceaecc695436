// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/slideshow/SlideShow.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <random>
#include <sstream>

#include "simulator/tvsim/Console.h"
#include "simulator/tvsim/slideshow/PictureReport.h"

namespace sim::tvsim {
namespace {

using Clock = std::chrono::steady_clock;
using Failure = std::optional<std::string>;

/// A path of 500 bytes or more ends the engine: it is a detected overflow of its buffer.
constexpr size_t kLongestPath = 499;

bool IsNumber(const std::string& text) {
  return !text.empty() && std::ranges::all_of(text, [](unsigned char c) { return std::isdigit(c) != 0; });
}

/// The position of `name` in a list of names joined by commas, which is its number.
std::optional<size_t> PositionIn(const std::string& list, const std::string& name) {
  std::istringstream names(list);
  size_t position = 0;
  for (std::string one; std::getline(names, one, ','); ++position) {
    if (one == name) {
      return position;
    }
  }
  return std::nullopt;
}

}  // namespace

SlideShow::SlideShow(Television& television, SlideShowOptions options)
    : m_television(television), m_options(std::move(options)) {
  if (m_options.shuffle) {
    std::ranges::shuffle(m_options.pictures, std::mt19937(std::random_device{}()));
  }
}

int SlideShow::Play() {
  bool all_shown = true;
  do {
    for (size_t i = 0; i < m_options.pictures.size() && m_television.Interruption().empty(); ++i) {
      all_shown = Present(i) && all_shown;
    }
  } while (m_options.loop && m_shown && m_television.Interruption().empty());
  if (m_television.Interruption().empty() && !Succeeded(m_television.Execute("Stop", {}))) {
    Complain("the engine does not stop in good order");
    all_shown = false;
  }
  return all_shown ? kDone : kFailed;
}

/// Shows one picture, reports it, and lets it stand.
bool SlideShow::Present(size_t index) {
  const auto start = Clock::now();
  PictureReport report{index + 1, m_options.pictures.size(), m_options.pictures[index]};
  report.failure = Show(report.path);
  report.took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
  if (!report.failure) {
    report.size = TextOf(m_television.Execute("GetPictureSize", {}));
    report.screenshot_failure = Screenshot(index);
  }
  Say(m_options.json ? JsonOf(report) : TextOf(report));
  if (!report.failure) {
    m_television.Pause(m_options.interval);
  }
  return !report.failure && !report.screenshot_failure;
}

Failure SlideShow::Show(const std::string& picture) {
  if (picture.size() > kLongestPath) {
    return "its path is longer than " + std::to_string(kLongestPath) + " bytes";
  }
  if (Failure failure = Load(picture)) {
    return failure;
  }
  m_television.ForgetEvents();
  if (Failure failure = Start()) {
    return failure;
  }
  return AwaitShown();
}

Failure SlideShow::Load(const std::string& picture) {
  if (const int restarts = m_television.GetEngine().Restarts(); restarts != m_restarts) {
    m_restarts = restarts;
    m_initialised = m_placed = m_shown = false;
  }
  const std::string command = m_initialised ? "ChangePlayingURL" : "InitPlayer";
  const rpc::Answer answer = m_television.Execute(command, {picture});
  if (!Succeeded(answer)) {
    return command + " answers " + TextOf(answer);
  }
  m_initialised = true;
  if (!m_placed) {
    std::vector<std::string> area;
    std::ranges::transform(m_options.area, std::back_inserter(area), [](int value) { return std::to_string(value); });
    if (const rpc::Answer placed = m_television.Execute("SetDisplayArea", area); !Succeeded(placed)) {
      return "SetDisplayArea answers " + TextOf(placed);
    }
    m_placed = true;
  }
  return ResolveEffect();
}

/// Names are looked up once, in the list that the engine gives while it has a picture.
Failure SlideShow::ResolveEffect() {
  if (m_options.effect.empty() || !m_effect_number.empty()) {
    return std::nullopt;
  }
  if (IsNumber(m_options.effect)) {
    m_effect_number = m_options.effect;
    return std::nullopt;
  }
  const std::string list = TextOf(m_television.Execute("GetTransitionEffectList", {}));
  const auto position = PositionIn(list, m_options.effect);
  if (!position) {
    return "there is no effect '" + m_options.effect + "'; there are " + list;
  }
  m_effect_number = std::to_string(*position);
  return std::nullopt;
}

Failure SlideShow::Start() {
  const bool transition = m_shown && !m_effect_number.empty();
  const std::string command = transition ? "SetTransitionEffect" : "StartPlayback";
  const rpc::Answer answer =
      m_television.Execute(command, transition ? std::vector{m_effect_number} : std::vector<std::string>{});
  return Succeeded(answer) ? std::nullopt : Failure(command + " answers " + TextOf(answer));
}

Failure SlideShow::AwaitShown() {
  const auto deadline = Clock::now() + m_options.picture_limit;
  bool decoded = false;
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    const auto event = m_television.TakeEvent(std::max(left, std::chrono::milliseconds(0)));
    if (!event) {
      return m_television.Interruption().empty()
                 ? "no event within " + std::to_string(m_options.picture_limit.count()) + " ms"
                 : m_television.Interruption();
    }
    if (event->number == kRenderError) {
      return "the engine reports event 6, it cannot be shown";
    }
    if (event->number == kRenderCompleted) {
      m_shown = true;
      return decoded ? std::nullopt : Failure("event 8 came without event 10 before it");
    }
    decoded = decoded || event->number == kDecodeCompleted;
  }
}

Failure SlideShow::Screenshot(size_t index) {
  if (m_options.screenshots.empty()) {
    return std::nullopt;
  }
  char number[16];
  std::snprintf(number, sizeof number, "%03zu-", index + 1);
  const std::filesystem::path picture = m_options.pictures[index];
  const std::string file = m_options.screenshots + "/" + number + picture.stem().string() + ".png";
  const Status taken = m_television.TakeScreenshot(file);
  return taken ? std::nullopt : Failure(taken.error().reason);
}

}  // namespace sim::tvsim
