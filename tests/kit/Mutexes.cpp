// SPDX-License-Identifier: Apache-2.0
#include "tests/kit/Mutexes.h"

#include <array>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <string>

#include "adapter/CPictureAdapter.h"
#include "tests/kit/Journal.h"
#include "tests/kit/Names.h"
#include "tests/kit/Script.h"

extern "C" {
int __real_pthread_mutex_init(pthread_mutex_t*, const pthread_mutexattr_t*);
int __real_pthread_mutex_destroy(pthread_mutex_t*);
int __real_pthread_mutex_lock(pthread_mutex_t*);
int __real_pthread_mutex_unlock(pthread_mutex_t*);
int __wrap_pthread_mutex_init(pthread_mutex_t*, const pthread_mutexattr_t*);
int __wrap_pthread_mutex_destroy(pthread_mutex_t*);
int __wrap_pthread_mutex_lock(pthread_mutex_t*);
int __wrap_pthread_mutex_unlock(pthread_mutex_t*);
}

namespace kit {
namespace {

enum class Owner { kEngine, kAdapter };

const char* MutexName(Owner owner) {
  return owner == Owner::kEngine ? "m_EngineMut" : "m_AdapterMut";
}

struct Registry {
  std::shared_mutex mutex;
  std::map<const pthread_mutex_t*, Owner> owners;
};

Registry& TheRegistry() {
  static auto& registry = *new Registry;  // never destroyed: what is called while the process ends asks for it too
  return registry;
}

std::optional<Owner> OwnerOf(const pthread_mutex_t* mutex) {
  Registry& registry = TheRegistry();
  const std::shared_lock<std::shared_mutex> lock(registry.mutex);
  const auto found = registry.owners.find(mutex);
  return found == registry.owners.end() ? std::nullopt : std::optional<Owner>(found->second);
}

struct Held {
  const pthread_mutex_t* mutex;
  std::optional<Owner> owner;
};

constexpr size_t kMostHeld = 16;
thread_local std::array<Held, kMostHeld> t_held;
thread_local size_t t_heldCount = 0;

void CheckOrder(const pthread_mutex_t* mutex, Owner owner) {
  for (size_t i = 0; i < t_heldCount; ++i) {
    const Held& held = t_held[i];
    const std::string wanted = MutexName(owner);
    if (held.mutex == mutex) {
      Violation(wanted + " taken by the thread that holds it");
    } else if (!held.owner) {
      Violation(wanted + " taken while an inner lock is held");
    } else if (owner == Owner::kEngine || held.owner == owner) {
      Violation(wanted + " taken while " + MutexName(*held.owner) + " is held");
    }
  }
}

void Push(const Held& held) {
  if (t_heldCount < kMostHeld) t_held[t_heldCount++] = held;
}

void Pop(const pthread_mutex_t* mutex) {
  for (size_t i = t_heldCount; i-- > 0;) {
    if (t_held[i].mutex != mutex) continue;
    for (size_t next = i + 1; next < t_heldCount; ++next) t_held[next - 1] = t_held[next];
    t_heldCount -= 1;
    return;
  }
}

Owner Introduce(const pthread_mutex_t* mutex) {
  const Owner owner = EngineAround(mutex) != nullptr ? Owner::kEngine : Owner::kAdapter;
  if (owner == Owner::kAdapter) {
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
    constexpr size_t kOffset = offsetof(olm::CPictureAdapter, m_AdapterMut);
#pragma GCC diagnostic pop
    const auto address = reinterpret_cast<uintptr_t>(mutex) - kOffset;
    AdapterBorn(reinterpret_cast<const olm::CPictureAdapter*>(address));
  }
  Registry& registry = TheRegistry();
  const std::unique_lock<std::shared_mutex> lock(registry.mutex);
  registry.owners[mutex] = owner;
  return owner;
}

}  // namespace

bool ThisThreadHolds(std::string_view name) {
  for (size_t i = 0; i < t_heldCount; ++i) {
    if (t_held[i].owner && name == MutexName(*t_held[i].owner)) return true;
  }
  return false;
}

bool ThisThreadHoldsInnerLock() {
  for (size_t i = 0; i < t_heldCount; ++i) {
    if (!t_held[i].owner) return true;
  }
  return false;
}

bool LockLineIsTrue(std::string_view text) {
  struct Form {
    std::string_view start;
    bool held;
  };
  constexpr std::array<Form, 4> kForms = {
      {{"wait to lock ", false}, {"lock ", true}, {"wait to unlock ", true}, {"unlock ", false}}};
  for (const Form& form : kForms) {
    if (text.substr(0, form.start.size()) != form.start) continue;
    const std::string_view name = text.substr(form.start.size());
    if (name == "m_EngineMut" || name == "m_AdapterMut") return ThisThreadHolds(name) == form.held;
  }
  return true;
}

void ForgetMutexes() {
  Registry& registry = TheRegistry();
  const std::unique_lock<std::shared_mutex> lock(registry.mutex);
  registry.owners.clear();
}

}  // namespace kit

// The engine gives null attributes to the two mutexes that it names, and nobody else in the tests calls this.
int __wrap_pthread_mutex_init(pthread_mutex_t* mutex, const pthread_mutexattr_t* attributes) {
  const kit::Owner owner = kit::Introduce(mutex);
  kit::Call call("pthread_mutex_init");
  call.Arg(std::string("&") + kit::MutexName(owner)).Arg(attributes == nullptr ? "NULL" : "attributes");
  return call.Done(__real_pthread_mutex_init(mutex, attributes));
}

int __wrap_pthread_mutex_destroy(pthread_mutex_t* mutex) {
  const auto owner = kit::OwnerOf(mutex);
  if (!owner) return __real_pthread_mutex_destroy(mutex);
  kit::Call call("pthread_mutex_destroy");
  return call.Arg(std::string("&") + kit::MutexName(*owner)).Done(__real_pthread_mutex_destroy(mutex));
}

int __wrap_pthread_mutex_lock(pthread_mutex_t* mutex) {
  const auto owner = kit::OwnerOf(mutex);
  if (owner) kit::CheckOrder(mutex, *owner);
  const int result = __real_pthread_mutex_lock(mutex);
  kit::Push({mutex, owner});
  return result;
}

int __wrap_pthread_mutex_unlock(pthread_mutex_t* mutex) {
  kit::Pop(mutex);
  return __real_pthread_mutex_unlock(mutex);
}
