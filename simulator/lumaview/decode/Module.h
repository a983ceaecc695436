// SPDX-License-Identifier: Apache-2.0
/// Formats and colour conversion that need a library of their own stand in modules, `lumaview/liblumaview-NAME.so`
/// beside the library, loaded with the first picture that needs one: starting the process loads no codec.
#ifndef SIMULATOR_LUMAVIEW_DECODE_MODULE_H
#define SIMULATOR_LUMAVIEW_DECODE_MODULE_H

#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {

/// Loads the module `name` ("jpeg") and finds its exported object `symbol`. It stays loaded. Thread-safe.
/// Error: kUnknownFormat, when this installation has no such module or it does not load.
Result<const void*> FindInModule(const char* name, const char* symbol);

/// The object that a format's module exports: its `DecoderFactory`.
inline constexpr char kDecoderSymbol[] = "lumaview_module_decoder";

}  // namespace sim::lumaview

/// Stands once in the source of a format's module, outside of any namespace.
#define LUMAVIEW_DECODER_MODULE(factory)                                                                         \
  extern "C" __attribute__((visibility("default"))) const sim::lumaview::DecoderFactory lumaview_module_decoder; \
  const sim::lumaview::DecoderFactory lumaview_module_decoder = factory

#endif
