// SPDX-License-Identifier: Apache-2.0
/// The one ordered record of what the engine does to the outside: log lines, calls, X requests, events, results.
/// An entry is one line of text. Thread-safe.
#ifndef TESTS_KIT_JOURNAL_H
#define TESTS_KIT_JOURNAL_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace kit {

/// What a worker thread of the adapter does runs beside everything else, so it is kept apart.
enum class Track { kMain, kWorker };

/// Starts a section: empties both tracks. Handles made from now on are numbered after the highest one still alive.
void Begin();

/// Appends to the calling thread's track. Does nothing while recording is off.
void Append(std::string entry);

/// Recording is on at first. Long runs turn it off: nothing is formatted then.
void SetRecording(bool on);
bool Recording();

/// Makes the calling thread a worker for the rest of its life.
void BecomeWorkerTrack();

std::vector<std::string> Entries(Track track = Track::kMain);

/// An event sent to the application: the entry, and whoever listens (one listener; null ends it).
using EventListener = std::function<void(int event)>;
void Event(int event, const std::string& param1, const std::string& param2);
void OnEvent(EventListener listener);

/// Told of every entry of the main track just before it is written, on the thread that caused it (one listener; null
/// ends it).
using EntryListener = std::function<void(const std::string& entry)>;
void OnEntry(EntryListener listener);

/// How many entries of the main track begin with `prefix`.
size_t Count(std::string_view prefix);

/// Something no caller of the outside may do (a dead handle, a foreign connection). Appears in the journal as
/// "violation TEXT" and is counted even while recording is off.
void Violation(const std::string& text);
size_t Violations();

/// `text` with \n, \t, \\, other control characters and bytes above 126 as C escapes.
std::string Escaped(std::string_view text);
std::string Quoted(std::string_view text);

}  // namespace kit

#endif
