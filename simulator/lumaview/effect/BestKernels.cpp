// SPDX-License-Identifier: Apache-2.0
/// The kernels that effects draw with. The vectors stand in a module: Highway's library measures the processor's timer
/// while it is loaded, which would be a fifth of the time that the process takes to start.
#include <hwy/cache_control.h>

#include "simulator/base/Log.h"
#include "simulator/lumaview/decode/Module.h"
#include "simulator/lumaview/effect/Kernels.h"

namespace sim::lumaview {
namespace {

const Kernels& LoadKernels() {
  const Result<const void*> module = FindInModule("kernels", kKernelsSymbol);
  if (!module) {
    Log(LogLevel::kWarning, "lumaview", "effects are drawn without vectors: " + module.error().reason);
    return PlainKernels();
  }
  return (*static_cast<const KernelsFunction*>(*module))();
}

}  // namespace

const Kernels& BestKernels() {
  static const Kernels& best = LoadKernels();
  return best;
}

void FinishStores() {
  hwy::FlushStream();
}

}  // namespace sim::lumaview
