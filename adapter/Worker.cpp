// SPDX-License-Identifier: Apache-2.0
/// The worker thread: a GLib main loop on the process's default context, from "InitPlayer" to "Stop". The adapter
/// attaches no source of its own; the loop serves what the platform's libraries attach, key notifications among them.
#include <glib.h>
#include <sched.h>

#include "adapter/CPictureAdapter.h"
#include "adapter/PictureLog.h"

namespace olm {

void* CPictureAdapter::picture_thread_func(void* adapter) {
  const Operation op{__FUNCTION__};
  auto* pThis = static_cast<CPictureAdapter*>(adapter);
  const std::shared_ptr<WorkerStart> start = pThis->m_workerStart;
  GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
  std::atomic_ref(pThis->m_pMainLoop).store(loop);
  // From here on the adapter may be gone at any time.
  g_main_loop_run(loop);
  start->ended = true;
  LOG_RED(op, "picture_thread_func return\n");
  return nullptr;
}

void CPictureAdapter::StartWorker() {
  m_workerStart = std::make_shared<WorkerStart>();
  if (pthread_create(&m_thread_id, nullptr, picture_thread_func, this) != 0) {
    m_thread_id = 0;  // what a failed creation leaves there is no thread
    return;
  }
  // A quit that comes before the loop runs is lost, and the worker would run for ever. Once the loop has been seen
  // running no quit is lost, also while an older worker still owns the context. It takes microseconds.
  const auto runs = [this] {
    GMainLoop* loop = std::atomic_ref(m_pMainLoop).load();
    return loop != nullptr && g_main_loop_is_running(loop);
  };
  while (!runs() && !m_workerStart->ended) {
    sched_yield();
  }
}

void CPictureAdapter::LetWorkerGo() {
  g_main_loop_quit(std::atomic_ref(m_pMainLoop).load());
  pthread_detach(m_thread_id);  // nobody joins it, and an unjoined thread keeps its stack
  m_thread_id = 0;
  std::atomic_ref(m_pMainLoop).store(nullptr);
}

void CPictureAdapter::JoinWorker() {
  g_main_loop_quit(std::atomic_ref(m_pMainLoop).load());
  pthread_join(m_thread_id, nullptr);
  m_thread_id = 0;
  std::atomic_ref(m_pMainLoop).store(nullptr);
}

}  // namespace olm
