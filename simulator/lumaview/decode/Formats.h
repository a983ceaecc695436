// SPDX-License-Identifier: Apache-2.0
/// The formats, each with the look at the first bytes that decides whether its decoder is asked.
#ifndef SIMULATOR_LUMAVIEW_DECODE_FORMATS_H
#define SIMULATOR_LUMAVIEW_DECODE_FORMATS_H

#include "simulator/lumaview/decode/Bytes.h"
#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {

/// What `Probe` functions are shown of a file, or the whole of a shorter one.
inline constexpr size_t kProbeBytes = 64;

/// A row of the table: either `open` is compiled in, or the module of that name is loaded for it.
struct Format {
  const char* name;              ///< as a person calls it, for reasons
  bool (*probe)(Bytes head);     ///< false: certainly not this format
  const char* module = nullptr;  ///< see Module.h
  DecoderFactory open = nullptr;
};

/// In the order in which they are asked.
std::span<const Format> GetFormats();

}  // namespace sim::lumaview

#endif
