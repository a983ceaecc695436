// SPDX-License-Identifier: Apache-2.0
#include "tests/kit/Names.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <vector>

#include "adapter/CPictureAdapter.h"
#include "host/CEmpEnginePicture.h"
#include "platform/olm_emp.h"
#include "tests/kit/Journal.h"

namespace kit {
namespace {

constexpr std::array<const char*, kKinds> kKindNames = {"display", "gc",   "image", "picture",
                                                        "effect",  "loop", "block", "window"};

struct Handle {
  int number;
  bool alive;
};

// A shared_mutex, because the tests watch every pthread_mutex_lock and that watch asks for names itself.
struct Registry {
  std::shared_mutex mutex;
  std::array<std::map<const void*, Handle>, kKinds> handles;
  std::array<int, kKinds> lastNumber{};
  std::vector<const olm::CEmpEngineBase*> engines;
  std::vector<const olm::CPictureAdapter*> adapters;
  std::vector<pthread_t> workers;
  pthread_t mainThread{};
};

using ReadLock = std::shared_lock<std::shared_mutex>;
using WriteLock = std::unique_lock<std::shared_mutex>;

Registry& TheRegistry() {
  static auto& registry = *new Registry;  // never destroyed: what is called while the process ends asks for it too
  return registry;
}

size_t Index(Kind kind) {
  return static_cast<size_t>(kind);
}

std::string Numbered(Kind kind, int number) {
  return std::string(kKindNames[Index(kind)]) + "#" + std::to_string(number);
}

std::string Numbered(const char* name, size_t index) {
  return index == 0 ? std::string(name) : name + ("#" + std::to_string(index + 1));
}

template <typename Object>
void AddOnce(std::vector<Object>& objects, Object object) {
  if (std::find(objects.begin(), objects.end(), object) == objects.end()) objects.push_back(object);
}

unsigned int LowBits(const void* address) {
  return static_cast<unsigned int>(reinterpret_cast<uintptr_t>(address));
}
unsigned int LowBits(pthread_t thread) {
  return static_cast<unsigned int>(thread);
}

}  // namespace

std::string NameNew(Kind kind, const void* address) {
  Registry& registry = TheRegistry();
  const WriteLock lock(registry.mutex);
  const int number = ++registry.lastNumber[Index(kind)];
  registry.handles[Index(kind)][address] = Handle{number, true};
  return Numbered(kind, number);
}

int NextNumber(Kind kind) {
  Registry& registry = TheRegistry();
  const ReadLock lock(registry.mutex);
  return registry.lastNumber[Index(kind)] + 1;
}

std::string NameOf(Kind kind, const void* address) {
  if (address == nullptr) return "NULL";
  Registry& registry = TheRegistry();
  const ReadLock lock(registry.mutex);
  const auto& handles = registry.handles[Index(kind)];
  const auto found = handles.find(address);
  if (found == handles.end()) return std::string(kKindNames[Index(kind)]) + " (unknown)";
  return Numbered(kind, found->second.number) + (found->second.alive ? "" : " (gone)");
}

bool IsAlive(Kind kind, const void* address) {
  Registry& registry = TheRegistry();
  const ReadLock lock(registry.mutex);
  const auto found = registry.handles[Index(kind)].find(address);
  return found != registry.handles[Index(kind)].end() && found->second.alive;
}

size_t Alive(Kind kind) {
  Registry& registry = TheRegistry();
  const ReadLock lock(registry.mutex);
  const auto& handles = registry.handles[Index(kind)];
  return static_cast<size_t>(
      std::count_if(handles.begin(), handles.end(), [](const auto& h) { return h.second.alive; }));
}

void Release(Kind kind, const void* address) {
  Registry& registry = TheRegistry();
  const WriteLock lock(registry.mutex);
  const auto found = registry.handles[Index(kind)].find(address);
  if (found == registry.handles[Index(kind)].end()) return;
  if (Recording()) {
    found->second.alive = false;
  } else {
    registry.handles[Index(kind)].erase(found);  // nobody reads its name, and long runs make many
  }
}

void RestartNumbers() {
  Registry& registry = TheRegistry();
  const WriteLock lock(registry.mutex);
  for (size_t kind = 0; kind < kKinds; ++kind) {
    int highest = 0;
    std::erase_if(registry.handles[kind], [](const auto& handle) { return !handle.second.alive; });
    for (const auto& handle : registry.handles[kind]) highest = std::max(highest, handle.second.number);
    registry.lastNumber[kind] = highest;
  }
}

void ForgetHandles() {
  Registry& registry = TheRegistry();
  const WriteLock lock(registry.mutex);
  for (auto& handles : registry.handles) handles.clear();
  registry.lastNumber.fill(0);
  registry.engines.clear();
  registry.adapters.clear();
}

void EngineBorn(const olm::CEmpEngineBase* engine) {
  Registry& registry = TheRegistry();
  const WriteLock lock(registry.mutex);
  AddOnce(registry.engines, engine);
}

void EngineGone(const olm::CEmpEngineBase* engine) {
  Registry& registry = TheRegistry();
  const WriteLock lock(registry.mutex);
  std::erase(registry.engines, engine);
}

void AdapterBorn(const olm::CPictureAdapter* adapter) {
  Registry& registry = TheRegistry();
  const WriteLock lock(registry.mutex);
  AddOnce(registry.adapters, adapter);
}

void ForgetAdapters() {
  Registry& registry = TheRegistry();
  const WriteLock lock(registry.mutex);
  registry.adapters.clear();
  registry.workers.clear();
}

std::string NameOfEngine(const void* address) {
  const std::string name = NameOfAddress(address);
  return address == nullptr ? "NULL" : "<" + (name.empty() ? std::string("unknown") : name) + ">";
}

std::string NameOfAdapter(const void* address) {
  if (address == nullptr) return "null";
  const std::string name = NameOfAddress(address);
  return name.empty() ? "other" : name;
}

const olm::CEmpEngineBase* EngineAround(const void* address) {
  Registry& registry = TheRegistry();
  const ReadLock lock(registry.mutex);
  const auto at = reinterpret_cast<uintptr_t>(address);
  for (const auto* engine : registry.engines) {
    const auto begin = reinterpret_cast<uintptr_t>(engine);
    if (at >= begin && at < begin + sizeof(olm::CEmpEnginePicture)) return engine;
  }
  return nullptr;
}

std::string NameOfField(const void* address) {
  if (address == nullptr) return "NULL";
  Registry& registry = TheRegistry();
  const ReadLock lock(registry.mutex);
  for (const auto* adapter : registry.adapters) {
    if (address == &adapter->m_pPicture) return "&m_pPicture";
    if (address == &adapter->m_pTransitionEffect) return "&m_pTransitionEffect";
    if (address == &adapter->m_cWin) return "&m_cWin";
    if (address == &adapter->m_thread_id) return "&m_thread_id";
    if (address == &adapter->m_AdapterMut) return "&m_AdapterMut";
  }
  return "&local";
}

void ThisIsMainThread() {
  TheRegistry().mainThread = pthread_self();
}

void WorkerBorn(pthread_t thread) {
  Registry& registry = TheRegistry();
  const WriteLock lock(registry.mutex);
  AddOnce(registry.workers, thread);
}

std::string NameOfThread(pthread_t thread) {
  if (thread == pthread_t{}) return "0";
  Registry& registry = TheRegistry();
  const ReadLock lock(registry.mutex);
  if (pthread_equal(thread, registry.mainThread) != 0) return "<thread main>";
  for (const pthread_t worker : registry.workers) {
    if (pthread_equal(thread, worker) != 0) return "<thread worker>";
  }
  return "<thread other>";
}

std::string NameOfLowBits(unsigned int value) {
  if (value == 0) return {};
  Registry& registry = TheRegistry();
  if (value == LowBits(pthread_self())) return NameOfThread(pthread_self());
  const ReadLock lock(registry.mutex);
  if (value == LowBits(registry.mainThread)) return "<thread main>";
  for (const pthread_t worker : registry.workers) {
    if (value == LowBits(worker)) return "<thread worker>";
  }
  for (size_t i = 0; i < registry.engines.size(); ++i) {
    if (value == LowBits(registry.engines[i])) return "<" + Numbered("engine", i) + ">";
  }
  for (const auto& [address, handle] : registry.handles[Index(Kind::kDisplay)]) {
    if (value == LowBits(address) && handle.alive) return "<" + Numbered(Kind::kDisplay, handle.number) + ">";
  }
  return {};
}

std::string NameOfAddress(const void* address) {
  Registry& registry = TheRegistry();
  const ReadLock lock(registry.mutex);
  const auto& displays = registry.handles[Index(Kind::kDisplay)];
  if (const auto found = displays.find(address); found != displays.end()) {
    return Numbered(Kind::kDisplay, found->second.number);
  }
  for (size_t i = 0; i < registry.engines.size(); ++i) {
    if (address == registry.engines[i]) return Numbered("engine", i);
  }
  for (size_t i = 0; i < registry.adapters.size(); ++i) {
    if (address == registry.adapters[i]) return Numbered("adapter", i);
  }
  return {};
}

}  // namespace kit
