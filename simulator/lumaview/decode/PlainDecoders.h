// SPDX-License-Identifier: Apache-2.0
/// The formats that need no library.
#ifndef SIMULATOR_LUMAVIEW_DECODE_PLAINDECODERS_H
#define SIMULATOR_LUMAVIEW_DECODE_PLAINDECODERS_H

#include "simulator/lumaview/decode/Bytes.h"
#include "simulator/lumaview/decode/Decoder.h"

namespace sim::lumaview {

bool IsBmp(Bytes head);
Result<std::unique_ptr<Decoder>> OpenBmp(Source& source);

bool IsPnm(Bytes head);
Result<std::unique_ptr<Decoder>> OpenPnm(Source& source);

bool IsQoi(Bytes head);
Result<std::unique_ptr<Decoder>> OpenQoi(Source& source);

/// Files of this format say nowhere what they are: a header that makes sense is taken for one, so it is asked last.
bool IsTga(Bytes head);
Result<std::unique_ptr<Decoder>> OpenTga(Source& source);

}  // namespace sim::lumaview

#endif
