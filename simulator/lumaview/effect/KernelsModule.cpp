// SPDX-License-Identifier: Apache-2.0
#include "simulator/lumaview/effect/Kernels.h"

extern "C" __attribute__((visibility("default"))) const sim::lumaview::KernelsFunction lumaview_module_kernels;
const sim::lumaview::KernelsFunction lumaview_module_kernels = sim::lumaview::VectorKernels;
