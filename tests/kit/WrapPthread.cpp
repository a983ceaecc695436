// SPDX-License-Identifier: Apache-2.0
/// The worker's thread as the engine makes, joins and detaches it. The mutexes are in Mutexes.cpp.
#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>

#include "adapter/CPictureAdapter.h"
#include "tests/kit/Journal.h"
#include "tests/kit/Names.h"
#include "tests/kit/Script.h"
#include "tests/kit/Workers.h"

extern "C" {
int __real_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __real_pthread_join(pthread_t, void**);
int __real_pthread_detach(pthread_t);
int __wrap_pthread_create(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
int __wrap_pthread_join(pthread_t, void**);
int __wrap_pthread_detach(pthread_t);
}

namespace kit {
namespace {

struct Workers {
  std::mutex mutex;
  std::condition_variable changed;
  size_t started = 0;
  size_t returned = 0;
  size_t joined = 0;
  size_t detached = 0;
};

Workers& TheWorkers() {
  static auto& workers = *new Workers;  // never destroyed: what is called while the process ends asks for it too
  return workers;
}

struct Start {
  void* (*body)(void*);
  void* argument;
};

void* RunWorker(void* start) {
  const std::unique_ptr<Start> given(static_cast<Start*>(start));
  BecomeWorkerTrack();
  if (Recording()) WorkerBorn(pthread_self());
  void* result = given->body(given->argument);
  Workers& workers = TheWorkers();
  const std::lock_guard<std::mutex> lock(workers.mutex);
  workers.returned += 1;
  workers.changed.notify_all();
  return result;
}

std::string BodyName(void* (*body)(void*)) {
  return body == &olm::CPictureAdapter::picture_thread_func ? "picture_thread_func" : "other";
}

}  // namespace

bool AwaitWorkers(std::chrono::milliseconds limit) {
  Workers& workers = TheWorkers();
  std::unique_lock<std::mutex> lock(workers.mutex);
  return workers.changed.wait_for(lock, limit, [&workers] { return workers.returned == workers.started; });
}

WorkerCounts CountWorkers() {
  Workers& workers = TheWorkers();
  const std::lock_guard<std::mutex> lock(workers.mutex);
  return {workers.started, workers.returned, workers.joined, workers.detached};
}

}  // namespace kit

using namespace kit;

int __wrap_pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*), void* argument) {
  Call call("pthread_create");
  call.Arg(NameOfField(thread)).Arg(attributes == nullptr ? "NULL" : "attributes").Arg(BodyName(body));
  call.Arg("<" + NameOfAdapter(argument) + ">");
  if (call.Fails()) {
    *thread = pthread_self();  // POSIX leaves open what stands there then
    return call.Done(0);
  }
  {
    const std::lock_guard<std::mutex> lock(TheWorkers().mutex);
    TheWorkers().started += 1;
  }
  const int result = __real_pthread_create(thread, attributes, &RunWorker, new Start{body, argument});
  if (result != 0) Violation("no thread can be made");
  if (Recording()) WorkerBorn(*thread);
  return call.Out("<thread worker>").Done(result);
}

int __wrap_pthread_join(pthread_t thread, void** result) {
  Call call("pthread_join");
  call.Arg(NameOfThread(thread)).Arg(result == nullptr ? "NULL" : "&local");
  const int code = __real_pthread_join(thread, result);
  {
    const std::lock_guard<std::mutex> lock(TheWorkers().mutex);
    TheWorkers().joined += code == 0 ? 1 : 0;
  }
  return call.Done(code);
}

int __wrap_pthread_detach(pthread_t thread) {
  Call call("pthread_detach");
  call.Arg(NameOfThread(thread));
  const int code = __real_pthread_detach(thread);
  {
    const std::lock_guard<std::mutex> lock(TheWorkers().mutex);
    TheWorkers().detached += code == 0 ? 1 : 0;
  }
  return call.Done(code);
}
