// SPDX-License-Identifier: Apache-2.0
#include "simulator/tvsim/slideshow/FrameLog.h"

#include <algorithm>
#include <cstdio>
#include <string_view>

#include "simulator/base/Log.h"
#include "simulator/rpc/JsonText.h"
#include "simulator/tvsim/engine/LogTail.h"

namespace sim::tvsim {
namespace {

constexpr std::string_view kLibrary = "[lumaview] ";
/// An animation that fails again and again is one failure.
constexpr size_t kRememberedFailures = 100;

/// "effect fade: 60 frames shown, 1 skipped, worst gap 34 ms".
std::optional<FrameTotals> ReadFrames(const std::string& text) {
  FrameTotals read{text.starts_with("effect ") ? 1 : 0};
  const size_t colon = text.rfind(": ");
  const bool frames =
      colon != std::string::npos && std::sscanf(text.c_str() + colon, ": %d frames shown, %d skipped, worst gap %d ms",
                                                &read.shown, &read.skipped, &read.worst_gap_ms) == 3;
  return frames ? std::optional(read) : std::nullopt;
}

}  // namespace

std::string TextOf(const FrameTotals& totals) {
  const int due = totals.shown + totals.skipped;
  char text[160];
  std::snprintf(text, sizeof text, "Frames: %d shown, %d skipped (%.2f %% on time), worst gap %d ms", totals.shown,
                totals.skipped, due == 0 ? 100.0 : 100.0 * totals.shown / due, totals.worst_gap_ms);
  return text;
}

std::string JsonOf(const FrameTotals& totals) {
  return rpc::ObjectWriter()
      .Add("framesShown", rpc::Number(totals.shown))
      .Add("framesSkipped", rpc::Number(totals.skipped))
      .Add("worstGapMilliseconds", rpc::Number(totals.worst_gap_ms))
      .Take()
      .text;
}

Result<std::unique_ptr<FrameLog>> FrameLog::Follow(const std::string& log) {
  std::unique_ptr<FrameLog> frames(new FrameLog);
  auto follower = LogFollower::Create(log, false, [raw = frames.get()](const std::string& line) { raw->Take(line); });
  if (!follower) {
    return follower.error();
  }
  frames->m_follower = std::move(*follower);
  return frames;
}

void FrameLog::Take(const std::string& line) {
  const std::string plain = WithoutColours(line);
  if (!plain.starts_with(kLibrary)) {
    return;
  }
  const std::string text = plain.substr(kLibrary.size());
  if (const auto frames = ReadFrames(text)) {
    m_totals.transitions += frames->transitions;
    m_totals.shown += frames->shown;
    m_totals.skipped += frames->skipped;
    m_totals.worst_gap_ms = std::max(m_totals.worst_gap_ms, frames->worst_gap_ms);
  } else if (m_failures.size() < kRememberedFailures) {
    m_failures.push_back(text);
  }
}

const FrameTotals& FrameLog::Totals() {
  m_follower->Read();
  return m_totals;
}

std::optional<std::string> FrameLog::FailureOf(const std::string& picture) {
  m_follower->Read();
  std::string beginning;
  AppendWithoutControls(beginning, picture);
  beginning += ": ";
  const auto found = std::ranges::find_if(m_failures, [&](const auto& text) { return text.starts_with(beginning); });
  return found == m_failures.end() ? std::nullopt : std::optional(found->substr(beginning.size()));
}

void FrameLog::ForgetFailures() {
  m_follower->Read();
  m_failures.clear();
}

}  // namespace sim::tvsim
