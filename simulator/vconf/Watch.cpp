// SPDX-License-Identifier: Apache-2.0
#include "simulator/vconf/include/Watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "simulator/base/Log.h"
#include "simulator/base/UniqueFd.h"
#include "simulator/vconf/StoreFile.h"

namespace sim::vconf {
namespace {

/// After which what could not be read is tried again, unless the file changes before.
constexpr gint64 kNextTry = G_USEC_PER_SEC;

}  // namespace

/// A GSource is C's, so what it needs stands in an object beside it.
struct Watch::Source {
  struct State {
    UniqueFd inotify;
    RecordReader reader;
    OnRecord onRecord;
    gpointer tag = nullptr;
    bool mayHaveMore = false;  ///< the file has changed since the reader came to its end
    bool failed = false;       ///< the last reading
  };

  GSource base;
  State* state;

  static State& StateOf(GSource* source) { return *reinterpret_cast<Source*>(source)->state; }

  static gboolean Prepare(GSource* source, gint* timeout) {
    *timeout = -1;
    return StateOf(source).mayHaveMore;
  }

  /// The changes are forgotten before the file is read: one that comes in between is seen now, or reported again.
  static gboolean Check(GSource* source) {
    State& state = StateOf(source);
    alignas(inotify_event) char events[4096];
    while (read(state.inotify.Get(), events, sizeof events) > 0) {
      state.mayHaveMore = true;
    }
    return state.mayHaveMore;
  }

  /// One record a turn, so that the other sources of the context get theirs.
  static gboolean Dispatch(GSource* source, GSourceFunc, gpointer) {
    State& state = StateOf(source);
    const auto record = state.reader.Next();
    const bool failedBefore = std::exchange(state.failed, !record);
    g_source_set_ready_time(source, record ? -1 : g_get_monotonic_time() + kNextTry);
    if (!record) {
      // Who follows a key for hours shall not miss all of it because of one bad moment.
      if (!failedBefore) {
        Log(LogLevel::kError, "vconf", record.error().reason + "; it is tried again");
      }
      state.mayHaveMore = false;
      return G_SOURCE_CONTINUE;
    }
    state.mayHaveMore = record->has_value();
    if (*record) {
      state.onRecord(**record);
    }
    return G_SOURCE_CONTINUE;
  }

  static void Finalize(GSource* source) { delete &StateOf(source); }

  static GSource* Make(UniqueFd inotify, RecordReader reader, OnRecord onRecord) {
    static GSourceFuncs functions = {Prepare, Check, Dispatch, Finalize, nullptr, nullptr};
    GSource* source = g_source_new(&functions, sizeof(Source));
    State* state = new State{std::move(inotify), std::move(reader), std::move(onRecord)};
    state->tag = g_source_add_unix_fd(source, state->inotify.Get(), G_IO_IN);
    reinterpret_cast<Source*>(source)->state = state;
    g_source_set_name(source, "vconf watch");
    return source;
  }
};

Result<std::unique_ptr<Watch>> Watch::Create(const Store& store, GMainContext* context, OnRecord onRecord) {
  const std::shared_ptr<StoreFile>& file = store.m_file;
  UniqueFd inotify(inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  if (!inotify || inotify_add_watch(inotify.Get(), file->Path().c_str(), IN_MODIFY) < 0) {
    return Error{errno, "cannot watch " + file->Path().string() + ": " + std::strerror(errno)};
  }
  // Looked at only now that no change is missed any more.
  const auto behind = file->ReadCommitted();
  if (!behind) {
    return behind.error();
  }
  GSource* source = Source::Make(std::move(inotify), RecordReader(file, *behind), std::move(onRecord));
  g_source_attach(source, context);
  return std::unique_ptr<Watch>(new Watch(file, source));
}

Result<uint64_t> Watch::NewestSequence() const {
  const auto committed = m_file->ReadCommitted();
  if (!committed) {
    return committed.error();
  }
  return committed->sequence;
}

Watch::~Watch() {
  g_source_destroy(m_source);
  g_source_unref(m_source);
}

}  // namespace sim::vconf
