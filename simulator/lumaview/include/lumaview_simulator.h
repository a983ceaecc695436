// SPDX-License-Identifier: Apache-2.0
/// What the simulator's picture library offers beyond `platform/lumaview.h`. C linkage.
#ifndef LUMAVIEW_SIMULATOR_H
#define LUMAVIEW_SIMULATOR_H

#ifdef __cplusplus
extern "C" {
#endif

/// What the result `code` of a `lumaview_*` call means, as a person reads it; never null. The text is static.
/// The reason of one particular failure stands in the log.
const char* lumaview_strerror(int code);

#ifdef __cplusplus
}
#endif

#endif
