// SPDX-License-Identifier: Apache-2.0
#include "tests/kit/Journal.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <mutex>

#include "tests/kit/LogFold.h"
#include "tests/kit/Names.h"

namespace kit {
namespace {

struct State {
  std::mutex mutex;
  std::vector<std::string> tracks[2];
  std::atomic<bool> recording{true};
  std::atomic<size_t> violations{0};
  EventListener listener;       ///< set while nothing runs
  EntryListener entryListener;  ///< set and read by the main track only: a worker may be running meanwhile
};

State& TheState() {
  static auto& state = *new State;  // never destroyed: what is called while the process ends asks for it too
  return state;
}

thread_local Track t_track = Track::kMain;

}  // namespace

void Begin() {
  DropPendingPrefix();
  RestartNumbers();
  State& state = TheState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  for (auto& track : state.tracks) track.clear();
}

void Append(std::string entry) {
  State& state = TheState();
  if (!state.recording) return;
  if (t_track == Track::kMain && state.entryListener) state.entryListener(entry);
  const std::string strayPrefix = TakePendingPrefix();
  const std::lock_guard<std::mutex> lock(state.mutex);
  auto& track = state.tracks[static_cast<size_t>(t_track)];
  if (!strayPrefix.empty()) track.push_back("log! " + strayPrefix + " (a prefix without its message)");
  track.push_back(std::move(entry));
}

void SetRecording(bool on) {
  TheState().recording = on;
}

bool Recording() {
  return TheState().recording;
}

void BecomeWorkerTrack() {
  t_track = Track::kWorker;
}

std::vector<std::string> Entries(Track track) {
  State& state = TheState();
  const std::lock_guard<std::mutex> lock(state.mutex);
  return state.tracks[static_cast<size_t>(track)];
}

void Event(int event, const std::string& param1, const std::string& param2) {
  if (Recording()) Append("event " + std::to_string(event) + " " + Quoted(param1) + " " + Quoted(param2));
  if (TheState().listener) TheState().listener(event);
}

void OnEntry(EntryListener listener) {
  TheState().entryListener = std::move(listener);
}

void OnEvent(EventListener listener) {
  TheState().listener = std::move(listener);
}

size_t Count(std::string_view prefix) {
  const auto entries = Entries();
  return static_cast<size_t>(std::count_if(entries.begin(), entries.end(), [prefix](const std::string& entry) {
    return std::string_view(entry).substr(0, prefix.size()) == prefix;
  }));
}

void Violation(const std::string& text) {
  ++TheState().violations;
  std::fprintf(stderr, "violation: %s\n", text.c_str());
  Append("violation " + text);
}

size_t Violations() {
  return TheState().violations;
}

std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '\n') {
      escaped += "\\n";
    } else if (c == '\t') {
      escaped += "\\t";
    } else if (c == '\\') {
      escaped += "\\\\";
    } else if (c == '\0') {
      escaped += "\\0";
    } else if (byte < 32 || byte > 126) {
      char hex[8];
      std::snprintf(hex, sizeof hex, "\\x%02x", byte);
      escaped += hex;
    } else {
      escaped += c;
    }
  }
  return escaped;
}

std::string Quoted(std::string_view text) {
  return "\"" + Escaped(text) + "\"";
}

}  // namespace kit
