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

/// So many pictures in a row that cannot be shown may be the window's fault, which somebody has destroyed: the show
/// begins with another one.
constexpr int kFailuresOfAWindow = 2;

/// What the engine's library enlarges to.
constexpr int kLargestZoom = 16;

/// A key or an interruption ends a pause; this is how long one wait for them is.
constexpr std::chrono::milliseconds kWhilePaused = std::chrono::hours(1);

/// The number with which the library chooses a different effect each time.
constexpr const char* kRandomEffect = "36";

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
  if (auto frames = FrameLog::Follow(television.GetEngine().LogFile())) {
    m_frames = std::move(*frames);
  }
  if (m_options.keys) {
    m_keys.emplace();
  }
}

int SlideShow::Play() {
  if (m_keys && !m_options.json) {
    Say(KeysHelp());
  }
  bool all_shown = true;
  int direction = 1;
  for (size_t index = 0; index < m_options.pictures.size() && !IsOver(); index = Neighbour(index, direction)) {
    const bool stands = Present(index);
    all_shown = all_shown && stands;
    direction = m_stands ? Stand(index) : direction;
  }
  all_shown = Finish() && all_shown;
  return all_shown ? kDone : kFailed;
}

/// Ends the engine's showing, unless it is over with the session, and tells about the frames.
bool SlideShow::Finish() {
  const bool stopped = !m_television.Interruption().empty() || Succeeded(m_television.Execute("Stop", {}));
  if (!stopped) {
    Complain("the engine does not stop in good order");
  }
  const FrameTotals totals = m_frames ? m_frames->Totals() : FrameTotals();
  if (totals.shown > 0) {
    Say(m_options.json ? JsonOf(totals) : TextOf(totals));
  }
  return stopped;
}

bool SlideShow::IsOver() const {
  return !m_television.Interruption().empty() || (m_keys && m_keys->Has(Key::kQuit));
}

/// Shows one picture and reports it. False when something of that failed.
bool SlideShow::Present(size_t index) {
  const auto start = Clock::now();
  PictureReport report{index + 1, m_options.pictures.size(), m_options.pictures[index]};
  m_television.ScreenWasLost();
  report.failure = Show(report.path);
  if (report.failure && m_television.ScreenWasLost()) {
    report.failure = Show(report.path);  // it was not the picture's fault
  }
  m_stands = !report.failure;
  if (m_keys && m_keys->Has(Key::kQuit)) {
    return true;
  }
  report.took = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start);
  if (!report.failure) {
    report.size = TextOf(m_television.Execute("GetPictureSize", {}));
    report.screenshot_failure = Screenshot(index);
  }
  Say(m_options.json ? JsonOf(report) : TextOf(report));
  return !report.failure && !report.screenshot_failure;
}

/// Lets the picture stand, and does what keys ask for meanwhile. Returns where to go on: 1 forwards, -1 backwards.
int SlideShow::Stand(size_t index) {
  auto deadline = Clock::now() + m_options.interval;
  for (;;) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    const auto patience = m_paused ? kWhilePaused : std::max(left, std::chrono::milliseconds(0));
    m_television.PauseUntil(patience, [this] { return m_keys && !m_keys->IsEmpty(); });
    const auto key = m_keys && !IsOver() ? m_keys->Take() : std::nullopt;
    if (!key && (IsOver() || !m_paused)) {
      return 1;
    }
    if (key == Key::kNext) {
      return 1;
    }
    if (key == Key::kPrevious && (index > 0 || m_options.loop)) {
      return -1;
    }
    if (key) {
      TakeKey(*key, m_options.pictures[index]);
      deadline = Clock::now() + m_options.interval;  // what was touched is looked at
    }
  }
}

/// What concerns the picture that stands.
void SlideShow::TakeKey(Key key, const std::string& picture) {
  switch (key) {
    case Key::kPause:
      m_paused = !m_paused;
      Notice(m_paused ? "paused" : "goes on");
      break;
    case Key::kRotate:
      ChangeView("SetRotation", m_rotation, (m_rotation + 90) % 360, picture);
      break;
    case Key::kZoomIn:
      ChangeView("SetZoomRatio", m_zoom, std::min(2 * m_zoom, kLargestZoom), picture);
      break;
    case Key::kZoomOut:
      ChangeView("SetZoomRatio", m_zoom, std::max(m_zoom / 2, 1), picture);
      break;
    case Key::kNext:
    case Key::kPrevious:
    case Key::kQuit:
      break;
  }
}

/// `shown`: what the command is about, as it is now. After a transition the engine holds no picture to turn or zoom,
/// so the same one is loaded again first, which the screen does not show.
void SlideShow::ChangeView(const std::string& command, int& shown, int value, const std::string& picture) {
  if (!m_loaded) {
    if (const Failure failure = LoadAgain(picture)) {
      Complain(picture + " cannot be loaded again: " + *failure);
      return;
    }
  }
  if (const rpc::Answer answer = m_television.Execute(command, {std::to_string(value)}); !Succeeded(answer)) {
    Complain(command + " answers " + TextOf(answer));
    return;
  }
  m_rotation = 0;  // each of the two commands resets what the other has set
  m_zoom = 1;
  shown = value;
}

Failure SlideShow::LoadAgain(const std::string& picture) {
  if (Failure failure = Load(picture)) {
    return failure;
  }
  m_television.ForgetEvents();
  const rpc::Answer answer = m_television.Execute("StartPlayback", {});
  return Succeeded(answer) ? AwaitShown() : Failure("StartPlayback answers " + TextOf(answer));
}

/// The picture to go on with in that direction; behind the last one when there is none.
size_t SlideShow::Neighbour(size_t index, int direction) const {
  const size_t count = m_options.pictures.size();
  const bool around = m_options.loop && m_shown;  // where nothing can be shown, a loop would never rest
  if (direction > 0) {
    return index + 1 == count && around ? 0 : index + 1;
  }
  if (index > 0) {
    return index - 1;
  }
  return around ? count - 1 : 1;
}

void SlideShow::Notice(const std::string& text) const {
  if (!m_options.json) {
    Say(text);
  }
}

Failure SlideShow::Show(const std::string& picture) {
  if (picture.size() > kLongestPath) {
    return "its path is longer than " + std::to_string(kLongestPath) + " bytes";
  }
  if (Failure failure = Load(picture)) {
    return failure;
  }
  ++m_failures;  // until it stands
  m_television.ForgetEvents();
  const int transitions = m_frames ? m_frames->Totals().transitions : 0;
  if (m_frames) {
    m_frames->ForgetFailures();
  }
  Failure failure = Start();
  if (!failure) {
    failure = AwaitShown();
  }
  if (!failure && !m_loaded) {
    failure = TransitionsFailure(picture, transitions);
  }
  m_failures = failure ? m_failures : 0;
  return failure;
}

/// A transition that fails is followed by the events of one that succeeds; the library's log knows better.
Failure SlideShow::TransitionsFailure(const std::string& picture, int transitions_before) {
  const bool may_have_failed = m_frames && m_frames->Totals().transitions == transitions_before;
  return may_have_failed ? m_frames->FailureOf(picture) : std::nullopt;
}

/// Since the picture was loaded: its event comes no more.
bool SlideShow::EngineHasEnded() const {
  const Engine& engine = m_television.GetEngine();
  return !engine.IsRunning() || engine.Restarts() != m_restarts;
}

Failure SlideShow::Load(const std::string& picture) {
  if (const int restarts = m_television.GetEngine().Restarts(); restarts != m_restarts) {
    m_restarts = restarts;
    m_initialised = m_placed = m_shown = m_loaded = false;
  }
  if (m_initialised && m_failures >= kFailuresOfAWindow) {
    m_television.Execute("Stop", {});
    m_initialised = m_placed = m_shown = m_loaded = false;
    m_failures = 0;
  }
  const std::string command = m_initialised ? "ChangePlayingURL" : "InitPlayer";
  const rpc::Answer answer = m_television.Execute(command, {picture});
  if (!Succeeded(answer)) {
    return command + " answers " + TextOf(answer);
  }
  m_initialised = m_loaded = true;
  m_rotation = 0;
  m_zoom = 1;
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
  if (m_options.effect == "random" || IsNumber(m_options.effect)) {
    m_effect_number = IsNumber(m_options.effect) ? m_options.effect : kRandomEffect;
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
  m_loaded = !transition;
  return Succeeded(answer) ? std::nullopt : Failure(command + " answers " + TextOf(answer));
}

Failure SlideShow::AwaitShown() {
  const auto deadline = Clock::now() + m_options.picture_limit;
  bool decoded = false;
  for (;;) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    m_television.PauseUntil(std::max(left, std::chrono::milliseconds(0)),
                            [this] { return m_television.HasEvent() || IsOver() || EngineHasEnded(); });
    const auto event = m_television.TakeEvent(std::chrono::milliseconds(0));
    if (!event && m_keys && m_keys->Has(Key::kQuit)) {
      return "it is not waited for";
    }
    if (!event && EngineHasEnded()) {
      return "the engine has ended";
    }
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
