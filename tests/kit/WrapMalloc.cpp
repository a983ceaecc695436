// SPDX-License-Identifier: Apache-2.0
/// malloc, calloc and free as the engine's own sources call them (operator new is elsewhere and not seen).
#include <cstddef>
#include <string>

#include "tests/kit/Names.h"
#include "tests/kit/Script.h"

extern "C" {
void* __real_malloc(size_t);
void* __real_calloc(size_t, size_t);
void __real_free(void*);
void* __wrap_malloc(size_t);
void* __wrap_calloc(size_t, size_t);
void __wrap_free(void*);
}

using namespace kit;

void* __wrap_malloc(size_t size) {
  Call call("malloc");
  call.Arg(static_cast<long>(size));
  void* block = call.Fails() ? nullptr : __real_malloc(size);
  call.Done(block == nullptr ? "NULL" : NameNew(Kind::kBlock, block));
  return block;
}

void* __wrap_calloc(size_t count, size_t size) {
  Call call("calloc");
  call.Arg(static_cast<long>(count * size));
  void* block = call.Fails() ? nullptr : __real_calloc(count, size);
  call.Done(block == nullptr ? "NULL" : NameNew(Kind::kBlock, block));
  return block;
}

void __wrap_free(void* block) {
  // What others allocated, and null, is no business of the journal.
  if (IsAlive(Kind::kBlock, block)) {
    Call("free").Arg(NameOf(Kind::kBlock, block)).DoneVoid();
    Release(Kind::kBlock, block);
  }
  __real_free(block);
}
