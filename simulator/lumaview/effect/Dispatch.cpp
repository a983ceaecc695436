// SPDX-License-Identifier: Apache-2.0
/// Which kernels this processor runs.
#include "simulator/lumaview/effect/Kernels.h"

#if defined(__arm__) && defined(__linux__)
#include <asm/hwcap.h>
#include <sys/auxv.h>
#define LUMAVIEW_ASK_FOR_NEON 1
#endif

namespace sim::lumaview {

const Kernels* DispatchedKernels();  // VectorKernels.cpp

#ifdef LUMAVIEW_ASK_FOR_NEON
const Kernels* NeonKernels();  // VectorKernels.cpp, compiled once more with NEON

const Kernels& VectorKernels() {
  return (getauxval(AT_HWCAP) & HWCAP_NEON) != 0 ? *NeonKernels() : *DispatchedKernels();
}
#else
const Kernels& VectorKernels() {
  return *DispatchedKernels();
}
#endif

}  // namespace sim::lumaview
