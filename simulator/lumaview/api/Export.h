// SPDX-License-Identifier: Apache-2.0
#ifndef SIMULATOR_LUMAVIEW_API_EXPORT_H
#define SIMULATOR_LUMAVIEW_API_EXPORT_H

/// The library hides everything but its C functions.
#define LUMAVIEW_EXPORT extern "C" __attribute__((visibility("default")))

#endif
