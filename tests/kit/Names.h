// SPDX-License-Identifier: Apache-2.0
/// Names for what the engine handles, so that a journal reads the same in every run. Thread-safe.
#ifndef TESTS_KIT_NAMES_H
#define TESTS_KIT_NAMES_H

#include <pthread.h>

#include <cstddef>
#include <string>

namespace olm {
class CEmpEngineBase;
class CPictureAdapter;
}  // namespace olm

namespace kit {

enum class Kind { kDisplay, kGC, kImage, kPicture, kEffect, kLoop, kBlock, kWindow };
inline constexpr size_t kKinds = 8;

/// A new handle gets the next number of its kind; its name is "display#1" and the like. A window's address is its id.
std::string NameNew(Kind kind, const void* address);
/// The number that the next handle of this kind gets.
int NextNumber(Kind kind);
/// "NULL" for null; "KIND#N (gone)" for a handle that was released, "KIND (unknown)" for one never made.
std::string NameOf(Kind kind, const void* address);
bool IsAlive(Kind kind, const void* address);
/// How many handles of this kind are alive.
size_t Alive(Kind kind);
void Release(Kind kind, const void* address);
/// Numbers go on after the highest one alive.
void RestartNumbers();
/// Forgets every handle.
void ForgetHandles();

/// Engines announce themselves through the framework's base class, adapters through their mutex.
void EngineBorn(const olm::CEmpEngineBase* engine);
void EngineGone(const olm::CEmpEngineBase* engine);
void AdapterBorn(const olm::CPictureAdapter* adapter);
void ForgetAdapters();
std::string NameOfEngine(const void* address);   ///< "<engine>", "<engine#2>", "NULL"
std::string NameOfAdapter(const void* address);  ///< "adapter", "adapter#2", "null", "other"
/// The engine that `address` lies in; null when it lies in none.
const olm::CEmpEngineBase* EngineAround(const void* address);

/// "&m_pPicture" for that field of any adapter, and the like; "&local" for every other address, "NULL" for null.
std::string NameOfField(const void* address);

/// The calling thread is the tests' own.
void ThisIsMainThread();
void WorkerBorn(pthread_t thread);
std::string NameOfThread(pthread_t thread);  ///< "<thread main>", "<thread worker>", "<thread other>", "0"

/// Name in angle brackets of the thread, object or handle whose low 32 bits are `value`; empty when there is none.
std::string NameOfLowBits(unsigned int value);
/// "engine", "adapter", "display#1" and the like; empty when the address is none of these.
std::string NameOfAddress(const void* address);

}  // namespace kit

#endif
